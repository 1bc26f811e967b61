// A described scene written in both layouts and both encodings imports through our importer
// as described: the same summary from all four files, and the values it does not show.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <tuple>
#include <vector>

#include "fbx/write/WriterScene.h"
#include "scene_support.h"

namespace fbx {
namespace {

using scenetest::Imported;

// A mesh with a quad, a triangle, a point and a line, normals, two UV sets, colours and
// materials per polygon, skinned to two bones; a camera under the mesh, a light, a repeated
// name, indices out of range; two materials with one and two textures, one texture with an
// embedded image of every byte value; two takes; a password.
SceneDescription TestScene() {
    SceneDescription scene;
    const int mesh = scene.AddNode("Body", desc::NodeType::Mesh);
    desc::Mesh& m = scene.nodes[mesh].mesh;
    m.controlPoints = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {2, 0, 0.5}};
    m.polygons = {{0, 1, 2, 3}, {1, 4, 2}, {4}, {3, 4}};
    using M = desc::Mapping;
    using R = desc::Reference;
    m.normals = {
        {"", M::ByControlPoint, R::Direct, {0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1}, {}}};
    const std::vector<std::int32_t> uvIndex = {0, 1, 2, 0, 1, 2, 1, 2, 0, 1};
    for (const char* name : {"map1", "second"})
        m.uvs.push_back({name, M::ByPolygonVertex, R::IndexToDirect, {0, 0, 1, 0, 1, 1}, uvIndex});
    m.colors = {
        {"", M::ByPolygon, R::Direct, {1, 0, 0, 1, 0, 1, 0, 1, 0, 0, 1, 1, 1, 1, 1, 0.5}, {}}};
    m.materials = {{M::ByPolygon, {0, 1, 1, 0}}};
    const int hip = scene.AddNode("Hip", desc::NodeType::Skeleton);
    const int knee = scene.AddNode("Knee", desc::NodeType::Skeleton, hip);
    scene.nodes[knee].translation = {0, -1.5, 0.25};
    scene.AddNode("Eye", desc::NodeType::Camera, mesh);
    scene.AddNode("Sun", desc::NodeType::Light);
    scene.AddNode("Hip", desc::NodeType::Null);
    scene.nodes[mesh].materials = {0, 1, 7};
    scene.nodes[mesh].skin.clusters = {
        {hip, {0, 1, 2}, {1, 0.75, 0.5}}, {knee, {1, 2, 3, 4}, {0.25, 0.5, 1, 1}}, {42, {0}, {1}}};
    scene.nodes[mesh].skin.clusters[1].transformLink[13] = -1.5;

    scene.materials.resize(2);
    scene.materials[0].name = "Skin \"matte\"";
    scene.materials[0].diffuse = {0.9, 0.7, 0.6};
    scene.materials[0].diffuseTextures = {0};
    scene.materials[1].name = "Metal";
    scene.materials[1].shading = desc::ShadingModel::Phong;
    scene.materials[1].shininess = 64;
    scene.materials[1].diffuseTextures = {0, 1};
    scene.textures = {{"skin", "C:/art/skin.bmp", "skin.bmp", {0, 0}, {2, 3}},
                      {"scratches", "C:/art/scratches.bmp", "scratches.bmp"}};
    for (int i = 0; i < 257; ++i)
        scene.textures[0].content.push_back(static_cast<std::uint8_t>(i));

