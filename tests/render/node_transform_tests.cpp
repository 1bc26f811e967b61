// Per-frame node transforms: which key frame applies and in what order its parts compose.

#include <string>

#include "gl_test_context.h"
#include "render/Draw.h"
#include "render/NodeTransform.h"
#include "test_meshes.h"

namespace {

// A model whose node "Arm" has the given key frames and, optionally, a node rotation.
Model ArmModel(const std::vector<KeyFrame>& keys, std::vector<float> rotation = {}) {
    Model model;
    model.m_Animations["Arm"].m_Name = "Arm";
    model.m_Animations["Arm"].m_Keys = keys;
    if (!rotation.empty()) {
        model.m_Nodes["Arm"].m_Name = "Arm";
        std::copy(rotation.begin(), rotation.end(), model.m_Nodes["Arm"].m_Rotation);
    }
    return model;
}

KeyFrame Move(float x, float y, float z) {
    KeyFrame key;
    key.m_HasTranslation = true;
    Set(key.m_Translation, {x, y, z});
    return key;
}

using NodeTransformTest = GlTest;

TEST_F(NodeTransformTest, FramesOutsideTheKeysAndNodesWithoutAnimationAreNotMoved) {
    Model model = ArmModel({Move(4, 0, 0), Move(4, 0, 0)}, {0, 0, 90});
    for (int frame : {-1, 2, 100}) {
        ApplyNodeTransform(frame, model, "Arm");
    }
    model.m_Nodes["Leg"].m_Rotation[2] = 90.0f;  // a node without animation
    ApplyNodeTransform(0, model, "Leg");
    ApplyNodeTransform(0, model, "");
    EXPECT_THAT(ModelView(), Near(kIdentity, 0.0f));
    ApplyNodeTransform(1, model, "Arm");
    EXPECT_THAT(Apply(1, 0, 0), Near({4.0f, 1.0f, 0.0f}));

    glLoadIdentity();
    model.m_Animations.clear();
    ApplyNodeTransform(0, model, "Arm");
    EXPECT_THAT(ModelView(), Near(kIdentity, 0.0f));
}

TEST_F(NodeTransformTest, TranslateThenNodeRotationZYXThenKeyRotationThenScale) {
    KeyFrame key = Move(1, 2, 3);
    key.m_HasRotation = key.m_HasScale = true;
    key.m_RotationAngle = 90.0f;
    key.m_Rotation[0] = 1.0f;  // used as the axis of the key's angle
    Set(key.m_Scale, {2, 3, 4});
    Model model = ArmModel({KeyFrame(), key}, {0, 0, 90});
    ApplyNodeTransform(1, model, "Arm");
    // (1, 1, 0) scaled (2, 3, 0), about X (2, 0, 3), about Z (0, 2, 3), moved (1, 4, 6).
    EXPECT_THAT(Apply(1, 1, 0), Near({1.0f, 4.0f, 6.0f}));

    // The node rotation turns Z, then Y, then X (a key without flags changes nothing).
    glLoadIdentity();
    model = ArmModel({KeyFrame()}, {90, 90, 0});
    ApplyNodeTransform(0, model, "Arm");
    EXPECT_THAT(Apply(0, 1, 0), Near({1.0f, 0.0f, 0.0f}));
    EXPECT_THAT(Apply(0, 0, 1), Near({0.0f, -1.0f, 0.0f}));
}

TEST_F(NodeTransformTest, KeyWithoutNodeRecordMovesAndScalesAndItsZeroAngleTurnsNothing) {
    KeyFrame key = Move(0, 0, -1);
    key.m_HasRotation = key.m_HasScale = true;
    Set(key.m_Rotation, {30, 60, 90});  // the axis of the key's angle, which the loader leaves 0
    key.m_Scale[0] = 3.0f;
    Model model = ArmModel({key});
    ApplyNodeTransform(0, model, "Arm");
    EXPECT_THAT(Apply(1, 1, 1), Near({3.0f, 1.0f, 0.0f}));
}

TEST_F(NodeTransformTest, DrawingMovesAnimatedMeshesButNotStaticOnes) {
    Model model = ArmModel({Move(0.5f, 0, 0)});
    Mesh mesh = TriangleMesh();
    mesh.m_NodeName = "Arm";
    model.m_Meshes["a"] = model.m_Meshes["b"] = mesh;
    mesh.m_Static = true;
    model.m_Meshes["c"] = mesh;
    // Where each mesh's first corner lands, in [-1, 1].
    const auto firstX = [&] {
        const std::vector<FedVertex> fed = Feedback([&] { DrawModel(model); });
        std::vector<float> x;
        for (size_t i = 0; i < fed.size(); i += 3) {
            x.push_back(fed[i].m_Window[0] / (kSize / 2.0f) - 1.0f);
        }
        return x;
    };
    EXPECT_THAT(firstX(), Near({0.5f, 0.5f, 0.0f}, 1e-3f));
    model.m_Frame = 1;  // past the single key frame
    glLoadIdentity();
    EXPECT_THAT(firstX(), Near({0.0f, 0.0f, 0.0f}, 1e-3f));
}

}  // namespace
