#include "import/AuthoredSkin.h"

#include <cmath>
#include <utility>

#include "fbx/sdk/fbxsdk.h"
#include "model/Pose.h"

namespace {

Matrix4 ToMatrix(const KFbxXMatrix& source) {
    // The file stores matrices column by column, as OpenGL does.
    Matrix4 out;
    for (int c = 0; c < 4; ++c) {
        for (int r = 0; r < 4; ++r)
            out.m[c * 4 + r] = source.Get(c, r);
    }
    return out;
}

// The cluster's bind matrix, TransformLink^-1 * Transform * G; false when the link matrix
// cannot be inverted or anything is not finite.
bool BindMatrix(const KFbxCluster& cluster, const Matrix4& geometric, Matrix4& bind) {
    KFbxXMatrix transform, link;
    cluster.GetTransformMatrix(transform);
    cluster.GetTransformLinkMatrix(link);
    Matrix4 inverseLink;
    if (!ToMatrix(link).Invert(inverseLink))
        return false;
    bind = inverseLink * ToMatrix(transform) * geometric;
    return bind.IsFinite();
}

}  // namespace

void ReadAuthoredSkin(const KFbxMesh& mesh, const NodeIndex& nodes, const Matrix4& geometric,
                      AuthoredMesh& target) {
    const std::size_t pointCount = target.m_Points.size() / 3;
    // The clusters that move the mesh, each with its index in m_Clusters.
    std::vector<std::pair<const KFbxCluster*, std::uint32_t>> accepted;
    for (int s = 0; s < mesh.GetDeformerCount(KFbxDeformer::eSKIN); ++s) {
        const auto* skin = static_cast<const KFbxSkin*>(mesh.GetDeformer(s, KFbxDeformer::eSKIN));
        if (!skin)
            continue;
        for (int c = 0; c < skin->GetClusterCount(); ++c) {
            const KFbxCluster* cluster = skin->GetCluster(c);
            if (!cluster || !cluster->GetLink())
                continue;
            auto bone = nodes.find(cluster->GetLink());
            SkinCluster out;
            if (bone == nodes.end() || !BindMatrix(*cluster, geometric, out.m_BindMatrix))
                continue;
            out.m_Bone = bone->second;
            accepted.emplace_back(cluster, static_cast<std::uint32_t>(target.m_Clusters.size()));
            target.m_Clusters.push_back(out);
        }
    }
    if (target.m_Clusters.empty())
        return;

    // Calls visit(point, weight) for every usable weight, cluster after cluster.
    auto forEachWeight = [&](auto visit) {
        for (const auto& [cluster, index] : accepted) {
            const int count = cluster->GetControlPointIndicesCount();
            const int* indices = cluster->GetControlPointIndices();
            const double* weights = cluster->GetControlPointWeights();
            for (int k = 0; indices && weights && k < count; ++k) {
                const int point = indices[k];
                const double weight = weights[k];
                if (point < 0 || static_cast<std::size_t>(point) >= pointCount ||
                    !std::isfinite(weight) || !(weight > 0.0))
                    continue;
                visit(static_cast<std::size_t>(point), index, static_cast<float>(weight));
            }
        }
    };
    // Each point's number of weights and their sum, then its run of m_Weights: empty for a
    // point whose weights do not sum to a usable number (it follows the mesh's node).
    std::vector<std::uint32_t> counts(pointCount, 0);
    std::vector<double> sums(pointCount, 0.0);
    forEachWeight([&](std::size_t point, std::uint32_t, float weight) {
        ++counts[point];
        sums[point] += weight;
    });
    auto usable = [](double sum) { return sum > 0.0 && std::isfinite(sum); };
    target.m_WeightStart.resize(pointCount + 1);
    std::size_t total = 0;
    for (std::size_t p = 0; p < pointCount; ++p) {
        target.m_WeightStart[p] = static_cast<std::uint32_t>(total);
        if (usable(sums[p]))
            total += counts[p];
    }
    target.m_WeightStart[pointCount] = static_cast<std::uint32_t>(total);
    target.m_Weights.resize(total);
    std::vector<std::uint32_t>& next = counts;  // where each point's next weight goes
    for (std::size_t p = 0; p < pointCount; ++p)
        next[p] = target.m_WeightStart[p];
    forEachWeight([&](std::size_t point, std::uint32_t index, float weight) {
        if (usable(sums[point]))
            target.m_Weights[next[point]++] = {index, static_cast<float>(weight / sums[point])};
    });
}
