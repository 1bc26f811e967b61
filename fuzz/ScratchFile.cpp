#include "fuzz/ScratchFile.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <system_error>

namespace fuzzing {

namespace {
std::filesystem::path ScratchFolder() {
    std::error_code error;
    if (std::filesystem::is_directory("/dev/shm", error))
        return "/dev/shm";
    return std::filesystem::temp_directory_path(error);
}
}  // namespace

ScratchFile::ScratchFile(const std::string& tag, const std::string& suffix) {
    const std::string name =
        "engine-fuzz-" + std::to_string(static_cast<long>(::getpid())) + "-" + tag + suffix;
    m_Path = (ScratchFolder() / name).string();
}

ScratchFile::~ScratchFile() {
    std::remove(m_Path.c_str());
}

bool ScratchFile::Write(const std::uint8_t* data, std::size_t size) const {
    std::FILE* file = std::fopen(m_Path.c_str(), "wb");
    if (file == nullptr)
        return false;
    const bool written = size == 0 || std::fwrite(data, 1, size, file) == size;
    return std::fclose(file) == 0 && written;
}

}  // namespace fuzzing
