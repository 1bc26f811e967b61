#include "image_files.h"

#include <gtest/gtest.h>
#include <jpeglib.h>
#include <png.h>

#include <csetjmp>
#include <cstdlib>
#include <cstring>

namespace {

// ---- PNG through libpng's writer ----

struct PngSink {
    Bytes* m_Out;
};
void PngWrite(png_structp png, png_bytep data, png_size_t size) {
    Bytes* out = static_cast<PngSink*>(png_get_io_ptr(png))->m_Out;
    out->insert(out->end(), data, data + size);
}
void PngFlush(png_structp) {}

}  // namespace

// rows: top-down, already in the PNG's sample layout. No destructors in this frame.
bool WritePng(Bytes& out, int w, int h, int colour, int depth, bool interlaced,
              const std::uint8_t* rows, std::size_t stride, const png_color* palette,
              int paletteSize, const png_byte* trns, int trnsSize) {
    PngSink sink{&out};
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        return false;
    }
    png_set_write_fn(png, &sink, PngWrite, PngFlush);
    png_set_check_for_invalid_index(png, -1);  // the hostile case writes such an index
    png_set_IHDR(png, info, w, h, depth, colour,
                 interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (palette != nullptr)
        png_set_PLTE(png, info, palette, paletteSize);
    if (trns != nullptr)
        png_set_tRNS(png, info, trns, trnsSize, nullptr);
    png_write_info(png, info);
    if (depth == 16)
        png_set_swap(png);  // rows hold little-endian 16-bit samples
    const int passes = png_set_interlace_handling(png);
    for (int pass = 0; pass < passes; ++pass)
        for (int y = 0; y < h; ++y)
            png_write_row(png, rows + y * stride);
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return true;
}

void Put16(Bytes& b, std::size_t at, std::uint32_t v) {
    b[at] = std::uint8_t(v), b[at + 1] = std::uint8_t(v >> 8);
}
void Put32(Bytes& b, std::size_t at, std::uint32_t v) {
    Put16(b, at, v & 0xffff), Put16(b, at + 2, v >> 16);
}

// The picture every format holds: four quadrants, red top left (half transparent where the
// format has alpha), green top right, blue bottom left, white bottom right.
Rgba QuadrantColour(int x, int y, int w, int h, bool alpha) {
    const bool right = x >= w / 2;
    const bool bottom = y >= h / 2;
    if (!right && !bottom)
        return {255, 0, 0, alpha ? 128 : 255};
    if (right && !bottom)
        return {0, 255, 0, 255};
    if (!right)
        return {0, 0, 255, 255};
    return {255, 255, 255, 255};
}
// The grey formats: 0, 80, 160 and 255 in the same quadrants.
int QuadrantGrey(int x, int y, int w, int h) {
    return (x >= w / 2 ? 1 : 0) * 80 + (y >= h / 2 ? 1 : 0) * 160 +
           (x >= w / 2 && y >= h / 2 ? 15 : 0);
}

