// The bitmap reader and image loading on hand-made files: byte order, padding, the reader's
// extra final triple, rejected signatures and truncated files.
#include <cstdlib>

#include "import/Bitmap.h"
#include "import_support.h"
#include "model/Texture.h"

namespace {

using BitmapTest = ScratchTest<>;
using Bytes = std::vector<unsigned char>;

TEST_F(BitmapTest, LoadedTriplesAreSwappedToRgbWithOneMoreTripleOfTheLastByteRead) {
    const Bytes padded = {1, 2, 3, 4, 5, 6, 0, 0, 7, 8, 9, 10, 11, 12, 0, 0};
    const struct {
        std::int32_t width, height;
        std::uint32_t imageSize, read;  // as the header says (0: "the data present"), as read
        Bytes data, expected;
    } cases[] = {
        // Whole triples: the extra triple repeats the last byte.
        {2, 1, 6, 6, {10, 20, 30, 40, 50, 60}, {30, 20, 10, 60, 50, 40, 60, 60, 60}},
        // Rows of 6 bytes padded to 8: the padding is read as pixel data, and the sixth
        // triple is the last data byte and the bytes it left behind.
        {2, 2, 16, 16, padded, {3, 2, 1, 6, 5, 4, 7, 0, 0, 10, 9, 8, 0, 12, 11, 0, 0, 0}},
        // No image size (allowed for uncompressed bitmaps): the data, in whole triples.
        {1, 1, 0, 6, {1, 2, 3, 4}, {3, 2, 1, 4, 4, 4, 0, 0, 0}},
    };
    for (const auto& c : cases) {
        const std::string path =
            Write("rgb.bmp", BitmapBytes(c.width, c.height, c.imageSize, c.data));
        Texture texture;
        ASSERT_TRUE(LoadImage(texture, path));
        EXPECT_EQ(Bytes(texture.m_Pixels, texture.m_Pixels + c.expected.size()), c.expected);
        EXPECT_EQ(texture.m_Width, c.width);
        EXPECT_EQ(texture.m_Height, c.height);
        EXPECT_EQ(texture.m_ImageSize, c.read);
        fs::remove(path);
        EXPECT_TRUE(LoadImage(texture, path));  // loaded already: the file is not read again
    }
}

TEST_F(BitmapTest, WrongSignaturesFailAndTruncatedFilesStayInsideTheirBlock) {
    // Either letter of the signature wrong is enough.
    EXPECT_EQ(ReadBitmap(Write("am.bmp", BitmapBytes(1, 1, 3, {1, 2, 3}, "AM")).c_str()), nullptr);
    EXPECT_EQ(ReadBitmap(Write("ba.bmp", BitmapBytes(1, 1, 3, {1, 2, 3}, "BA")).c_str()), nullptr);
    const std::string full = BitmapBytes(4, 4, 48, Bytes(48, 0x7F));
    // Every truncation either fails or gives a block of the size it reports.
    for (std::size_t cut = 2; cut < full.size(); cut += 5) {
        if (unsigned char* pixels = ReadBitmap(Write("cut.bmp", full.substr(0, cut)).c_str())) {
            // The block holds at least the reported size; ASan catches any over-read here.
            volatile unsigned sum = 0;
            for (std::uint32_t i = 0; i < LastImageSize; ++i) {
                sum += pixels[i];
            }
            std::free(pixels);
        }
    }
}

}  // namespace
