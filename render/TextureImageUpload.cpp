#include "render/TextureImageUpload.h"

#include <GL/gl.h>
#include <GL/glx.h>

#include <cstddef>
#include <cstdio>

void UploadTextureImage(TextureImage& image) {
    if (image.m_GlName != 0 || image.m_Pixels.empty() || image.m_Width <= 0 ||
        image.m_Height <= 0 ||
        image.m_Pixels.size() !=
            static_cast<std::size_t>(image.m_Width) * static_cast<std::size_t>(image.m_Height) * 4)
        return;
    GLint largest = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largest);
    if (largest <= 0)
        return;
    if (image.m_Width > largest || image.m_Height > largest) {
        const int width = image.m_Width, height = image.m_Height;
        while (image.m_Width > largest || image.m_Height > largest)
            HalveTextureImage(image);
        std::printf(
            "Texture image %s is %d x %d, larger than this OpenGL takes (%d): shrunk to %d x %d.\n",
            image.m_Name.c_str(), width, height, static_cast<int>(largest), image.m_Width,
            image.m_Height);
    }
    while (glGetError() != GL_NO_ERROR) {
    }
    GLuint name = 0;
    glGenTextures(1, &name);
    glPushAttrib(GL_TEXTURE_BIT);
    glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    glPixelStorei(GL_UNPACK_SKIP_ROWS, 0);
    glPixelStorei(GL_UNPACK_SKIP_PIXELS, 0);
    glBindTexture(GL_TEXTURE_2D, name);
    glTexParameteri(GL_TEXTURE_2D, GL_GENERATE_MIPMAP, GL_TRUE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, image.m_Width, image.m_Height, 0, GL_RGBA,
                 GL_UNSIGNED_BYTE, image.m_Pixels.data());
    const bool taken = glGetError() == GL_NO_ERROR;
    glPopClientAttrib();
    glPopAttrib();
    if (taken) {
        image.m_GlName = name;
    } else {
        glDeleteTextures(1, &name);
        std::printf("Texture image %s: OpenGL did not take it.\n", image.m_Name.c_str());
    }
    // Either way the pixels are not needed again.
    image.m_Pixels.clear();
    image.m_Pixels.shrink_to_fit();
}

void InstallTextureImageUpload() {
    SetTextureImageDecodedHook(UploadTextureImage);
    SetTextureNameReleaseHook([](unsigned int name) {
        // Nothing to give back once the window and its context are gone.
        if (glXGetCurrentContext() == nullptr)
            return;
        const GLuint texture = name;
        glDeleteTextures(1, &texture);
    });
}
