// A scratch folder for the files a test writes (state tables, state files, damaged models,
// copies of the demo), and whole-file reading.
#pragma once

#include <filesystem>
#include <string>

// A fresh directory under the system's temporary directory, removed with the object.
class ScratchDir {
public:
    ScratchDir();
    ~ScratchDir();
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;

    // Writes the bytes into a file of that name here (folders made as needed); its path.
    std::string Write(const std::string& name, const std::string& bytes) const;
    std::string Path(const std::string& name) const { return (m_Path / name).string(); }
    const std::filesystem::path& Root() const { return m_Path; }

private:
    std::filesystem::path m_Path;
};

// The file's bytes; empty when it cannot be read.
std::string ReadWholeFile(const std::filesystem::path& path);
