// Choosing the parser for a buffer, and reading files from disk.
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>
#include <vector>

#include "fbx/format/Parse.h"

namespace fbx {

namespace {

struct FileCloser {
    void operator()(std::FILE* f) const { std::fclose(f); }
};

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
    // A device or pipe named as a model (/dev/zero, a FIFO) could be read forever.
    std::error_code error;
    if (std::filesystem::exists(path, error) && !std::filesystem::is_regular_file(path, error)) {
        result.error = "\"" + path + "\" is not a regular file";
        return result;
    }
    std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
    if (!file) {
        result.error = "cannot open the file \"" + path + "\"";
        return result;
    }
    std::vector<std::uint8_t> bytes;
    std::uint8_t chunk[1 << 16];
    for (;;) {
        const std::size_t n = std::fread(chunk, 1, sizeof(chunk), file.get());
        bytes.insert(bytes.end(), chunk, chunk + n);
        if (n < sizeof(chunk))
            break;
    }
    if (std::ferror(file.get())) {
        result.error = "cannot read the file \"" + path + "\"";
        return result;
    }
    result = ParseBuffer(bytes.data(), bytes.size());
    if (!result.ok)
        result.error = "\"" + path + "\": " + result.error;
    return result;
}

}  // namespace fbx
