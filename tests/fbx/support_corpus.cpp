#include "support_corpus.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace fbxtest {

std::string CorpusPath(const std::string& relative) {
    return (std::filesystem::path(ENGINE_CORPUS_DIR) / relative).string();
}

std::vector<std::string> CorpusFiles(const std::string& folder) {
    std::vector<std::string> files;
    std::error_code ec;
    for (const auto& entry : std::filesystem::directory_iterator(CorpusPath(folder), ec)) {
        if (entry.is_regular_file() && entry.path().extension() == ".fbx")
            files.push_back(entry.path().string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string BaseName(const std::string& path) {
    return std::filesystem::path(path).filename().string();
}

std::vector<std::uint8_t> LoadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);  // a file that cannot be opened reads as empty
    return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(in),
                                     std::istreambuf_iterator<char>());
}

fbx::ParseResult ParseText(const std::string& text) {
    return fbx::ParseBuffer(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
}

}  // namespace fbxtest
