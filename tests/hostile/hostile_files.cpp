#include "hostile_files.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace {

// Appends the value's low bytes, least significant first.
void Put(std::string& out, std::uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) {
        out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
    }
}

}  // namespace

std::string DataFile(const std::string& name) {
    return std::string(ENGINE_SOURCE_DIR) + "/tests/hostile/data/" + name;
}

std::string CapturedOutput(const std::function<void()>& code) {
    ::testing::internal::CaptureStdout();
    code();
    std::fflush(stdout);
    return ::testing::internal::GetCapturedStdout();
}

std::string BitmapBytes(const BitmapShape& shape) {
    std::string out = "BM";
    Put(out, 54 + shape.m_DataBytes, 4);  // file size, as far as the pixels written go
    Put(out, 0, 4);
    Put(out, shape.m_DataOffset, 4);
    Put(out, 40, 4);  // information header size
    Put(out, static_cast<std::uint32_t>(shape.m_Width), 4);
    Put(out, static_cast<std::uint32_t>(shape.m_Height), 4);
    Put(out, 1, 2);  // planes
    Put(out, shape.m_BitsPerPixel, 2);
    Put(out, shape.m_Compression, 4);
    Put(out, shape.m_ImageSize, 4);
    Put(out, 2835, 4);  // pixels per metre, across and up
    Put(out, 2835, 4);
    Put(out, 0, 8);  // colours used and important
    for (std::size_t i = 0; i < shape.m_DataBytes; ++i) {
        out.push_back(static_cast<char>(0x40 + i % 64));
    }
    return out;
}

std::string Repeat(const std::string& text, int times) {
    std::string out;
    for (int i = 0; i < times; ++i) {
        out += text;
    }
    return out;
}

std::string DeepAsciiFbx(int depth, bool closed) {
    return "; FBX 7.5.0 project file\nFBXHeaderExtension:  {\n\tFBXVersion: 7500\n}\nObjects:  "
           "{\n" +
           Repeat("Model: {\n", depth) + (closed ? Repeat("}", depth) + "\n}\n" : "");
}

std::string DeepBinaryFbx(int depth) {
    // Each record: end offset, value count, value bytes, name length, the name "N"; its end
    // offset is patched once its children and the null record that ends them are in place.
    const std::size_t headerBytes = 13;
    std::string out("Kaydara FBX Binary  \0\x1A\0", 23);  // the last byte: little-endian
    Put(out, 7400, 4);
    const std::size_t first = out.size();
    for (int i = 0; i < depth; ++i) {
        out.append(headerBytes - 1, '\0').append("\x01N", 2);
    }
    for (int i = depth - 1; i >= 0; --i) {
        if (i != depth - 1) {
            out.append(headerBytes, '\0');
        }
        std::string end;
        Put(end, out.size(), 4);
        out.replace(first + static_cast<std::size_t>(i) * (headerBytes + 1), 4, end);
    }
    return out.append(headerBytes + 160, '\0');
}
