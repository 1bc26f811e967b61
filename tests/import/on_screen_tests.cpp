// Imported models on screen, in a real OpenGL context: a bitmap texture shows its colours
// where its UVs put them, and an animated model moves as its state steps through the frame
// range of an action.
#include <gtest/gtest.h>

#include <GL/gl.h>
#include <GL/glu.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "../render/gl_test_context.h"
#include "fbx/write/WriterScene.h"
#include "import/SceneImport.h"
#include "render/Draw.h"
#include "model/Model.h"

namespace {

namespace fs = std::filesystem;
using fbx::desc::Mapping;
using fbx::desc::NodeType;

struct Rgb {
    int r, g, b;
};

// A 24-bit bitmap, one row, pixels given left to right.
void WriteBitmapRow(const fs::path& path, const std::vector<Rgb>& pixels) {
    std::vector<unsigned char> data;
    for (const Rgb& p : pixels) {
        data.push_back(static_cast<unsigned char>(p.b));
        data.push_back(static_cast<unsigned char>(p.g));
        data.push_back(static_cast<unsigned char>(p.r));
    }
    while (data.size() % 4) data.push_back(0);
    std::vector<unsigned char> out = {'B', 'M'};
    auto put = [&](std::uint32_t v, int bytes) {
        for (int i = 0; i < bytes; ++i) out.push_back((v >> (8 * i)) & 0xFF);
    };
    put(54 + static_cast<std::uint32_t>(data.size()), 4);
    put(0, 4);
    put(54, 4);
    put(40, 4);
    put(static_cast<std::uint32_t>(pixels.size()), 4);
    put(1, 4);
    put(1, 2);
    put(24, 2);
    put(0, 4);
    put(static_cast<std::uint32_t>(data.size()), 4);
    put(2835, 4);
    put(2835, 4);
    put(0, 4);
    put(0, 4);
    out.insert(out.end(), data.begin(), data.end());
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(out.data()), static_cast<std::streamsize>(out.size()));
}

// A square of side 2 in the XY plane facing +Z, UVs 0..1 across it.
fbx::desc::Mesh Square() {
    fbx::desc::Mesh mesh;
    mesh.controlPoints = {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};
    mesh.polygons = {{0, 1, 2, 3}};
    fbx::desc::LayerElement uv;
    uv.mapping = Mapping::ByPolygonVertex;
    uv.direct = {0, 0, 1, 0, 1, 1, 0, 1};
    mesh.uvs.push_back(uv);
    fbx::desc::MaterialElement materials;
    materials.indices = {0};
    mesh.materials.push_back(materials);
    return mesh;
}

class OnScreen : public GlTest {
protected:
    void SetUp() override {
        GlTest::SetUp();
        m_Dir = fs::temp_directory_path() /
                ("on_screen_" + std::string(::testing::UnitTest::GetInstance()
                                                ->current_test_info()->name()));
        fs::create_directories(m_Dir);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        gluPerspective(45.0, 1.0, 0.1, 100.0);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
    }
    void TearDown() override { fs::remove_all(m_Dir); }

    // Writes the scene as a binary 7500 file and imports it as a state would.
    void Import(const fbx::SceneDescription& scene, Model& model) {
        const fs::path file = m_Dir / "model.fbx";
        std::string error;
        ASSERT_TRUE(fbx::WriteFile(file.string(), scene, 7500, true, &error)) << error;
        ::testing::internal::CaptureStdout();
        ImportModelFile(file.string(), &model);
        m_Report = ::testing::internal::GetCapturedStdout();
    }

    static std::vector<unsigned char> Pixels() {
        std::vector<unsigned char> pixels(kSize * kSize * 3);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, kSize, kSize, GL_RGB, GL_UNSIGNED_BYTE, pixels.data());
        return pixels;
    }
    static Rgb At(const std::vector<unsigned char>& pixels, int x, int y) {
        const unsigned char* p = &pixels[(static_cast<std::size_t>(y) * kSize + x) * 3];
        return {p[0], p[1], p[2]};
    }

    fs::path m_Dir;
    std::string m_Report;
};

