// The texture image decoder on images made here: PNG and JPEG written by libpng and libjpeg,
// TGA and BMP written byte by byte. Sizes, corner colours, alpha and the bottom-up row order
// of every format, then damaged files: huge claimed sizes, truncations, empty images,
// palette indices past the palette and random bytes.
#include <gtest/gtest.h>

#include <chrono>
#include <csetjmp>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>

#include <jpeglib.h>
#include <png.h>

#include "import/ImageDecode.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

struct Rgba {
    int r, g, b, a;
};

// The picture every format holds: four quadrants, red top left (half transparent where the
// format has alpha), green top right, blue bottom left, white bottom right.
Rgba Source(int x, int y, int w, int h, bool alpha) {
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
int Grey(int x, int y, int w, int h) {
    return (x >= w / 2 ? 1 : 0) * 80 + (y >= h / 2 ? 1 : 0) * 160 +
           (x >= w / 2 && y >= h / 2 ? 15 : 0);
}

// ---- PNG through libpng's writer ----

struct PngSink {
    Bytes* m_Out;
};
void PngWrite(png_structp png, png_bytep data, png_size_t size) {
    Bytes* out = static_cast<PngSink*>(png_get_io_ptr(png))->m_Out;
    out->insert(out->end(), data, data + size);
}
void PngFlush(png_structp) {}

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

enum class PngKind { Rgba8, Rgb8, Rgb16, Grey8, GreyAlpha8, Palette8, PaletteTrns, Interlaced };

Bytes MakePng(PngKind kind, int w = 8, int h = 6) {
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
                Source(x, y, w, h, kind == PngKind::Rgba8 || kind == PngKind::Interlaced);
            std::uint8_t* p = rows.data() + y * stride + std::size_t(x) * channels * depth / 8;
            if (colour == PNG_COLOR_TYPE_PALETTE) {
                p[0] = std::uint8_t((x >= w / 2 ? 1 : 0) + (y >= h / 2 ? 2 : 0));
            } else if (channels <= 2) {
                p[0] = std::uint8_t(Grey(x, y, w, h));
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

Bytes MakeJpeg(bool grey, bool progressive, int w = 16, int h = 16) {
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
            const Rgba c = Source(x, y, w, h, false);
            if (grey)
                row[x] = std::uint8_t(Grey(x, y, w, h));
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

void Put16(Bytes& b, std::size_t at, std::uint32_t v) {
    b[at] = std::uint8_t(v), b[at + 1] = std::uint8_t(v >> 8);
}
void Put32(Bytes& b, std::size_t at, std::uint32_t v) {
    Put16(b, at, v & 0xffff), Put16(b, at + 2, v >> 16);
}

enum class TgaKind { Rgb24, Rgba32, Palette, Rle24 };

// Bottom-up rows unless topDown (descriptor bit 5).
Bytes MakeTga(TgaKind kind, bool topDown = false, int w = 8, int h = 6) {
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
            const Rgba c = Source(x, y, w, h, bits == 32);
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
Bytes MakeBmp(int bits, bool topDown = false, int w = 8, int h = 6) {
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
            const Rgba c = Source(x, y, w, h, bits == 32);
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

// The pixel x columns from the left and y rows from the top of a decoded image.
Rgba PixelFromTop(const DecodedImage& image, int x, int y) {
    const std::uint8_t* p =
        image.m_Pixels.data() + (std::size_t(image.m_Height - 1 - y) * image.m_Width + x) * 4;
    return {p[0], p[1], p[2], p[3]};
}

Bytes Cut(const Bytes& bytes, std::size_t size) {
    return Bytes(bytes.begin(), bytes.begin() + std::min(size, bytes.size()));
}

bool Decode(const Bytes& bytes, DecodedImage& out, std::string* error = nullptr,
            ImageLimits limits = ImageLimits()) {
    return DecodeImage(bytes.data(), bytes.size(), limits, out, error);
}

TEST(ImageDecode, EveryFormatGivesItsSizeCornerColoursAndAlphaWithRowsBottomUp) {
    const struct {
        const char* name;
        Bytes bytes;
        int w, h;
        bool grey, alpha;
        int tolerance;
    } cases[] = {
        {"png rgba", MakePng(PngKind::Rgba8), 8, 6, false, true, 0},
        {"png rgb", MakePng(PngKind::Rgb8), 8, 6, false, false, 0},
        {"png rgb 16-bit", MakePng(PngKind::Rgb16), 8, 6, false, false, 0},
        {"png grey", MakePng(PngKind::Grey8), 8, 6, true, false, 0},
        {"png grey+alpha", MakePng(PngKind::GreyAlpha8), 8, 6, true, true, 0},
        {"png palette", MakePng(PngKind::Palette8), 8, 6, false, false, 0},
        {"png palette tRNS", MakePng(PngKind::PaletteTrns), 8, 6, false, true, 0},
        {"png interlaced", MakePng(PngKind::Interlaced), 8, 6, false, true, 0},
        {"jpeg baseline", MakeJpeg(false, false), 16, 16, false, false, 40},
        {"jpeg progressive", MakeJpeg(false, true), 16, 16, false, false, 40},
        {"jpeg grey", MakeJpeg(true, false), 16, 16, true, false, 8},
        {"tga 24-bit", MakeTga(TgaKind::Rgb24), 8, 6, false, false, 0},
        {"tga 24-bit top-down", MakeTga(TgaKind::Rgb24, true), 8, 6, false, false, 0},
        {"tga 32-bit", MakeTga(TgaKind::Rgba32), 8, 6, false, true, 0},
        {"tga palette", MakeTga(TgaKind::Palette), 8, 6, false, false, 0},
        {"tga run-length", MakeTga(TgaKind::Rle24), 8, 6, false, false, 0},
        {"bmp 8-bit", MakeBmp(8), 8, 6, false, false, 0},
        {"bmp 24-bit", MakeBmp(24), 8, 6, false, false, 0},
        {"bmp 24-bit top-down", MakeBmp(24, true), 8, 6, false, false, 0},
        {"bmp 32-bit", MakeBmp(32), 8, 6, false, true, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        DecodedImage image;
        std::string error;
        ASSERT_TRUE(Decode(c.bytes, image, &error)) << error;
        ASSERT_EQ(image.m_Width, c.w);
        ASSERT_EQ(image.m_Height, c.h);
        ASSERT_EQ(image.m_Pixels.size(), std::size_t(c.w) * c.h * 4);
        EXPECT_EQ(image.m_HasAlpha, c.alpha);
        // One pixel inside each quadrant, away from JPEG's block edges.
        for (const auto& at :
             {std::pair<int, int>{1, 1}, {c.w - 2, 1}, {1, c.h - 2}, {c.w - 2, c.h - 2}}) {
            const Rgba got = PixelFromTop(image, at.first, at.second);
            Rgba want = Source(at.first, at.second, c.w, c.h, c.alpha);
            if (c.grey) {
                const int g = Grey(at.first, at.second, c.w, c.h);
                want = {g, g, g, want.a};
            }
            EXPECT_NEAR(got.r, want.r, c.tolerance) << at.first << "," << at.second;
            EXPECT_NEAR(got.g, want.g, c.tolerance) << at.first << "," << at.second;
            EXPECT_NEAR(got.b, want.b, c.tolerance) << at.first << "," << at.second;
            EXPECT_EQ(got.a, want.a) << at.first << "," << at.second;
        }
    }
}

// A header claiming 100000 x 100000 (65500 where the format stops at 65535).
Bytes HugeClaim(const std::string& format, std::uint32_t side) {
    if (format == "png") {
        Bytes b = MakePng(PngKind::Rgb8);
        b[16] = std::uint8_t(side >> 24), b[17] = std::uint8_t(side >> 16);
        b[18] = std::uint8_t(side >> 8), b[19] = std::uint8_t(side);
        std::memcpy(b.data() + 20, b.data() + 16, 4);
        return b;
    }
    if (format == "jpeg") {
        Bytes b = MakeJpeg(false, false);
        for (std::size_t i = 2; i + 9 < b.size(); ++i)
            if (b[i] == 0xff && b[i + 1] == 0xc0) {
                b[i + 5] = b[i + 7] = std::uint8_t(side >> 8);
                b[i + 6] = b[i + 8] = std::uint8_t(side);
                break;
            }
        return b;
    }
    if (format == "tga") {
        Bytes b = MakeTga(TgaKind::Rle24);
        Put16(b, 12, side), Put16(b, 14, side);
        return b;
    }
    Bytes b = MakeBmp(24);
    Put32(b, 18, side), Put32(b, 22, side);
    return b;
}

TEST(ImageDecode, ImagesOverTheLimitsAreRefusedQuicklyWithTheSizeAndTheLimit) {
    const struct {
        const char* format;
        std::uint32_t side;
    } cases[] = {{"png", 100000}, {"jpeg", 65500}, {"tga", 65500}, {"bmp", 100000}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.format);
        const auto start = std::chrono::steady_clock::now();
        DecodedImage image;
        std::string error;
        EXPECT_FALSE(Decode(HugeClaim(c.format, c.side), image, &error));
        const std::string size = std::to_string(c.side);
        EXPECT_EQ(error, "image is " + size + " x " + size + ", larger than 8192");
        EXPECT_TRUE(image.m_Pixels.empty());
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    }
    // The byte budget too, and the caller's side limit.
    DecodedImage image;
    std::string error;
    ImageLimits small;
    small.m_MaxBytes = 100;
    EXPECT_FALSE(Decode(MakeBmp(24), image, &error, small));
    EXPECT_EQ(error, "image is 8 x 6, 192 bytes decoded, over the budget of 100");
    small = ImageLimits();
    small.m_MaxSide = 7;
    EXPECT_FALSE(Decode(MakePng(PngKind::Rgba8), image, &error, small));
    EXPECT_EQ(error, "image is 8 x 6, larger than 7");
}

TEST(ImageDecode, DamagedFilesAreRefusedWithAReason) {
    auto zeroPng = MakePng(PngKind::Rgb8);
    std::memset(zeroPng.data() + 16, 0, 4);
    auto zeroJpeg = MakeJpeg(false, false);
    for (std::size_t i = 2; i + 9 < zeroJpeg.size(); ++i)
        if (zeroJpeg[i] == 0xff && zeroJpeg[i + 1] == 0xc0) {
            zeroJpeg[i + 5] = zeroJpeg[i + 6] = 0;
            break;
        }
    auto zeroTga = MakeTga(TgaKind::Rgb24);
    Put16(zeroTga, 12, 0);
    auto zeroBmp = MakeBmp(24);
    Put32(zeroBmp, 22, 0);
    // Palette indices past the palette: BMP is refused; libpng reads them as opaque black and
    // stb_image's TGA reader as the first entry (both checked below).
    Bytes paletteRows(8 * 6, 7);
    const png_color palette[2] = {{1, 2, 3}, {4, 5, 6}};
    Bytes badPng;
    ASSERT_TRUE(WritePng(badPng, 8, 6, PNG_COLOR_TYPE_PALETTE, 8, false, paletteRows.data(), 8,
                         palette, 2, nullptr, 0));
    auto badBmp = MakeBmp(8);
    badBmp[70] = 200;
    auto rleBmp = MakeBmp(8);
    Put32(rleBmp, 30, 1);
    const struct {
        const char* name;
        Bytes bytes;
        const char* reason;  // the start of the reason
    } cases[] = {
        {"png cut", Cut(MakePng(PngKind::Rgb8), 60), "truncated PNG data"},
        {"jpeg cut", Cut(MakeJpeg(false, false), 300), "truncated JPEG data"},
        {"tga cut", Cut(MakeTga(TgaKind::Rgb24), 100), "truncated TGA data"},
        {"bmp cut", Cut(MakeBmp(24), 100), "truncated BMP data"},
        {"png zero width", zeroPng, "image is 0 x 6, it has no pixels"},
        {"jpeg zero height", zeroJpeg, "Empty JPEG image"},
        {"tga zero width", zeroTga, "damaged TGA data"},
        {"bmp zero height", zeroBmp, "image is 8 x 0, it has no pixels"},
        {"bmp palette index", badBmp, "BMP palette index 200 past the palette of 4"},
        {"bmp run-length", rleBmp, "run-length encoded BMP is not supported"},
        {"text", Bytes{'h', 'e', 'l', 'l', 'o'}, "not an image"},
        {"empty", Bytes{}, "not an image"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        DecodedImage image;
        std::string error;
        EXPECT_FALSE(Decode(c.bytes, image, &error));
        EXPECT_EQ(error.rfind(c.reason, 0), 0u) << error;
        EXPECT_TRUE(image.m_Pixels.empty());
        EXPECT_EQ(image.m_Width, 0);
    }
    DecodedImage black;
    ASSERT_TRUE(Decode(badPng, black));
    const Rgba missing = PixelFromTop(black, 3, 3);
    EXPECT_EQ(missing.r + missing.g + missing.b, 0);
    EXPECT_EQ(missing.a, 255);
    auto badTga = MakeTga(TgaKind::Palette);
    badTga[18 + 12] = 9;
    DecodedImage image;
    ASSERT_TRUE(Decode(badTga, image));
    const Rgba first = PixelFromTop(image, 0, 5);
    EXPECT_EQ(first.r + first.g + first.b, 255);
}

}  // namespace
