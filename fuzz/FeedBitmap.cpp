// Feed for the bitmap reader: the bytes become an image file named by a texture.
#include <cstdlib>

#include "fuzz/Feeds.h"
#include "fuzz/ScratchFile.h"
#include "import/Bitmap.h"

namespace fuzzing {

BitmapOutcome FeedBitmap(const std::uint8_t* data, std::size_t size) {
    static const ScratchFile file("bitmap", ".bmp");
    BitmapOutcome outcome;
    if (!file.Write(data, size))
        return outcome;
    unsigned char* pixels = ReadBitmap(file.Path().c_str());
    if (pixels == nullptr)
        return outcome;
    outcome.read = true;
    outcome.imageSize = LastImageSize;
    // The whole block the reader promises: the image size plus three spare bytes.
    volatile unsigned sum = 0;
    for (std::uint32_t i = 0; i < LastImageSize + 3u; ++i)
        sum = sum + pixels[i];
    std::free(pixels);
    return outcome;
}

}  // namespace fuzzing
