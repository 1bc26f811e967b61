// Textures that are missing, are no bitmap, are not 24-bit or whose header lies: the model
// still loads and draws; a file that cannot be read is named on the console.
#include <gtest/gtest.h>

#include <GL/gl.h>

#include <cstdlib>
#include <string>

#include "gl_test_context.h"
#include "hostile_support.h"
#include "import/Bitmap.h"
#include "import/SceneImport.h"
#include "render/Draw.h"
#include "model/Model.h"
#include "model/Texture.h"

namespace {

// The textured square of tests/hostile/data beside whatever "hostile.bmp" the test gives.
class HostileTexture {
public:
    explicit HostileTexture(const std::string* bitmap) {
        m_Dir.Write("textured_quad.fbx", ReadWholeFile(DataFile("textured_quad.fbx")));
        if (bitmap != nullptr) {
            m_Dir.Write("hostile.bmp", *bitmap);
        }
    }

    // Imports the square with the working directory beside it, as the engine runs.
    std::string Import(Model& model) const {
        std::string output;
        RunIn(m_Dir.Root(), [&] {
            output = CapturedOutput([&] { ImportModelFile("textured_quad.fbx", &model); });
        });
        return output;
    }

private:
    ScratchDir m_Dir;
};

const Material& QuadMaterial(const Model& model) {
    return model.m_Meshes.at("Quad").m_Materials.at(0);
}

// Bitmaps that cannot be read at all.
std::vector<std::pair<std::string, std::string>> UnreadableBitmaps() {
    std::string png = "\x89PNG\r\n\x1a\n";
    png += std::string(60, '\0');
    return {{"png", png}, {"one byte", "B"}, {"empty", ""}, {"text", "BA not a bitmap"}};
}

// Bitmaps that are read (the reader takes every file as 24-bit pixels) whatever they claim.
std::vector<std::pair<std::string, BitmapSpec>> MisleadingBitmaps() {
    std::vector<std::pair<std::string, BitmapSpec>> specs;
    BitmapSpec eight;
    eight.m_BitsPerPixel = 8;
    eight.m_ImageSize = 16;
    eight.m_DataBytes = 16 + 1024;  // palette and indices
    specs.emplace_back("8-bit", eight);
    BitmapSpec thirtyTwo;
    thirtyTwo.m_BitsPerPixel = 32;
    thirtyTwo.m_ImageSize = 64;
    thirtyTwo.m_DataBytes = 64;
    specs.emplace_back("32-bit", thirtyTwo);
    BitmapSpec compressed;
    compressed.m_Compression = 1;
    compressed.m_DataBytes = 10;
    specs.emplace_back("run-length", compressed);
    BitmapSpec huge;
    huge.m_Width = 30000;
    huge.m_Height = 30000;
    huge.m_ImageSize = 30000u * 30000u * 3u / 4u;
    specs.emplace_back("giant picture, 48 bytes", huge);
    BitmapSpec overSize;
    overSize.m_ImageSize = 0xFFFFFFF0u;
    specs.emplace_back("image size 4 GB", overSize);
    BitmapSpec beyond;
    beyond.m_DataOffset = 0x7FFFFF00u;
    specs.emplace_back("data offset past the end", beyond);
    BitmapSpec upsideDown;
    upsideDown.m_Width = -4;
    upsideDown.m_Height = -2147483647 - 1;
    specs.emplace_back("negative sizes", upsideDown);
    BitmapSpec odd;
    odd.m_Width = 3;
    odd.m_Height = 3;
    odd.m_ImageSize = 0;
    odd.m_DataBytes = 7;
    specs.emplace_back("odd rows, no size", odd);
    return specs;
}

TEST(HostileTexture, UnreadableOrMissingBitmapIsNamedAndTheMeshKeepsItsColour) {
    for (const auto& [name, bytes] : UnreadableBitmaps()) {
        HostileTexture files(&bytes);
        Model model;
        const std::string output = files.Import(model);
        EXPECT_NE(output.find("Loading texture: QuadTexture\nFailed to load hostile.bmp.\n"),
                  std::string::npos)
            << name << ":\n"
            << output;
        ASSERT_EQ(model.m_Meshes.count("Quad"), 1u) << name;
        EXPECT_FALSE(QuadMaterial(model).m_HasTexture) << name;
    }
    HostileTexture missing(nullptr);
    Model model;
    const std::string output = missing.Import(model);
    EXPECT_NE(output.find("Failed to load hostile.bmp.\n"), std::string::npos) << output;
    ASSERT_EQ(model.m_Meshes.count("Quad"), 1u);
    EXPECT_FALSE(QuadMaterial(model).m_HasTexture);
}

TEST(HostileTexture, BitmapsThatMisleadAreReadNoFurtherThanTheFileGoes) {
    ScratchDir dir;
    for (const auto& [name, spec] : MisleadingBitmaps()) {
        const std::string bytes = BitmapBytes(spec);
        const std::string path = dir.Write("picture.bmp", bytes);
        Texture texture;
        std::string output;
        bool loaded = false;
        output = CapturedOutput([&] { loaded = LoadImage(texture, path); });
        EXPECT_TRUE(loaded) << name << ": " << output;
        // The pixel block holds at most what the file has past its headers.
        EXPECT_LE(texture.m_ImageSize, bytes.size() - 54 + 2) << name;
        EXPECT_EQ(texture.m_Width, spec.m_Width) << name;
        EXPECT_EQ(texture.m_Height, spec.m_Height) << name;
        // Touch every byte the texture claims: ASan reports any that is not its own.
        unsigned sum = 0;
        for (std::uint32_t i = 0; i < texture.m_ImageSize; ++i) {
            sum += texture.m_Pixels[i];
        }
        (void)sum;
    }
}

using HostileTextureOnScreen = GlTest;

TEST_F(HostileTextureOnScreen, SquareWithAMisleadingTextureIsStillDrawn) {
    for (const auto& [name, spec] : MisleadingBitmaps()) {
        const std::string bytes = BitmapBytes(spec);
        HostileTexture files(&bytes);
        Model model;
        const std::string output = files.Import(model);
        EXPECT_EQ(output.find("Failed to load"), std::string::npos) << name << ":\n" << output;
        ASSERT_EQ(model.m_Meshes.count("Quad"), 1u) << name;
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR)) << name;

        model.m_Position[2] = -30.0f;
        const std::vector<FedVertex> drawn = Feedback([&] {
            glMatrixMode(GL_PROJECTION);
            glLoadIdentity();
            glFrustum(-0.1, 0.1, -0.1, 0.1, 0.1, 100.0);
            glMatrixMode(GL_MODELVIEW);
            glLoadIdentity();
            DrawModel(model);
        });
        EXPECT_FALSE(drawn.empty()) << name;
    }
}

}  // namespace
