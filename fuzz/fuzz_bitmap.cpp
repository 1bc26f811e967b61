// Any bytes as a texture's bitmap file.
#include "fuzz/Feeds.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::FeedBitmap(data, size);
    return 0;
}
