// Skinned and unskinned corners of the authored look.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "model/Pose.h"
#include "model/Skinning.h"

namespace {

// A bar along X from 0 to 2 with a joint at 1: bone 0 at the origin, bone 1 at x = 1 (a
// child of bone 0); the mesh node is node 2. Corner k sits on control point k.
AuthoredScene BarScene(const std::vector<std::vector<SkinWeight>>& weights) {
    AuthoredScene scene;
    scene.m_Nodes.resize(3);
    scene.m_Nodes[1].m_Parent = 0;
    scene.m_Nodes[1].m_Translation[0] = 1.0;
    AuthoredMesh mesh;
    mesh.m_Node = 2;
    mesh.m_Points = {0, 0, 0, 1, 0, 0, 2, 0, 0};
    mesh.m_CornerPoints = {0, 1, 2};
    mesh.m_CornerNormals = {0, 1, 0, 0, 1, 0, 0, 1, 0};
    for (int bone = 0; bone < 2; ++bone) {
        SkinCluster cluster;
        cluster.m_Bone = bone;
        // Bind pose = stored pose: the inverse of the bone's world transform.
        const double back[3] = {-static_cast<double>(bone), 0, 0};
        cluster.m_BindMatrix = Matrix4::Translation(back);
        mesh.m_Clusters.push_back(cluster);
    }
    for (const auto& point : weights) {
        mesh.m_WeightStart.push_back(static_cast<std::uint32_t>(mesh.m_Weights.size()));
        mesh.m_Weights.insert(mesh.m_Weights.end(), point.begin(), point.end());
    }
    mesh.m_WeightStart.push_back(static_cast<std::uint32_t>(mesh.m_Weights.size()));
    scene.m_Meshes.push_back(mesh);
    return scene;
}

TEST(Skinning, PointsFollowTheBlendOfTheirBones) {
    AuthoredScene scene = BarScene({{{0, 1.0f}}, {{0, 0.5f}, {1, 0.5f}}, {{1, 1.0f}}});
    // The second bone turns a quarter about Z: the bar's end swings up, the joint half way.
    scene.m_Nodes[1].m_Rotation[2] = 90.0;
    scene.m_Nodes[2].m_Translation[1] = 50.0;  // the mesh node's own place does not matter
    std::vector<Matrix4> world;
    EvaluateWorld(scene, PoseTime(), world);
    std::vector<float> positions, normals;
    SkinMesh(scene, scene.m_Meshes[0], world, positions, normals);
    const float expected[9] = {0, 0, 0, 1, 0, 0, 1, 1, 0};
    for (int i = 0; i < 9; ++i)
        EXPECT_NEAR(positions[i], expected[i], 1e-5) << i;
    // The end's normal turned with its bone; the joint's is the unit blend of both.
    EXPECT_NEAR(normals[6], -1.0f, 1e-5);
    EXPECT_NEAR(normals[3], -std::sqrt(0.5f), 1e-5);
    EXPECT_NEAR(normals[4], std::sqrt(0.5f), 1e-5);
}

TEST(Skinning, UnweightedPointsAndUnskinnedMeshesFollowTheirNode) {
    AuthoredScene scene = BarScene({{{0, 1.0f}}, {}, {{1, 1.0f}}});
    scene.m_Nodes[2].m_Translation[1] = 5.0;
    scene.m_Nodes[2].m_GeometricTranslation[2] = 1.0;
    std::vector<Matrix4> world;
    EvaluateWorld(scene, PoseTime(), world);
    std::vector<float> positions, normals;
    SkinMesh(scene, scene.m_Meshes[0], world, positions, normals);
    EXPECT_FLOAT_EQ(positions[3], 1.0f);
    EXPECT_FLOAT_EQ(positions[4], 5.0f);
    EXPECT_FLOAT_EQ(positions[5], 1.0f);

    AuthoredMesh rigid = scene.m_Meshes[0];
    rigid.m_Clusters.clear();
    SkinMesh(scene, rigid, world, positions, normals);
    EXPECT_FLOAT_EQ(positions[7], 5.0f);
    EXPECT_FLOAT_EQ(positions[6], 2.0f);
}

TEST(Skinning, NothingNonFiniteReachesTheCorners) {
    AuthoredScene scene = BarScene({{{0, 1.0f}}, {{1, 1.0f}}, {{1, 1.0f}}});
    std::vector<Matrix4> world;
    EvaluateWorld(scene, PoseTime(), world);
    world[1].m[12] = std::numeric_limits<double>::quiet_NaN();
    AuthoredMesh& mesh = scene.m_Meshes[0];
    mesh.m_CornerPoints.push_back(99);  // a control point that is not there
    mesh.m_CornerNormals.resize(mesh.m_CornerNormals.size() + 3, 0.0f);
    std::vector<float> positions, normals;
    SkinMesh(scene, mesh, world, positions, normals);
    ASSERT_EQ(positions.size(), 12u);
    for (float v : positions)
        EXPECT_TRUE(std::isfinite(v));
    for (float v : normals)
        EXPECT_TRUE(std::isfinite(v));
    EXPECT_FLOAT_EQ(positions[0], 0.0f);
}

}  // namespace
