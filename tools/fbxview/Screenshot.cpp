#include "tools/fbxview/Screenshot.h"

#include <GL/gl.h>

#include <strings.h>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "fbx/write/PngFile.h"

namespace {

// Larger windows than this are not read back.
constexpr int kLargestSide = 16384;
// How many numbered names are tried before giving up.
constexpr int kMostScreenshots = 100000;

// The window's pixels as RGBA rows, top row first (OpenGL gives the bottom row first).
std::vector<std::uint8_t> ReadPixels(int width, int height) {
    const std::size_t row = static_cast<std::size_t>(width) * 4;
    std::vector<std::uint8_t> bottomUp(row * static_cast<std::size_t>(height));
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, bottomUp.data());
    std::vector<std::uint8_t> topDown(bottomUp.size());
    for (int y = 0; y < height; ++y) {
        std::memcpy(&topDown[static_cast<std::size_t>(y) * row],
                    &bottomUp[static_cast<std::size_t>(height - 1 - y) * row], row);
    }
    return topDown;
}

// Writes the bytes to a new file at the first free numbered name; its path, or empty.
std::string WriteNumbered(const std::string& stem, const std::vector<std::uint8_t>& bytes) {
    for (int number = 1; number <= kMostScreenshots; ++number) {
        const std::string path = stem + "-" + std::to_string(number) + ".png";
        // "x": fails when the file exists, so no screenshot is ever overwritten.
        std::FILE* file = std::fopen(path.c_str(), "wbx");
        if (file == nullptr) {
            if (errno == EEXIST) {
                continue;
            }
            return {};
        }
        const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
        if (std::fclose(file) != 0 || !written) {
            std::remove(path.c_str());
            return {};
        }
        return path;
    }
    return {};
}

}  // namespace

std::string ScreenshotStem(const std::string& modelFile) {
    const std::size_t length = modelFile.size();
    if (length > 4 && strcasecmp(modelFile.c_str() + length - 4, ".fbx") == 0) {
        return modelFile.substr(0, length - 4);
    }
    return modelFile;
}

std::string SaveScreenshot(const std::string& modelFile, int width, int height) {
    if (width <= 0 || height <= 0 || width > kLargestSide || height > kLargestSide) {
        return {};
    }
    const std::vector<std::uint8_t> png =
        fbx::EncodePng(width, height, ReadPixels(width, height), false);
    if (png.empty()) {
        return {};
    }
    return WriteNumbered(ScreenshotStem(modelFile), png);
}
