// The engine's one image format: uncompressed 24-bit Windows bitmaps ("BM").
#pragma once

#include <cstdint>
#include <string>

struct Texture;

// Width, height and image size of the last bitmap ReadBitmap read successfully.
extern std::int32_t LastImageWidth;
extern std::int32_t LastImageHeight;
extern std::uint32_t LastImageSize;

// Reads a bitmap's pixel bytes, blue-green-red triples turned into red-green-blue, from the
// data offset to the end of the file (rows bottom first, row padding kept). Returns a
// malloc'd block, or nullptr when the file cannot be opened, is not "BM" or cannot be read.
//
// The block holds the header's image size plus three spare bytes for the reader's final
// pass. When the header's image size is 0 or larger than the data the file holds, the
// block (and LastImageSize) is sized by the data present instead, so a header that lies
// can neither make the reader write past its block nor reserve memory the file cannot fill.
unsigned char* ReadBitmap(const char* fileName);

// Reads the file into the texture unless it is loaded already. Prints
// "Failed to load %s.\n" and returns false when the bitmap cannot be read.
bool LoadImage(Texture& texture, const std::string& fileName);
