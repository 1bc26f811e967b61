// The scene graph of the SDK-style interface: the scene, its nodes, node attributes and the
// per-take animation curves of node transforms.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "fbx/sdk/SdkObject.h"

class KFbxMesh;
class KFbxSurfaceMaterial;
class KFbxNode;
struct KFbxTakeInfo;

// How a curve runs from a key to the next one (KFCurve::KeyGetInterpolation), with the bit
// values that 7000+ files use in KeyAttrFlags.
constexpr int KFCURVE_INTERPOLATION_CONSTANT = 0x02;
constexpr int KFCURVE_INTERPOLATION_LINEAR = 0x04;
constexpr int KFCURVE_INTERPOLATION_CUBIC = 0x08;
// Which value a constant key holds until the next key (KFCurve::KeyGetConstantMode): its own,
// or the next key's.
constexpr int KFCURVE_CONSTANT_STANDARD = 0;
constexpr int KFCURVE_CONSTANT_NEXT = 0x100;

// One animation curve: keys with a time and a value, in file order, each with the
// interpolation of the span up to the next key and the slopes at both ends of that span.
class KFCurve {
public:
    struct Key {
        KTime time;
        double value = 0.0;
        int interpolation = KFCURVE_INTERPOLATION_LINEAR;  // one of KFCURVE_INTERPOLATION_*
        int constantMode = KFCURVE_CONSTANT_STANDARD;      // constant keys: KFCURVE_CONSTANT_*
        double rightSlope = 0.0;                           // value per second leaving this key
        double nextLeftSlope = 0.0;  // value per second arriving at the next key
    };

    int KeyGetCount() const { return static_cast<int>(m_Keys.size()); }
    // Value and time of key i; 0 for an index out of range.
    double KeyGetValue(int index) const;
    KTime KeyGetTime(int index) const;
    // Interpolation of the span from key i to the next one; linear for an index out of range.
    int KeyGetInterpolation(int index) const;
    // KFCURVE_CONSTANT_NEXT for a constant key that holds the next key's value, else
    // KFCURVE_CONSTANT_STANDARD.
    int KeyGetConstantMode(int index) const;
    // Slope leaving key i, and slope arriving at key i (what the key before it gives), in
    // value units per second; 0 for an index out of range and arriving at the first key.
    double KeyGetRightDerivative(int index) const;
    double KeyGetLeftDerivative(int index) const;
    // The curve's value when it has no keys (the channel's default).
    double GetValue() const { return m_Default; }

private:
    friend class fbx::SceneBuilder;
    // Key i, or a default key (time and value 0, linear, no slopes) for an index out of range.
    const Key& KeyAt(int index) const;

    std::vector<Key> m_Keys;
    double m_Default = 0.0;
};

class KFbxNodeAttribute : public KFbxObject {
    KFBX_CLASS(KFbxNodeAttribute)
public:
    enum EAttributeType {
        eUNIDENTIFIED = 0,
        eNULL = 1,
        eMARKER = 2,
        eSKELETON = 3,
        eMESH = 4,
        eNURB = 5,
        ePATCH = 6,
        eCAMERA = 7,
        eCAMERA_SWITCHER = 8,
        eLIGHT = 9,
        eOPTICAL_REFERENCE = 10,
        eOPTICAL_MARKER = 11,
        eCONSTRAINT = 12,
        eNURBS_CURVE = 13,
        eTRIM_NURBS_SURFACE = 14,
        eBOUNDARY = 15,
        eNURBS_SURFACE = 16,
        eSHAPE = 17,
        eLODGROUP = 18,
        eSUBDIV = 19,
        eLINE = 20,
    };

