// Imported models on screen in a real OpenGL context: a bitmap texture shows its colours where
// its UVs put them; an animated model moves as its state steps through its take's frames. In
// the authored look: PNG, JPEG and TGA images embedded or found beside the model, placed by
// their texture's UV scale, translation and rotation, blended where they are not opaque, and
// the textures of a real file.
#include <GL/gl.h>
#include <GL/glu.h>

#include <array>

#include "../render/gl_test_context.h"
#include "fbx/write/PngFile.h"
#include "image_files.h"
#include "import_support.h"
#include "render/AuthoredDraw.h"
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

// ---- the authored look's textures ----

// The quadrant picture as PNG bytes, opaque: red top left, green top right, blue bottom left,
// white bottom right.
std::vector<std::uint8_t> QuadrantPng(int size = 8) {
    std::vector<std::uint8_t> rgba;
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            const Rgba c = QuadrantColour(x, y, size, size, false);
            rgba.insert(rgba.end(), {std::uint8_t(c.r), std::uint8_t(c.g), std::uint8_t(c.b), 255});
        }
    }
    return fbx::EncodePng(size, size, rgba, false);
}

// Squares of side 2 on a 2 x 2 grid (first top left, then top right, bottom left, bottom
// right), each with a magenta material of its own showing the texture of the same index.
fbx::SceneDescription TexturedSquares(const std::vector<fbx::desc::Texture>& textures) {
    fbx::SceneDescription scene;
    for (std::size_t i = 0; i < textures.size(); ++i) {
        const int node = scene.AddNode("Square" + std::to_string(i), NodeType::Mesh);
        scene.nodes[node].mesh = Square();
        scene.nodes[node].translation = {i % 2 == 0 ? -1.1 : 1.1, i < 2 ? 1.1 : -1.1, 0};
        scene.nodes[node].materials = {static_cast<int>(i)};
        fbx::desc::Material& material = scene.materials.emplace_back();
        material.name = "Paint" + std::to_string(i);
        material.diffuse = {1, 0, 1};
        material.diffuseTextures = {static_cast<int>(i)};
        scene.textures.push_back(textures[i]);
    }
    return scene;
}

fbx::desc::Texture TextureFile(const std::string& name, const std::string& fileName,
                               const std::string& relativeFileName) {
    fbx::desc::Texture texture;
    texture.name = name;
    texture.fileName = fileName;
    texture.relativeFileName = relativeFileName;
    return texture;
}

class AuthoredOnScreen : public OnScreen {
protected:
    // Imports in the authored look; returns the console report.
    static std::string ImportAuthored(const std::string& path, Model& model) {
        ::testing::internal::CaptureStdout();
        ImportModelFile(path, &model, ModelLook::Authored);
        return ::testing::internal::GetCapturedStdout();
    }
    // Draws the model lit from the viewer through an orthographic view of x and y from -half
    // to half (14.5 pixels a unit by default) and reads the pixels back.
    static std::vector<unsigned char> DrawnAuthored(Model& model, double half = 2.2) {
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(-half, half, -half, half, -10, 10);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        const float none[4] = {0, 0, 0, 1};
        glLightModelfv(GL_LIGHT_MODEL_AMBIENT, none);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        DrawAuthoredModels({&model});
        std::vector<unsigned char> pixels(kSize * kSize * 3);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, kSize, kSize, GL_RGB, GL_UNSIGNED_BYTE, pixels.data());
        return pixels;
    }
    // The pixel at (x, y) in scene units.
    static Rgb AtPoint(const std::vector<unsigned char>& pixels, double x, double y) {
        const auto pixel = [](double v) { return static_cast<int>((v + 2.2) / 4.4 * kSize); };
        return At(pixels, pixel(x), pixel(y));
    }
    // The colours at the middles of the quadrants of the square centred on (x, y): top left,
    // top right, bottom left, bottom right.
    static std::array<Rgb, 4> Quadrants(const std::vector<unsigned char>& pixels, double x,
                                        double y) {
        return {AtPoint(pixels, x - 0.5, y + 0.5), AtPoint(pixels, x + 0.5, y + 0.5),
                AtPoint(pixels, x - 0.5, y - 0.5), AtPoint(pixels, x + 0.5, y - 0.5)};
    }
};

// Each channel within 40 of the expected one.
MATCHER_P(Shows, expected, "") {
    for (int i = 0; i < 3; ++i) {
        if (std::abs(arg[i] - expected[i]) > 40)
            return false;
    }
    return true;
}

const Rgb kRed = {255, 0, 0}, kGreen = {0, 255, 0}, kBlue = {0, 0, 255}, kWhite = {255, 255, 255};

