// Texture upload on mesh insertion: what reaches OpenGL, and when nothing does.
#include <GL/gl.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "gl_test_context.h"
#include "model/Model.h"
#include "render/TextureUpload.h"

namespace {

// A material whose texture is loaded with the given size and pixel block.
Material TexturedMaterial(int width, int height, const std::vector<unsigned char>& block) {
    Material material;
    Texture& texture = material.m_Texture;
    texture.m_Loaded = true;
    texture.m_Width = width;
    texture.m_Height = height;
    texture.m_ImageSize = static_cast<std::uint32_t>(block.size());
    texture.m_Pixels = static_cast<unsigned char*>(std::malloc(block.size()));
    std::memcpy(texture.m_Pixels, block.data(), block.size());
    material.m_Valid = material.m_HasTexture = true;
    material.m_TextureId = texture.m_Id;
    return material;
}

std::vector<unsigned char> ReadTexture(GLuint id, int width, int height) {
    glBindTexture(GL_TEXTURE_2D, id);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    std::vector<unsigned char> rgb(static_cast<size_t>(width * height * 3), 0xAB);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGB, GL_UNSIGNED_BYTE, rgb.data());
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    return rgb;
}

GLint TextureLevelWidth(GLuint id) {
    glBindTexture(GL_TEXTURE_2D, id);
    GLint width = -1;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
    return width;
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

TEST_F(TextureUploadTest, AddingAMeshUploadsItsFirstMaterialsTexture) {
    Model model;
    Mesh mesh;
    mesh.m_Materials.push_back(TexturedMaterial(2, 2, kTwoByTwo));
    mesh.m_Materials.push_back(TexturedMaterial(2, 2, kTwoByTwo));
    const GLuint first = mesh.m_Materials[0].m_Texture.m_Id;
    const GLuint second = mesh.m_Materials[1].m_Texture.m_Id;
    ASSERT_NE(first, 0u);

    EXPECT_TRUE(model.AddMesh("body", mesh));
    ASSERT_EQ(model.m_Meshes.count("body"), 1u);
    EXPECT_TRUE(glIsTexture(first));
    EXPECT_FALSE(glIsTexture(second));  // only the first material counts
    EXPECT_EQ(ReadTexture(first, 2, 2),
              (std::vector<unsigned char>{255, 0, 0, 0, 255, 0, 0, 0, 255, 9, 9, 9}));
    GLint minFilter = 0;
    GLint magFilter = 0;
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &minFilter);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, &magFilter);
    EXPECT_EQ(minFilter, GL_LINEAR);
    EXPECT_EQ(magFilter, GL_LINEAR);
}

TEST_F(TextureUploadTest, DuplicateMeshNameKeepsTheFirstAndUploadsNothing) {
    Model model;
    Mesh first;
    first.m_Polygons.resize(1);
    ASSERT_TRUE(model.AddMesh("body", first));
    Mesh second;
    second.m_Materials.push_back(TexturedMaterial(2, 2, kTwoByTwo));
    const GLuint id = second.m_Materials[0].m_Texture.m_Id;

    EXPECT_FALSE(model.AddMesh("body", second));
    EXPECT_FALSE(glIsTexture(id));
    EXPECT_EQ(model.m_Meshes.size(), 1u);
    EXPECT_EQ(model.m_Meshes["body"].m_Polygons.size(), 1u);
    EXPECT_TRUE(model.m_Meshes["body"].m_Materials.empty());
}

TEST_F(TextureUploadTest, MeshesWithoutALoadedTextureUploadNothing) {
    Model model;
    EXPECT_TRUE(model.AddMesh("bare", Mesh()));
    Mesh unloaded;
    unloaded.m_Materials.push_back(TexturedMaterial(2, 2, kTwoByTwo));
    unloaded.m_Materials[0].m_Texture.m_Loaded = false;
    const GLuint id = unloaded.m_Materials[0].m_Texture.m_Id;
    EXPECT_TRUE(model.AddMesh("unloaded", unloaded));
    EXPECT_FALSE(glIsTexture(id));
    EXPECT_EQ(model.m_Meshes.size(), 2u);
}

TEST_F(TextureUploadTest, ShortPixelBlockIsPaddedWithBlack) {
    // 16x16 needs 16 rows of 48 bytes; the block holds only the first row. Whatever lies
    // past the block in memory must not show up in the texture.
    std::vector<unsigned char> row(48);
    for (size_t i = 0; i < row.size(); ++i) {
        row[i] = static_cast<unsigned char>(i + 1);
    }
    Mesh mesh;
    mesh.m_Materials.push_back(TexturedMaterial(16, 16, row));
    const GLuint id = mesh.m_Materials[0].m_Texture.m_Id;
    Model model;
    EXPECT_TRUE(model.AddMesh("short", mesh));
    std::vector<unsigned char> expected = row;
    expected.resize(16 * 16 * 3, 0);
    EXPECT_EQ(ReadTexture(id, 16, 16), expected);
}

TEST_F(TextureUploadTest, ImpossibleSizesUploadNoImage) {
    for (int width : {0, -3, 1 << 30}) {
        Mesh mesh;
        mesh.m_Materials.push_back(TexturedMaterial(width, 2, kTwoByTwo));
        const GLuint id = mesh.m_Materials[0].m_Texture.m_Id;
        Model model;
        EXPECT_TRUE(model.AddMesh("odd", mesh));
        EXPECT_EQ(TextureLevelWidth(id), 0) << "width " << width;
    }
    while (glGetError() != GL_NO_ERROR) {
    }
}

}  // namespace
