// Imported models on screen in a real OpenGL context: a bitmap texture shows its colours where
// its UVs put them; an animated model moves as its state steps through its take's frames.
#include <GL/gl.h>
#include <GL/glu.h>

#include <array>

#include "../render/gl_test_context.h"
#include "import_support.h"
#include "render/Draw.h"

namespace {

using fbx::desc::NodeType;

using Rgb = std::array<int, 3>;

// A 24-bit bitmap of one row, given as blue, green, red triples left to right.
std::string BitmapRow(std::vector<unsigned char> bgr) {
    const auto width = static_cast<std::int32_t>(bgr.size() / 3);
    bgr.resize((bgr.size() + 3) / 4 * 4, 0);
    return BitmapBytes(width, 1, static_cast<std::uint32_t>(bgr.size()), bgr);
}

// A square of side 2 in the XY plane facing +Z, UVs 0..1 across it, in material slot 0.
fbx::desc::Mesh Square() {
    fbx::desc::Mesh mesh;
    mesh.controlPoints = {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};
    mesh.polygons = {{0, 1, 2, 3}};
    mesh.uvs.resize(1);
    mesh.uvs[0].direct = {0, 0, 1, 0, 1, 1, 0, 1};
    mesh.materials.push_back({fbx::desc::Mapping::AllSame, {0}});
    return mesh;
}

// The square as node "Square", textured from the given relative file name.
fbx::SceneDescription TexturedSquare(const std::string& relativeFileName) {
    fbx::SceneDescription scene;
    const int node = scene.AddNode("Square", NodeType::Mesh);
    scene.nodes[node].mesh = Square();
    scene.nodes[node].materials = {0};
    fbx::desc::Material& material = scene.materials.emplace_back();
    material.diffuse = {1, 1, 1};
    material.diffuseTextures = {0};
    fbx::desc::Texture& texture = scene.textures.emplace_back();
    texture.name = "SquareTexture";
    texture.relativeFileName = relativeFileName;
    return scene;
}

class OnScreen : public ScratchTest<GlTest> {
protected:
    // Draws the model at the given frame, seen through a 45-degree perspective on a cleared
    // frame, and reads the pixels back.
    static std::vector<unsigned char> Drawn(Model& model, int frame) {
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        gluPerspective(45.0, 1.0, 0.1, 100.0);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        model.m_Frame = frame;
        DrawModel(model);
        std::vector<unsigned char> pixels(kSize * kSize * 3);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, kSize, kSize, GL_RGB, GL_UNSIGNED_BYTE, pixels.data());
        return pixels;
    }
    static Rgb At(const std::vector<unsigned char>& pixels, int x, int y) {
        const unsigned char* p = &pixels[(static_cast<std::size_t>(y) * kSize + x) * 3];
        return {p[0], p[1], p[2]};
    }
};

TEST_F(OnScreen, BitmapTextureShowsItsColoursWhereTheUVsPutThem) {
    // Left half red, right half blue.
    const std::string bitmap =
        Write("stripes.bmp", BitmapRow({0, 0, 255, 0, 0, 255, 255, 0, 0, 255, 0, 0}));
    // The material takes the next texture name for a texture of its own and the texture it
    // loads the one after; copies of the material carry that texture and take no name.
    const unsigned int first = Texture::NextId();
    Model model;
    const std::string report = ImportReport(WriteScene(TexturedSquare(bitmap)), model);
    EXPECT_NE(report.find("Loading texture: SquareTexture\n"), std::string::npos) << report;
    const Material& loaded = model.m_Meshes.at("Square").m_Materials.at(0);
    ASSERT_TRUE(loaded.m_HasTexture);
    EXPECT_TRUE(glIsTexture(loaded.m_TextureId));
    EXPECT_EQ(loaded.m_TextureId, first + 1);
    EXPECT_EQ(loaded.m_Texture.m_Id, first + 1);
    const Material copy = loaded;
    EXPECT_EQ(copy.m_Texture.m_Id, first + 1);
    EXPECT_EQ(Texture::NextId(), first + 2);

    model.m_Position[2] = -3.0f;
    const std::vector<unsigned char> pixels = Drawn(model, 0);
    // The square covers the middle of the window; sample a quarter in from each side.
    const Rgb left = At(pixels, kSize / 2 - kSize / 8, kSize / 2);
    const Rgb right = At(pixels, kSize / 2 + kSize / 8, kSize / 2);
    EXPECT_TRUE(left[0] > 150 && left[2] < 40) << left[0] << "," << left[2];
    EXPECT_TRUE(right[2] > 150 && right[0] < 40) << right[0] << "," << right[2];
    EXPECT_EQ(At(pixels, 1, 1), (Rgb{0, 0, 0}));  // outside the square: the background

    // Files written on Windows name the texture with backslashes.
    fs::create_directories(m_Dir / "maps");
    Write("maps/green.bmp", BitmapRow({0, 255, 0}));
    Model windows;
    const std::string windowsReport =
        ImportReport(WriteScene(TexturedSquare(m_Dir.string() + "\\maps\\green.bmp")), windows);
    EXPECT_EQ(windowsReport.find("Failed to load"), std::string::npos) << windowsReport;
    EXPECT_TRUE(windows.m_Meshes.at("Square").m_Materials.at(0).m_HasTexture);
}

// Horizontal centre of the lit pixels, in pixels from the left.
double LitCentre(const std::vector<unsigned char>& pixels) {
    double sum = 0, count = 0;
    for (std::size_t i = 0; i < pixels.size(); i += 3) {
        if (pixels[i] + pixels[i + 1] + pixels[i + 2] > 30) {
            sum += static_cast<double>(i / 3 % GlTest::kSize);
            count += 1;
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
    scene.materials.emplace_back().name = "Plain";
    fbx::desc::Take& take = scene.takes.emplace_back();
    take.name = "Slide";
    fbx::desc::NodeAnimation& animation = take.nodes.emplace_back();
    animation.node = bone;
    const std::int64_t second = fbx::desc::kTicksPerSecond;
    animation.translation[0] = {{0, second}, {0.0, 1.5}};
    animation.translation[1] = {{0, second}, {0.0, 0.0}};
    animation.translation[2] = {{0, second}, {0.0, 0.0}};

    Model model;
    const std::string report = ImportReport(WriteScene(scene), model);
    EXPECT_NE(report.find("Added animation for Slider with 2 keys.\n"), std::string::npos)
        << report;
    ASSERT_EQ(model.m_Animations.at("Slider").m_Keys.size(), 2u);

    model.m_Position[2] = -6.0f;
    const double atFirst = LitCentre(Drawn(model, 0));
    const double atSecond = LitCentre(Drawn(model, 1));
    const double pastEnd = LitCentre(Drawn(model, 2));  // past the last key: not animated
    ASSERT_GT(atFirst, 0.0);
    EXPECT_NEAR(atFirst, kSize / 2.0, 2.0);
    EXPECT_GT(atSecond, atFirst + 5.0);  // moved right by 1.5 units at depth 6
    EXPECT_NEAR(pastEnd, atFirst, 1.0);
}

}  // namespace
