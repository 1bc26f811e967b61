#include "tools/common/ModelBox.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "model/Skinning.h"

namespace {

// Sizes OpenGL's single-precision matrices can still frame.
constexpr double kSmallestRadius = 1e-6;
constexpr double kLargestRadius = 1e30;

void TakeIn(ModelBox& box, const float* point) {
    for (int axis = 0; axis < 3; ++axis) {
        const double value = point[axis];
        box.m_Min[axis] = box.m_Empty ? value : std::min(box.m_Min[axis], value);
        box.m_Max[axis] = box.m_Empty ? value : std::max(box.m_Max[axis], value);
    }
    box.m_Empty = false;
}

}  // namespace

ModelBox PosedBox(const AuthoredScene& scene, const PoseTime& time) {
    std::vector<Matrix4> world;
    EvaluateWorld(scene, time, world);
    ModelBox box;
    std::vector<float> positions;
    std::vector<float> normals;
    for (const AuthoredMesh& mesh : scene.m_Meshes) {
        // Every corner where drawing puts it; a corner that cannot be placed is left out.
        SkinMesh(scene, mesh, world, positions, normals);
        for (std::size_t i = 0; i + 2 < positions.size(); i += 3) {
            const float* point = &positions[i];
            if (std::isfinite(point[0]) && std::isfinite(point[1]) && std::isfinite(point[2])) {
                TakeIn(box, point);
            }
        }
    }
    return box;
}

BoxSphere SphereAround(const ModelBox& box) {
    BoxSphere sphere;
    if (box.m_Empty) {
        return sphere;
    }
    double centre[3];
    double squared = 0.0;
    for (int axis = 0; axis < 3; ++axis) {
        centre[axis] = box.m_Min[axis] / 2.0 + box.m_Max[axis] / 2.0;
        const double half = box.m_Max[axis] / 2.0 - box.m_Min[axis] / 2.0;
        squared += half * half;
    }
    const double radius = std::sqrt(squared);
    if (!(radius <= kLargestRadius) || !std::isfinite(centre[0]) || !std::isfinite(centre[1]) ||
        !std::isfinite(centre[2])) {
        return sphere;
    }
    std::copy(centre, centre + 3, sphere.m_Centre);
    sphere.m_Radius = radius >= kSmallestRadius ? radius : 1.0;
    return sphere;
}
