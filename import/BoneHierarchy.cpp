#include "import/BoneHierarchy.h"

#include "fbx/sdk/fbxsdk.h"
#include "model/Model.h"

namespace {

// Damaged files can nest nodes thousands deep; stop well before the stack would run out.
constexpr int kMaxBoneDepth = 2048;

void LoadBonesAt(ImportContext* context, KFbxNode* node, const std::string& parentName,
                 int depth) {
    if (!node || depth > kMaxBoneDepth) return;
    std::string ownName = parentName;
    if (node->GetSkeleton()) {
        NodeInfo info;
        info.m_Name = node->GetName();
        info.m_Parent = parentName;
        const fbxDouble3 rotation = node->LclRotation.Get();
        const fbxDouble3 translation = node->LclTranslation.Get();
        const fbxDouble3 scaling = node->LclScaling.Get();
        for (int i = 0; i < 3; ++i) {
            info.m_Rotation[i] = static_cast<float>(rotation[i]);
            info.m_Translation[i] = static_cast<float>(translation[i]);
            info.m_Scaling[i] = static_cast<float>(scaling[i]);
        }
        context->Target->m_Nodes[info.m_Name] = info;
        ownName = info.m_Name;
    }
    for (int i = 0; i < node->GetChildCount(); ++i) {
        LoadBonesAt(context, node->GetChild(i), ownName, depth + 1);
    }
}

}  // namespace

void LoadBoneHierarchy(ImportContext* context, KFbxNode* node, const std::string& parentName) {
    LoadBonesAt(context, node, parentName, 0);
}
