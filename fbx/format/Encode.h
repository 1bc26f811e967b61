// Writers of the record tree: turn an fbx::Document back into the bytes of a binary FBX file
// or the text of an ASCII one, laid out the way the vendor's tools write them.
//
// The version written is Document::version (0 means 7500). Names are written exactly as they
// stand in the tree, so a tree meant for a binary file spells object names
// "Name\x00\x01Class" and one meant for an ASCII file "Class::Name" (see ObjectName()).
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "fbx/format/Record.h"

namespace fbx {

struct BinaryWriteOptions {
    // Swap every multi-byte field, as big-endian machines once wrote them.
    bool bigEndian = false;
    // Deflate (zlib stream) typed arrays whose raw size is above compressAboveBytes.
    bool compress = true;
    std::size_t compressAboveBytes = 128;
    int compressionLevel = 6;  // 1 (fast) .. 12 (small)
    // Pre-7000 files store number lists as runs of scalar values, not as typed arrays.
    bool scalarListsBefore7000 = true;
    // The padding and magic bytes that real files end with.
    bool footer = true;
};

// Thrown when a tree cannot be encoded: a record name longer than 255 bytes, or a file too big
// for the 32-bit offsets of versions below 7500.
class WriteError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

std::vector<std::uint8_t> WriteBinary(const Document& document,
                                      const BinaryWriteOptions& options = {});

// ASCII text, starting with the "; FBX 7.5.0 project file" comment. From 7000 on typed arrays
// are written "*N { a: ... }"; before, as plain number lists. Raw values are written as base64,
// as real files write embedded images (a "Content" record's reads back as Raw).
std::string WriteAscii(const Document& document);

// How an object is named in each encoding: "pCube1\x00\x01Model" or "Model::pCube1".
std::string ObjectName(std::string_view objectClass, std::string_view name, bool binary);

// "7.5.0" for 7500.
std::string VersionText(std::uint32_t version);

// Shortest text that reads back as exactly the same number.
std::string FormatDouble(double value);

}  // namespace fbx
