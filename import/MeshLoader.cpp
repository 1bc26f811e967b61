#include "import/MeshLoader.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "fbx/sdk/fbxsdk.h"
#include "import/Materials.h"
#include "import/SkinIndex.h"
#include "model/Model.h"

namespace {

// Where one polygon corner is: its control point, its polygon and its place in it, and the
// running count of corners before it.
struct Corner {
    int m_ControlPoint;
    int m_Polygon;
    int m_InPolygon;
    int m_Running;
};

// Only direct and index-to-direct elements are read.
bool IsRead(const KFbxLayerElement& element) {
    const KFbxLayerElement::EReferenceMode mode = element.GetReferenceMode();
    return mode == KFbxLayerElement::eDIRECT || mode == KFbxLayerElement::eINDEX_TO_DIRECT;
}

// The element's direct-array index for the index its mapping picks.
template <class Element>
int ThroughReference(const Element& element, int index) {
    if (element.GetReferenceMode() == KFbxLayerElement::eINDEX_TO_DIRECT)
        return element.GetIndexArray().GetAt(index);
    return index;
}

// Index into the normals' direct array for one corner, or -1 when the mapping or reference
// mode is not one the engine reads.
int NormalIndex(const KFbxLayerElementNormal& normals, const Corner& corner) {
    if (!IsRead(normals))
        return -1;
    switch (normals.GetMappingMode()) {
        case KFbxLayerElement::eBY_CONTROL_POINT:
            return ThroughReference(normals, corner.m_ControlPoint);
        case KFbxLayerElement::eBY_POLYGON_VERTEX:
            return ThroughReference(normals, corner.m_Running);
        default:
            return -1;
    }
}

// Index into a UV element's direct array for one corner, or -1 when the mapping or reference
// mode is not one the engine reads. By polygon vertex every layer takes the mesh's texture-UV
// index of the corner, which comes from the first layer holding UVs.
int UVIndex(const KFbxMesh& mesh, const KFbxLayerElementUV& uvs, const Corner& corner) {
    if (!IsRead(uvs))
        return -1;
    switch (uvs.GetMappingMode()) {
        case KFbxLayerElement::eBY_CONTROL_POINT:
            return ThroughReference(uvs, corner.m_ControlPoint);
        case KFbxLayerElement::eBY_POLYGON_VERTEX:
            return mesh.GetTextureUVIndex(corner.m_Polygon, corner.m_InPolygon);
        default:
            return -1;
    }
}

// The normals and UV elements of one layer, looked up once per mesh rather than per corner.
struct LayerElements {
    const KFbxLayerElementNormal* m_Normals = nullptr;
    const KFbxLayerElementUV* m_UVs = nullptr;
};

std::vector<LayerElements> CollectLayers(const KFbxMesh& mesh) {
    std::vector<LayerElements> layers;
    for (int l = 0; l < mesh.GetLayerCount(); ++l) {
        const KFbxLayer* layer = mesh.GetLayer(l);
        if (!layer)
            continue;
        LayerElements elements;
        elements.m_Normals = layer->GetNormals();
        elements.m_UVs = layer->GetUVs();
        if (elements.m_Normals || elements.m_UVs)
            layers.push_back(elements);
    }
    return layers;
}

void ReadLayers(const KFbxMesh& mesh, const std::vector<LayerElements>& layers,
                const Corner& corner, Vertex& vertex) {
    for (const LayerElements& layer : layers) {
        // Layer normals go into the colour slots; drawing lights each polygon with its own
        // face normal.
        if (const KFbxLayerElementNormal* normals = layer.m_Normals) {
            const int index = NormalIndex(*normals, corner);
            if (index >= 0 && index < normals->GetDirectArray().GetCount()) {
                const KFbxVector4 normal = normals->GetDirectArray().GetAt(index);
                for (int i = 0; i < 4; ++i)
                    vertex.m_Color[i] = static_cast<float>(normal[i]);
            }
        }

        if (const KFbxLayerElementUV* uvs = layer.m_UVs) {
            const int index = UVIndex(mesh, *uvs, corner);
            if (index >= 0 && index < uvs->GetDirectArray().GetCount()) {
                const KFbxVector2 uv = uvs->GetDirectArray().GetAt(index);
                vertex.m_UV[0] = static_cast<float>(uv[0]);
                vertex.m_UV[1] = static_cast<float>(uv[1]);
            }
        }
    }
}

void LoadBones(const KFbxMesh& mesh, Mesh& target) {
    std::printf("Loading bones for mesh: %s\n", target.m_NodeName.c_str());
    int total = 0;
    for (int s = 0; s < mesh.GetDeformerCount(KFbxDeformer::eSKIN); ++s) {
        auto* skin = static_cast<KFbxSkin*>(mesh.GetDeformer(s, KFbxDeformer::eSKIN));
        if (skin)
            total += skin->GetClusterCount();
    }
    int added = 0;
    for (int s = 0; s < mesh.GetDeformerCount(KFbxDeformer::eSKIN); ++s) {
        auto* skin = static_cast<KFbxSkin*>(mesh.GetDeformer(s, KFbxDeformer::eSKIN));
        if (!skin)
            continue;
        for (int c = 0; c < skin->GetClusterCount(); ++c) {
            KFbxCluster* cluster = skin->GetCluster(c);
            if (!cluster)
                continue;
            Bone bone;
            bone.m_Name = cluster->GetLink() ? cluster->GetLink()->GetName() : "";
            KFbxXMatrix transform, link;
            cluster->GetTransformMatrix(transform);
            cluster->GetTransformLinkMatrix(link);
            for (int r = 0; r < 4; ++r) {
                for (int k = 0; k < 4; ++k) {
                    bone.m_Transform[r * 4 + k] = transform.Get(r, k);
                    bone.m_TransformLink[r * 4 + k] = link.Get(r, k);
                }
            }
            target.m_Bones.push_back(bone);
            std::printf("Added a bone. %d of %d\n", ++added, total);
        }
    }
}

void CopyVector(float (&out)[4], const fbxDouble3& value) {
    for (int i = 0; i < 3; ++i)
        out[i] = static_cast<float>(value[i]);
}

}  // namespace