TEST_F(AuthoredOnScreen, ImagesLoadEmbeddedOrBesideTheModelAndOnlyMissingOnesReportFailure) {
    // Embedded PNG; JPEG by a Windows relative name; TGA under a drive-letter path that is only
    // found in the model's .fbm folder; a PNG that is nowhere.
    std::vector<fbx::desc::Texture> textures = {
        TextureFile("Embedded", "C:\\art\\colours.png", "colours.png"),
        TextureFile("Jpeg", "", "maps\\quads.jpg"), TextureFile("Targa", "D:\\art\\quads.tga", ""),
        TextureFile("Lost", "", "lost.png")};
    textures[0].content = QuadrantPng();
    fs::create_directories(m_Dir / "maps");
    fs::create_directories(m_Dir / "model.fbm");
    const auto text = [](const std::vector<std::uint8_t>& b) {
        return std::string(b.begin(), b.end());
    };
    Write("maps/quads.jpg", text(MakeJpeg(false, false)));
    Write("model.fbm/quads.tga", text(MakeTga(TgaKind::Rgb24)));
    const std::string path = WriteScene(TexturedSquares(textures));

    Model classic, authored, again;
    std::string classicReport = ImportReport(path, classic);
    const std::string report = ImportAuthored(path, authored);
    // The report is the classic one without the failures of the images that now load.
    for (const char* loaded : {"colours.png", "maps/quads.jpg", "D:/art/quads.tga"}) {
        const std::string line = "Failed to load " + std::string(loaded) + ".\n";
        const std::size_t at = classicReport.find(line);
        ASSERT_NE(at, std::string::npos) << classicReport;
        classicReport.erase(at, line.size());
    }
    EXPECT_EQ(report, classicReport);
    EXPECT_NE(report.find("Failed to load lost.png.\n"), std::string::npos) << report;

    const std::vector<unsigned char> pixels = DrawnAuthored(authored);
    const std::array<Rgb, 4> quadrants = {kRed, kGreen, kBlue, kWhite};
    for (int square = 0; square < 3; ++square) {
        const std::array<Rgb, 4> seen =
            Quadrants(pixels, square % 2 == 0 ? -1.1 : 1.1, square < 2 ? 1.1 : -1.1);
        for (int q = 0; q < 4; ++q)
            EXPECT_THAT(seen[q], Shows(quadrants[q])) << "square " << square << " quadrant " << q;
    }
    EXPECT_THAT(AtPoint(pixels, 1.1, -1.1), Shows(Rgb{255, 0, 255}));  // the material colour

    // A second model of the same file shows the same uploaded images.
    ImportAuthored(path, again);
    for (std::size_t m = 0; m < 3; ++m) {
        const std::shared_ptr<TextureImage>& image =
            authored.m_Authored->m_Meshes[m].m_Materials.at(0).m_Texture;
        ASSERT_TRUE(image) << m;
        EXPECT_TRUE(glIsTexture(image->m_GlName));
        EXPECT_TRUE(image->m_Pixels.empty());  // let go once OpenGL has it
        EXPECT_EQ(image, again.m_Authored->m_Meshes[m].m_Materials.at(0).m_Texture);
    }
}

TEST_F(AuthoredOnScreen, TexturePlacementAppliesAndHalfTransparentImagesShowWhatIsBehind) {
    std::vector<fbx::desc::Texture> textures(3);
    textures[0] = TextureFile("Repeated", "", "repeated.png");
    textures[0].content = QuadrantPng();
    textures[0].uvScaling = {2, 1};
    // Half a turn about the middle, then half the width along: the top left shows blue.
    textures[1] = TextureFile("Turned", "", "turned.png");
    textures[1].content = QuadrantPng();
    textures[1].uvRotation = 180;
    textures[1].uvTranslation = {0.5, 0};
    textures[2] = TextureFile("Glass", "", "glass.png");
    std::vector<std::uint8_t> glassPixels;
    for (int i = 0; i < 4; ++i)
        glassPixels.insert(glassPixels.end(), {255, 255, 255, 128});
    textures[2].content = fbx::EncodePng(2, 2, glassPixels, true);
    fbx::SceneDescription scene = TexturedSquares(textures);
    // An opaque red square behind the glass.
    const int behind = scene.AddNode("Behind", NodeType::Mesh);
    scene.nodes[behind].mesh = Square();
    scene.nodes[behind].translation = {-1.1, -1.1, -1};
    scene.nodes[behind].materials = {3};
    scene.materials.emplace_back().diffuse = {1, 0, 0};
    scene.materials.back().name = "Red";
    Model model;
    ImportAuthored(WriteScene(scene), model);
    const std::vector<unsigned char> pixels = DrawnAuthored(model);

    // Twice across: red, green, red, green along the top half.
    for (int k = 0; k < 4; ++k) {
        EXPECT_THAT(AtPoint(pixels, -1.1 - 0.75 + 0.5 * k, 1.6), Shows(k % 2 == 0 ? kRed : kGreen))
            << k;
    }
    EXPECT_THAT(Quadrants(pixels, 1.1, 1.1)[0], Shows(kBlue));
    const Rgb glass = AtPoint(pixels, -1.1, -1.1);
    EXPECT_GT(glass[0], 200);
    EXPECT_NEAR(glass[1], 128, 40);
    EXPECT_NEAR(glass[2], 128, 40);
}

TEST_F(AuthoredOnScreen, CorpusFilesShowTheirEmbeddedTextures) {
    // A Maya cube whose diffuse colour is an embedded checkerboard of pink and dark brown,
    // seen corner on so that three faces show.
    Model model;
    ImportAuthored(std::string(ENGINE_CORPUS_DIR) + "/fbx/maya_textured_cube_7500_binary.fbx",
                   model);
    ASSERT_TRUE(model.m_Authored);
    model.m_Rotation[0] = 30.0f;
    model.m_Rotation[1] = 45.0f;
    const std::vector<unsigned char> pixels = DrawnAuthored(model, 0.9);
    std::vector<int> brightness;
    int reddish = 0;
    for (std::size_t i = 0; i < pixels.size(); i += 3) {
        const int r = pixels[i], g = pixels[i + 1], b = pixels[i + 2];
        if (r + g + b < 30)
            continue;  // the background
        brightness.push_back(r + g + b);
        reddish += r * 100 > g * 115 && r * 100 > b * 115 ? 1 : 0;
    }
    ASSERT_GT(brightness.size(), 200u);
    // Both squares of the board are pink or brown: red over green and blue, where the
    // material alone is white.
    EXPECT_GT(reddish, static_cast<int>(brightness.size()) * 8 / 10);
    // Light and dark squares: the brightest tenth is far brighter than the darkest.
    std::sort(brightness.begin(), brightness.end());
    EXPECT_GT(brightness[brightness.size() * 9 / 10], 2 * brightness[brightness.size() / 10]);
}

}  // namespace
