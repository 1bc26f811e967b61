#include "fbx/sdk/SceneNode.h"

#include <cstring>
#include <utility>

#include "fbx/sdk/Importer.h"
#include "fbx/sdk/Material.h"
#include "fbx/sdk/Mesh.h"

const KFCurve::Key& KFCurve::KeyAt(int index) const {
    static const Key kNone;
    if (index < 0 || index >= KeyGetCount())
        return kNone;
    return m_Keys[static_cast<std::size_t>(index)];
}

double KFCurve::KeyGetValue(int index) const {
    return KeyAt(index).value;
}

KTime KFCurve::KeyGetTime(int index) const {
    return KeyAt(index).time;
}

int KFCurve::KeyGetInterpolation(int index) const {
    return KeyAt(index).interpolation;
}

int KFCurve::KeyGetConstantMode(int index) const {
    return KeyAt(index).constantMode;
}

double KFCurve::KeyGetRightDerivative(int index) const {
    return KeyAt(index).rightSlope;
}

double KFCurve::KeyGetLeftDerivative(int index) const {
    return index >= 1 ? KeyAt(index - 1).nextLeftSlope : 0.0;
}

KFbxNodeAttribute* KFbxNodeAttribute::Create(KFbxSdkManager* manager, const char* name,
                                             EAttributeType type) {
    return manager->Adopt(new KFbxNodeAttribute(manager, name, type));
}

// ---- KFbxNode --------------------------------------------------------------------------

KFbxNode::KFbxNode(KFbxSdkManager* manager, const char* name) : KFbxObject(manager, name) {
    // The transform properties with the format's defaults, which stand where a file gives
    // none. Properties stay where they are (a deque), so handles can be taken at once.
    auto add = [this](KFbxProperty& handle, const char* property, EFbxType type,
                      std::vector<double> numbers) {
        AddProperty(property, type).numbers = std::move(numbers);
        handle = FindProperty(property);
    };
    add(LclTranslation, "Lcl Translation", eDOUBLE3, {0, 0, 0});
    add(LclRotation, "Lcl Rotation", eDOUBLE3, {0, 0, 0});
    add(LclScaling, "Lcl Scaling", eDOUBLE3, {1, 1, 1});
    add(RotationOffset, "RotationOffset", eDOUBLE3, {0, 0, 0});
    add(RotationPivot, "RotationPivot", eDOUBLE3, {0, 0, 0});
    add(ScalingOffset, "ScalingOffset", eDOUBLE3, {0, 0, 0});
    add(ScalingPivot, "ScalingPivot", eDOUBLE3, {0, 0, 0});
    add(PreRotation, "PreRotation", eDOUBLE3, {0, 0, 0});
    add(PostRotation, "PostRotation", eDOUBLE3, {0, 0, 0});
    add(GeometricTranslation, "GeometricTranslation", eDOUBLE3, {0, 0, 0});
    add(GeometricRotation, "GeometricRotation", eDOUBLE3, {0, 0, 0});
    add(GeometricScaling, "GeometricScaling", eDOUBLE3, {1, 1, 1});
    add(RotationOrder, "RotationOrder", eINTEGER1, {0});
    add(InheritType, "InheritType", eINTEGER1, {0});
    add(RotationActive, "RotationActive", eBOOL1, {0});
    m_TakeNames.push_back("Default");
    m_Curves.emplace_back();
}

KFbxNode* KFbxNode::Create(KFbxSdkManager* manager, const char* name) {
    return manager->Adopt(new KFbxNode(manager, name));
}

int KFbxNode::GetChildCount(bool recursive) const {
    int count = static_cast<int>(m_Children.size());
    if (recursive) {
        // Iterative, so that a very deep tree cannot exhaust the stack.
        std::vector<const KFbxNode*> pending(m_Children.begin(), m_Children.end());
        count = 0;
        while (!pending.empty()) {
            const KFbxNode* node = pending.back();
            pending.pop_back();
            ++count;
            pending.insert(pending.end(), node->m_Children.begin(), node->m_Children.end());
        }
    }
    return count;
}

KFbxNode* KFbxNode::GetChild(int index) const {
    if (index < 0 || index >= static_cast<int>(m_Children.size()))
        return nullptr;
    return m_Children[static_cast<std::size_t>(index)];
}

KFbxMesh* KFbxNode::GetMesh() const {
    return KFbxCast<KFbxMesh>(m_Attribute);
}

KFbxSkeleton* KFbxNode::GetSkeleton() const {
    return KFbxCast<KFbxSkeleton>(m_Attribute);
}

KFbxSurfaceMaterial* KFbxNode::GetMaterial(int index) const {
    if (index < 0 || index >= GetMaterialCount())
        return nullptr;
    return m_Materials[static_cast<std::size_t>(index)];
}

