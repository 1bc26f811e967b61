// Entry points of the FBX parsers: bytes or a file in, a record tree out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "fbx/Record.h"

namespace fbx {

struct ParseResult {
    bool ok = false;
    std::string error;  // why parsing stopped, when !ok; a sentence a user can act on
    Document document;  // on failure, whatever was read before the error (possibly nothing)
};

// Binary files start with "Kaydara FBX Binary  \0".
bool IsBinaryFbx(const std::uint8_t* data, std::size_t size);
// Binary magic, or text that starts (after blanks and ';' comments) like an FBX ASCII file.
bool LooksLikeFbx(const std::uint8_t* data, std::size_t size);

// Parses a whole file held in memory, choosing the encoding from its content.
ParseResult ParseBuffer(const std::uint8_t* data, std::size_t size);
ParseResult ParseBinary(const std::uint8_t* data, std::size_t size);
ParseResult ParseAscii(const std::uint8_t* data, std::size_t size);
// Reads and parses a file; a file that cannot be opened gives !ok with a message.
ParseResult ParseFile(const std::string& path);

}  // namespace fbx