Bytes MakePng(PngKind kind, int w, int h) {
    int colour = PNG_COLOR_TYPE_RGB_ALPHA, channels = 4, depth = 8;
    if (kind == PngKind::Rgb8 || kind == PngKind::Rgb16)
        colour = PNG_COLOR_TYPE_RGB, channels = 3;
    if (kind == PngKind::Rgb16)
        depth = 16;
    if (kind == PngKind::Grey8)
        colour = PNG_COLOR_TYPE_GRAY, channels = 1;
    if (kind == PngKind::GreyAlpha8)
        colour = PNG_COLOR_TYPE_GRAY_ALPHA, channels = 2;
    if (kind == PngKind::Palette8 || kind == PngKind::PaletteTrns)
        colour = PNG_COLOR_TYPE_PALETTE, channels = 1;
    const std::size_t stride = std::size_t(w) * channels * depth / 8;
    Bytes rows(stride * h);
    const png_color palette[4] = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 255}};
    const png_byte trns[1] = {128};
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const Rgba c =
                QuadrantColour(x, y, w, h, kind == PngKind::Rgba8 || kind == PngKind::Interlaced);
            std::uint8_t* p = rows.data() + y * stride + std::size_t(x) * channels * depth / 8;
            if (colour == PNG_COLOR_TYPE_PALETTE) {
                p[0] = std::uint8_t((x >= w / 2 ? 1 : 0) + (y >= h / 2 ? 2 : 0));
            } else if (channels <= 2) {
                p[0] = std::uint8_t(QuadrantGrey(x, y, w, h));
                if (channels == 2)
                    p[1] = x < w / 2 && y < h / 2 ? 128 : 255;
            } else if (depth == 16) {
                const int v[3] = {c.r, c.g, c.b};
                for (int i = 0; i < 3; ++i)
                    p[2 * i] = p[2 * i + 1] = std::uint8_t(v[i]);
            } else {
                p[0] = std::uint8_t(c.r), p[1] = std::uint8_t(c.g), p[2] = std::uint8_t(c.b);
                if (channels == 4)
                    p[3] = std::uint8_t(c.a);
            }
        }
    Bytes out;
    EXPECT_TRUE(WritePng(out, w, h, colour, depth, kind == PngKind::Interlaced, rows.data(), stride,
                         colour == PNG_COLOR_TYPE_PALETTE ? palette : nullptr, 4,
                         kind == PngKind::PaletteTrns ? trns : nullptr, 1));
    return out;
}

// ---- JPEG through libjpeg's compressor ----

