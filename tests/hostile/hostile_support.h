// Helpers for the hostile-input tests: a scratch directory, the checked-in damaged files,
// builders of damaged bitmaps and FBX files, and capture of what the engine prints.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

// A fresh directory under the system's temporary directory, removed with the object.
class ScratchDir {
public:
    ScratchDir();
    ~ScratchDir();
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;

    // Writes the bytes into a file of that name here (folders made as needed); its path.
    std::string Write(const std::string& name, const std::string& bytes) const;
    std::string Path(const std::string& name) const;
    const std::filesystem::path& Root() const { return m_Path; }

private:
    std::filesystem::path m_Path;
};

// Runs the code with the working directory set to dir, as the engine runs beside Assets/.
void RunIn(const std::filesystem::path& dir, const std::function<void()>& code);

// The path of a file under tests/hostile/data/.
std::string DataFile(const std::string& name);
std::string ReadWholeFile(const std::string& path);

// What the code printed on standard output.
std::string CapturedOutput(const std::function<void()>& code);

// A Windows bitmap: 14-byte file header, 40-byte information header, then the pixel bytes.
// The header fields are given as they should be written, whether true or not.
struct BitmapSpec {
    std::int32_t m_Width = 4;
    std::int32_t m_Height = 4;
    std::uint16_t m_BitsPerPixel = 24;
    std::uint32_t m_Compression = 0;
    std::uint32_t m_ImageSize = 4 * 4 * 3;
    std::uint32_t m_DataOffset = 54;
    std::size_t m_DataBytes = 4 * 4 * 3;  // pixel bytes actually written after the headers
};
std::string BitmapBytes(const BitmapSpec& spec);

// Binary FBX files (version 7400, 32-bit record headers) built record by record.
struct BinaryRecord {
    std::string m_Name;
    std::string m_Values;  // already encoded values
    std::vector<BinaryRecord> m_Children;
    std::uint32_t m_ValueCount = 0;
};
std::string EncodeString(const std::string& text);
std::string EncodeInt64(std::int64_t value);
// An array value: type code, claimed element count, encoding, then the payload as given.
std::string EncodeArray(char type, std::uint32_t count, std::uint32_t encoding,
                        const std::string& payload);
std::string BinaryFbx(const std::vector<BinaryRecord>& records);

// An ASCII file whose records nest depth levels deep; closed=false leaves every brace open.
std::string DeepAsciiFbx(int depth, bool closed);
// A binary file whose records nest depth levels deep, every end offset correct.
std::string DeepBinaryFbx(int depth);
