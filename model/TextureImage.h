// The authored look's texture images: one decoded picture, shared by every material and
// model that shows it, so that it is decoded and handed to OpenGL once.
//
// The records know no OpenGL. The drawing side installs two hooks: one that uploads an image
// as soon as the import has decoded it (so its pixels can be let go at once), and one that
// gives its texture name back when the last material showing it is gone.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct TextureImage {
    TextureImage() = default;
    TextureImage(const TextureImage&) = delete;
    TextureImage& operator=(const TextureImage&) = delete;
    ~TextureImage();

    std::string m_Name;  // the texture's file name as messages give it
    int m_Width = 0;     // pixels per row
    int m_Height = 0;    // rows
    // RGBA, 8 bits per channel, rows bottom-up; emptied once OpenGL holds the image.
    std::vector<std::uint8_t> m_Pixels;
    bool m_HasAlpha = false;    // some pixel is not fully opaque: drawn blended
    unsigned int m_GlName = 0;  // OpenGL texture name once uploaded (from glGenTextures)
};

// Halves the image in both directions (a side of 1 stays 1), each new pixel the mean of the
// two by two it covers. Does nothing to an image without pixels.
void HalveTextureImage(TextureImage& image);

// Called with each image the import has decoded; null (the default) calls nothing.
using TextureImageHook = void (*)(TextureImage& image);
void SetTextureImageDecodedHook(TextureImageHook hook);
void NotifyTextureImageDecoded(TextureImage& image);

// Called with the OpenGL name of each uploaded image that goes away; null calls nothing.
using TextureNameReleaseHook = void (*)(unsigned int name);
void SetTextureNameReleaseHook(TextureNameReleaseHook hook);
