// Meshes of the SDK-style interface: control points, polygons, layers of per-vertex data
// (normals, UVs, colours, materials, textures, holes) and skin deformers with their clusters.
#pragma once

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "fbx/sdk/SceneNode.h"

class KFbxTexture;

class KFbxLayerElement {
public:
    enum EMappingMode {
        eNONE = 0,
        eBY_CONTROL_POINT = 1,
        eBY_POLYGON_VERTEX = 2,
        eBY_POLYGON = 3,
        eBY_EDGE = 4,
        eALL_SAME = 5,
    };
    enum EReferenceMode {
        eDIRECT = 0,
        eINDEX = 1,
        eINDEX_TO_DIRECT = 2,
    };
    enum ELayerElementType {
        eUNDEFINED,
        eNORMAL,
        eBINORMAL,
        eTANGENT,
        eMATERIAL,
        eUV,
        eVERTEX_COLOR,
        eSMOOTHING,
        eHOLE,
        eDIFFUSE_TEXTURES,
        eEMISSIVE_TEXTURES,
        eAMBIENT_TEXTURES,
        eSPECULAR_TEXTURES,
        eTRANSPARENT_TEXTURES,
        eREFLECTION_TEXTURES,
    };

    virtual ~KFbxLayerElement() = default;
    EMappingMode GetMappingMode() const { return m_Mapping; }
    EReferenceMode GetReferenceMode() const { return m_Reference; }
    const char* GetName() const { return m_Name.c_str(); }

private:
    friend class fbx::SceneBuilder;
    EMappingMode m_Mapping = eNONE;
    EReferenceMode m_Reference = eDIRECT;
    std::string m_Name;
};

// A read-only array of layer data; GetAt out of range gives a default value.
template <class T>
class KFbxLayerElementArrayTemplate {
public:
    int GetCount() const { return static_cast<int>(m_Items.size()); }
    T GetAt(int index) const {
        return index >= 0 && index < GetCount() ? m_Items[static_cast<std::size_t>(index)] : T();
    }
    T operator[](int index) const { return GetAt(index); }

private:
    friend class fbx::SceneBuilder;
    std::vector<T> m_Items;
};

// Vectors (normals, binormals, tangents) as the file gives them, in as little memory as keeps
// them exact: x, y and z as floats when every one of them is a float value (as most tools
// write them), as doubles otherwise; w once when all items share it.
template <>
class KFbxLayerElementArrayTemplate<KFbxVector4> {
public:
    int GetCount() const { return static_cast<int>(m_Count); }
    KFbxVector4 GetAt(int index) const {
        if (index < 0 || static_cast<std::size_t>(index) >= m_Count)
            return KFbxVector4();
        const std::size_t i = static_cast<std::size_t>(index);
        const double w = m_Ws.empty() ? m_W : m_Ws[i];
        if (!m_Floats.empty())
            return KFbxVector4(m_Floats[i * 3], m_Floats[i * 3 + 1], m_Floats[i * 3 + 2], w);
        return KFbxVector4(m_Doubles[i * 3], m_Doubles[i * 3 + 1], m_Doubles[i * 3 + 2], w);
    }
    KFbxVector4 operator[](int index) const { return GetAt(index); }

private:
    friend class fbx::SceneBuilder;

    // Takes `count` items, item(n) giving the n-th. Floats are tried first, in one pass; the
    // first item that is not exact as floats starts again with doubles.
    template <class Item>
    void Assign(std::size_t count, Item item) {
        m_Count = count;
        m_W = count > 0 ? item(0)[3] : 1.0;
        bool sameW = true;
        m_Floats.resize(count * 3);
        float* out = m_Floats.data();
        for (std::size_t n = 0; n < count; ++n, out += 3) {
            const KFbxVector4 v = item(n);
            bool exact = true;
            for (int k = 0; k < 3; ++k) {
                out[k] = static_cast<float>(v.mData[k]);
                exact = exact && static_cast<double>(out[k]) == v.mData[k];
            }
            if (!exact) {
                std::vector<float>().swap(m_Floats);
                break;
            }
            sameW = sameW && SameBits(v.mData[3], m_W);
        }
        if (m_Floats.empty() && count > 0) {
            sameW = true;
            m_Doubles.resize(count * 3);
            for (std::size_t n = 0; n < count; ++n) {
                const KFbxVector4 v = item(n);
                for (int k = 0; k < 3; ++k)
                    m_Doubles[n * 3 + k] = v.mData[k];
                sameW = sameW && SameBits(v.mData[3], m_W);
            }
        }
        if (!sameW) {
            m_Ws.resize(count);
            for (std::size_t n = 0; n < count; ++n)
                m_Ws[n] = item(n)[3];
        }
    }

    static bool SameBits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

