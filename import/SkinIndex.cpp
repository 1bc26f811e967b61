#include "import/SkinIndex.h"

#include <map>

#include "fbx/sdk/fbxsdk.h"

namespace {

// Calls visit(point, bone, weight) for every influence of the mesh, in scan order.
template <class Visit>
void ScanClusters(const KFbxMesh& mesh, int pointCount, std::vector<std::string>& boneNames,
                  std::map<std::string, int>& boneIndex, Visit visit) {
    for (int s = 0; s < mesh.GetDeformerCount(KFbxDeformer::eSKIN); ++s) {
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
                if (weight != 0.0f)
                    visit(static_cast<std::size_t>(point), found->second, weight);
            }
        }
    }
}

}  // namespace

SkinIndex::SkinIndex(const KFbxMesh& mesh, std::vector<std::string>& boneNames,
                     std::vector<SkinInfluence>& table) {
    if (mesh.GetDeformerCount(KFbxDeformer::eSKIN) <= 0)
        return;
    const int pointCount = mesh.GetControlPointsCount();
    m_ByControlPoint.resize(pointCount > 0 ? static_cast<std::size_t>(pointCount) : 0);

    std::map<std::string, int> boneIndex;
    for (std::size_t i = 0; i < boneNames.size(); ++i)
        boneIndex[boneNames[i]] = static_cast<int>(i);

    // Count each point's influences, give each point its run, then fill the runs.
    ScanClusters(mesh, pointCount, boneNames, boneIndex,
                 [&](std::size_t point, int, float) { ++m_ByControlPoint[point].m_Count; });
    std::size_t total = table.size();
    for (SkinInfluences& run : m_ByControlPoint) {
        run.m_First = static_cast<std::uint32_t>(total);
        total += run.m_Count;
        run.m_Count = 0;
    }
    table.resize(total);
    ScanClusters(mesh, pointCount, boneNames, boneIndex,
                 [&](std::size_t point, int bone, float weight) {
                     SkinInfluences& run = m_ByControlPoint[point];
                     table[run.m_First + run.m_Count++] = {bone, weight};
                 });
}

SkinInfluences SkinIndex::At(int controlPoint) const {
    if (controlPoint < 0 || static_cast<std::size_t>(controlPoint) >= m_ByControlPoint.size())
        return {};
    return m_ByControlPoint[static_cast<std::size_t>(controlPoint)];
}
