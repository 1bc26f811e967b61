// Key lists of the Takes section of older files: "Key: time, value, letter, ..." records.
//
// A key is a time (ticks), a value and an interpolation letter followed by parameters whose
// number depends on the letter and on the channel's KeyVer. Letters arrive as bare words in
// ASCII files and as one-byte values (the letter's code) in binary files; both are accepted.
#pragma once

#include <cstdint>
#include <vector>

#include "fbx/format/Record.h"

namespace fbx {

struct TakeKey {
    std::int64_t time = 0;
    double value = 0.0;
};

// Reads the keys of one channel record (the one holding Default, KeyVer, KeyCount, Key).
// fileVersion picks the KeyVer assumed when the channel has none. Stops at KeyCount keys or
// at the first key that does not follow the grammar; what was read before is kept.
std::vector<TakeKey> ReadTakeKeys(const Record& channel, std::uint32_t fileVersion);

}  // namespace fbx
