// Feed for the texture image decoder: the bytes as an image file or an embedded image.
#include "fuzz/Feeds.h"
#include "import/ImageDecode.h"

namespace fuzzing {

ImageOutcome FeedImage(const std::uint8_t* data, std::size_t size) {
    ImageLimits limits;
    limits.m_MaxSide = 2048;
    limits.m_MaxBytes = 16u << 20;
    DecodedImage image;
    ImageOutcome outcome;
    outcome.decoded = DecodeImage(data, size, limits, image, &outcome.error);
    outcome.width = image.m_Width;
    outcome.height = image.m_Height;
    outcome.hasAlpha = image.m_HasAlpha;
    // The decoder's promises: a refusal says why and leaves nothing behind; an image fits the
    // limits and holds exactly its RGBA pixels. A broken promise aborts, so the fuzzer reports it.
    if (!outcome.decoded) {
        if (outcome.error.empty() || !image.m_Pixels.empty())
            __builtin_trap();
        return outcome;
    }
    if (image.m_Width <= 0 || image.m_Height <= 0 || image.m_Width > limits.m_MaxSide ||
        image.m_Height > limits.m_MaxSide ||
        image.m_Pixels.size() != std::size_t(image.m_Width) * std::size_t(image.m_Height) * 4 ||
        image.m_Pixels.size() > limits.m_MaxBytes)
        __builtin_trap();
    bool translucent = false;
    volatile unsigned sum = 0;
    for (std::size_t i = 0; i < image.m_Pixels.size(); ++i) {
        sum = sum + image.m_Pixels[i];
        if (i % 4 == 3 && image.m_Pixels[i] != 255)
            translucent = true;
    }
    if (translucent != image.m_HasAlpha)
        __builtin_trap();
    return outcome;
}

}  // namespace fuzzing
