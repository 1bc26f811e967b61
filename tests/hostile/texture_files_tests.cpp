// Textures that are missing, are no bitmap, are not 24-bit or whose header lies: the model
// still loads and draws; a file that cannot be read is named on the console.

#include <numeric>
#include <optional>

#include "gl_test_context.h"
#include "hostile_files.h"
#include "import/Bitmap.h"
#include "import/SceneImport.h"
#include "render/Draw.h"
#include "scratch_dir.h"

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

// Imports the textured square of tests/hostile/data beside the given "hostile.bmp" (none
// without one), with the working directory beside them as the engine runs; its output.
std::string ImportSquare(const std::optional<std::string>& bitmap, Model& model) {
    ScratchDir dir;
    dir.Write("textured_quad.fbx", ReadWholeFile(DataFile("textured_quad.fbx")));
    if (bitmap) {
        dir.Write("hostile.bmp", *bitmap);
    }
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(dir.Root());
    const std::string output =
        CapturedOutput([&] { ImportModelFile("textured_quad.fbx", &model); });
    std::filesystem::current_path(before);
    return output;
}

TEST(HostileTexture, UnreadableOrMissingBitmapIsNamedAndTheMeshKeepsItsColour) {
    const std::pair<const char*, std::optional<std::string>> bitmaps[] = {
        {"png", "\x89PNG\r\n\x1a\n" + std::string(60, '\0')},
        {"one byte", "B"},
        {"empty", ""},
        {"text", "BA not a bitmap"},
        {"missing", std::nullopt}};
    for (const auto& [name, bitmap] : bitmaps) {
        Model model;
        const std::string output = ImportSquare(bitmap, model);
        EXPECT_THAT(output,
                    HasSubstr("Loading texture: QuadTexture\nFailed to load hostile.bmp.\n"))
            << name;
        ASSERT_EQ(model.m_Meshes.count("Quad"), 1u) << name;
        EXPECT_FALSE(model.m_Meshes.at("Quad").m_Materials.at(0).m_HasTexture) << name;
    }
}

using HostileTextureOnScreen = GlTest;

// Bitmaps that are read (the reader takes every file as 24-bit pixels) whatever they claim:
// read no further than the file goes, they still give a square that is drawn.
TEST_F(HostileTextureOnScreen, MisleadingBitmapsAreReadWithinTheFileAndTheSquareIsDrawn) {
    // Width, height, bits per pixel, compression, image size, data offset, pixel bytes present
    // (8-bit: palette and indices).
    const std::pair<const char*, BitmapShape> bitmaps[] = {
        {"8-bit", {4, 4, 8, 0, 16, 54, 16 + 1024}},
        {"32-bit", {4, 4, 32, 0, 64, 54, 64}},
        {"run-length", {4, 4, 24, 1, 48, 54, 10}},
        {"giant picture, 48 bytes", {30000, 30000, 24, 0, 30000u * 30000u * 3u / 4u, 54, 48}},
        {"image size 4 GB", {4, 4, 24, 0, 0xFFFFFFF0u, 54, 48}},
        {"data offset past the end", {4, 4, 24, 0, 48, 0x7FFFFF00u, 48}},
        {"negative sizes", {-4, -2147483647 - 1, 24, 0, 48, 54, 48}},
        {"odd rows, no size", {3, 3, 24, 0, 0, 54, 7}}};
    for (const auto& [name, shape] : bitmaps) {
        SCOPED_TRACE(name);
        const std::string bytes = BitmapBytes(shape);
        ScratchDir dir;
        Texture texture;
        bool loaded = false;
        const std::string read =
            CapturedOutput([&] { loaded = LoadImage(texture, dir.Write("picture.bmp", bytes)); });
        EXPECT_TRUE(loaded) << read;
        // The pixel block holds at most what the file has past its headers.
        EXPECT_LE(texture.m_ImageSize, bytes.size() - 54 + 2);
        EXPECT_EQ(texture.m_Width, shape.m_Width);
        EXPECT_EQ(texture.m_Height, shape.m_Height);
        // Touch every byte the texture claims: ASan reports any that is not its own.
        (void)std::accumulate(texture.m_Pixels, texture.m_Pixels + texture.m_ImageSize, 0u);

        Model model;
        const std::string output = ImportSquare(bytes, model);
        EXPECT_THAT(output, Not(HasSubstr("Failed to load")));
        ASSERT_EQ(model.m_Meshes.count("Quad"), 1u);
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
        model.m_Position[2] = -0.5f;  // in view of the identity projection
        glLoadIdentity();
        EXPECT_FALSE(Feedback([&] { DrawModel(model); }).empty());
    }
}

}  // namespace
