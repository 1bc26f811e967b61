// Curves, take frames and node transforms of the authored look.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "model/Pose.h"

namespace {

CurveKey Key(double time, float value, KeyInterpolation interpolation, float right = 0.0f,
             float nextLeft = 0.0f) {
    CurveKey key;
    key.m_Time = time;
    key.m_Value = value;
    key.m_Interpolation = interpolation;
    key.m_RightSlope = right;
    key.m_NextLeftSlope = nextLeft;
    return key;
}

void ExpectPoint(const Matrix4& m, const float (&in)[3], const float (&expected)[3]) {
    float out[3];
    m.TransformPoint(in, out);
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(out[i], expected[i], 1e-5) << "component " << i;
}

TEST(Curves, EachInterpolationShapesTheSpanToTheNextKey) {
    struct Case {
        KeyInterpolation interpolation;
        float right, nextLeft;
        double time;
        float expected;
    } cases[] = {
        {KeyInterpolation::Constant, 0, 0, 0.5, 2.0f},
        {KeyInterpolation::ConstantNext, 0, 0, 0.5, 6.0f},
        {KeyInterpolation::Linear, 0, 0, 0.75, 5.0f},
        // Flat tangents: the Hermite curve passes the middle value halfway, eases at the ends.
        {KeyInterpolation::Cubic, 0, 0, 0.5, 4.0f},
        {KeyInterpolation::Cubic, 0, 0, 0.25, 2.0f + 4.0f * 0.15625f},
        // Slopes of the straight line give the straight line.
        {KeyInterpolation::Cubic, 4, 4, 0.25, 3.0f},
        // A steep leaving slope overshoots the linear value early on.
        {KeyInterpolation::Cubic, 40, 0, 0.25, 2.0f + 4.0f * 0.15625f + 40 * 0.140625f},
        // Before the first and after the last key the ends hold.
        {KeyInterpolation::Linear, 0, 0, -3.0, 2.0f},
        {KeyInterpolation::Linear, 0, 0, 9.0, 6.0f},
    };
    for (const Case& c : cases) {
        AnimCurve curve;
        curve.m_Keys = {Key(0.0, 2.0f, c.interpolation, c.right, c.nextLeft),
                        Key(1.0, 6.0f, KeyInterpolation::Linear)};
        EXPECT_NEAR(EvaluateCurve(curve, c.time), c.expected, 1e-4)
            << static_cast<int>(c.interpolation) << " at " << c.time;
    }
    EXPECT_EQ(EvaluateCurve(AnimCurve(), 1.0), 0.0f);
}

TEST(Takes, FramesFollowOneAnotherAtTheTickRate) {
    std::vector<TakeSpan> takes(4);
    takes[0].m_Start = 1.0, takes[0].m_Stop = 3.0;  // 2 s
    takes[1].m_Start = 0.0, takes[1].m_Stop = 1.0;  // 1 s
    takes[2].m_Start = 5.0, takes[2].m_Stop = 5.0;  // a single pose
    takes[3].m_Start = 0.0, takes[3].m_Stop = std::numeric_limits<double>::quiet_NaN();
    NumberTakeFrames(takes);
    const int expected[4][2] = {{0, 30}, {31, 46}, {47, 47}, {48, 48}};
    for (int t = 0; t < 4; ++t) {
        EXPECT_EQ(takes[t].m_FirstFrame, expected[t][0]) << t;
        EXPECT_EQ(takes[t].m_LastFrame, expected[t][1]) << t;
    }

    AuthoredScene scene;
    scene.m_Takes = takes;
    EXPECT_EQ(FrameTime(scene, 15).m_Take, 0);
    EXPECT_DOUBLE_EQ(FrameTime(scene, 15).m_Seconds, 2.0);
    EXPECT_EQ(FrameTime(scene, 34).m_Take, 1);
    EXPECT_DOUBLE_EQ(FrameTime(scene, 34).m_Seconds, 0.2);
    EXPECT_EQ(FrameTime(scene, -1).m_Take, -1);
    EXPECT_EQ(FrameTime(scene, 49).m_Take, -1);
    // Between ticks the time moves on toward the next frame of the same take only.
    EXPECT_NEAR(BlendedFrameTime(scene, 15, 16, 0.5f).m_Seconds, 2.0 + 0.5 / 15, 1e-9);
    EXPECT_DOUBLE_EQ(BlendedFrameTime(scene, 30, 31, 0.5f).m_Seconds, 3.0);
    EXPECT_DOUBLE_EQ(BlendedFrameTime(scene, 15, 3, 0.5f).m_Seconds, 2.0);
}

TEST(NodeTransforms, PivotsOffsetsAndRotationsComposeInTheFormatsOrder) {
    const double zero[3] = {0, 0, 0}, one[3] = {1, 1, 1};
    const double quarterZ[3] = {0, 0, 90};
    TransformNode node;
    // Turning about a pivot keeps the pivot in place.
    node.m_RotationPivot[0] = 1.0;
    ExpectPoint(LocalTransform(node, zero, quarterZ, one), {1, 0, 0}, {1, 0, 0});
    ExpectPoint(LocalTransform(node, zero, quarterZ, one), {0, 0, 0}, {1, -1, 0});
    // Pre-rotation turns after the node's rotation; post-rotation is undone before it.
    TransformNode pre;
    pre.m_PreRotation[0] = 90;
    ExpectPoint(LocalTransform(pre, zero, quarterZ, one), {1, 0, 0}, {0, 0, 1});
    TransformNode post;
    post.m_PostRotation[2] = 90;
    ExpectPoint(LocalTransform(post, zero, quarterZ, one), {1, 0, 0}, {1, 0, 0});
    // The rotation order decides which axis turns first.
    const double both[3] = {90, 0, 90};
    TransformNode xyz, zyx;
    zyx.m_RotationOrder = RotationOrder::ZYX;
    ExpectPoint(LocalTransform(xyz, zero, both, one), {0, 1, 0}, {0, 0, 1});
    ExpectPoint(LocalTransform(zyx, zero, both, one), {0, 1, 0}, {-1, 0, 0});
    // Scaling about a scaling pivot, then offsets; geometry gets its own transform.
    TransformNode scaled;
    scaled.m_ScalingPivot[1] = 1.0;
    scaled.m_ScalingOffset[2] = 3.0;
    const double twice[3] = {2, 2, 2};
    ExpectPoint(LocalTransform(scaled, zero, zero, twice), {0, 0, 0}, {0, -1, 3});
    TransformNode geometry;
    geometry.m_GeometricTranslation[0] = 5;
    geometry.m_GeometricScaling[1] = 3;
    ExpectPoint(GeometricTransform(geometry), {0, 1, 0}, {5, 3, 0});
}

TEST(NodeTransforms, ChildrenTakeTheirParentsScaleByTheirInheritType) {
    // A parent stretched along X and a child turned a quarter about Z: a point on the child's
    // X axis lands on the world Y axis, stretched or not as the inherit type says.
    const struct {
        InheritType type;
        float expected[3];
    } cases[] = {
        {InheritType::RSrs, {0, 1, 0}},  // the child's X turns to Y before the parent's stretch
        {InheritType::RrSs, {0, 2, 0}},  // the parent's stretch comes before the child's turn
        {InheritType::Rrs, {0, 1, 0}},   // the parent's own stretch is not inherited
    };
    for (const auto& c : cases) {
        AuthoredScene scene;
        scene.m_Nodes.resize(2);
        scene.m_Nodes[0].m_Scaling[0] = 2.0;
        scene.m_Nodes[0].m_Translation[2] = 4.0;
        scene.m_Nodes[1].m_Parent = 0;
        scene.m_Nodes[1].m_Rotation[2] = 90.0;
        scene.m_Nodes[1].m_Translation[0] = 1.0;
        scene.m_Nodes[1].m_InheritType = c.type;
        std::vector<Matrix4> world;
        EvaluateWorld(scene, PoseTime(), world);
        const float expected[3] = {2 + c.expected[0], c.expected[1], 4 + c.expected[2]};
        ExpectPoint(world[1], {1, 0, 0}, expected);
    }
}

TEST(NodeTransforms, CurvesDriveTheirTakeAndBadNumbersGiveTheIdentity) {
    AuthoredScene scene;
    scene.m_Takes.resize(1);
    scene.m_Takes[0].m_Stop = 1.0;
    NumberTakeFrames(scene.m_Takes);
    AnimCurve moveX;
    moveX.m_Keys = {Key(0, 0, KeyInterpolation::Linear), Key(1, 3, KeyInterpolation::Linear)};
    scene.m_Curves = {moveX};
    scene.m_Nodes.resize(2);
    scene.m_Nodes[0].m_Translation[1] = 7;
    scene.m_Nodes[0].m_TakeCurves.resize(1);
    scene.m_Nodes[0].m_TakeCurves[0].fill(-1);
    scene.m_Nodes[0].m_TakeCurves[0][kTranslationX] = 0;
    scene.m_Nodes[1].m_Scaling[0] = std::numeric_limits<double>::infinity();
    std::vector<Matrix4> world;
    EvaluateWorld(scene, FrameTime(scene, 5), world);
    ExpectPoint(world[0], {0, 0, 0}, {1, 7, 0});
    ExpectPoint(world[1], {1, 2, 3}, {1, 2, 3});
    // Outside every take the stored pose shows.
    EvaluateWorld(scene, FrameTime(scene, 99), world);
    ExpectPoint(world[0], {0, 0, 0}, {0, 7, 0});
}

}  // namespace
