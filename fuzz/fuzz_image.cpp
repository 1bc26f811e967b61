// Any bytes as a texture image (PNG, JPEG, TGA, BMP or none of them).
#include "fuzz/Feeds.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::FeedImage(data, size);
    return 0;
}