    scene.takes.resize(2);
    scene.takes[0].name = "Walk";
    scene.takes[0].nodes.resize(2);
    scene.takes[0].nodes[0].node = knee;
    scene.takes[0].nodes[0].rotation[0] = {{0, 1924423250, 3848846500}, {0, 45, -30.5}};
    scene.takes[0].nodes[1].node = -3;
    scene.takes[1].name = "Idle";
    scene.takes[1].nodes.resize(1);
    scene.takes[1].nodes[0].node = mesh;
    scene.takes[1].nodes[0].translation[1] = {{0, 46186158000}, {0.25, 1}};
    scene.password = "open sesame";
    return scene;
}

// What the importer makes of TestScene, as its summary prints it: out-of-range material slots and
// take nodes are left out; the cluster whose bone does not exist keeps no link.
const char* const kSummary = R"(takes 2 current "Walk"
take "Walk"
take "Idle"
node "Body" mesh T (0.0000, 0.0000, 0.0000) R (0.0000, 0.0000, 0.0000) S (1.0000, 1.0000, 1.0000) material "Skin "matte"" material "Metal"
  node "Eye" camera T (0.0000, 0.0000, 0.0000) R (0.0000, 0.0000, 0.0000) S (1.0000, 1.0000, 1.0000)
node "Hip" skeleton T (0.0000, 0.0000, 0.0000) R (0.0000, 0.0000, 0.0000) S (1.0000, 1.0000, 1.0000)
  node "Knee" skeleton T (0.0000, -1.5000, 0.2500) R (0.0000, 0.0000, 0.0000) S (1.0000, 1.0000, 1.0000)
node "Sun" light T (0.0000, 0.0000, 0.0000) R (0.0000, 0.0000, 0.0000) S (1.0000, 1.0000, 1.0000)
node "Hip" null T (0.0000, 0.0000, 0.0000) R (0.0000, 0.0000, 0.0000) S (1.0000, 1.0000, 1.0000)
mesh "Body" polygons 4 corners 10 points 5 layers 2
  bounds (0.0000, 0.0000, 0.0000) (2.0000, 1.0000, 0.5000)
  sizes 1:1 2:1 3:1 4:1
  layer 0
    normals by-control-point direct direct 5 index 0
    uvs by-polygon-vertex index-to-direct direct 3 index 10
    colors by-polygon direct direct 4 index 0
    materials by-polygon index-to-direct direct 2 index 4
  layer 1
    uvs by-polygon-vertex index-to-direct direct 3 index 10
  skin 0 clusters 3
    cluster 0 link "Hip" indices 3 weight-sum 2.2500 link-translation (0.0000, 0.0000, 0.0000)
    cluster 1 link "Knee" indices 4 weight-sum 2.7500 link-translation (0.0000, -1.5000, 0.0000)
    cluster 2 link "" indices 1 weight-sum 1.0000 link-translation (0.0000, 0.0000, 0.0000)
material "Skin "matte"" KFbxSurfaceLambert ambient (0.2000, 0.2000, 0.2000) diffuse (0.9000, 0.7000, 0.6000) emissive (0.0000, 0.0000, 0.0000) transparency 0.0000
  texture DiffuseColor "skin" file "C:/art/skin.bmp" relative "skin.bmp" scale 2.0000 3.0000 translation 0.0000 0.0000 rotation (0.0000, 0.0000, 0.0000) alpha 1.0000 image embedded (257 bytes)
material "Metal" KFbxSurfacePhong ambient (0.2000, 0.2000, 0.2000) diffuse (0.8000, 0.8000, 0.8000) emissive (0.0000, 0.0000, 0.0000) transparency 0.0000 specular (0.2000, 0.2000, 0.2000) shininess 64.0000 reflection (0.0000, 0.0000, 0.0000)
  layered DiffuseColor "Metal_layers" blend 1 1
    texture "skin" file "C:/art/skin.bmp" relative "skin.bmp" image embedded (257 bytes)
    texture "scratches" file "C:/art/scratches.bmp" relative "scratches.bmp" image missing
curves "Idle" "Body" T - 2 - R - - - S - - -
curves "Walk" "Knee" T - - - R 3 - - S - - -
)";

class SceneRoundTrip : public ::testing::TestWithParam<std::tuple<int, bool>> {};

