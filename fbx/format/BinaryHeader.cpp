// The binary FBX header: its magic and the byte order and version it states.
#include "fbx/format/BinaryHeader.h"

#include <cstring>

#include "fbx/format/Parse.h"

namespace fbx {

namespace {

constexpr char kBinaryMagic[] = "Kaydara FBX Binary  ";   // 20 characters, then the NUL
constexpr std::size_t kMagicSize = sizeof(kBinaryMagic);  // 21 bytes, NUL included
constexpr std::size_t kByteOrderAt = 22;
constexpr std::size_t kVersionAt = 23;

}  // namespace

bool IsBinaryFbx(const std::uint8_t* data, std::size_t size) {
    return data != nullptr && size >= kMagicSize &&
           std::memcmp(data, kBinaryMagic, kMagicSize) == 0;
}

BinaryHeader ReadBinaryHeader(const std::uint8_t* data, std::size_t size) {
    BinaryHeader header;
    if (!IsBinaryFbx(data, size) || size < kBinaryHeaderSize)
        return header;
    header.complete = true;
    header.bigEndian = data[kByteOrderAt] != 0;
    for (std::size_t i = 0; i < 4; ++i) {
        const std::size_t at = header.bigEndian ? kVersionAt + i : kVersionAt + 3 - i;
        header.version = (header.version << 8) | data[at];
    }
    return header;
}

}  // namespace fbx
