// Reading a whole model file into memory, the one way the library reads files.
//
// Only regular files are read: a device or a pipe named as a model (/dev/zero, a FIFO) could
// never end. The file is opened without waiting for a writer, checked with fstat, and read in
// one block sized from its length. Callers turn the outcome into their own messages.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "fbx/format/ByteBuffer.h"

namespace fbx {

enum class FileReadStatus {
    Read,        // bytes holds the whole file
    CannotOpen,  // missing, or could not be opened
    NotRegular,  // opened, but a folder, device, pipe or the like rather than a regular file
    ReadError,   // reading failed part way; bytes holds what was read before
};

struct FileReadResult {
    FileReadStatus status = FileReadStatus::CannotOpen;
    // The path names something other than a regular file, whether or not it could be opened
    // (a socket cannot be opened at all).
    bool notRegular = false;
};

// Replaces bytes with the content of the file at path.
FileReadResult ReadWholeFile(const std::string& path, ByteBuffer& bytes);

}  // namespace fbx
