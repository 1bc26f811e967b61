// The texture image decoder on images made here: PNG and JPEG written by libpng and libjpeg,
// TGA and BMP (run-length encoded ones too) written byte by byte. Sizes, corner colours, alpha
// and the bottom-up row order of every format, then damaged files: huge claimed sizes,
// truncations, empty images, palette indices past the palette and random bytes.
#include <gtest/gtest.h>

#include <chrono>
#include <csetjmp>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>

#include "image_files.h"
#include "import/ImageDecode.h"

namespace {

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
        {"bmp run-length 8-bit", MakeRleBmp(8), 8, 6, false, false, 0},
        {"bmp run-length 4-bit", MakeRleBmp(4), 8, 6, false, false, 0},
        {"bmp run-length 4-bit odd size", MakeRleBmp(4, false, 14, 5), 14, 5, false, false, 0},
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
            Rgba want = QuadrantColour(at.first, at.second, c.w, c.h, c.alpha);
            if (c.grey) {
                const int g = QuadrantGrey(at.first, at.second, c.w, c.h);
                want = {g, g, g, want.a};
            }
            EXPECT_NEAR(got.r, want.r, c.tolerance) << at.first << "," << at.second;
            EXPECT_NEAR(got.g, want.g, c.tolerance) << at.first << "," << at.second;
            EXPECT_NEAR(got.b, want.b, c.tolerance) << at.first << "," << at.second;
            EXPECT_EQ(got.a, want.a) << at.first << "," << at.second;
        }
    }
    // Pixels a run-length delta jumps over are transparent black.
    DecodedImage skipped;
    ASSERT_TRUE(Decode(MakeRleBmp(8, true), skipped));
    EXPECT_TRUE(skipped.m_HasAlpha);
    const Rgba jumped = PixelFromTop(skipped, 3, 0);
    EXPECT_EQ(jumped.r + jumped.g + jumped.b + jumped.a, 0);
    const Rgba after = PixelFromTop(skipped, 4, 0);
    EXPECT_EQ(after.g + after.a, 510);
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
    Bytes b = format == "bmp" ? MakeBmp(24) : MakeRleBmp(8);
    Put32(b, 18, side), Put32(b, 22, side);
    return b;
}

TEST(ImageDecode, ImagesOverTheLimitsAreRefusedQuicklyWithTheSizeAndTheLimit) {
    const struct {
        const char* format;
        std::uint32_t side;
    } cases[] = {{"png", 100000},
                 {"jpeg", 65500},
                 {"tga", 65500},
                 {"bmp", 100000},
                 {"bmp run-length", 100000}};
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
    auto topDownRle = MakeRleBmp(8);
    Put32(topDownRle, 22, std::uint32_t(-6));
    auto wrongBitsRle = MakeRleBmp(4);
    Put16(wrongBitsRle, 28, 8);
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
        {"bmp run-length cut", Cut(MakeRleBmp(8), 90), "truncated BMP data"},
        {"bmp run-length top-down", topDownRle,
         "damaged BMP data (run-length encoded with a negative height)"},
        {"bmp run-length bits", wrongBitsRle,
         "damaged BMP data (run-length type 2 with 8 bits a pixel)"},
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
    // Run-length encoded BMPs: an index past the palette is opaque black; data cut before
    // the top rows (the header giving no encoded size) leaves them transparent black.
    auto badRle = MakeRleBmp(8);
    badRle[70 + 2] = 200;  // the bottom row's absolute run
    ASSERT_TRUE(Decode(badRle, image));
    const Rgba past = PixelFromTop(image, 0, 5);
    EXPECT_EQ(past.r + past.g + past.b, 0);
    EXPECT_EQ(past.a, 255);
    EXPECT_EQ(PixelFromTop(image, 1, 5).b, 255);
    auto cutRle = Cut(MakeRleBmp(4), 90);
    Put32(cutRle, 34, 0);
    ASSERT_TRUE(Decode(cutRle, image));
    const Rgba unwritten = PixelFromTop(image, 1, 1);
    EXPECT_EQ(unwritten.r + unwritten.g + unwritten.b + unwritten.a, 0);
    EXPECT_EQ(PixelFromTop(image, 6, 4).r, 255);
    EXPECT_TRUE(image.m_HasAlpha);
}

}  // namespace
