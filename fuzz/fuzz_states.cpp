// Any bytes as a state file, then as the state table.
#include "fuzz/Feeds.h"
#include "states/Game.h"

// Loading keeps some objects for the life of the process on purpose (replaced actions, the
// loader state, the parsers of a reload), so leaks are not findings here.
extern "C" const char* __asan_default_options() {
    return "detect_leaks=0";
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzzing::SharedGame();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::FeedStateFile(fuzzing::SharedGame(), data, size);
    fuzzing::FeedStateTable(data, size);
    return 0;
}
