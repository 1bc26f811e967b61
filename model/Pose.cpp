#include "model/Pose.h"

#include <algorithm>
#include <cmath>

namespace {

// Frames one take may span; longer spans come only from damaged files.
constexpr double kMaxTakeFrames = 1.0e7;

// The channel value of a node in a take: its curve's value, else the node's own.
double ChannelValue(const AuthoredScene& scene, const NodeTakeCurves* curves, int channel,
                    double own, double seconds) {
    if (!curves)
        return own;
    const int index = (*curves)[static_cast<std::size_t>(channel)];
    if (index < 0 || static_cast<std::size_t>(index) >= scene.m_Curves.size())
        return own;
    const AnimCurve& curve = scene.m_Curves[static_cast<std::size_t>(index)];
    if (curve.m_Keys.empty())
        return own;
    const double value = EvaluateCurve(curve, seconds);
    return std::isfinite(value) ? value : own;
}

// The inverse of an XYZ rotation: the opposite angles in the opposite order.
Matrix4 InverseRotationXYZ(const double (&degrees)[3]) {
    return Matrix4::RotationAbout(0, -degrees[0]) * Matrix4::RotationAbout(1, -degrees[1]) *
           Matrix4::RotationAbout(2, -degrees[2]);
}

// The rotation of the three angles in the node's order; the first named axis turns first.
Matrix4 OrderedRotation(RotationOrder order, const double (&degrees)[3]) {
    const Matrix4 x = Matrix4::RotationAbout(0, degrees[0]);
    const Matrix4 y = Matrix4::RotationAbout(1, degrees[1]);
    const Matrix4 z = Matrix4::RotationAbout(2, degrees[2]);
    switch (order) {
        case RotationOrder::XZY:
            return y * z * x;
        case RotationOrder::YZX:
            return x * z * y;
        case RotationOrder::YXZ:
            return z * x * y;
        case RotationOrder::ZXY:
            return y * x * z;
        case RotationOrder::ZYX:
            return x * y * z;
        case RotationOrder::XYZ:
        default:
            return z * y * x;
    }
}

Matrix4 Negated(const double (&t)[3]) {
    const double negated[3] = {-t[0], -t[1], -t[2]};
    return Matrix4::Translation(negated);
}

// The node's own rotation with its pre- and post-rotation: Rpre * R * Rpost^-1.
Matrix4 LocalRotation(const TransformNode& node, const double (&rotation)[3]) {
    return Matrix4::RotationXYZ(node.m_PreRotation) *
           OrderedRotation(node.m_RotationOrder, rotation) *
           InverseRotationXYZ(node.m_PostRotation);
}

// The upper 3x3 of m with a zero translation.
Matrix4 Linear(const Matrix4& m) {
    Matrix4 result = m;
    result.m[12] = result.m[13] = result.m[14] = 0.0;
    return result;
}

Matrix4 Transposed(const Matrix4& m) {
    Matrix4 result;
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c)
            result(r, c) = m(c, r);
    }
    return result;
}

// The local transform around an already composed rotation (Rpre * R * Rpost^-1).
Matrix4 ComposeLocal(const TransformNode& node, const double (&translation)[3],
                     const Matrix4& rotation, const double (&scaling)[3]) {
    return Matrix4::Translation(translation) * Matrix4::Translation(node.m_RotationOffset) *
           Matrix4::Translation(node.m_RotationPivot) * rotation * Negated(node.m_RotationPivot) *
           Matrix4::Translation(node.m_ScalingOffset) * Matrix4::Translation(node.m_ScalingPivot) *
           Matrix4::Scaling(scaling) * Negated(node.m_ScalingPivot);
}

}  // namespace

void NumberTakeFrames(std::vector<TakeSpan>& takes) {
    int next = 0;
    for (TakeSpan& take : takes) {
        double length = take.m_Stop - take.m_Start;
        if (!std::isfinite(length) || length < 0.0)
            length = 0.0;
        const double frames = std::min(std::ceil(length * kFramesPerSecond - 1e-6), kMaxTakeFrames);
        take.m_FirstFrame = next;
        take.m_LastFrame = next + std::max(0, static_cast<int>(frames));
        // Past the last int the numbering stops growing rather than wrapping.
        next = take.m_LastFrame < 2000000000 ? take.m_LastFrame + 1 : take.m_LastFrame;
    }
}

PoseTime FrameTime(const AuthoredScene& scene, int frame) {
    PoseTime time;
    for (std::size_t t = 0; t < scene.m_Takes.size(); ++t) {
        const TakeSpan& take = scene.m_Takes[t];
        if (frame < take.m_FirstFrame || frame > take.m_LastFrame)
            continue;
        time.m_Take = static_cast<int>(t);
        time.m_Seconds = take.m_Start + (frame - take.m_FirstFrame) / kFramesPerSecond;
        return time;
    }
    return time;
}

PoseTime BlendedFrameTime(const AuthoredScene& scene, int frame, int next, float fraction) {
    const PoseTime from = FrameTime(scene, frame);
    if (!(fraction > 0.0f) || frame == next || next != frame + 1)
        return from;
    const PoseTime to = FrameTime(scene, next);
    if (from.m_Take < 0 || to.m_Take != from.m_Take)
        return from;
    const double f = std::min(1.0f, fraction);
    PoseTime blended = from;
    blended.m_Seconds = from.m_Seconds + (to.m_Seconds - from.m_Seconds) * f;
    return blended;
}