void LoadMesh(KFbxNode* node, ImportContext* context) {
    KFbxMesh* fbxMesh = node ? node->GetMesh() : nullptr;
    if (!fbxMesh)
        return;

    Mesh mesh;
    mesh.m_NodeName = node->GetName();
    std::printf("Loading mesh: %s\n", mesh.m_NodeName.c_str());

    // Kept for the importer's own use; drawing places meshes by the model only.
    CopyVector(mesh.m_Scaling, node->LclScaling.Get());

    const int pointCount = fbxMesh->GetControlPointsCount();
    const KFbxVector4* points = fbxMesh->GetControlPoints();
    const SkinIndex skin(*fbxMesh, mesh.m_BoneNames, mesh.m_SkinInfluences);
    const std::vector<LayerElements> layers = CollectLayers(*fbxMesh);

    const int polygonCount = std::max(0, fbxMesh->GetPolygonCount());
    std::size_t cornerCount = 0;
    for (int p = 0; p < polygonCount; ++p)
        cornerCount += static_cast<std::size_t>(std::max(0, fbxMesh->GetPolygonSize(p)));
    mesh.m_Polygons.reserve(static_cast<std::size_t>(polygonCount));
    mesh.m_Vertices.reserve(cornerCount);
    int running = 0;  // polygon corners so far, for by-polygon-vertex layers
    for (int p = 0; p < polygonCount; ++p) {
        Polygon& polygon = mesh.m_Polygons.emplace_back();
        polygon.m_First = static_cast<std::uint32_t>(mesh.m_Vertices.size());
        const int size = fbxMesh->GetPolygonSize(p);
        for (int k = 0; k < size; ++k, ++running) {
            const int controlPoint = fbxMesh->GetPolygonVertex(p, k);
            float x = 0.0f, y = 0.0f, z = 0.0f;
            if (points && controlPoint >= 0 && controlPoint < pointCount) {
                x = static_cast<float>(points[controlPoint][0]);
                y = static_cast<float>(points[controlPoint][1]);
                z = static_cast<float>(points[controlPoint][2]);
            }
            Vertex& vertex = mesh.m_Vertices.emplace_back();
            const float xyz[3] = {x, y, z};
            for (int i = 0; i < 3; ++i) {
                vertex.m_Point[i] = xyz[i];
                vertex.m_FacePoint[i] = xyz[i];
                vertex.m_Position[i] = xyz[i];
            }
            vertex.m_Skin = skin.At(controlPoint);
            ReadLayers(*fbxMesh, layers, {controlPoint, p, k, running}, vertex);
        }
        polygon.m_Count = static_cast<std::uint32_t>(mesh.m_Vertices.size() - polygon.m_First);
    }

    LoadMaterials(fbxMesh, mesh);

    if (fbxMesh->GetDeformerCount(KFbxDeformer::eSKIN) > 0) {
        LoadBones(*fbxMesh, mesh);
    }

    const std::string name = mesh.m_NodeName;
    context->Target->AddMesh(name, std::move(mesh));
}