    std::size_t m_Count = 0;
    std::vector<float> m_Floats;    // x y z of each item, when all are exact as floats
    std::vector<double> m_Doubles;  // x y z of each item otherwise
    std::vector<double> m_Ws;       // w of each item, when they differ
    double m_W = 1.0;               // w of every item, when they do not
};

template <class T>
class KFbxLayerElementTemplate : public KFbxLayerElement {
public:
    const KFbxLayerElementArrayTemplate<T>& GetDirectArray() const { return m_Direct; }
    const KFbxLayerElementArrayTemplate<int>& GetIndexArray() const { return m_Index; }

private:
    friend class fbx::SceneBuilder;
    KFbxLayerElementArrayTemplate<T> m_Direct;
    KFbxLayerElementArrayTemplate<int> m_Index;
};

class KFbxLayerElementNormal : public KFbxLayerElementTemplate<KFbxVector4> {};
class KFbxLayerElementBinormal : public KFbxLayerElementTemplate<KFbxVector4> {};
class KFbxLayerElementTangent : public KFbxLayerElementTemplate<KFbxVector4> {};
class KFbxLayerElementUV : public KFbxLayerElementTemplate<KFbxVector2> {};
class KFbxLayerElementVertexColor : public KFbxLayerElementTemplate<KFbxColor> {};
class KFbxLayerElementMaterial : public KFbxLayerElementTemplate<KFbxSurfaceMaterial*> {};
class KFbxLayerElementHole : public KFbxLayerElementTemplate<bool> {};
class KFbxLayerElementSmoothing : public KFbxLayerElementTemplate<int> {};

class KFbxLayerElementTexture : public KFbxLayerElementTemplate<KFbxTexture*> {
public:
    enum EBlendMode { eTRANSLUCENT, eADD, eMODULATE, eMODULATE2 };
    EBlendMode GetBlendMode() const { return m_BlendMode; }
    double GetAlpha() const { return m_Alpha; }

private:
    friend class fbx::SceneBuilder;
    EBlendMode m_BlendMode = eTRANSLUCENT;
    double m_Alpha = 1.0;
};

// One numbered layer of a mesh: at most one element of each kind; null when absent.
class KFbxLayer {
public:
    KFbxLayerElementNormal* GetNormals() const { return m_Normals; }
    KFbxLayerElementBinormal* GetBinormals() const { return m_Binormals; }
    KFbxLayerElementTangent* GetTangents() const { return m_Tangents; }
    KFbxLayerElementUV* GetUVs(
        KFbxLayerElement::ELayerElementType type = KFbxLayerElement::eDIFFUSE_TEXTURES) const {
        return type == KFbxLayerElement::eDIFFUSE_TEXTURES ? m_UVs : nullptr;
    }
    KFbxLayerElementVertexColor* GetVertexColors() const { return m_Colors; }
    KFbxLayerElementMaterial* GetMaterials() const { return m_Materials; }
    KFbxLayerElementTexture* GetTextures(
        KFbxLayerElement::ELayerElementType type = KFbxLayerElement::eDIFFUSE_TEXTURES) const {
        return type == KFbxLayerElement::eDIFFUSE_TEXTURES ? m_Textures : nullptr;
    }
    KFbxLayerElementHole* GetHoles() const { return m_Holes; }
    KFbxLayerElementSmoothing* GetSmoothing() const { return m_Smoothing; }

private:
    friend class fbx::SceneBuilder;
    KFbxLayerElementNormal* m_Normals = nullptr;
    KFbxLayerElementBinormal* m_Binormals = nullptr;
    KFbxLayerElementTangent* m_Tangents = nullptr;
    KFbxLayerElementUV* m_UVs = nullptr;
    KFbxLayerElementVertexColor* m_Colors = nullptr;
    KFbxLayerElementMaterial* m_Materials = nullptr;
    KFbxLayerElementTexture* m_Textures = nullptr;
    KFbxLayerElementHole* m_Holes = nullptr;
    KFbxLayerElementSmoothing* m_Smoothing = nullptr;
};

class KFbxDeformer : public KFbxObject {
    KFBX_CLASS(KFbxDeformer)
public:
    enum EDeformerType { eUNIDENTIFIED, eSKIN, eVERTEX_CACHE };
    virtual EDeformerType GetDeformerType() const { return eUNIDENTIFIED; }

protected:
    KFbxDeformer(KFbxSdkManager* manager, const char* name) : KFbxObject(manager, name) {}
};

class KFbxCluster : public KFbxObject {
    KFBX_CLASS(KFbxCluster)
public:
    KFbxCluster(KFbxSdkManager* manager, const char* name) : KFbxObject(manager, name) {}