    static KFbxNodeAttribute* Create(KFbxSdkManager* manager, const char* name,
                                     EAttributeType type = eUNIDENTIFIED);
    virtual EAttributeType GetAttributeType() const { return m_Type; }
    // The node this attribute belongs to (the first one, when it is shared).
    KFbxNode* GetNode() const { return m_Node; }
    // The file's class string ("LimbNode", "Camera", ...).
    const char* GetTypeName() const { return m_TypeName.c_str(); }

protected:
    KFbxNodeAttribute(KFbxSdkManager* manager, const char* name, EAttributeType type)
        : KFbxObject(manager, name), m_Type(type) {}

private:
    friend class fbx::SceneBuilder;
    EAttributeType m_Type;
    KFbxNode* m_Node = nullptr;
    std::string m_TypeName;
};

class KFbxNull : public KFbxNodeAttribute {
    KFBX_CLASS(KFbxNull)
public:
    KFbxNull(KFbxSdkManager* manager, const char* name) : KFbxNodeAttribute(manager, name, eNULL) {}
};

class KFbxMarker : public KFbxNodeAttribute {
    KFBX_CLASS(KFbxMarker)
public:
    KFbxMarker(KFbxSdkManager* manager, const char* name)
        : KFbxNodeAttribute(manager, name, eMARKER) {}
};

class KFbxSkeleton : public KFbxNodeAttribute {
    KFBX_CLASS(KFbxSkeleton)
public:
    enum ESkeletonType { eROOT, eLIMB, eLIMB_NODE, eEFFECTOR };
    KFbxSkeleton(KFbxSdkManager* manager, const char* name)
        : KFbxNodeAttribute(manager, name, eSKELETON) {}
    ESkeletonType GetSkeletonType() const { return m_SkeletonType; }

private:
    friend class fbx::SceneBuilder;
    ESkeletonType m_SkeletonType = eLIMB_NODE;
};

class KFbxCamera : public KFbxNodeAttribute {
    KFBX_CLASS(KFbxCamera)
public:
    KFbxCamera(KFbxSdkManager* manager, const char* name)
        : KFbxNodeAttribute(manager, name, eCAMERA) {}
};

class KFbxLight : public KFbxNodeAttribute {
    KFBX_CLASS(KFbxLight)
public:
    KFbxLight(KFbxSdkManager* manager, const char* name)
        : KFbxNodeAttribute(manager, name, eLIGHT) {}
};

class KFbxNode : public KFbxObject {
    KFBX_CLASS(KFbxNode)
public:
    static KFbxNode* Create(KFbxSdkManager* manager, const char* name);
    KFbxNode(KFbxSdkManager* manager, const char* name);

    KFbxNode* GetParent() const { return m_Parent; }
    // Children in the order the file connects them; null out of range.
    int GetChildCount(bool recursive = false) const;
    KFbxNode* GetChild(int index) const;

    // Null when the node has none.
    KFbxNodeAttribute* GetNodeAttribute() const { return m_Attribute; }
    // The attribute as a mesh / skeleton, or null when it is something else.
    KFbxMesh* GetMesh() const;
    KFbxSkeleton* GetSkeleton() const;

    // Materials connected to the node, in connection order; null out of range.
    int GetMaterialCount() const { return static_cast<int>(m_Materials.size()); }
    KFbxSurfaceMaterial* GetMaterial(int index) const;

