// Any bytes through the FBX parsers.
#include "fuzz/Feeds.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::FeedParser(data, size);
    return 0;
}