namespace {
KFbxVector4& ToVector(const fbxDouble3& v, KFbxVector4& out) {
    out = KFbxVector4(v[0], v[1], v[2], 1.0);
    return out;
}
}  // namespace

KFbxVector4& KFbxNode::GetDefaultT(KFbxVector4& value) const {
    return ToVector(LclTranslation.Get(), value);
}
KFbxVector4& KFbxNode::GetDefaultR(KFbxVector4& value) const {
    return ToVector(LclRotation.Get(), value);
}
KFbxVector4& KFbxNode::GetDefaultS(KFbxVector4& value) const {
    return ToVector(LclScaling.Get(), value);
}

const char* KFbxNode::GetTakeNodeName(int index) const {
    if (index < 0 || index >= GetTakeNodeNameCount())
        return nullptr;
    return m_TakeNames[static_cast<std::size_t>(index)].c_str();
}

bool KFbxNode::SetCurrentTakeNode(int index) {
    if (index < 0 || index >= GetTakeNodeNameCount())
        return false;
    m_CurrentTake = index;
    return true;
}

bool KFbxNode::SetCurrentTakeNode(const char* takeName) {
    if (!takeName)
        return false;
    for (int i = 0; i < GetTakeNodeNameCount(); ++i) {
        if (m_TakeNames[static_cast<std::size_t>(i)] == takeName)
            return SetCurrentTakeNode(i);
    }
    return false;
}

KFCurve* KFbxNode::GetPropertyCurve(const std::string& property, const char* channel,
                                    const char* takeName) const {
    int take = m_CurrentTake;
    if (takeName) {
        take = -1;
        for (int i = 0; i < GetTakeNodeNameCount(); ++i) {
            if (m_TakeNames[static_cast<std::size_t>(i)] == takeName)
                take = i;
        }
        if (take < 0)
            return nullptr;
    }
    int group;
    if (property == "Lcl Translation") {
        group = 0;
    } else if (property == "Lcl Rotation") {
        group = 1;
    } else if (property == "Lcl Scaling") {
        group = 2;
    } else {
        return nullptr;
    }
    if (!channel)
        return nullptr;
    int axis;
    if (std::strcmp(channel, "X") == 0) {
        axis = 0;
    } else if (std::strcmp(channel, "Y") == 0) {
        axis = 1;
    } else if (std::strcmp(channel, "Z") == 0) {
        axis = 2;
    } else {
        return nullptr;
    }
    if (take < 0 || take >= static_cast<int>(m_Curves.size()))
        return nullptr;
    return m_Curves[static_cast<std::size_t>(take)][static_cast<std::size_t>(group * 3 + axis)]
        .get();
}

// ---- KFbxScene -------------------------------------------------------------------------

KFbxScene::KFbxScene(KFbxSdkManager* manager, const char* name) : KFbxObject(manager, name) {
    Clear();
}

KFbxScene::~KFbxScene() = default;

KFbxScene* KFbxScene::Create(KFbxSdkManager* manager, const char* name) {
    return manager->Adopt(new KFbxScene(manager, name));
}

const KFbxTakeInfo* KFbxScene::GetTakeInfo(const char* takeName) const {
    if (!takeName)
        return nullptr;
    for (std::size_t i = 0; i < m_TakeNames.size() && i < m_TakeInfos.size(); ++i) {
        if (m_TakeNames[i] == takeName)
            return m_TakeInfos[i].get();
    }
    return nullptr;
}

void KFbxScene::Clear() {
    m_Nodes.clear();
    m_TakeNames.clear();
    m_TakeInfos.clear();
    m_Owned.clear();
    m_Root = Own(new KFbxNode(GetFbxSdkManager(), "RootNode"));
}

KFbxNode* KFbxScene::GetNode(int index) const {
    if (index < 0 || index >= GetNodeCount())
        return nullptr;
    return m_Nodes[static_cast<std::size_t>(index)];
}

int KFbxScene::GetMaterialCount() const {
    int count = 0;
    for (const auto& o : m_Owned)
        count += o->Is(KFbxSurfaceMaterial::ClassId) ? 1 : 0;
    return count;
}

KFbxSurfaceMaterial* KFbxScene::GetMaterial(int index) const {
    for (const auto& o : m_Owned) {
        if (o->Is(KFbxSurfaceMaterial::ClassId) && index-- == 0) {
            return static_cast<KFbxSurfaceMaterial*>(o.get());
        }
    }
    return nullptr;
}

int KFbxScene::GetTextureCount() const {
    int count = 0;
    for (const auto& o : m_Owned)
        count += o->Is(KFbxTexture::ClassId) ? 1 : 0;
    return count;
}
