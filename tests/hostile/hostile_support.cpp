#include "hostile_support.h"

#include <unistd.h>

#include <atomic>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>
#include <xercesc/util/PlatformUtils.hpp>

namespace fs = std::filesystem;

namespace {
// The XML library is started once for the whole program, as the engine's entry point does.
class XercesEnvironment : public ::testing::Environment {
public:
    void SetUp() override { xercesc::XMLPlatformUtils::Initialize(); }
    void TearDown() override { xercesc::XMLPlatformUtils::Terminate(); }
};

::testing::Environment* const g_XercesEnvironment =
    ::testing::AddGlobalTestEnvironment(new XercesEnvironment);

std::atomic<int> g_DirCounter{0};

void Put16(std::string& out, std::uint16_t value) {
    out.push_back(static_cast<char>(value & 0xFF));
    out.push_back(static_cast<char>(value >> 8));
}

void Put32(std::string& out, std::uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) {
        out.push_back(static_cast<char>((value >> shift) & 0xFF));
    }
}

void Set32(std::string& out, std::size_t at, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) {
        out[at + i] = static_cast<char>((value >> (8 * i)) & 0xFF);
    }
}

const std::size_t kHeaderBytes = 13;  // end offset, value count, value bytes, name length

std::string BinaryHeader() {
    std::string out("Kaydara FBX Binary  ", 20);
    out.push_back('\0');
    out.push_back('\x1A');
    out.push_back('\0');  // little-endian
    Put32(out, 7400);
    return out;
}

void AppendRecord(std::string& out, const BinaryRecord& record) {
    const std::size_t start = out.size();
    Put32(out, 0);  // end offset, patched below
    Put32(out, record.m_ValueCount);
    Put32(out, static_cast<std::uint32_t>(record.m_Values.size()));
    out.push_back(static_cast<char>(record.m_Name.size()));
    out += record.m_Name;
    out += record.m_Values;
    for (const BinaryRecord& child : record.m_Children) {
        AppendRecord(out, child);
    }
    if (!record.m_Children.empty()) {
        out.append(kHeaderBytes, '\0');
    }
    Set32(out, start, static_cast<std::uint32_t>(out.size()));
}

void AppendFooter(std::string& out) {
    out.append(kHeaderBytes, '\0');
    out.append(160, '\0');
}
}  // namespace

ScratchDir::ScratchDir() {
    m_Path = fs::temp_directory_path() /
             ("hostile_tests_" + std::to_string(::getpid()) + "_" + std::to_string(g_DirCounter++));
    fs::remove_all(m_Path);
    fs::create_directories(m_Path);
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

std::string ScratchDir::Path(const std::string& name) const {
    return (m_Path / name).string();
}

void RunIn(const fs::path& dir, const std::function<void()>& code) {
    const fs::path before = fs::current_path();
    fs::current_path(dir);
    code();
    fs::current_path(before);
}

std::string DataFile(const std::string& name) {
    return std::string(ENGINE_SOURCE_DIR) + "/tests/hostile/data/" + name;
}

std::string ReadWholeFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

std::string CapturedOutput(const std::function<void()>& code) {
    ::testing::internal::CaptureStdout();
    code();
    std::fflush(stdout);
    return ::testing::internal::GetCapturedStdout();
}

std::string BitmapBytes(const BitmapSpec& spec) {
    std::string out = "BM";
    Put32(out, static_cast<std::uint32_t>(54 + spec.m_DataBytes));
    Put16(out, 0);
    Put16(out, 0);
    Put32(out, spec.m_DataOffset);
    Put32(out, 40);
    Put32(out, static_cast<std::uint32_t>(spec.m_Width));
    Put32(out, static_cast<std::uint32_t>(spec.m_Height));
    Put16(out, 1);
    Put16(out, spec.m_BitsPerPixel);
    Put32(out, spec.m_Compression);
    Put32(out, spec.m_ImageSize);
    Put32(out, 2835);
    Put32(out, 2835);
    Put32(out, 0);
    Put32(out, 0);
    for (std::size_t i = 0; i < spec.m_DataBytes; ++i) {
        out.push_back(static_cast<char>(0x40 + i % 64));
    }
    return out;
}

std::string EncodeString(const std::string& text) {
    std::string out = "S";
    Put32(out, static_cast<std::uint32_t>(text.size()));
    return out + text;
}

std::string EncodeInt64(std::int64_t value) {
    std::string out = "L";
    const auto bits = static_cast<std::uint64_t>(value);
    Put32(out, static_cast<std::uint32_t>(bits & 0xFFFFFFFFu));
    Put32(out, static_cast<std::uint32_t>(bits >> 32));
    return out;
}

std::string EncodeArray(char type, std::uint32_t count, std::uint32_t encoding,
                        const std::string& payload) {
    std::string out(1, type);
    Put32(out, count);
    Put32(out, encoding);
    Put32(out, static_cast<std::uint32_t>(payload.size()));
    return out + payload;
}

std::string BinaryFbx(const std::vector<BinaryRecord>& records) {
    std::string out = BinaryHeader();
    for (const BinaryRecord& record : records) {
        AppendRecord(out, record);
    }
    AppendFooter(out);
    return out;
}

std::string DeepAsciiFbx(int depth, bool closed) {
    std::string out = "; FBX 7.5.0 project file\nFBXHeaderExtension:  {\n\tFBXVersion: 7500\n}\n";
    out += "Objects:  {\n";
    for (int i = 0; i < depth; ++i) {
        out += "Model: {\n";
    }
    if (closed) {
        out.append(static_cast<std::size_t>(depth), '}');
        out += "\n}\n";
    }
    return out;
}

std::string DeepBinaryFbx(int depth) {
    std::string out = BinaryHeader();
    // Written inside out is awkward with absolute offsets, so each record's end offset is
    // patched once its children and closing null record are in place.
    std::vector<std::size_t> starts;
    for (int i = 0; i < depth; ++i) {
        starts.push_back(out.size());
        Put32(out, 0);
        Put32(out, 0);
        Put32(out, 0);
        out.push_back('\x01');
        out.push_back('N');
    }
    for (int i = depth - 1; i >= 0; --i) {
        if (i != depth - 1) {
            out.append(kHeaderBytes, '\0');  // the null record that ends a child list
        }
        Set32(out, starts[static_cast<std::size_t>(i)], static_cast<std::uint32_t>(out.size()));
    }
    AppendFooter(out);
    return out;
}
