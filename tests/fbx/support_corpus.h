// Test helpers shared by the fbx test programs: finding corpus files, loading bytes, parsing
// texts held in memory.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "fbx/format/Parse.h"

namespace fbxtest {

// Absolute path of a file or folder inside the model corpus, e.g. CorpusPath("fbx").
std::string CorpusPath(const std::string& relative);

// Full paths of the .fbx files in a corpus folder ("fbx", "fbx-malformed"), sorted by name.
std::vector<std::string> CorpusFiles(const std::string& folder);

// The file name without its folder, for test messages.
std::string BaseName(const std::string& path);

// The whole file; empty when it cannot be read.
std::vector<std::uint8_t> LoadFile(const std::string& path);

// ParseBuffer over the bytes of a string.
fbx::ParseResult ParseText(const std::string& text);

}  // namespace fbxtest