TEST_P(SceneRoundTrip, ImportsAsDescribed) {
    const auto [version, binary] = GetParam();
    const std::string path = std::string(ENGINE_BINARY_DIR) + "/writer_scene_" +
                             std::to_string(version) + (binary ? "_binary.fbx" : "_ascii.fbx");
    std::string error;
    ASSERT_TRUE(WriteFile(path, TestScene(), version, binary, &error)) << error;

    EXPECT_EQ(Imported(path).importer->GetLastErrorID(), KFbxImporter::ePASSWORD_ERROR);
    Imported file(path, "open sesame");
    std::remove(path.c_str());
    ASSERT_TRUE(file.imported) << file.importer->GetLastErrorString();
    // Objects are named by string in older files, so the repeated "Hip" gets a number there.
    std::string expected = kSummary;
    if (version < 7000)
        expected.replace(expected.find("\"Hip\" null"), 10, "\"Hip 1\" null");
    EXPECT_EQ(scenetest::Body(file.Summary()), expected);

    // What the summary does not show: corners, UV indices, skin weights and keys.
    KFbxNode* body = file.Find("Body");
    KFbxMesh* mesh = body->GetMesh();
    std::vector<double> values;
    for (int p = 0; p < mesh->GetPolygonCount(); ++p) {
        for (int k = 0; k < mesh->GetPolygonSize(p); ++k)
            values.push_back(mesh->GetPolygonVertex(p, k));
    }
    const auto& uvs = mesh->GetLayer(1)->GetUVs()->GetIndexArray();
    for (int i = 0; i < uvs.GetCount(); ++i)
        values.push_back(uvs.GetAt(i));
    EXPECT_EQ(values, (std::vector<double>{0, 1, 2, 3, 1, 4, 2, 4, 3, 4,  // corners
                                           0, 1, 2, 0, 1, 2, 1, 2, 0, 1}));
    EXPECT_STREQ(mesh->GetLayer(1)->GetUVs()->GetName(), "second");
    // The embedded image reads back byte for byte from the texture's video, which does not
    // count among the texture's textures.
    const KFbxTexture* skin =
        body->GetMaterial(0)->FindProperty("DiffuseColor").GetSrcObject(FBX_TYPE(KFbxTexture));
    ASSERT_NE(skin, nullptr);
    const KFbxVideo* video = skin->GetSrcObject(FBX_TYPE(KFbxVideo));
    ASSERT_TRUE(video && video->GetContent());
    EXPECT_EQ(std::vector<std::uint8_t>(video->GetContent(),
                                        video->GetContent() + video->GetContentSize()),
              TestScene().textures[0].content);
    EXPECT_EQ(std::string(video->GetFileName()) + " " + video->GetRelativeFileName(),
              "C:/art/skin.bmp skin.bmp");
    EXPECT_EQ(skin->GetSrcObjectCount(FBX_TYPE(KFbxTexture)), 0);
    KFbxCluster* knee =
        static_cast<KFbxSkin*>(mesh->GetDeformer(0, KFbxDeformer::eSKIN))->GetCluster(1);
    values.assign(knee->GetControlPointIndices(), knee->GetControlPointIndices() + 4);
    values.insert(values.end(), knee->GetControlPointWeights(), knee->GetControlPointWeights() + 4);
    EXPECT_EQ(values, (std::vector<double>{1, 2, 3, 4, 0.25, 0.5, 1, 1}));
    file.Find("Knee")->SetCurrentTakeNode("Walk");
    body->SetCurrentTakeNode("Idle");
    KFCurve* walk = file.Find("Knee")->LclRotation.GetKFCurve("X");
    KFCurve* idle = body->LclTranslation.GetKFCurve("Y");
    ASSERT_TRUE(walk && idle);
    // Keys, and the span of each take: that of its keys.
    values = {static_cast<double>(walk->KeyGetTime(1).Get()),
              walk->KeyGetValue(2),
              static_cast<double>(idle->KeyGetTime(1).Get()),
              idle->KeyGetValue(0),
              static_cast<double>(file.importer->GetTakeInfo(0)->mLocalStop.Get()),
              static_cast<double>(file.importer->GetTakeInfo(1)->mLocalStop.Get())};
    EXPECT_EQ(values,
              (std::vector<double>{1924423250, -30.5, 46186158000, 0.25, 3848846500, 46186158000}));
    EXPECT_FALSE(WriteFile("/nonexistent-dir/x.fbx", TestScene(), version, binary, &error));
    EXPECT_NE(std::string::npos, error.find("/nonexistent-dir/x.fbx"));
}

INSTANTIATE_TEST_SUITE_P(LayoutsAndEncodings, SceneRoundTrip,
                         ::testing::Combine(::testing::Values(6100, 7500), ::testing::Bool()));

}  // namespace
}  // namespace fbx
