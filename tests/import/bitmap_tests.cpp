// The bitmap reader on hand-made files: byte order, padding, the reader's extra final
// triple, rejected signatures, truncated files and headers that lie.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "import/Bitmap.h"
#include "model/Texture.h"

namespace {

namespace fs = std::filesystem;

void Put16(std::vector<unsigned char>& out, std::uint16_t v) {
    out.push_back(v & 0xFF);
    out.push_back(v >> 8);
}

void Put32(std::vector<unsigned char>& out, std::uint32_t v) {
    for (int i = 0; i < 4; ++i) out.push_back((v >> (8 * i)) & 0xFF);
}

// A 54-byte header ("BM", sizes, offset 54) followed by data.
std::vector<unsigned char> MakeBitmap(std::int32_t width, std::int32_t height,
                                      std::uint32_t imageSize,
                                      const std::vector<unsigned char>& data,
                                      const char* signature = "BM") {
    std::vector<unsigned char> out;
    out.push_back(signature[0]);
    out.push_back(signature[1]);
    Put32(out, 54 + static_cast<std::uint32_t>(data.size()));
    Put16(out, 0);
    Put16(out, 0);
    Put32(out, 54);
    Put32(out, 40);
    Put32(out, static_cast<std::uint32_t>(width));
    Put32(out, static_cast<std::uint32_t>(height));
    Put16(out, 1);
    Put16(out, 24);
    Put32(out, 0);
    Put32(out, imageSize);
    Put32(out, 2835);
    Put32(out, 2835);
    Put32(out, 0);
    Put32(out, 0);
    out.insert(out.end(), data.begin(), data.end());
    return out;
}

class BitmapTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_Dir = fs::temp_directory_path() /
                ("bitmap_tests_" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) +
                 "_" + ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::create_directories(m_Dir);
    }
    void TearDown() override { fs::remove_all(m_Dir); }

    std::string Write(const std::string& name, const std::vector<unsigned char>& bytes) {
        const fs::path path = m_Dir / name;
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return path.string();
    }

    fs::path m_Dir;
};

TEST_F(BitmapTest, PaddedRowsAreReadAsConsecutiveTriples) {
    // 2x2, rows of 6 bytes padded to 8: the padding is read as pixel data.
    const std::vector<unsigned char> data = {1, 2, 3, 4, 5, 6, 0, 0, 7, 8, 9, 10, 11, 12, 0, 0};
    const std::string path = Write("padded.bmp", MakeBitmap(2, 2, 16, data));
    unsigned char* pixels = ReadBitmap(path.c_str());
    ASSERT_NE(pixels, nullptr);
    // Blue-green-red triples become red-green-blue; the sixth triple is the last data
    // byte and the bytes it left behind.
    const std::vector<unsigned char> expected = {3, 2, 1, 6, 5, 4, 7, 0, 0, 10, 9, 8,
                                                 0, 12, 11, 0, 0, 0};
    EXPECT_EQ(std::vector<unsigned char>(pixels, pixels + 18), expected);
    EXPECT_EQ(LastImageWidth, 2);
    EXPECT_EQ(LastImageHeight, 2);
    EXPECT_EQ(LastImageSize, 16u);
    std::free(pixels);
}

TEST_F(BitmapTest, DataOfWholeTriplesGetsOneMoreTripleOfTheLastByteRead) {
    const std::vector<unsigned char> data = {10, 20, 30, 40, 50, 60};
    const std::string path = Write("triples.bmp", MakeBitmap(2, 1, 6, data));
    unsigned char* pixels = ReadBitmap(path.c_str());
    ASSERT_NE(pixels, nullptr);
    const std::vector<unsigned char> expected = {30, 20, 10, 60, 50, 40, 60, 60, 60};
    EXPECT_EQ(std::vector<unsigned char>(pixels, pixels + 9), expected);
    std::free(pixels);
}

TEST_F(BitmapTest, OnlyBMSignatureIsAccepted) {
    const std::vector<unsigned char> data = {1, 2, 3};
    EXPECT_EQ(ReadBitmap(Write("mb.bmp", MakeBitmap(1, 1, 3, data, "MB")).c_str()), nullptr);
    EXPECT_EQ(ReadBitmap(Write("pn.bmp", MakeBitmap(1, 1, 3, data, "PN")).c_str()), nullptr);
    EXPECT_EQ(ReadBitmap((m_Dir / "missing.bmp").string().c_str()), nullptr);
    EXPECT_EQ(ReadBitmap(Write("empty.bmp", {}).c_str()), nullptr);
}

TEST_F(BitmapTest, TruncatedAndLyingFilesStayInsideTheirBlock) {
    const std::vector<unsigned char> full =
        MakeBitmap(4, 4, 48, std::vector<unsigned char>(48, 0x7F));
    // Every truncation either fails or gives a block of the size it reports.
    for (std::size_t cut = 2; cut < full.size(); cut += 5) {
        const std::string path =
            Write("cut.bmp", std::vector<unsigned char>(full.begin(), full.begin() + cut));
        unsigned char* pixels = ReadBitmap(path.c_str());
        if (pixels) {
            // The block holds at least the reported size; ASan catches any over-read here.
            volatile unsigned sum = 0;
            for (std::uint32_t i = 0; i < LastImageSize; ++i) sum += pixels[i];
            std::free(pixels);
        }
    }
    // A header claiming 4 GB for 3 bytes of data: sized by what the file holds.
    unsigned char* pixels =
        ReadBitmap(Write("liar.bmp", MakeBitmap(40000, 40000, 0xFFFFFFF0u, {1, 2, 3})).c_str());
    ASSERT_NE(pixels, nullptr);
    EXPECT_LE(LastImageSize, 6u);
    EXPECT_EQ(pixels[0], 3);
    std::free(pixels);
    // Image size 0 (allowed for uncompressed bitmaps) also means "the data present".
    pixels = ReadBitmap(Write("zero.bmp", MakeBitmap(1, 1, 0, {1, 2, 3, 0})).c_str());
    ASSERT_NE(pixels, nullptr);
    EXPECT_EQ(LastImageSize, 6u);
    std::free(pixels);
}

TEST_F(BitmapTest, LoadImageFillsTheTextureOnceAndReportsFailures) {
    const std::string path = Write("ok.bmp", MakeBitmap(1, 1, 3, {9, 8, 7}));
    Texture texture;
    ASSERT_TRUE(LoadImage(texture, path));
    EXPECT_TRUE(texture.m_Loaded);
    EXPECT_EQ(texture.m_Width, 1);
    EXPECT_EQ(texture.m_Height, 1);
    EXPECT_EQ(texture.m_ImageSize, 3u);
    EXPECT_EQ(texture.m_Pixels[0], 7);
    // Loaded already: the file is not read again, even when it is gone.
    fs::remove(path);
    EXPECT_TRUE(LoadImage(texture, path));

    Texture missing;
    ::testing::internal::CaptureStdout();
    EXPECT_FALSE(LoadImage(missing, "no/such/file.bmp"));
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Failed to load no/such/file.bmp.\n");
    EXPECT_FALSE(missing.m_Loaded);
    EXPECT_EQ(missing.m_Pixels, nullptr);
}

}  // namespace
