// Inputs that once broke a reader, kept under tests/fuzz/regressions/<target>/, and the
// hand-made fuzz seeds, fed through the fuzz targets' entry points. Every input must end
// with the reader's ordinary outcome: a result, or a failure with a message the user sees.
#include <gmock/gmock.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>

#include "fbx/format/Parse.h"
#include "fuzz/Feeds.h"
#include "states/Game.h"

namespace fs = std::filesystem;

namespace {

using ::testing::HasSubstr;

using Bytes = std::vector<std::uint8_t>;

Bytes ReadBytes(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// Calls check with the bytes of every file of the folder under the source tree, in name
// order; the number of files.
std::size_t ForEachInput(const std::string& folder,
                         const std::function<void(const Bytes&)>& check) {
    const std::set<fs::path> files(fs::directory_iterator(fs::path(ENGINE_SOURCE_DIR) / folder),
                                   fs::directory_iterator());
    for (const fs::path& path : files) {
        SCOPED_TRACE(path.filename().string());
        check(ReadBytes(path));
    }
    return files.size();
}

TEST(FuzzRegressions, DamagedInputsEndWithAResultOrAMessage) {
    ForEachInput("tests/fuzz/regressions/fuzz_parse", [](const Bytes& bytes) {
        const fuzzing::ParseOutcome outcome = fuzzing::FeedParser(bytes.data(), bytes.size());
        EXPECT_EQ(outcome.ok, outcome.error.empty()) << outcome.error;
    });
    ForEachInput("tests/fuzz/regressions/fuzz_import", [](const Bytes& bytes) {
        const fuzzing::ImportOutcome outcome = fuzzing::FeedImporter(bytes.data(), bytes.size());
        EXPECT_TRUE(outcome.imported || !outcome.error.empty());
        fuzzing::FeedModelImport(bytes.data(), bytes.size());
    });
    // A model path naming an endless device must be refused, not read until memory runs out.
    const fbx::ParseResult device = fbx::ParseFile("/dev/zero");
    EXPECT_FALSE(device.ok);
    EXPECT_THAT(device.error, HasSubstr("not a regular file"));
    // A bitmap never claims more pixels than its file holds.
    ForEachInput("tests/fuzz/regressions/fuzz_bitmap", [](const Bytes& bytes) {
        const fuzzing::BitmapOutcome outcome = fuzzing::FeedBitmap(bytes.data(), bytes.size());
        EXPECT_TRUE(!outcome.read || outcome.imageSize <= bytes.size()) << outcome.imageSize;
    });
    // An image is either decoded within the feed's limits or refused with a reason.
    ForEachInput("tests/fuzz/regressions/fuzz_image", [](const Bytes& bytes) {
        const fuzzing::ImageOutcome outcome = fuzzing::FeedImage(bytes.data(), bytes.size());
        EXPECT_EQ(outcome.decoded, outcome.error.empty()) << outcome.error;
        EXPECT_LE(outcome.width, 2048);
        EXPECT_LE(outcome.height, 2048);
    });
    // State files and tables leave the game running.
    Game& game = fuzzing::SharedGame();
    ForEachInput("tests/fuzz/regressions/fuzz_states", [&](const Bytes& bytes) {
        fuzzing::FeedStateFile(game, bytes.data(), bytes.size());
        fuzzing::FeedStateTable(bytes.data(), bytes.size());
        EXPECT_TRUE(game.m_DrawList.empty());
    });
}

// The seeds are sound files: if they stop reading, the fuzzers start from nothing.
TEST(FuzzSeeds, SeedsReadWhole) {
    const auto fbx = ForEachInput("fuzz/seeds/fbx", [](const Bytes& bytes) {
        const fuzzing::ParseOutcome parsed = fuzzing::FeedParser(bytes.data(), bytes.size());
        EXPECT_TRUE(parsed.ok) << parsed.error;
        EXPECT_GT(parsed.records, 5u);
        const fuzzing::ImportOutcome imported = fuzzing::FeedImporter(bytes.data(), bytes.size());
        EXPECT_TRUE(imported.imported) << imported.error;
        EXPECT_GE(imported.polygons, 1);
        EXPECT_EQ(fuzzing::FeedModelImport(bytes.data(), bytes.size()).polygons,
                  static_cast<std::size_t>(imported.polygons));
    });
    const auto bitmaps = ForEachInput("fuzz/seeds/bitmap", [](const Bytes& bytes) {
        const fuzzing::BitmapOutcome outcome = fuzzing::FeedBitmap(bytes.data(), bytes.size());
        EXPECT_TRUE(outcome.read);
        EXPECT_EQ(outcome.imageSize, bytes.size() - 54);  // the rows with their padding
    });
    // Every image seed is a small picture of one of the four formats.
    const auto images = ForEachInput("fuzz/seeds/image", [](const Bytes& bytes) {
        EXPECT_LT(bytes.size(), 2048u);
        const fuzzing::ImageOutcome outcome = fuzzing::FeedImage(bytes.data(), bytes.size());
        EXPECT_TRUE(outcome.decoded) << outcome.error;
        EXPECT_GT(outcome.width, 0);
        EXPECT_GT(outcome.height, 0);
    });
    EXPECT_GT(fbx, 0u);
    EXPECT_GT(bitmaps, 0u);
    EXPECT_GE(images, 12u);

    const fs::path seeds = fs::path(ENGINE_SOURCE_DIR) / "fuzz/seeds/states";
    const Bytes state = ReadBytes(seeds / "state_actions.xml");
    const fuzzing::StateOutcome loaded =
        fuzzing::FeedStateFile(fuzzing::SharedGame(), state.data(), state.size());
    EXPECT_EQ(loaded.name, "Walk");
    EXPECT_EQ(loaded.actions, 2u);
    EXPECT_EQ(loaded.models, 1u);  // the missing model file still makes an empty model

    const Bytes table = ReadBytes(seeds / "table_doctype.xml");
    const fuzzing::TableOutcome read = fuzzing::FeedStateTable(table.data(), table.size());
    EXPECT_FALSE(read.rejected);
    EXPECT_EQ(read.title, "Demo & more");
    EXPECT_EQ(read.states, 1u);
    const std::string broken = "<game><Title>cut";
    EXPECT_TRUE(
        fuzzing::FeedStateTable(reinterpret_cast<const std::uint8_t*>(broken.data()), broken.size())
            .rejected);
}

}  // namespace
