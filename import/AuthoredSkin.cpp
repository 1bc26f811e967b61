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

void ReadAuthoredSkin(const KFbxMesh& mesh, const NodeIndex& nodes, const AuthoredScene& scene,
                      AuthoredMesh& target) {
    const std::size_t pointCount = target.m_Points.size() / 3;
    const Matrix4 geometric =
        GeometricTransform(scene.m_Nodes[static_cast<std::size_t>(target.m_Node)]);
    // Each point's (cluster, weight) pairs before they are laid out flat.
    std::vector<std::vector<SkinWeight>> perPoint;
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
            const auto index = static_cast<std::uint32_t>(target.m_Clusters.size());
            target.m_Clusters.push_back(out);
            perPoint.resize(pointCount);

            const int count = cluster->GetControlPointIndicesCount();
            const int* indices = cluster->GetControlPointIndices();
            const double* weights = cluster->GetControlPointWeights();
            for (int k = 0; indices && weights && k < count; ++k) {
                const int point = indices[k];
                const double weight = weights[k];
                if (point < 0 || static_cast<std::size_t>(point) >= pointCount ||
                    !std::isfinite(weight) || !(weight > 0.0))
                    continue;
                perPoint[static_cast<std::size_t>(point)].push_back(
                    {index, static_cast<float>(weight)});
            }
        }
    }
    if (target.m_Clusters.empty())
        return;

    target.m_WeightStart.reserve(pointCount + 1);
    for (std::vector<SkinWeight>& weights : perPoint) {
        target.m_WeightStart.push_back(static_cast<std::uint32_t>(target.m_Weights.size()));
        double sum = 0.0;
        for (const SkinWeight& w : weights)
            sum += w.m_Weight;
        if (!(sum > 0.0) || !std::isfinite(sum))
            continue;  // no weights: the point follows the mesh's node
        for (SkinWeight w : weights) {
            w.m_Weight = static_cast<float>(w.m_Weight / sum);
            target.m_Weights.push_back(w);
        }
    }
    target.m_WeightStart.push_back(static_cast<std::uint32_t>(target.m_Weights.size()));
}
