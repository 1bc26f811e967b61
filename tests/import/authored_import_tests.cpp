// The authored look's import: the same console report as the classic look, every node and
// material, damaged skins made safe, and what textures say when they are not all shown.
#include <cmath>
#include <limits>

#include "fbx/write/PngFile.h"
#include "import_support.h"
#include "model/Pose.h"
#include "model/Skinning.h"

namespace {

using AuthoredImport = ScratchTest<>;

std::string Report(const std::string& path, Model& model, ModelLook look) {
    ::testing::internal::CaptureStdout();
    ImportModelFile(path, &model, look);
    return ::testing::internal::GetCapturedStdout();
}

// A quad on a bone, with clusters that go wrong in every way a damaged file can.
fbx::SceneDescription DamagedSkinScene() {
    fbx::SceneDescription scene;
    const int bone = scene.AddNode("Bone", fbx::desc::NodeType::Skeleton);
    scene.nodes[bone].rotation = {0, 0, 30};
    const int mesh = scene.AddNode("Quad", fbx::desc::NodeType::Mesh);
    scene.nodes[mesh].mesh.controlPoints = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
    scene.nodes[mesh].mesh.polygons = {{0, 1, 2, 3}};
    const double nan = std::numeric_limits<double>::quiet_NaN();
    fbx::desc::Cluster good;
    good.linkNode = bone;
    good.indexes = {0, 1, 99, -4};  // two past the control points
    good.weights = {1.0, nan, 1.0, 1.0};
    fbx::desc::Cluster negative = good;
    negative.indexes = {2, 3};
    negative.weights = {-1.0, 0.0};  // the point has weights, none of them usable
    fbx::desc::Cluster singular = good;
    singular.transformLink.fill(0.0);  // cannot be inverted
    fbx::desc::Cluster missing = good;
    missing.linkNode = -1;  // no bone
    scene.nodes[mesh].skin.clusters = {good, negative, singular, missing};
    return scene;
}

TEST_F(AuthoredImport, DamagedSkinsStayFiniteAndTheReportMatchesTheClassicLook) {
    const std::string path = WriteScene(DamagedSkinScene());
    Model classic, authored;
    const std::string classicReport = Report(path, classic, ModelLook::Classic);
    EXPECT_EQ(Report(path, authored, ModelLook::Authored), classicReport);
    EXPECT_FALSE(classic.m_Authored);
    ASSERT_TRUE(authored.m_Authored);

    const AuthoredScene& scene = *authored.m_Authored;
    ASSERT_EQ(scene.m_Meshes.size(), 1u);
    const AuthoredMesh& mesh = scene.m_Meshes[0];
    EXPECT_EQ(mesh.m_CornerPoints.size(), 4u);
    EXPECT_EQ(mesh.m_Clusters.size(), 2u) << "the singular and the unlinked cluster are left out";
    ASSERT_EQ(mesh.m_WeightStart.size(), 5u);
    for (std::size_t p = 0; p < 4; ++p) {
        float sum = 0.0f;
        for (std::uint32_t w = mesh.m_WeightStart[p]; w < mesh.m_WeightStart[p + 1]; ++w) {
            EXPECT_GT(mesh.m_Weights[w].m_Weight, 0.0f);
            sum += mesh.m_Weights[w].m_Weight;
        }
        EXPECT_NEAR(sum, p == 0 ? 1.0f : 0.0f, 1e-6) << "point " << p;
    }

    std::vector<Matrix4> world;
    EvaluateWorld(scene, PoseTime(), world);
    std::vector<float> positions, normals;
    SkinMesh(scene, mesh, world, positions, normals);
    // The stored pose is the bind pose: every corner stays where the file puts it.
    const float expected[12] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
    for (int i = 0; i < 12; ++i)
        EXPECT_NEAR(positions[i], expected[i], 1e-5) << i;
}

TEST_F(AuthoredImport, EveryMaterialOfTheNodeDrawsItsOwnPolygons) {
    fbx::SceneDescription scene;
    const int node = scene.AddNode("Pair", fbx::desc::NodeType::Mesh);
    fbx::desc::Mesh& mesh = scene.nodes[node].mesh;
    mesh.controlPoints = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {2, 0, 0}, {2, 1, 0}};
    mesh.polygons = {{0, 1, 2, 3}, {1, 4, 5, 2}, {0, 2, 3}};
    fbx::desc::MaterialElement byPolygon;
    byPolygon.mapping = fbx::desc::Mapping::ByPolygon;
    byPolygon.indices = {1, 0, 5};  // the last names no material
    mesh.materials = {byPolygon};
    for (const char* name : {"Red", "Glass"}) {
        fbx::desc::Material material;
        material.name = name;
        material.shading = fbx::desc::ShadingModel::Phong;
        material.transparencyFactor = std::string(name) == "Glass" ? 0.5 : 0.0;
        scene.nodes[node].materials.push_back(static_cast<int>(scene.materials.size()));
        scene.materials.push_back(material);
    }
    Model model;
    Report(WriteScene(scene), model, ModelLook::Authored);
    ASSERT_TRUE(model.m_Authored);
    const AuthoredMesh& out = model.m_Authored->m_Meshes.at(0);
    ASSERT_EQ(out.m_Materials.size(), 2u);
    EXPECT_FALSE(out.m_Materials[0].m_Blended);
    EXPECT_TRUE(out.m_Materials[1].m_Blended);
    EXPECT_NEAR(out.m_Materials[1].m_Diffuse[3], 0.5f, 1e-6);
    // Two triangles per quad, one for the triangle: by material, the default grey last.
    ASSERT_EQ(out.m_Ranges.size(), 3u);
    const int materials[3] = {0, 1, -1};
    const unsigned counts[3] = {6, 6, 3};
    for (int r = 0; r < 3; ++r) {
        EXPECT_EQ(out.m_Ranges[r].m_Material, materials[r]);
        EXPECT_EQ(out.m_Ranges[r].m_Count, counts[r]);
    }
}

