// Inputs that once broke a reader, kept under tests/fuzz/regressions/<target>/, and the
// hand-made fuzz seeds, fed through the fuzz targets' entry points. Every input must end
// with the reader's ordinary outcome: a result, or a failure with a message the user sees.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fbx/format/Parse.h"
#include "fuzz/Feeds.h"
#include "states/Game.h"

namespace fs = std::filesystem;

namespace {

std::vector<std::uint8_t> ReadBytes(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// The files of a folder in name order; none when it does not exist.
std::vector<fs::path> FilesIn(const fs::path& folder) {
    std::vector<fs::path> files;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        if (entry.is_regular_file())
            files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<fs::path> Regressions(const std::string& target) {
    return FilesIn(fs::path(ENGINE_SOURCE_DIR) / "tests" / "fuzz" / "regressions" / target);
}

std::vector<fs::path> Seeds(const std::string& kind) {
    return FilesIn(fs::path(ENGINE_SOURCE_DIR) / "fuzz" / "seeds" / kind);
}

}  // namespace

TEST(FuzzRegressions, DamagedFbxFilesParseToAResultOrAMessage) {
    for (const fs::path& path : Regressions("fuzz_parse")) {
        SCOPED_TRACE(path.filename().string());
        const std::vector<std::uint8_t> bytes = ReadBytes(path);
        const fuzzing::ParseOutcome outcome = fuzzing::FeedParser(bytes.data(), bytes.size());
        EXPECT_EQ(outcome.ok, outcome.error.empty()) << outcome.error;
    }
}

TEST(FuzzRegressions, DamagedFbxFilesImportOrSayWhyNot) {
    for (const fs::path& path : Regressions("fuzz_import")) {
        SCOPED_TRACE(path.filename().string());
        const std::vector<std::uint8_t> bytes = ReadBytes(path);
        const fuzzing::ImportOutcome outcome = fuzzing::FeedImporter(bytes.data(), bytes.size());
        if (!outcome.imported) {
            EXPECT_FALSE(outcome.error.empty());
        }
        fuzzing::FeedModelImport(bytes.data(), bytes.size());
    }
}

TEST(FuzzRegressions, DamagedBitmapsNeverClaimMoreThanTheFileHolds) {
    for (const fs::path& path : Regressions("fuzz_bitmap")) {
        SCOPED_TRACE(path.filename().string());
        const std::vector<std::uint8_t> bytes = ReadBytes(path);
        const fuzzing::BitmapOutcome outcome = fuzzing::FeedBitmap(bytes.data(), bytes.size());
        if (outcome.read) {
            EXPECT_LE(outcome.imageSize, bytes.size());
        }
    }
}

TEST(FuzzRegressions, DamagedStateFilesAndTablesLeaveTheGameRunning) {
    Game& game = fuzzing::SharedGame();
    for (const fs::path& path : Regressions("fuzz_states")) {
        SCOPED_TRACE(path.filename().string());
        const std::vector<std::uint8_t> bytes = ReadBytes(path);
        fuzzing::FeedStateFile(game, bytes.data(), bytes.size());
        fuzzing::FeedStateTable(bytes.data(), bytes.size());
        EXPECT_TRUE(game.m_DrawList.empty());
    }
}

// The seeds are sound files: if they stop reading, the fuzzers start from nothing.
TEST(FuzzSeeds, FbxSeedsParseAndImportWhole) {
    const std::vector<fs::path> seeds = Seeds("fbx");
    ASSERT_FALSE(seeds.empty());
    for (const fs::path& path : seeds) {
        SCOPED_TRACE(path.filename().string());
        const std::vector<std::uint8_t> bytes = ReadBytes(path);
        const fuzzing::ParseOutcome parsed = fuzzing::FeedParser(bytes.data(), bytes.size());
        EXPECT_TRUE(parsed.ok) << parsed.error;
        EXPECT_GT(parsed.records, 5u);
        const fuzzing::ImportOutcome imported = fuzzing::FeedImporter(bytes.data(), bytes.size());
        EXPECT_TRUE(imported.imported) << imported.error;
        EXPECT_EQ(imported.polygons, 1);
        const fuzzing::ModelOutcome model = fuzzing::FeedModelImport(bytes.data(), bytes.size());
        EXPECT_EQ(model.polygons, 1u);
    }
}

TEST(FuzzSeeds, BitmapSeedsReadWithTheirPadding) {
    const std::vector<fs::path> seeds = Seeds("bitmap");
    ASSERT_FALSE(seeds.empty());
    for (const fs::path& path : seeds) {
        SCOPED_TRACE(path.filename().string());
        const std::vector<std::uint8_t> bytes = ReadBytes(path);
        const fuzzing::BitmapOutcome outcome = fuzzing::FeedBitmap(bytes.data(), bytes.size());
        EXPECT_TRUE(outcome.read);
        EXPECT_EQ(outcome.imageSize, bytes.size() - 54);
    }
}

TEST(FuzzSeeds, StateSeedsLoadTheirNamesActionsAndStates) {
    Game& game = fuzzing::SharedGame();
    const std::string state = (fs::path(ENGINE_SOURCE_DIR) / "fuzz/seeds/states/state_actions.xml");
    const std::vector<std::uint8_t> stateBytes = ReadBytes(state);
    const fuzzing::StateOutcome loaded =
        fuzzing::FeedStateFile(game, stateBytes.data(), stateBytes.size());
    EXPECT_EQ(loaded.name, "Walk");
    EXPECT_EQ(loaded.actions, 2u);
    EXPECT_EQ(loaded.models, 1u);  // the missing model file still makes an empty model

    const std::string table = (fs::path(ENGINE_SOURCE_DIR) / "fuzz/seeds/states/table_doctype.xml");
    const std::vector<std::uint8_t> tableBytes = ReadBytes(table);
    const fuzzing::TableOutcome read =
        fuzzing::FeedStateTable(tableBytes.data(), tableBytes.size());
    EXPECT_FALSE(read.rejected);
    EXPECT_EQ(read.title, "Demo & more");
    EXPECT_EQ(read.states, 1u);

    const char broken[] = "<game><Title>cut";
    const fuzzing::TableOutcome rejected =
        fuzzing::FeedStateTable(reinterpret_cast<const std::uint8_t*>(broken), sizeof broken - 1);
    EXPECT_TRUE(rejected.rejected);
}

// A model path naming an endless device must be refused, not read until memory runs out.
TEST(FuzzRegressions, ParsingADeviceInsteadOfAFileIsRefused) {
    const fbx::ParseResult result = fbx::ParseFile("/dev/zero");
    EXPECT_FALSE(result.ok);
    EXPECT_NE(result.error.find("not a regular file"), std::string::npos) << result.error;
}
