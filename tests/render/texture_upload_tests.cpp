// Texture upload on mesh insertion: what reaches OpenGL, and when nothing does.

#include <cstdlib>
#include <cstring>

#include "gl_test_context.h"
#include "model/Model.h"
#include "render/TextureImageUpload.h"
#include "render/TextureUpload.h"

namespace {

// A mesh whose first material's texture is loaded with the given size and pixel block.
Mesh TexturedMesh(int width, int height, const std::vector<unsigned char>& block) {
    Mesh mesh;
    Texture& texture = mesh.m_Materials.emplace_back().m_Texture;
    texture.m_Loaded = true;
    texture.m_Width = width;
    texture.m_Height = height;
    texture.m_ImageSize = static_cast<std::uint32_t>(block.size());
    texture.m_Pixels = static_cast<unsigned char*>(std::malloc(block.size()));
    std::memcpy(texture.m_Pixels, block.data(), block.size());
    return mesh;
}

GLuint TextureId(const Mesh& mesh, std::size_t material = 0) {
    return mesh.m_Materials.at(material).m_Texture.m_Id;
}

std::vector<unsigned char> ReadTexture(GLuint id, int width, int height) {
    glBindTexture(GL_TEXTURE_2D, id);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    std::vector<unsigned char> rgb(static_cast<size_t>(width * height * 3), 0xAB);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGB, GL_UNSIGNED_BYTE, rgb.data());
    return rgb;
}

class TextureUploadTest : public GlTest {
protected:
    void SetUp() override {
        GlTest::SetUp();
        // Texture name 0 is OpenGL's default texture; keep the tests on real names.
        while (Texture::NextId() == 0) {
            Texture discarded;
        }
    }
};

// A 2x2 image: rows of 6 bytes padded to 8, bottom row first, as the bitmap reader keeps it.
const std::vector<unsigned char> kTwoByTwo = {255, 0, 0,   0, 255, 0, 0, 0,   // red, green
                                              0,   0, 255, 9, 9,   9, 0, 0};  // blue, grey

TEST_F(TextureUploadTest, AddingAMeshUploadsItsFirstMaterialsLoadedTextureOnlyOnce) {
    Model model;
    Mesh mesh = TexturedMesh(2, 2, kTwoByTwo);
    mesh.m_Materials.push_back(TexturedMesh(2, 2, kTwoByTwo).m_Materials[0]);
    ASSERT_NE(TextureId(mesh, 1), TextureId(mesh));
    EXPECT_TRUE(model.AddMesh("body", mesh));
    EXPECT_TRUE(glIsTexture(TextureId(mesh)));
    EXPECT_FALSE(glIsTexture(TextureId(mesh, 1)));  // only the first material counts
    EXPECT_EQ(ReadTexture(TextureId(mesh), 2, 2),
              (std::vector<unsigned char>{255, 0, 0, 0, 255, 0, 0, 0, 255, 9, 9, 9}));
    for (GLenum filter : {GL_TEXTURE_MIN_FILTER, GL_TEXTURE_MAG_FILTER}) {
        GLint value = 0;
        glGetTexParameteriv(GL_TEXTURE_2D, filter, &value);
        EXPECT_EQ(value, GL_LINEAR);
    }

    // A second mesh of the same name is refused, the first kept; nothing is uploaded for it,
    // nor for a mesh without a material or with a texture that is not loaded.
    const Mesh second = TexturedMesh(2, 2, kTwoByTwo);
    EXPECT_FALSE(model.AddMesh("body", second));
    EXPECT_FALSE(glIsTexture(TextureId(second)));
    EXPECT_EQ(TextureId(model.m_Meshes["body"]), TextureId(mesh));
    EXPECT_TRUE(model.AddMesh("bare", Mesh()));
    Mesh unloaded = TexturedMesh(2, 2, kTwoByTwo);
    unloaded.m_Materials[0].m_Texture.m_Loaded = false;
    EXPECT_TRUE(model.AddMesh("unloaded", unloaded));
    EXPECT_FALSE(glIsTexture(TextureId(unloaded)));
    EXPECT_EQ(model.m_Meshes.size(), 3u);
}

TEST_F(TextureUploadTest, ShortPixelBlockIsPaddedWithBlackAndImpossibleSizesUploadNoImage) {
    // 16x16 needs 16 rows of 48 bytes; the block holds only the first row. Whatever lies
    // past the block in memory must not show up in the texture.
    std::vector<unsigned char> row(48);
    for (size_t i = 0; i < row.size(); ++i) {
        row[i] = static_cast<unsigned char>(i + 1);
    }
    const Mesh mesh = TexturedMesh(16, 16, row);
    Model model;
    EXPECT_TRUE(model.AddMesh("short", mesh));
    row.resize(16 * 16 * 3, 0);
    EXPECT_EQ(ReadTexture(TextureId(mesh), 16, 16), row);

    for (int width : {0, -3, 1 << 30}) {
        const Mesh odd = TexturedMesh(width, 2, kTwoByTwo);
        EXPECT_TRUE(model.AddMesh("odd" + std::to_string(width), odd));
        glBindTexture(GL_TEXTURE_2D, TextureId(odd));
        GLint made = -1;
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &made);
        EXPECT_EQ(made, 0) << "width " << width;
    }
    while (glGetError() != GL_NO_ERROR) {
    }
}

}  // namespace

// The authored look's images: a name from OpenGL, every mipmap level, trilinear filtering,
// repeat wrapping, and the pixels let go; halving takes the mean of each two by two.
TEST_F(TextureUploadTest, AuthoredImagesGoUpWithMipmapsUnderGeneratedNamesAndHalveToTheirMeans) {
    TextureImage image;
    image.m_Width = 4;
    image.m_Height = 2;
    for (int i = 0; i < 8; ++i)
        image.m_Pixels.insert(image.m_Pixels.end(), {std::uint8_t(i * 30), 0, 10, 255});
    TextureImage halved;
    halved.m_Width = 4;
    halved.m_Height = 2;
    halved.m_Pixels = image.m_Pixels;
    HalveTextureImage(halved);
    ASSERT_EQ(halved.m_Width, 2);
    ASSERT_EQ(halved.m_Height, 1);
    // (0 + 30 + 120 + 150) / 4 and (60 + 90 + 180 + 210) / 4.
    EXPECT_EQ(halved.m_Pixels, (std::vector<std::uint8_t>{75, 0, 10, 255, 135, 0, 10, 255}));

    UploadTextureImage(image);
    ASSERT_NE(image.m_GlName, 0u);
    EXPECT_TRUE(image.m_Pixels.empty());
    glBindTexture(GL_TEXTURE_2D, image.m_GlName);
    GLint value = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 2, GL_TEXTURE_WIDTH, &value);
    EXPECT_EQ(value, 1) << "the last mipmap level";
    for (const auto& [parameter, expected] :
         {std::pair<GLenum, GLint>{GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR},
          {GL_TEXTURE_MAG_FILTER, GL_LINEAR},
          {GL_TEXTURE_WRAP_S, GL_REPEAT},
          {GL_TEXTURE_WRAP_T, GL_REPEAT}}) {
        glGetTexParameteriv(GL_TEXTURE_2D, parameter, &value);
        EXPECT_EQ(value, expected) << parameter;
    }
    glBindTexture(GL_TEXTURE_2D, 0);
}