// Two squares sharing a material whose diffuse colour is a layered texture of three, a
// material with an image that claims to be 100000 pixels square, one with a cut PNG.
TEST_F(AuthoredImport, TexturesSayWhatIsNotShown) {
    const std::vector<std::uint8_t> png =
        fbx::EncodePng(2, 2, std::vector<std::uint8_t>(16, 200), false);
    std::vector<std::uint8_t> huge = png;
    for (int at : {16, 20}) {  // the header's width and height, big-endian
        huge[at] = 0, huge[at + 1] = 1, huge[at + 2] = 0x86, huge[at + 3] = 0xa0;
    }
    fbx::SceneDescription scene;
    for (const char* name : {"first.png", "second.png", "third.png", "huge.png", "cut.png"}) {
        fbx::desc::Texture& texture = scene.textures.emplace_back();
        texture.name = name;
        texture.relativeFileName = name;
    }
    scene.textures[0].content = png;
    scene.textures[3].content = huge;
    scene.textures[4].content.assign(png.begin(), png.begin() + png.size() / 2);
    scene.materials.resize(3);
    scene.materials[0].name = "Stack";
    scene.materials[0].diffuseTextures = {0, 1, 2};
    scene.materials[0].layeredName = "Layers";
    scene.materials[1].name = "Huge";
    scene.materials[1].diffuseTextures = {3};
    scene.materials[2].name = "Cut";
    scene.materials[2].diffuseTextures = {4};
    for (int material : {0, 0, 1, 2}) {
        const int node =
            scene.AddNode("Square" + std::to_string(scene.nodes.size()), fbx::desc::NodeType::Mesh);
        scene.nodes[node].mesh.controlPoints = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
        scene.nodes[node].mesh.polygons = {{0, 1, 2, 3}};
        scene.nodes[node].materials = {material};
    }
    Model model;
    const std::string report = Report(WriteScene(scene), model, ModelLook::Authored);
    const auto count = [&](const std::string& line) {
        std::size_t n = 0;
        for (std::size_t at = report.find(line); at != std::string::npos;
             at = report.find(line, at + 1))
            ++n;
        return n;
    };
    EXPECT_EQ(count("Layered texture Layers: only its first layer, first.png, is drawn; 2 more "
                    "are not.\n"),
              1u)
        << report;
    EXPECT_EQ(count("Texture image huge.png: image is 100000 x 100000, larger than 32768; not "
                    "loaded.\nFailed to load huge.png.\n"),
              1u)
        << report;
    EXPECT_EQ(count("Failed to load cut.png.\n"), 1u) << report;
    EXPECT_EQ(count("Failed to load"), 2u) << report;

    ASSERT_TRUE(model.m_Authored);
    const auto& meshes = model.m_Authored->m_Meshes;
    ASSERT_EQ(meshes.size(), 4u);
    ASSERT_TRUE(meshes[0].m_Materials.at(0).m_Texture);
    EXPECT_EQ(meshes[0].m_Materials.at(0).m_Texture->m_Width, 2);
    EXPECT_EQ(meshes[0].m_Materials.at(0).m_Texture, meshes[1].m_Materials.at(0).m_Texture);
    EXPECT_FALSE(meshes[2].m_Materials.at(0).m_Texture);
    EXPECT_FALSE(meshes[3].m_Materials.at(0).m_Texture);
}

}  // namespace