TEST_F(OnScreen, BitmapTextureShowsItsColoursWhereTheUVsPutThem) {
    // Left half red, right half blue.
    const fs::path bitmap = m_Dir / "stripes.bmp";
    WriteBitmapRow(bitmap, {{255, 0, 0}, {255, 0, 0}, {0, 0, 255}, {0, 0, 255}});

    fbx::SceneDescription scene;
    const int node = scene.AddNode("Square", NodeType::Mesh);
    scene.nodes[node].mesh = Square();
    scene.nodes[node].materials = {0};
    fbx::desc::Material material;
    material.name = "Striped";
    material.diffuse = {1, 1, 1};
    material.diffuseTextures = {0};
    scene.materials.push_back(material);
    fbx::desc::Texture texture;
    texture.name = "StripesTexture";
    texture.fileName = bitmap.string();
    texture.relativeFileName = bitmap.string();
    scene.textures.push_back(texture);

    Model model;
    Import(scene, model);
    EXPECT_NE(m_Report.find("Loading texture: StripesTexture\n"), std::string::npos) << m_Report;
    ASSERT_EQ(model.m_Meshes.count("Square"), 1u);
    const Material& loaded = model.m_Meshes.at("Square").m_Materials.at(0);
    ASSERT_TRUE(loaded.m_HasTexture);
    EXPECT_TRUE(glIsTexture(loaded.m_TextureId));

    model.m_Position[2] = -3.0f;
    DrawModel(model);
    const std::vector<unsigned char> pixels = Pixels();
    // The square covers the middle of the window; sample a quarter in from each side.
    const Rgb left = At(pixels, kSize / 2 - kSize / 8, kSize / 2);
    const Rgb right = At(pixels, kSize / 2 + kSize / 8, kSize / 2);
    EXPECT_GT(left.r, 150);
    EXPECT_LT(left.b, 40);
    EXPECT_GT(right.b, 150);
    EXPECT_LT(right.r, 40);
    // Outside the square: the cleared background.
    const Rgb corner = At(pixels, 1, 1);
    EXPECT_EQ(corner.r + corner.g + corner.b, 0);
}

TEST_F(OnScreen, TexturePathsWrittenOnWindowsAreOpenedWithSlashes) {
    fs::create_directories(m_Dir / "maps");
    WriteBitmapRow(m_Dir / "maps" / "green.bmp", {{0, 255, 0}});

    fbx::SceneDescription scene;
    const int node = scene.AddNode("Square", NodeType::Mesh);
    scene.nodes[node].mesh = Square();
    scene.nodes[node].materials = {0};
    fbx::desc::Material material;
    material.name = "Green";
    material.diffuseTextures = {0};
    scene.materials.push_back(material);
    fbx::desc::Texture texture;
    texture.name = "GreenTexture";
    texture.relativeFileName = m_Dir.string() + "\\maps\\green.bmp";
    scene.textures.push_back(texture);

    Model model;
    Import(scene, model);
    EXPECT_EQ(m_Report.find("Failed to load"), std::string::npos) << m_Report;
    EXPECT_TRUE(model.m_Meshes.at("Square").m_Materials.at(0).m_HasTexture);
}

// Horizontal centre of the lit pixels, in pixels from the left.
double LitCentre(const std::vector<unsigned char>& pixels) {
    double sum = 0, count = 0;
    for (int y = 0; y < GlTest::kSize; ++y) {
        for (int x = 0; x < GlTest::kSize; ++x) {
            const unsigned char* p = &pixels[(static_cast<std::size_t>(y) * GlTest::kSize + x) * 3];
            if (p[0] + p[1] + p[2] > 30) {
                sum += x;
                count += 1;
            }
        }
    }
    return count > 0 ? sum / count : -1.0;
}

TEST_F(OnScreen, AnimatedModelMovesBetweenTheFramesOfItsTake) {
    // A skeleton node "Slider" whose take moves it along X by 1.5, and a mesh node of the
    // same name under it, which the node transform of that name moves.
    fbx::SceneDescription scene;
    const int bone = scene.AddNode("Slider", NodeType::Skeleton);
    const int mesh = scene.AddNode("Slider", NodeType::Mesh, bone);
    scene.nodes[mesh].mesh = Square();
    scene.nodes[mesh].mesh.uvs.clear();
    scene.nodes[mesh].materials = {0};
    fbx::desc::Material material;
    material.name = "Plain";
    scene.materials.push_back(material);
    fbx::desc::Take take;
    take.name = "Slide";
    fbx::desc::NodeAnimation animation;
    animation.node = bone;
    const std::int64_t second = fbx::desc::kTicksPerSecond;
    animation.translation[0] = {{0, second}, {0.0, 1.5}};
    animation.translation[1] = {{0, second}, {0.0, 0.0}};
    animation.translation[2] = {{0, second}, {0.0, 0.0}};
    take.nodes.push_back(animation);
    scene.takes.push_back(take);

    Model model;
    Import(scene, model);
    EXPECT_NE(m_Report.find("Added animation for Slider with 2 keys.\n"), std::string::npos)
        << m_Report;
    ASSERT_EQ(model.m_Animations.at("Slider").m_Keys.size(), 2u);

    model.m_Position[2] = -6.0f;
    model.m_Frame = 0;
    DrawModel(model);
    const double atFirst = LitCentre(Pixels());

    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glLoadIdentity();
    model.m_Frame = 1;
    DrawModel(model);
    const double atSecond = LitCentre(Pixels());

    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glLoadIdentity();
    model.m_Frame = 2;  // past the last key frame: drawn without its animation
    DrawModel(model);
    const double pastEnd = LitCentre(Pixels());

    ASSERT_GT(atFirst, 0.0);
    EXPECT_NEAR(atFirst, kSize / 2.0, 2.0);
    EXPECT_GT(atSecond, atFirst + 5.0);  // moved right by 1.5 units at depth 6
    EXPECT_NEAR(pastEnd, atFirst, 1.0);
}

}  // namespace
