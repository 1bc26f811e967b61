// Damaged files for the hostile-input tests: the checked-in ones under tests/hostile/data/,
// and builders of bitmaps whose headers lie and of deeply nested FBX files.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

// The path of a file under tests/hostile/data/.
std::string DataFile(const std::string& name);

// What the code printed on standard output.
std::string CapturedOutput(const std::function<void()>& code);

// A Windows bitmap: 14-byte file header, 40-byte information header, then the pixel bytes.
// The header fields are given as they should be written, whether true or not.
struct BitmapShape {
    std::int32_t m_Width = 4;
    std::int32_t m_Height = 4;
    std::uint16_t m_BitsPerPixel = 24;
    std::uint32_t m_Compression = 0;
    std::uint32_t m_ImageSize = 4 * 4 * 3;
    std::uint32_t m_DataOffset = 54;
    std::size_t m_DataBytes = 4 * 4 * 3;  // pixel bytes actually written after the headers
};
std::string BitmapBytes(const BitmapShape& shape);

// The text times times in a row.
std::string Repeat(const std::string& text, int times);

// An ASCII file whose records nest depth levels deep; closed=false leaves every brace open.
std::string DeepAsciiFbx(int depth, bool closed);
// A binary file (version 7400) whose records nest depth levels deep, every end offset correct.
std::string DeepBinaryFbx(int depth);
