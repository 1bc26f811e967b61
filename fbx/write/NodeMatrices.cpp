#include "fbx/write/NodeMatrices.h"

#include <cmath>
#include <cstddef>
#include <vector>

namespace fbx::desc {

namespace {

constexpr double kPi = 3.14159265358979323846;

Matrix4 AxisRotation(int axis, double degrees) {
    const double c = std::cos(degrees * kPi / 180), s = std::sin(degrees * kPi / 180);
    const int a = (axis + 1) % 3, b = (axis + 2) % 3;  // the plane the rotation turns
    Matrix4 m = kIdentity;
    m[a * 4 + a] = c;
    m[a * 4 + b] = s;
    m[b * 4 + a] = -s;
    m[b * 4 + b] = c;
    return m;
}

Vec3 Negated(const Vec3& v) {
    return {-v[0], -v[1], -v[2]};
}

// The inverse of a pure rotation is its transpose.
Matrix4 Transposed(const Matrix4& m) {
    Matrix4 t{};
    for (int c = 0; c < 4; ++c) {
        for (int r = 0; r < 4; ++r)
            t[c * 4 + r] = m[r * 4 + c];
    }
    return t;
}

}  // namespace

Matrix4 Multiply(const Matrix4& a, const Matrix4& b) {
    Matrix4 out{};
    for (int c = 0; c < 4; ++c) {
        for (int r = 0; r < 4; ++r) {
            double sum = 0;
            for (int k = 0; k < 4; ++k)
                sum += a[k * 4 + r] * b[c * 4 + k];
            out[c * 4 + r] = sum;
        }
    }
    return out;
}

Matrix4 TranslationMatrix(const Vec3& t) {
    Matrix4 m = kIdentity;
    m[12] = t[0];
    m[13] = t[1];
    m[14] = t[2];
    return m;
}

Matrix4 ScalingMatrix(const Vec3& s) {
    Matrix4 m = kIdentity;
    m[0] = s[0];
    m[5] = s[1];
    m[10] = s[2];
    return m;
}

Matrix4 RotationMatrix(const Vec3& degrees, int order) {
    // The axes in the order they apply; the first applied is the rightmost factor.
    static const int kOrders[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 2, 0},
                                      {1, 0, 2}, {2, 0, 1}, {2, 1, 0}};
    const int* axes = kOrders[order >= kXYZ && order <= kZYX ? order : kXYZ];
    Matrix4 m = kIdentity;
    for (int i = 0; i < 3; ++i)
        m = Multiply(AxisRotation(axes[i], degrees[axes[i]]), m);
    return m;
}

Vec3 TransformPoint(const Matrix4& m, const Vec3& p) {
    Vec3 out = TransformDirection(m, p);
    for (int r = 0; r < 3; ++r)
        out[r] += m[12 + r];
    return out;
}

Vec3 TransformDirection(const Matrix4& m, const Vec3& v) {
    Vec3 out{};
    for (int r = 0; r < 3; ++r)
        out[r] = m[r] * v[0] + m[4 + r] * v[1] + m[8 + r] * v[2];
    return out;
}

Matrix4 LocalMatrix(const Node& node) {
    const Vec3 zero = {0, 0, 0};
    const Matrix4 pre = RotationMatrix(node.rotationActive ? node.preRotation : zero);
    const Matrix4 post = RotationMatrix(node.rotationActive ? node.postRotation : zero);
    const Matrix4 factors[] = {TranslationMatrix(node.translation),
                               TranslationMatrix(node.rotationOffset),
                               TranslationMatrix(node.rotationPivot),
                               pre,
                               RotationMatrix(node.rotation, node.rotationOrder),
                               Transposed(post),
                               TranslationMatrix(Negated(node.rotationPivot)),
                               TranslationMatrix(node.scalingOffset),
                               TranslationMatrix(node.scalingPivot),
                               ScalingMatrix(node.scaling),
                               TranslationMatrix(Negated(node.scalingPivot))};
    Matrix4 m = kIdentity;
    for (const Matrix4& f : factors)
        m = Multiply(m, f);
    return m;
}

Matrix4 WorldMatrix(const Scene& scene, int node) {
    const int count = static_cast<int>(scene.nodes.size());
    std::vector<bool> seen(scene.nodes.size());
    Matrix4 m = kIdentity;
    for (int at = node; at >= 0 && at < count && !seen[static_cast<std::size_t>(at)];) {
        seen[static_cast<std::size_t>(at)] = true;
        const Node& n = scene.nodes[static_cast<std::size_t>(at)];
        m = Multiply(LocalMatrix(n), m);
        at = n.parent;
    }
    return m;
}

Matrix4 GeometricMatrix(const Node& node) {
    return Multiply(Multiply(TranslationMatrix(node.geometricTranslation),
                             RotationMatrix(node.geometricRotation)),
                    ScalingMatrix(node.geometricScaling));
}

}  // namespace fbx::desc