    // Control points that the link moves and their weights (arrays of the same length).
    int GetControlPointIndicesCount() const { return static_cast<int>(m_Indices.size()); }
    int* GetControlPointIndices() const;
    double* GetControlPointWeights() const;
    // The bone.
    KFbxNode* GetLink() const { return m_Link; }
    KFbxXMatrix& GetTransformMatrix(KFbxXMatrix& matrix) const;
    KFbxXMatrix& GetTransformLinkMatrix(KFbxXMatrix& matrix) const;

private:
    friend class fbx::SceneBuilder;
    mutable std::vector<int> m_Indices;
    mutable std::vector<double> m_Weights;
    KFbxNode* m_Link = nullptr;
    KFbxXMatrix m_Transform;
    KFbxXMatrix m_TransformLink;
};

class KFbxSkin : public KFbxDeformer {
    KFBX_CLASS(KFbxSkin)
public:
    KFbxSkin(KFbxSdkManager* manager, const char* name) : KFbxDeformer(manager, name) {}
    EDeformerType GetDeformerType() const override { return eSKIN; }
    int GetClusterCount() const { return static_cast<int>(m_Clusters.size()); }
    KFbxCluster* GetCluster(int index) const;

private:
    friend class fbx::SceneBuilder;
    std::vector<KFbxCluster*> m_Clusters;
};

// Node attributes that carry control points and deformers.
class KFbxGeometry : public KFbxNodeAttribute {
    KFBX_CLASS(KFbxGeometry)
public:
    int GetDeformerCount() const { return static_cast<int>(m_Deformers.size()); }
    int GetDeformerCount(KFbxDeformer::EDeformerType type) const;
    KFbxDeformer* GetDeformer(int index) const;
    KFbxDeformer* GetDeformer(int index, KFbxDeformer::EDeformerType type) const;

    int GetControlPointsCount() const { return static_cast<int>(m_ControlPoints.size()); }
    // Null when there are none.
    KFbxVector4* GetControlPoints() const;
    KFbxVector4 GetControlPointAt(int index) const;

    int GetLayerCount() const { return static_cast<int>(m_Layers.size()); }
    KFbxLayer* GetLayer(int index) const {
        if (index < 0 || index >= GetLayerCount())
            return nullptr;
        return m_Layers[static_cast<std::size_t>(index)].get();
    }

protected:
    KFbxGeometry(KFbxSdkManager* manager, const char* name, EAttributeType type)
        : KFbxNodeAttribute(manager, name, type) {}

private:
    friend class fbx::SceneBuilder;
    std::vector<KFbxDeformer*> m_Deformers;
    mutable std::vector<KFbxVector4> m_ControlPoints;
    std::vector<std::unique_ptr<KFbxLayer>> m_Layers;
    std::vector<std::unique_ptr<KFbxLayerElement>> m_Elements;
};

class KFbxMesh : public KFbxGeometry {
    KFBX_CLASS(KFbxMesh)
public:
    static KFbxMesh* Create(KFbxSdkManager* manager, const char* name);
    KFbxMesh(KFbxSdkManager* manager, const char* name) : KFbxGeometry(manager, name, eMESH) {}

    // The polygon accessors are inline: importers call them for every corner.
    int GetPolygonCount() const { return static_cast<int>(m_PolygonStarts.size()); }
    // Corners of polygon p; -1 when p is out of range.
    int GetPolygonSize(int polygon) const {
        if (polygon < 0 || polygon >= GetPolygonCount())
            return -1;
        const auto p = static_cast<std::size_t>(polygon);
        const int end = p + 1 < m_PolygonStarts.size() ? m_PolygonStarts[p + 1]
                                                       : static_cast<int>(m_Corners.size());
        return end - m_PolygonStarts[p];
    }
    // Control-point index of corner k of polygon p; -1 when out of range.
    int GetPolygonVertex(int polygon, int corner) const {
        const int size = GetPolygonSize(polygon);
        if (size < 0 || corner < 0 || corner >= size)
            return -1;
        const auto first =
            static_cast<std::size_t>(m_PolygonStarts[static_cast<std::size_t>(polygon)]);
        return m_Corners[first + static_cast<std::size_t>(corner)];
    }
    // Corners of all polygons together.
    int GetPolygonVertexCount() const { return static_cast<int>(m_Corners.size()); }
    // Index of the first corner of polygon p in the corner list; -1 when out of range.
    int GetPolygonVertexIndex(int polygon) const {
        if (polygon < 0 || polygon >= GetPolygonCount())
            return -1;
        return m_PolygonStarts[static_cast<std::size_t>(polygon)];
    }
    // The UV index of a corner for the first layer holding UVs of that kind: through the
    // index array when the UVs are indexed, else the corner's own position; -1 when the
    // corner or UVs are missing.
    int GetTextureUVIndex(
        int polygon, int corner,
        KFbxLayerElement::ELayerElementType type = KFbxLayerElement::eDIFFUSE_TEXTURES) const;

private:
    friend class fbx::SceneBuilder;
    std::vector<int> m_Corners;        // control-point index per corner
    std::vector<int> m_PolygonStarts;  // first corner of each polygon
};
