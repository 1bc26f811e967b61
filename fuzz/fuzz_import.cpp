// Any bytes as an FBX file: through the importer with a walk over the scene it built, then
// through the engine's whole model import.
#include "fuzz/Feeds.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::FeedImporter(data, size);
    fuzzing::FeedModelImport(data, size);
    return 0;
}
