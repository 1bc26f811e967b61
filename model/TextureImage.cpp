#include "model/TextureImage.h"

#include <algorithm>
#include <cstddef>

namespace {

TextureImageHook g_Decoded = nullptr;
TextureNameReleaseHook g_Release = nullptr;

}  // namespace

TextureImage::~TextureImage() {
    if (m_GlName != 0 && g_Release != nullptr)
        g_Release(m_GlName);
}

void HalveTextureImage(TextureImage& image) {
    if (image.m_Width <= 0 || image.m_Height <= 0 ||
        image.m_Pixels.size() !=
            static_cast<std::size_t>(image.m_Width) * static_cast<std::size_t>(image.m_Height) * 4)
        return;
    const int width = std::max(1, image.m_Width / 2);
    const int height = std::max(1, image.m_Height / 2);
    std::vector<std::uint8_t> halved(static_cast<std::size_t>(width) * height * 4);
    const auto at = [&](int x, int y, int c) {
        x = std::min(x, image.m_Width - 1);
        y = std::min(y, image.m_Height - 1);
        return static_cast<unsigned>(
            image.m_Pixels[(static_cast<std::size_t>(y) * image.m_Width + x) * 4 + c]);
    };
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (int c = 0; c < 4; ++c) {
                const unsigned sum = at(2 * x, 2 * y, c) + at(2 * x + 1, 2 * y, c) +
                                     at(2 * x, 2 * y + 1, c) + at(2 * x + 1, 2 * y + 1, c);
                halved[(static_cast<std::size_t>(y) * width + x) * 4 + c] =
                    static_cast<std::uint8_t>((sum + 2) / 4);
            }
        }
    }
    image.m_Pixels = std::move(halved);
    image.m_Width = width;
    image.m_Height = height;
}

void SetTextureImageDecodedHook(TextureImageHook hook) {
    g_Decoded = hook;
}

void NotifyTextureImageDecoded(TextureImage& image) {
    if (g_Decoded != nullptr)
        g_Decoded(image);
}

void SetTextureNameReleaseHook(TextureNameReleaseHook hook) {
    g_Release = hook;
}
