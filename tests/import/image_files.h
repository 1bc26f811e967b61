// Image files made here for the texture tests: PNG and JPEG written by libpng and libjpeg, TGA
// and BMP (run-length encoded ones too) written byte by byte. Each holds the quadrant picture.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <png.h>

using Bytes = std::vector<std::uint8_t>;

struct Rgba {
    int r, g, b, a;
};

// The picture every format holds: four quadrants, red top left (half transparent where the
// format has alpha), green top right, blue bottom left, white bottom right.
Rgba QuadrantColour(int x, int y, int w, int h, bool alpha);
// The grey formats: 0, 80, 160 and 255 in the same quadrants.
int QuadrantGrey(int x, int y, int w, int h);

// Little-endian fields.
void Put16(Bytes& b, std::size_t at, std::uint32_t v);
void Put32(Bytes& b, std::size_t at, std::uint32_t v);

// Writes a PNG of rows (top-down, already in the PNG's sample layout) with libpng; false when
// libpng refuses.
bool WritePng(Bytes& out, int w, int h, int colour, int depth, bool interlaced,
              const std::uint8_t* rows, std::size_t stride, const png_color* palette,
              int paletteSize, const png_byte* trns, int trnsSize);

enum class PngKind { Rgba8, Rgb8, Rgb16, Grey8, GreyAlpha8, Palette8, PaletteTrns, Interlaced };
Bytes MakePng(PngKind kind, int w = 8, int h = 6);

// Baseline or progressive, colour or grey.
Bytes MakeJpeg(bool grey, bool progressive, int w = 16, int h = 16);

enum class TgaKind { Rgb24, Rgba32, Palette, Rle24 };
// Bottom-up rows unless topDown (descriptor bit 5).
Bytes MakeTga(TgaKind kind, bool topDown = false, int w = 8, int h = 6);

// 8 (four palette entries), 24 or 32 bits; bottom-up rows unless topDown.
Bytes MakeBmp(int bits, bool topDown = false, int w = 8, int h = 6);

// Run-length encoded, 8 or 4 bits a pixel, the four colours of MakeBmp's palette, rows
// bottom-up: the bottom row's left half is an absolute run (padded to a 16-bit word), every
// other half an encoded run; end-of-line after each row but the top one, end-of-bitmap after
// it. With skip, a delta escape jumps over the top row's left half (left transparent black).
Bytes MakeRleBmp(int bits, bool skip = false, int w = 8, int h = 6);
