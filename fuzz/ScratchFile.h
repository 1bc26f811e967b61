// A scratch file that holds one input, for readers that only take a file name. It lives in
// /dev/shm when there is one (no disk traffic at fuzzing speed) and is removed with the object.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace fuzzing {

class ScratchFile {
public:
    // suffix ends the file name (".fbx", ".xml"); the name is unique to this process and tag.
    ScratchFile(const std::string& tag, const std::string& suffix);
    ~ScratchFile();
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    // Replaces the file's content; false when it cannot be written.
    bool Write(const std::uint8_t* data, std::size_t size) const;
    const std::string& Path() const { return m_Path; }

private:
    std::string m_Path;
};

}  // namespace fuzzing
