// The demo's generated files: the committed models and textures are exactly what demogen
// writes today; the textures are PNG images, one with an alpha channel, and some are embedded
// in the models.
#include <gtest/gtest.h>

#include "engine_session.h"

namespace {

namespace fs = std::filesystem;

TEST(DemoAssetsTest, CommittedFilesAreWhatTheGeneratorWritesAndItWritesThemAlike) {
    const fs::path assets = fs::path(ENGINE_SOURCE_DIR) / "Assets";
    ScratchDir first, second;
    for (const ScratchDir* dir : {&first, &second}) {
        RunCommand(std::string(DEMOGEN_EXECUTABLE) + " '" + dir->Root().string() + "' >/dev/null");
    }
    const std::string png = "\x89PNG\r\n\x1a\n";
    int files = 0, images = 0, withAlpha = 0, embedding = 0;
    for (const std::string folder : {"models", "textures"}) {
        for (const auto& entry : fs::directory_iterator(first.Root() / folder)) {
            SCOPED_TRACE(entry.path().filename().string());
            ++files;
            const std::string made = ReadWholeFile(entry.path());
            EXPECT_EQ(made, ReadWholeFile(second.Root() / folder / entry.path().filename()))
                << "two runs of demogen differ";
            EXPECT_EQ(made, ReadWholeFile(assets / folder / entry.path().filename()))
                << "Assets/ is stale: run build/tools/demogen from the repository root";
            if (folder == "models") {
                embedding += made.find(png) != std::string::npos ? 1 : 0;
            } else if (made.size() > 26 && made.compare(0, png.size(), png) == 0) {
                ++images;
                withAlpha += made[25] == 6 ? 1 : 0;  // the header's colour type: RGBA
            }
        }
    }
    EXPECT_GE(files, 8);
    EXPECT_EQ(images, files - 5) << "every texture file is a PNG image";
    EXPECT_GE(withAlpha, 1);
    EXPECT_GE(embedding, 3);
}

}  // namespace
