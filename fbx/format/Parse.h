// Entry points of the FBX parsers: bytes or a file in, a record tree out.
//
// Both parsers check every count, length and offset against the bytes present and never
// allocate from a declared size before checking it. Damaged input ends with ok == false, an
// error naming the offset (binary) or line (ASCII), and the tree read so far. Limits (see
// fbx/format/ParseLimits.h): records nest at most 512 deep; a compressed array may claim at most
// 1032 decoded bytes per compressed byte, and all of a file's compressed arrays together at
// most 32 x the file size + 64 MiB. A binary file must close its top-level records with a
// null record, so a file cut at a record boundary is still reported as cut.
//
// Some writers put 0 in a binary record's end offset: such a record ends where its values end
// (or after the null record right behind them, when that null record cannot be the one that
// closes the enclosing list). One that turns out to hold records of its own ends the parse
// with an error. ASCII numbers may be non-finite in the spellings tools print, in any letter
// case: "inf", "-infinity", "nan", "-nan(ind)", and "1.#INF", "-1.#IND", "1.#QNAN", "1.#SNAN"
// with any digits after them.
//
// Document::version is the FBXHeaderExtension/FBXVersion record when present (5800 binary
// files say 3000 in their header), else the binary header's version, else the version of
// the ASCII "; FBX 6.1.0 project file" comment. ASCII files print KeyAttrDataFloat as the
// integers that share the floats' bits; that array is read back as Float32Array, and
// embedded "Content" base64 text as Raw bytes, as binary files hold them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "fbx/format/Record.h"

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
// Reads and parses a file; a file that cannot be opened, or that is a device, pipe or
// folder rather than a regular file, gives !ok with a message.
ParseResult ParseFile(const std::string& path);

}  // namespace fbx