float EvaluateCurve(const AnimCurve& curve, double seconds) {
    const std::vector<CurveKey>& keys = curve.m_Keys;
    if (keys.empty())
        return 0.0f;
    if (!(seconds > keys.front().m_Time))
        return keys.front().m_Value;
    if (seconds >= keys.back().m_Time)
        return keys.back().m_Value;
    // The last key at or before the time; the one after it exists.
    auto after = std::upper_bound(keys.begin(), keys.end(), seconds,
                                  [](double t, const CurveKey& key) { return t < key.m_Time; });
    const CurveKey& k1 = *after;
    const CurveKey& k0 = *(after - 1);
    const double span = k1.m_Time - k0.m_Time;
    if (!(span > 0.0))
        return k1.m_Value;
    const double u = (seconds - k0.m_Time) / span;
    const double v0 = k0.m_Value;
    const double v1 = k1.m_Value;
    switch (k0.m_Interpolation) {
        case KeyInterpolation::Constant:
            return k0.m_Value;
        case KeyInterpolation::ConstantNext:
            return k1.m_Value;
        case KeyInterpolation::Cubic: {
            // Hermite basis over the span, slopes scaled from per second to per span.
            const double u2 = u * u;
            const double u3 = u2 * u;
            const double h00 = 2 * u3 - 3 * u2 + 1;
            const double h10 = u3 - 2 * u2 + u;
            const double h01 = -2 * u3 + 3 * u2;
            const double h11 = u3 - u2;
            return static_cast<float>(h00 * v0 + h10 * span * k0.m_RightSlope + h01 * v1 +
                                      h11 * span * k0.m_NextLeftSlope);
        }
        case KeyInterpolation::Linear:
        default:
            return static_cast<float>(v0 + (v1 - v0) * u);
    }
}

Matrix4 LocalTransform(const TransformNode& node, const double (&translation)[3],
                       const double (&rotation)[3], const double (&scaling)[3]) {
    return ComposeLocal(node, translation, LocalRotation(node, rotation), scaling);
}

Matrix4 GeometricTransform(const TransformNode& node) {
    return Matrix4::Translation(node.m_GeometricTranslation) *
           Matrix4::RotationXYZ(node.m_GeometricRotation) *
           Matrix4::Scaling(node.m_GeometricScaling);
}

void EvaluateWorld(const AuthoredScene& scene, const PoseTime& time, std::vector<Matrix4>& world) {
    const std::size_t count = scene.m_Nodes.size();
    world.assign(count, Matrix4());
    // Each node's world rotation alone, for the inherit types that take the parent's scale
    // apart from its rotation; and its current local scaling, for Rrs children.
    // Kept between calls, so posing every frame allocates nothing once they have grown.
    static thread_local std::vector<Matrix4> worldRotation;
    static thread_local std::vector<Matrix4> localScaling;
    worldRotation.resize(count);
    localScaling.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        const TransformNode& node = scene.m_Nodes[i];
        const NodeTakeCurves* curves = nullptr;
        if (time.m_Take >= 0 && static_cast<std::size_t>(time.m_Take) < node.m_TakeCurves.size())
            curves = &node.m_TakeCurves[static_cast<std::size_t>(time.m_Take)];
        double t[3], r[3], s[3];
        for (int a = 0; a < 3; ++a) {
            t[a] = ChannelValue(scene, curves, kTranslationX + a, node.m_Translation[a],
                                time.m_Seconds);
            r[a] = ChannelValue(scene, curves, kRotationX + a, node.m_Rotation[a], time.m_Seconds);
            s[a] = ChannelValue(scene, curves, kScalingX + a, node.m_Scaling[a], time.m_Seconds);
        }
        const Matrix4 rotation = LocalRotation(node, r);
        const Matrix4 local = ComposeLocal(node, t, rotation, s);
        localScaling[i] = Matrix4::Scaling(s);

        const int parent = node.m_Parent;
        Matrix4 result = local;
        worldRotation[i] = rotation;
        if (parent >= 0 && static_cast<std::size_t>(parent) < i) {
            const std::size_t p = static_cast<std::size_t>(parent);
            const Matrix4& parentWorld = world[p];
            worldRotation[i] = worldRotation[p] * rotation;
            if (node.m_InheritType == InheritType::RSrs) {
                result = parentWorld * local;
            } else {
                // The parent's world scale (and shear) with its rotation taken out.
                Matrix4 parentScale = Transposed(worldRotation[p]) * Linear(parentWorld);
                if (node.m_InheritType == InheritType::Rrs) {
                    Matrix4 inverse;
                    if (localScaling[p].Invert(inverse))
                        parentScale = parentScale * inverse;
                }
                result = worldRotation[p] * rotation * parentScale * localScaling[i];
                // The translation goes through the whole parent transform, in double.
                for (int a = 0; a < 3; ++a) {
                    result.m[12 + a] = parentWorld.m[a] * local.m[12] +
                                       parentWorld.m[4 + a] * local.m[13] +
                                       parentWorld.m[8 + a] * local.m[14] + parentWorld.m[12 + a];
                }
            }
        }
        world[i] = result.IsFinite() ? result : Matrix4();
    }
}
