#include "model/Skinning.h"

#include <array>
#include <cmath>

#include "model/Pose.h"

namespace {

// The upper three rows of a transform in single precision, column-major like Matrix4.
using Affine = std::array<float, 12>;

Affine ToAffine(const Matrix4& m) {
    Affine a;
    for (int c = 0; c < 4; ++c) {
        for (int r = 0; r < 3; ++r)
            a[static_cast<std::size_t>(c * 3 + r)] = static_cast<float>(m.m[c * 4 + r]);
    }
    return a;
}

void AddWeighted(Affine& sum, const Affine& a, float weight) {
    for (std::size_t k = 0; k < 12; ++k)
        sum[k] += a[k] * weight;
}

bool Finite3(const float* v) {
    return std::isfinite(v[0]) && std::isfinite(v[1]) && std::isfinite(v[2]);
}

// One corner: the point and normal through the affine transform, or the origin and a zero
// normal when anything is not finite.
void PlaceCorner(const Affine& a, const float* point, const float* normal, float* position,
                 float* outNormal) {
    for (int r = 0; r < 3; ++r) {
        position[r] = a[static_cast<std::size_t>(r)] * point[0] +
                      a[static_cast<std::size_t>(3 + r)] * point[1] +
                      a[static_cast<std::size_t>(6 + r)] * point[2] +
                      a[static_cast<std::size_t>(9 + r)];
        outNormal[r] = a[static_cast<std::size_t>(r)] * normal[0] +
                       a[static_cast<std::size_t>(3 + r)] * normal[1] +
                       a[static_cast<std::size_t>(6 + r)] * normal[2];
    }
    if (!Finite3(position)) {
        position[0] = position[1] = position[2] = 0.0f;
    }
    const float length = std::sqrt(outNormal[0] * outNormal[0] + outNormal[1] * outNormal[1] +
                                   outNormal[2] * outNormal[2]);
    if (std::isfinite(length) && length > 0.0f) {
        outNormal[0] /= length;
        outNormal[1] /= length;
        outNormal[2] /= length;
    } else {
        outNormal[0] = outNormal[1] = outNormal[2] = 0.0f;
    }
}

}  // namespace

void SkinMesh(const AuthoredScene& scene, const AuthoredMesh& mesh,
              const std::vector<Matrix4>& world, std::vector<float>& positions,
              std::vector<float>& normals) {
    const std::size_t corners = mesh.m_CornerPoints.size();
    positions.resize(corners * 3);
    normals.resize(corners * 3);

    Matrix4 nodeMatrix;
    const std::size_t node = static_cast<std::size_t>(mesh.m_Node);
    if (mesh.m_Node >= 0 && node < world.size() && node < scene.m_Nodes.size())
        nodeMatrix = world[node] * GeometricTransform(scene.m_Nodes[node]);
    const Affine follow = ToAffine(nodeMatrix);

    const std::size_t pointCount = mesh.m_Points.size() / 3;
    const bool skinned = mesh.IsSkinned() && mesh.m_WeightStart.size() == pointCount + 1;
    // Each point's blended transform; all the node's for a mesh without a skin.
    static thread_local std::vector<Affine> pointTransforms;
    static thread_local std::vector<Affine> clusterTransforms;
    if (skinned) {
        clusterTransforms.resize(mesh.m_Clusters.size());
        for (std::size_t c = 0; c < mesh.m_Clusters.size(); ++c) {
            const SkinCluster& cluster = mesh.m_Clusters[c];
            const std::size_t bone = static_cast<std::size_t>(cluster.m_Bone);
            if (cluster.m_Bone >= 0 && bone < world.size()) {
                clusterTransforms[c] = ToAffine(world[bone] * cluster.m_BindMatrix);
            } else {
                clusterTransforms[c] = follow;
            }
        }
        pointTransforms.resize(pointCount);
        for (std::size_t p = 0; p < pointCount; ++p) {
            const std::uint32_t begin = mesh.m_WeightStart[p];
            const std::uint32_t end = mesh.m_WeightStart[p + 1];
            if (begin >= end || end > mesh.m_Weights.size()) {
                pointTransforms[p] = follow;
                continue;
            }
            Affine sum{};
            for (std::uint32_t w = begin; w < end; ++w) {
                const SkinWeight& weight = mesh.m_Weights[w];
                if (weight.m_Cluster < clusterTransforms.size())
                    AddWeighted(sum, clusterTransforms[weight.m_Cluster], weight.m_Weight);
            }
            pointTransforms[p] = sum;
        }
    }

    const float noNormal[3] = {0.0f, 0.0f, 0.0f};
    for (std::size_t c = 0; c < corners; ++c) {
        const std::uint32_t point = mesh.m_CornerPoints[c];
        const float origin[3] = {0.0f, 0.0f, 0.0f};
        const float* xyz = point < pointCount ? &mesh.m_Points[point * 3] : origin;
        const float* normal =
            c * 3 + 2 < mesh.m_CornerNormals.size() ? &mesh.m_CornerNormals[c * 3] : noNormal;
        const Affine& transform = skinned && point < pointCount ? pointTransforms[point] : follow;
        PlaceCorner(transform, xyz, normal, &positions[c * 3], &normals[c * 3]);
    }
}
