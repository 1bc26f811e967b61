// Key lists of the Takes section of older files: "Key: time, value, letter, ..." records.
//
// A key is a time (ticks), a value and an interpolation letter followed by parameters whose
// number depends on the letter and on the channel's KeyVer. Letters arrive as bare words in
// ASCII files and as one-byte values (the letter's code) in binary files; both are accepted.
//
// The letters: 'C' constant, then 's' (hold this value) or 'n' (hold the next key's value)
// from KeyVer 4004 on; 'L' linear; 'U' cubic, then a tangent letter: 's' user and 'b' broken
// tangents give two slopes (this key's right slope and the next key's left slope, in value
// units per second, as the 7000+ twin files of the same scenes store them), 'a' automatic
// tangents give none, 'p', 'q', 't' (TCB) and 'd' give parameters this reader does not use.
#pragma once

#include <cstdint>
#include <vector>

#include "fbx/format/Record.h"

namespace fbx {

enum class TakeInterpolation : std::uint8_t { Constant, Linear, Cubic };

// One key and the span from it to the next key.
struct TakeKey {
    std::int64_t time = 0;
    double value = 0.0;
    TakeInterpolation interpolation = TakeInterpolation::Linear;
    bool constantNext = false;  // a constant key that holds the next key's value
    char tangent = '\0';        // a cubic key's tangent letter ('s', 'b', 'a', 'p', 'q', 't', 'd')
    // Slopes in value units per second, always finite: leaving this key, and arriving at the
    // next one. Constant keys have 0 and 0, linear keys the straight line's slope twice, cubic
    // keys with 's' or 'b' the written slopes; the others are worked out from the keys
    // around them (see ReadTakeKeys).
    double rightSlope = 0.0;
    double nextLeftSlope = 0.0;
};

// Reads the keys of one channel record (the one holding Default, KeyVer, KeyCount, Key).
// fileVersion picks the KeyVer assumed when the channel has none. Stops at KeyCount keys or
// at the first key that does not follow the grammar; what was read before is kept.
//
// Tangents that the file does not write ('a', and as a best effort 'p', 'q', 't', 'd') get
// the slopes of Maya's automatic tangents, as its 7000+ files store them: 0 at the first and
// last key and at a key that is not strictly between its neighbours' values, else the slope
// of the line between the neighbouring keys. The left slope of the key after such a span is
// that key's own right slope when it is a user ('s') key, else its automatic slope.
std::vector<TakeKey> ReadTakeKeys(const Record& channel, std::uint32_t fileVersion);

}  // namespace fbx
