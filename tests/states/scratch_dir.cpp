#include "scratch_dir.h"

#include <stdlib.h>

#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

ScratchDir::ScratchDir() {
    std::string pattern = (fs::temp_directory_path() / "engine-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) != nullptr) {
        m_Path = pattern;
    }
}

ScratchDir::~ScratchDir() {
    std::error_code ignored;
    fs::remove_all(m_Path, ignored);
}

std::string ScratchDir::Write(const std::string& name, const std::string& bytes) const {
    const fs::path path = m_Path / name;
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
    return path.string();
}

std::string ReadWholeFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}