    // The transform as the file gives it (unanimated values).
    KFbxTypedProperty<fbxDouble3> LclTranslation;
    KFbxTypedProperty<fbxDouble3> LclRotation;
    KFbxTypedProperty<fbxDouble3> LclScaling;
    // The rest of the node's transform, as the file (or its property template) gives it, else
    // the format's default: offsets and pivots of rotation and scaling, pre- and
    // post-rotation (Euler XYZ, degrees), the geometric transform that moves the node's own
    // geometry only (scaling defaults to 1, 1, 1; everything else to 0, 0, 0).
    KFbxTypedProperty<fbxDouble3> RotationOffset;
    KFbxTypedProperty<fbxDouble3> RotationPivot;
    KFbxTypedProperty<fbxDouble3> ScalingOffset;
    KFbxTypedProperty<fbxDouble3> ScalingPivot;
    KFbxTypedProperty<fbxDouble3> PreRotation;
    KFbxTypedProperty<fbxDouble3> PostRotation;
    KFbxTypedProperty<fbxDouble3> GeometricTranslation;
    KFbxTypedProperty<fbxDouble3> GeometricRotation;
    KFbxTypedProperty<fbxDouble3> GeometricScaling;
    // 0 XYZ, 1 XZY, 2 YZX, 3 YXZ, 4 ZXY, 5 ZYX, 6 spheric XYZ; 0 for values outside 0 to 6.
    KFbxTypedProperty<int> RotationOrder;
    // 0 RrSs, 1 RSrs, 2 Rrs; 0 for values outside 0 to 2.
    KFbxTypedProperty<int> InheritType;
    // Whether pre- and post-rotation apply (false unless the file sets it).
    KFbxTypedProperty<bool> RotationActive;
    KFbxVector4& GetDefaultT(KFbxVector4& value) const;
    KFbxVector4& GetDefaultR(KFbxVector4& value) const;
    KFbxVector4& GetDefaultS(KFbxVector4& value) const;

    // Takes: "Default" (unanimated values, no curves) first, then the file's takes in order.
    int GetTakeNodeNameCount() const { return static_cast<int>(m_TakeNames.size()); }
    const char* GetTakeNodeName(int index) const;
    bool SetCurrentTakeNode(int index);
    bool SetCurrentTakeNode(const char* takeName);
    int GetCurrentTakeNodeIndex() const { return m_CurrentTake; }
    const char* GetCurrentTakeNodeName() const { return GetTakeNodeName(m_CurrentTake); }

    KFCurve* GetPropertyCurve(const std::string& property, const char* channel,
                              const char* takeName) const override;

private:
    friend class fbx::SceneBuilder;

    // T, R, S by X, Y, Z for one take.
    // Shared: one curve of the file may drive many nodes.
    using TakeCurves = std::array<std::shared_ptr<KFCurve>, 9>;

    KFbxNode* m_Parent = nullptr;
    std::vector<KFbxNode*> m_Children;
    KFbxNodeAttribute* m_Attribute = nullptr;
    std::vector<KFbxSurfaceMaterial*> m_Materials;
    std::vector<std::string> m_TakeNames;
    std::vector<TakeCurves> m_Curves;  // one entry per take name
    int m_CurrentTake = 0;
};

class KFbxScene : public KFbxObject {
    KFBX_CLASS(KFbxScene)
public:
    static KFbxScene* Create(KFbxSdkManager* manager, const char* name);
    ~KFbxScene() override;

    KFbxNode* GetRootNode() const { return m_Root; }
    // Removes every node and object of the scene, leaving an empty root.
    void Clear();

    // All nodes / all objects of a class in the scene, in creation order.
    int GetNodeCount() const { return static_cast<int>(m_Nodes.size()); }
    KFbxNode* GetNode(int index) const;
    int GetMaterialCount() const;
    KFbxSurfaceMaterial* GetMaterial(int index) const;
    int GetTextureCount() const;

    // Names of the takes read from the file, in file order.
    const std::vector<std::string>& GetTakeNames() const { return m_TakeNames; }
    // The take of that name among GetTakeNames() (its span, comment); null for another name.
    const KFbxTakeInfo* GetTakeInfo(const char* takeName) const;

private:
    KFbxScene(KFbxSdkManager* manager, const char* name);
    friend class fbx::SceneBuilder;
    template <class T>
    T* Own(T* object) {
        object->m_OwnedByManager = false;
        m_Owned.emplace_back(object);
        return object;
    }

    std::vector<std::unique_ptr<KFbxObject>> m_Owned;
    std::vector<KFbxNode*> m_Nodes;
    KFbxNode* m_Root = nullptr;
    std::vector<std::string> m_TakeNames;
    std::vector<std::unique_ptr<KFbxTakeInfo>> m_TakeInfos;  // one per take name, same order
};
