// Choosing the parser for a buffer, and reading files from disk.
#include <vector>

#include "fbx/format/FileBytes.h"
#include "fbx/format/Parse.h"

namespace fbx {

namespace {

bool IsBlank(std::uint8_t c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

}  // namespace

bool LooksLikeFbx(const std::uint8_t* data, std::size_t size) {
    if (data == nullptr)
        return false;
    if (IsBinaryFbx(data, size))
        return true;
    std::size_t i = 0;
    if (size >= 3 && data[0] == 0xEF && data[1] == 0xBB && data[2] == 0xBF)
        i = 3;
    // Skip blanks and ';' comment lines, then expect `Name:`.
    while (i < size) {
        if (IsBlank(data[i])) {
            ++i;
        } else if (data[i] == ';') {
            while (i < size && data[i] != '\n')
                ++i;
        } else {
            break;
        }
    }
    const std::size_t start = i;
    while (i < size) {
        const std::uint8_t c = data[i];
        const bool nameChar =
            (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
        if (!nameChar)
            break;
        ++i;
    }
    if (i == start)
        return false;
    while (i < size && (data[i] == ' ' || data[i] == '\t'))
        ++i;
    return i < size && data[i] == ':';
}

ParseResult ParseBuffer(const std::uint8_t* data, std::size_t size) {
    if (IsBinaryFbx(data, size))
        return ParseBinary(data, size);
    if (LooksLikeFbx(data, size))
        return ParseAscii(data, size);
    ParseResult result;
    result.error =
        size == 0 ? "the file is empty" : "the data is neither a binary nor an ASCII FBX file";
    return result;
}

ParseResult ParseFile(const std::string& path) {
    ParseResult result;
    ByteBuffer bytes;
    const FileReadResult read = ReadWholeFile(path, bytes);
    if (read.notRegular) {
        result.error = "\"" + path + "\" is not a regular file";
        return result;
    }
    if (read.status == FileReadStatus::CannotOpen) {
        result.error = "cannot open the file \"" + path + "\"";
        return result;
    }
    if (read.status == FileReadStatus::ReadError) {
        result.error = "cannot read the file \"" + path + "\"";
        return result;
    }
    result = ParseBuffer(bytes.data(), bytes.size());
    if (!result.ok)
        result.error = "\"" + path + "\": " + result.error;
    return result;
}

}  // namespace fbx
