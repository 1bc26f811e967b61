#include "render/TextureUpload.h"

#include <GL/gl.h>

#include <cstdint>
#include <cstring>
#include <new>
#include <vector>

namespace {

// Bytes OpenGL reads for a width x height RGB image under the current unpack settings.
std::uint64_t UploadBytes(std::int32_t width, std::int32_t height) {
    GLint alignment = 4;
    GLint rowLength = 0;
    glGetIntegerv(GL_UNPACK_ALIGNMENT, &alignment);
    glGetIntegerv(GL_UNPACK_ROW_LENGTH, &rowLength);
    if (alignment < 1) {
        alignment = 1;
    }
    const std::uint64_t pixelsPerRow =
        rowLength > 0 ? static_cast<std::uint64_t>(rowLength) : static_cast<std::uint64_t>(width);
    const std::uint64_t stride = (pixelsPerRow * 3 + alignment - 1) / alignment * alignment;
    return stride * static_cast<std::uint64_t>(height);
}

}  // namespace

void UploadTexture(const Mesh& mesh) {
    if (mesh.m_Materials.empty() || !mesh.m_Materials.front().m_Texture.m_Loaded) {
        return;
    }
    const Texture& texture = mesh.m_Materials.front().m_Texture;
    glBindTexture(GL_TEXTURE_2D, texture.m_Id);
    glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, static_cast<GLfloat>(GL_LINEAR));
    glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, static_cast<GLfloat>(GL_LINEAR));

    GLint maxSize = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &maxSize);
    const bool sizeAccepted = texture.m_Width > 0 && texture.m_Height > 0 &&
                              texture.m_Width <= maxSize && texture.m_Height <= maxSize;
    if (!sizeAccepted) {
        // No image can be made at such a size, and some drivers misbehave when asked to try.
        return;
    }
    const unsigned char* pixels = texture.m_Pixels;
    std::vector<unsigned char> padded;
    if (pixels != nullptr) {
        const std::uint64_t needed = UploadBytes(texture.m_Width, texture.m_Height);
        if (needed > 2 * static_cast<std::uint64_t>(texture.m_ImageSize) + (1u << 20)) {
            // A header that claims far more pixels than the file holds: no image is made
            // rather than reserving memory the file never filled.
            return;
        }
        if (needed > texture.m_ImageSize) {
            // The block is shorter than the image claims: upload a zero-padded copy.
            try {
                padded.assign(static_cast<std::size_t>(needed), 0);
                std::memcpy(padded.data(), pixels, texture.m_ImageSize);
                pixels = padded.data();
            } catch (const std::bad_alloc&) {
                return;
            }
        }
    }
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, texture.m_Width, texture.m_Height, 0, GL_RGB,
                 GL_UNSIGNED_BYTE, pixels);
}

void InstallTextureUpload() {
    SetMeshInsertedHook(&UploadTexture);
}
