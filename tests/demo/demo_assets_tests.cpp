// The demo's generated files: the committed models and bitmaps are exactly what demogen writes
// today, the bitmaps are the 24-bit uncompressed kind the engine reads, and the robot's key
// frames cover every frame range of its state file.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "demo_session.h"

namespace {

namespace fs = std::filesystem;

const fs::path kAssets = fs::path(ENGINE_SOURCE_DIR) / "Assets";

std::vector<unsigned char> ReadBytes(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class TempDir {
public:
    TempDir() {
        std::string pattern = (fs::temp_directory_path() / "demogen-XXXXXX").string();
        if (mkdtemp(pattern.data()) != nullptr) {
            m_Path = pattern;
        }
    }
    ~TempDir() {
        std::error_code ignored;
        fs::remove_all(m_Path, ignored);
    }
    const fs::path& Path() const { return m_Path; }

private:
    fs::path m_Path;
};

TEST(DemoAssetsTest, CommittedFilesAreWhatTheGeneratorWritesAndItWritesThemAlike) {
    TempDir first, second;
    ASSERT_FALSE(first.Path().empty());
    RunCommand(std::string(DEMOGEN_EXECUTABLE) + " '" + first.Path().string() + "' >/dev/null");
    RunCommand(std::string(DEMOGEN_EXECUTABLE) + " '" + second.Path().string() + "' >/dev/null");

    int files = 0;
    for (const char* folder : {"models", "textures"}) {
        for (const auto& entry : fs::directory_iterator(first.Path() / folder)) {
            SCOPED_TRACE(entry.path().filename().string());
            ++files;
            const std::vector<unsigned char> made = ReadBytes(entry.path());
            EXPECT_EQ(made, ReadBytes(second.Path() / folder / entry.path().filename()))
                << "two runs of demogen differ";
            EXPECT_EQ(made, ReadBytes(kAssets / folder / entry.path().filename()))
                << "Assets/ is stale: run build/tools/demogen from the repository root";
        }
    }
    EXPECT_GE(files, 8);
}

std::uint32_t Little(const std::vector<unsigned char>& bytes, std::size_t at, int size) {
    std::uint32_t value = 0;
    for (int i = size - 1; i >= 0; --i) {
        value = value << 8 | bytes.at(at + static_cast<std::size_t>(i));
    }
    return value;
}

TEST(DemoAssetsTest, BitmapsAreUncompressed24BitWithWholeRows) {
    int bitmaps = 0;
    for (const auto& entry : fs::directory_iterator(kAssets / "textures")) {
        SCOPED_TRACE(entry.path().filename().string());
        const std::vector<unsigned char> bytes = ReadBytes(entry.path());
        ASSERT_GE(bytes.size(), 54u);
        ++bitmaps;
        EXPECT_EQ(bytes[0], 'B');
        EXPECT_EQ(bytes[1], 'M');
        const std::uint32_t offset = Little(bytes, 10, 4);
        const std::uint32_t width = Little(bytes, 18, 4);
        const std::uint32_t height = Little(bytes, 22, 4);
        EXPECT_EQ(Little(bytes, 28, 2), 24u);
        EXPECT_EQ(Little(bytes, 30, 4), 0u) << "compressed";
        // Rows that need no padding upload as they are.
        EXPECT_EQ(width * 3 % 4, 0u);
        EXPECT_EQ(bytes.size(), offset + width * height * 3);
    }
    EXPECT_GE(bitmaps, 4);
}

TEST(DemoAssetsTest, RobotKeyFramesCoverEveryFrameRangeOfTheStage) {
    std::ifstream file(kAssets / "stage.xml");
    std::stringstream text;
    text << file.rdbuf();
    const std::string stage = text.str();
    std::smatch url;
    ASSERT_TRUE(std::regex_search(stage, url, std::regex("<URL>([^<]*)</URL>")));
    const std::string summary = RunCommand(std::string(FBXINFO_EXECUTABLE) + " '" +
                                           (kAssets / ".." / url[1].str()).string() + "'");
    // Key frames of the first bone, all takes in a row.
    const std::regex curves(R"re(curves "([^"]*)" "([^"]*)" T (\d+))re");
    std::string bone;
    int keys = 0;
    for (std::sregex_iterator it(summary.begin(), summary.end(), curves), end; it != end; ++it) {
        if (bone.empty()) {
            bone = (*it)[2];
        }
        if ((*it)[2] == bone && (*it)[1] != "Default") {
            keys += std::stoi((*it)[3]);
        }
    }
    ASSERT_GT(keys, 0) << summary;
    const std::regex range("<End_Frame>(-?\\d+)</End_Frame>");
    int ranges = 0;
    for (std::sregex_iterator it(stage.begin(), stage.end(), range), end; it != end; ++it) {
        ++ranges;
        // A frame past the last key would show the robot's parts unplaced.
        EXPECT_LT(std::stoi((*it)[1]), keys);
    }
    EXPECT_GT(ranges, 2);
}

}  // namespace
