// PNG images for written scenes: the textures that generated models carry, in the file or
// beside it. Tools, tests and benchmarks only.
#pragma once

#include <cstdint>
#include <vector>

namespace fbx {

// PNG bytes of a width x height image given as RGBA rows, top row first. With alpha the
// image keeps its alpha channel, else the alpha bytes are dropped. Empty when the size does
// not match the pixels.
std::vector<std::uint8_t> EncodePng(int width, int height, const std::vector<std::uint8_t>& rgba,
                                    bool alpha);

}  // namespace fbx
