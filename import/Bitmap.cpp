#include "import/Bitmap.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "model/Texture.h"

std::int32_t LastImageWidth = 0;
std::int32_t LastImageHeight = 0;
std::uint32_t LastImageSize = 0;

namespace {

// The 14-byte file header, kept in a 16-byte record with the data offset at its end.
struct BitmapFileHeader {
    std::uint16_t m_Signature = 0;
    std::uint32_t m_FileSize = 0;
    std::uint16_t m_Reserved1 = 0;
    std::uint16_t m_Reserved2 = 0;
    std::uint32_t m_DataOffset = 0;
};

struct BitmapInfoHeader {
    std::uint32_t m_HeaderSize = 0;
    std::int32_t m_Width = 0;
    std::int32_t m_Height = 0;
    std::uint16_t m_Planes = 0;
    std::uint16_t m_BitsPerPixel = 0;
    std::uint32_t m_Compression = 0;
    std::uint32_t m_ImageSize = 0;
    std::int32_t m_XResolution = 0;
    std::int32_t m_YResolution = 0;
    std::uint32_t m_ColoursUsed = 0;
    std::uint32_t m_ColoursImportant = 0;
};

std::uint32_t Little32(const unsigned char* p) {
    return static_cast<std::uint32_t>(p[0]) | static_cast<std::uint32_t>(p[1]) << 8 |
           static_cast<std::uint32_t>(p[2]) << 16 | static_cast<std::uint32_t>(p[3]) << 24;
}

std::uint16_t Little16(const unsigned char* p) {
    return static_cast<std::uint16_t>(p[0] | p[1] << 8);
}

template <std::size_t N>
void ReadField(unsigned char (&bytes)[N], std::FILE* file) {
    std::memset(bytes, 0, N);
    if (std::fread(bytes, 1, N, file) != N) {
        // A short header reads as zeros past the end; the checks below reject it.
    }
}

long FileLength(std::FILE* file) {
    long here = std::ftell(file);
    if (std::fseek(file, 0, SEEK_END) != 0) return -1;
    long length = std::ftell(file);
    std::fseek(file, here, SEEK_SET);
    return length;
}

}  // namespace

unsigned char* ReadBitmap(const char* fileName) {
    std::FILE* file = std::fopen(fileName, "rb");
    if (!file) return nullptr;

    BitmapFileHeader header;
    unsigned char b2[2], b4[4];
    ReadField(b2, file);
    header.m_Signature = Little16(b2);
    ReadField(b4, file);
    header.m_FileSize = Little32(b4);
    ReadField(b2, file);
    header.m_Reserved1 = Little16(b2);
    ReadField(b2, file);
    header.m_Reserved2 = Little16(b2);
    ReadField(b4, file);
    header.m_DataOffset = Little32(b4);
    if ((header.m_Signature & 0xFF) != 'B' || (header.m_Signature >> 8) != 'M') {
        std::fclose(file);
        return nullptr;
    }

    unsigned char raw[40];
    ReadField(raw, file);
    BitmapInfoHeader info;
    info.m_HeaderSize = Little32(raw);
    info.m_Width = static_cast<std::int32_t>(Little32(raw + 4));
    info.m_Height = static_cast<std::int32_t>(Little32(raw + 8));
    info.m_Planes = Little16(raw + 12);
    info.m_BitsPerPixel = Little16(raw + 14);
    info.m_Compression = Little32(raw + 16);
    info.m_ImageSize = Little32(raw + 20);
    info.m_XResolution = static_cast<std::int32_t>(Little32(raw + 24));
    info.m_YResolution = static_cast<std::int32_t>(Little32(raw + 28));
    info.m_ColoursUsed = Little32(raw + 32);
    info.m_ColoursImportant = Little32(raw + 36);

    // What the file really holds past the data offset, rounded up to whole triples.
    long length = FileLength(file);
    std::uint64_t present = 0;
    if (length > 0 && static_cast<std::uint64_t>(length) > header.m_DataOffset) {
        present = static_cast<std::uint64_t>(length) - header.m_DataOffset;
    }
    present = (present + 2) / 3 * 3;
    std::uint64_t imageSize = info.m_ImageSize;
    if (imageSize == 0 || imageSize > present) imageSize = present;
    const std::size_t blockSize = static_cast<std::size_t>(imageSize) + 3;

    unsigned char* pixels = static_cast<unsigned char*>(std::malloc(blockSize));
    if (!pixels) {
        std::fclose(file);
        return nullptr;
    }
    std::memset(pixels, 0, blockSize);
    std::fseek(file, static_cast<long>(header.m_DataOffset), SEEK_SET);

    // Triples run to the end of the file, read one byte at a time through one variable: the
    // pass that meets the end still stores a triple, made of the last byte read before it.
    // Nothing is stored past the block.
    unsigned char byte = 0;
    std::size_t at = 0;
    if (!std::feof(file)) {
        for (;;) {
            unsigned char triple[3];
            for (unsigned char& b : triple) {
                if (std::fread(&byte, 1, 1, file) != 1) {
                    // A failed read leaves the previous byte in place.
                }
                b = byte;
            }
            if (at + 3 <= blockSize) {
                pixels[at] = triple[2];
                pixels[at + 1] = triple[1];
                pixels[at + 2] = triple[0];
            }
            at += 3;
            if (std::feof(file)) break;
        }
    }
    if (std::ferror(file)) {
        // The block is not released on this path; the loader has always leaked it here.
        std::fclose(file);
        return nullptr;
    }
    std::fclose(file);
    LastImageWidth = info.m_Width;
    LastImageHeight = info.m_Height;
    LastImageSize = static_cast<std::uint32_t>(imageSize);
    return pixels;
}

bool LoadImage(Texture& texture, const std::string& fileName) {
    if (texture.m_Loaded) return true;
    unsigned char* pixels = ReadBitmap(fileName.c_str());
    std::free(texture.m_Pixels);
    texture.m_Pixels = pixels;
    if (!pixels) {
        std::printf("Failed to load %s.\n", fileName.c_str());
        return false;
    }
    texture.m_Width = LastImageWidth;
    texture.m_Height = LastImageHeight;
    texture.m_ImageSize = LastImageSize;
    texture.m_Loaded = true;
    return true;
}
