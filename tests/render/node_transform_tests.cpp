// Per-frame node transforms: which key frame applies and in what order its parts compose.
#include <GL/gl.h>

#include <string>
#include <vector>

#include "gl_test_context.h"
#include "render/Draw.h"
#include "render/NodeTransform.h"

namespace {

KeyFrame Key() {
    return KeyFrame();
}

// A model whose node "Arm" has the given key frames and, optionally, a node rotation.
Model ArmModel(const std::vector<KeyFrame>& keys) {
    Model model;
    Animation animation;
    animation.m_Name = "Arm";
    animation.m_Keys = keys;
    model.m_Animations["Arm"] = animation;
    return model;
}

void SetNodeRotation(Model& model, float x, float y, float z) {
    NodeInfo node;
    node.m_Name = "Arm";
    node.m_Rotation[0] = x;
    node.m_Rotation[1] = y;
    node.m_Rotation[2] = z;
    model.m_Nodes["Arm"] = node;
}

using NodeTransformTest = GlTest;

const std::vector<float> kIdentity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

std::vector<float> Matrix() {
    const auto m = GlTest::ModelView();
    return std::vector<float>(m.begin(), m.end());
}

TEST_F(NodeTransformTest, FramesOutsideTheKeysLeaveTheMatrixUntouched) {
    KeyFrame key = Key();
    key.m_HasTranslation = true;
    key.m_Translation[0] = 4.0f;
    Model model = ArmModel({key, key});
    SetNodeRotation(model, 0, 0, 90);
    for (int frame : {-1, 2, 100}) {
        glLoadIdentity();
        ApplyNodeTransform(frame, model, "Arm");
        EXPECT_THAT(Matrix(), Near(kIdentity, 0.0f)) << "frame " << frame;
    }
    glLoadIdentity();
    ApplyNodeTransform(1, model, "Arm");
    EXPECT_THAT(Apply(1, 0, 0), Near({4.0f, 1.0f, 0.0f}, 1e-5f));
}

TEST_F(NodeTransformTest, NodesWithoutAnimationAreNotMoved) {
    Model noAnimations;
    SetNodeRotation(noAnimations, 0, 0, 90);
    ApplyNodeTransform(0, noAnimations, "Arm");
    EXPECT_THAT(Matrix(), Near(kIdentity, 0.0f));

    Model other = ArmModel({Key()});
    NodeInfo leg;
    leg.m_Rotation[2] = 90.0f;
    other.m_Nodes["Leg"] = leg;
    ApplyNodeTransform(0, other, "Leg");
    ApplyNodeTransform(0, other, "");
    EXPECT_THAT(Matrix(), Near(kIdentity, 0.0f));
}

TEST_F(NodeTransformTest, TranslateThenNodeRotationThenKeyRotationThenScale) {
    KeyFrame key = Key();
    key.m_HasTranslation = key.m_HasRotation = key.m_HasScale = true;
    key.m_Translation[0] = 1.0f;
    key.m_Translation[1] = 2.0f;
    key.m_Translation[2] = 3.0f;
    key.m_RotationAngle = 90.0f;
    key.m_Rotation[0] = 1.0f;  // used as the axis of the key's angle
    key.m_Scale[0] = 2.0f;
    key.m_Scale[1] = 3.0f;
    key.m_Scale[2] = 4.0f;
    Model model = ArmModel({Key(), key});
    SetNodeRotation(model, 0, 0, 90);
    ApplyNodeTransform(1, model, "Arm");
    // (1, 1, 0) scaled (2, 3, 0), about X (2, 0, 3), about Z (0, 2, 3), moved (1, 4, 6).
    EXPECT_THAT(Apply(1, 1, 0), Near({1.0f, 4.0f, 6.0f}, 1e-5f));
}

TEST_F(NodeTransformTest, NodeRotationTurnsZThenYThenX) {
    Model model = ArmModel({Key()});  // no flags: only the node rotation applies
    SetNodeRotation(model, 90, 90, 0);
    ApplyNodeTransform(0, model, "Arm");
    EXPECT_THAT(Apply(0, 1, 0), Near({1.0f, 0.0f, 0.0f}, 1e-5f));
    EXPECT_THAT(Apply(0, 0, 1), Near({0.0f, -1.0f, 0.0f}, 1e-5f));
}

TEST_F(NodeTransformTest, KeyRotationWithTheLoadersZeroAngleDoesNothing) {
    KeyFrame key = Key();
    key.m_HasRotation = true;
    key.m_Rotation[0] = 30.0f;
    key.m_Rotation[1] = 60.0f;
    key.m_Rotation[2] = 90.0f;
    Model model = ArmModel({key});
    ApplyNodeTransform(0, model, "Arm");
    EXPECT_THAT(Matrix(), Near(kIdentity, 1e-6f));
}

TEST_F(NodeTransformTest, KeyWithoutNodeRecordStillMovesAndScales) {
    KeyFrame key = Key();
    key.m_HasTranslation = key.m_HasScale = true;
    key.m_Translation[2] = -1.0f;
    key.m_Scale[0] = 3.0f;
    Model model = ArmModel({key});
    ApplyNodeTransform(0, model, "Arm");
    EXPECT_THAT(Apply(1, 1, 1), Near({3.0f, 1.0f, 0.0f}, 1e-5f));
}

TEST_F(NodeTransformTest, DrawingMovesAnimatedMeshesButNotStaticOnes) {
    KeyFrame key = Key();
    key.m_HasTranslation = true;
    key.m_Translation[0] = 0.5f;
    Model model = ArmModel({key});
    Mesh mesh;
    Polygon polygon;
    const float corners[3][2] = {{0.0f, 0.0f}, {0.1f, 0.0f}, {0.0f, 0.1f}};
    for (const auto& corner : corners) {
        Vertex v;
        v.m_Position[0] = v.m_FacePoint[0] = corner[0];
        v.m_Position[1] = v.m_FacePoint[1] = corner[1];
        polygon.m_Vertices.push_back(v);
    }
    mesh.m_Polygons.push_back(polygon);
    mesh.m_NodeName = "Arm";
    model.m_Meshes["a"] = mesh;
    model.m_Meshes["b"] = mesh;
    mesh.m_Static = true;
    model.m_Meshes["c"] = mesh;

    auto firstX = [](const std::vector<FedVertex>& fed, size_t mesh) {
        return fed.at(mesh * 3).m_Window[0] / (GlTest::kSize / 2.0f) - 1.0f;
    };
    std::vector<FedVertex> fed = Feedback([&] { DrawModel(model); });
    ASSERT_EQ(fed.size(), 9u);
    EXPECT_NEAR(firstX(fed, 0), 0.5f, 1e-3f);
    EXPECT_NEAR(firstX(fed, 1), 0.5f, 1e-3f);
    EXPECT_NEAR(firstX(fed, 2), 0.0f, 1e-3f);

    model.m_Frame = 1;  // past the single key frame
    glLoadIdentity();
    fed = Feedback([&] { DrawModel(model); });
    ASSERT_EQ(fed.size(), 9u);
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(firstX(fed, i), 0.0f, 1e-3f);
    }
}

}  // namespace
