// The 27-byte header that opens every binary FBX file: the "Kaydara FBX Binary  \0" magic,
// the byte 0x1A, a byte order flag (0 little-endian, else big-endian) and the file version as
// an unsigned 32-bit integer in that byte order (7400 means 7.4.0).
//
// The parser and the importer both read it here, so they agree on what a header says.
#pragma once

#include <cstddef>
#include <cstdint>

namespace fbx {

constexpr std::size_t kBinaryHeaderSize = 27;

struct BinaryHeader {
    bool complete = false;  // the magic and all 27 header bytes are present
    bool bigEndian = false;
    std::uint32_t version = 0;  // as the header states it (5800 files say 3000)
};

// Decodes the header at the start of data. Data that does not start with the magic, or that
// ends inside the header, gives complete == false (and the other fields zero).
BinaryHeader ReadBinaryHeader(const std::uint8_t* data, std::size_t size);

}  // namespace fbx
