// The demo's generated files: the committed models and bitmaps are exactly what demogen writes
// today, and the bitmaps are the 24-bit uncompressed kind the engine reads.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "engine_session.h"

namespace {

namespace fs = std::filesystem;

TEST(DemoAssetsTest, CommittedFilesAreWhatTheGeneratorWritesAndItWritesThemAlike) {
    const fs::path assets = fs::path(ENGINE_SOURCE_DIR) / "Assets";
    ScratchDir first, second;
    for (const ScratchDir* dir : {&first, &second}) {
        RunCommand(std::string(DEMOGEN_EXECUTABLE) + " '" + dir->Root().string() + "' >/dev/null");
    }
    int files = 0, bitmaps = 0;
    for (const std::string folder : {"models", "textures"}) {
        for (const auto& entry : fs::directory_iterator(first.Root() / folder)) {
            SCOPED_TRACE(entry.path().filename().string());
            ++files;
            const std::string made = ReadWholeFile(entry.path());
            EXPECT_EQ(made, ReadWholeFile(second.Root() / folder / entry.path().filename()))
                << "two runs of demogen differ";
            EXPECT_EQ(made, ReadWholeFile(assets / folder / entry.path().filename()))
                << "Assets/ is stale: run build/tools/demogen from the repository root";
            if (folder == "textures" && made.size() >= 54 && made.substr(0, 2) == "BM") {
                ++bitmaps;
                // The header's fields after "BM": size, reserved, data offset, header size,
                // width, height, planes and bits per pixel, compression.
                std::uint32_t field[8];
                std::memcpy(field, made.data() + 2, sizeof field);
                EXPECT_EQ(field[6] >> 16, 24u);
                EXPECT_EQ(field[7], 0u) << "compressed";
                EXPECT_EQ(field[4] * 3 % 4, 0u) << "rows that need no padding upload as they are";
                EXPECT_EQ(made.size(), field[2] + field[4] * field[5] * 3);
            }
        }
    }
    EXPECT_GE(files, 8);
    EXPECT_GE(bitmaps, 4);
}

}  // namespace
