#include "import/SkinIndex.h"

#include <map>

#include "fbx/sdk/fbxsdk.h"

SkinIndex::SkinIndex(const KFbxMesh& mesh, std::vector<std::string>& boneNames) {
    const int skinCount = mesh.GetDeformerCount(KFbxDeformer::eSKIN);
    if (skinCount <= 0)
        return;
    const int pointCount = mesh.GetControlPointsCount();
    m_ByControlPoint.resize(pointCount > 0 ? static_cast<std::size_t>(pointCount) : 0);

    std::map<std::string, int> boneIndex;
    for (std::size_t i = 0; i < boneNames.size(); ++i)
        boneIndex[boneNames[i]] = static_cast<int>(i);

    for (int s = 0; s < skinCount; ++s) {
        auto* skin = static_cast<KFbxSkin*>(mesh.GetDeformer(s, KFbxDeformer::eSKIN));
        if (!skin)
            continue;
        for (int c = 0; c < skin->GetClusterCount(); ++c) {
            KFbxCluster* cluster = skin->GetCluster(c);
            if (!cluster)
                continue;
            const int count = cluster->GetControlPointIndicesCount();
            const int* indices = cluster->GetControlPointIndices();
            const double* weights = cluster->GetControlPointWeights();
            if (count <= 0 || !indices || !weights)
                continue;

            const std::string name = cluster->GetLink() ? cluster->GetLink()->GetName() : "";
            auto found = boneIndex.find(name);
            if (found == boneIndex.end()) {
                found = boneIndex.emplace(name, static_cast<int>(boneNames.size())).first;
                boneNames.push_back(name);
            }
            for (int j = 0; j < count; ++j) {
                const int point = indices[j];
                if (point < 0 || point >= pointCount)
                    continue;
                const float weight = static_cast<float>(weights[j]);
                if (weight == 0.0f)
                    continue;
                m_ByControlPoint[static_cast<std::size_t>(point)].push_back(
                    {found->second, weight});
            }
        }
    }
}

const SkinInfluences& SkinIndex::At(int controlPoint) const {
    if (controlPoint < 0 || static_cast<std::size_t>(controlPoint) >= m_ByControlPoint.size()) {
        return m_None;
    }
    return m_ByControlPoint[static_cast<std::size_t>(controlPoint)];
}