Bytes MakeJpeg(bool grey, bool progressive, int w, int h) {
    jpeg_compress_struct info;
    jpeg_error_mgr errors;
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* buffer = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &buffer, &size);
    info.image_width = JDIMENSION(w);
    info.image_height = JDIMENSION(h);
    info.input_components = grey ? 1 : 3;
    info.in_color_space = grey ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, 95, TRUE);
    if (progressive)
        jpeg_simple_progression(&info);
    jpeg_start_compress(&info, TRUE);
    Bytes row(std::size_t(w) * 3);
    while (info.next_scanline < info.image_height) {
        const int y = int(info.next_scanline);
        for (int x = 0; x < w; ++x) {
            const Rgba c = QuadrantColour(x, y, w, h, false);
            if (grey)
                row[x] = std::uint8_t(QuadrantGrey(x, y, w, h));
            else
                row[3 * x] = std::uint8_t(c.r), row[3 * x + 1] = std::uint8_t(c.g),
                        row[3 * x + 2] = std::uint8_t(c.b);
        }
        JSAMPROW rows[1] = {row.data()};
        jpeg_write_scanlines(&info, rows, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    Bytes out(buffer, buffer + size);
    std::free(buffer);
    return out;
}

// ---- TGA and BMP by hand ----

// Bottom-up rows unless topDown (descriptor bit 5).
Bytes MakeTga(TgaKind kind, bool topDown, int w, int h) {
    const int type = kind == TgaKind::Palette ? 1 : kind == TgaKind::Rle24 ? 10 : 2;
    const int bits = kind == TgaKind::Rgba32 ? 32 : kind == TgaKind::Palette ? 8 : 24;
    Bytes b(18, 0);
    b[1] = kind == TgaKind::Palette ? 1 : 0;
    b[2] = std::uint8_t(type);
    if (kind == TgaKind::Palette) {
        Put16(b, 5, 4), b[7] = 24;
        for (const std::uint8_t v : {0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255, 255})  // BGR
            b.push_back(v);
    }
    Put16(b, 12, std::uint32_t(w)), Put16(b, 14, std::uint32_t(h));
    b[16] = std::uint8_t(bits);
    b[17] = std::uint8_t((topDown ? 0x20 : 0) | (bits == 32 ? 8 : 0));
    for (int row = 0; row < h; ++row) {
        const int y = topDown ? row : h - 1 - row;
        for (int x = 0; x < w; ++x) {
            const Rgba c = QuadrantColour(x, y, w, h, bits == 32);
            if (kind == TgaKind::Palette) {
                b.push_back(std::uint8_t((x >= w / 2 ? 1 : 0) + (y >= h / 2 ? 2 : 0)));
                continue;
            }
            if (kind == TgaKind::Rle24) {
                if (x % (w / 2) != 0)
                    continue;
                b.push_back(std::uint8_t(0x80 | (w / 2 - 1)));  // one run per half row
            }
            b.push_back(std::uint8_t(c.b)), b.push_back(std::uint8_t(c.g)),
                b.push_back(std::uint8_t(c.r));
            if (bits == 32)
                b.push_back(std::uint8_t(c.a));
        }
    }
    return b;
}

// 8 (four palette entries), 24 or 32 bits; bottom-up rows unless topDown.
Bytes MakeBmp(int bits, bool topDown, int w, int h) {
    const std::size_t stride = ((std::size_t(w) * bits + 31) / 32) * 4;
    const std::size_t offset = 54 + (bits == 8 ? 16 : 0);
    Bytes b(offset + stride * h, 0);
    b[0] = 'B', b[1] = 'M';
    Put32(b, 2, std::uint32_t(b.size())), Put32(b, 10, std::uint32_t(offset)), Put32(b, 14, 40);
    Put32(b, 18, std::uint32_t(w)), Put32(b, 22, std::uint32_t(topDown ? -h : h));
    Put16(b, 26, 1), Put16(b, 28, std::uint32_t(bits));
    if (bits == 8) {
        const std::uint8_t map[16] = {0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 0, 255, 255, 255, 0};
        std::memcpy(b.data() + 54, map, 16);
    }
    for (int row = 0; row < h; ++row) {
        const int y = topDown ? row : h - 1 - row;
        for (int x = 0; x < w; ++x) {
            const Rgba c = QuadrantColour(x, y, w, h, bits == 32);
            std::uint8_t* p = b.data() + offset + row * stride + std::size_t(x) * bits / 8;
            if (bits == 8) {
                p[0] = std::uint8_t((x >= w / 2 ? 1 : 0) + (y >= h / 2 ? 2 : 0));
                continue;
            }
            p[0] = std::uint8_t(c.b), p[1] = std::uint8_t(c.g), p[2] = std::uint8_t(c.r);
            if (bits == 32)
                p[3] = std::uint8_t(c.a);
        }
    }
    return b;
}

// Run-length encoded, 8 or 4 bits a pixel, the four colours of MakeBmp's palette, rows
// bottom-up: the bottom row's left half is an absolute run (padded to a 16-bit word), every
// other half an encoded run; end-of-line after each row but the top one, end-of-bitmap after
// it. With skip, a delta escape jumps over the top row's left half (left transparent black).
Bytes MakeRleBmp(int bits, bool skip, int w, int h) {
    Bytes b(70, 0);
    b[0] = 'B', b[1] = 'M';
    Put32(b, 10, 70), Put32(b, 14, 40), Put32(b, 18, std::uint32_t(w));
    Put32(b, 22, std::uint32_t(h)), Put16(b, 26, 1), Put16(b, 28, std::uint32_t(bits));
    Put32(b, 30, bits == 8 ? 1 : 2), Put32(b, 46, 4);
    const std::uint8_t map[16] = {0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 0, 255, 255, 255, 0};
    std::memcpy(b.data() + 54, map, 16);
    // One byte holds one index, or two at 4 bits.
    const auto packed = [bits](int index) {
        return std::uint8_t(bits == 8 ? index : index << 4 | index);
    };
    const std::uint8_t half = std::uint8_t(w / 2);
    for (int row = 0; row < h; ++row) {
        const int left = h - 1 - row >= h / 2 ? 2 : 0;
        if (row == 0) {
            const int bytes = bits == 8 ? half : (half + 1) / 2;
            b.insert(b.end(), {0, half});
            b.insert(b.end(), std::size_t(bytes + bytes % 2), packed(left));
        } else if (skip && row == h - 1) {
            b.insert(b.end(), {0, 2, half, 0});
        } else {
            b.insert(b.end(), {half, packed(left)});
        }
        b.insert(b.end(),
                 {std::uint8_t(w - half), packed(left + 1), 0, std::uint8_t(row == h - 1 ? 1 : 0)});
    }
    Put32(b, 2, std::uint32_t(b.size())), Put32(b, 34, std::uint32_t(b.size() - 70));
    return b;
}
