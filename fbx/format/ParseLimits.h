// Limits shared by the binary and ASCII parsers, so damaged files cannot exhaust the stack
// or memory.
#pragma once

#include <cstddef>

namespace fbx {

// Records nested deeper than this end the parse with an error (real files use about 10).
constexpr int kMaxNesting = 512;

// A compressed array may not claim to inflate to more than this many bytes per compressed
// byte (deflate's own limit is about 1032).
constexpr std::size_t kMaxInflateRatio = 1032;

// All compressed arrays of one file together may inflate to at most this multiple of the
// file size plus kInflateAllowance bytes.
constexpr std::size_t kInflateBudgetFactor = 32;
constexpr std::size_t kInflateAllowance = std::size_t{64} << 20;

}  // namespace fbx
