// Damaged, missing and foreign files where the state table and state files are named: a
// broken state table ends the program at start-up naming the file, line and column; every
// other file leaves its state empty (or its model empty) and the game goes on.
#include <gmock/gmock.h>

#include <csignal>
#include <memory>

#include "hostile_files.h"
#include "model/Model.h"
#include "scratch_dir.h"
#include "states/Game.h"
#include "states/MenuState.h"

namespace {

using ::testing::HasSubstr;

// Entities that refer to each other ten times a level, eight levels deep: a billion bytes
// once expanded (kept among the fuzz regressions).
const std::string kEntityBomb = ReadWholeFile(
    std::string(ENGINE_SOURCE_DIR) + "/tests/fuzz/regressions/fuzz_states/entity_expansion.xml");

// A state table with one menu state "Menu" read from the file resources.
std::string Table(const std::string& resources, const std::string& loader = "") {
    return "<game><Title>Hostile</Title><default>Menu</default>" +
           (loader.empty() ? "" : "<loader>" + loader + "</loader>") +
           "<state><type>MenuState</type><name>Menu</name><resources>" + resources +
           "</resources></state></game>";
}

// Builds a Game where nothing catches what it throws, as at the program's start.
void ConstructUncaught(const std::string& table) noexcept {
    Game game(table);
}

TEST(HostileStateTable, UnusableTableEndsTheProgramNamingFileLineAndColumn) {
    // Other tests of this program leave GL worker threads behind.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    ScratchDir dir;
    std::filesystem::create_directory(dir.Root() / "folder.xml");
    for (const std::string& path : std::vector<std::string>{
             dir.Path("absent.xml"), dir.Path("folder.xml"), dir.Write("empty.xml", ""),
             dir.Write("binary.xml", std::string("\0\x01\xff\xfe garbage", 13)),
             dir.Write("bomb.xml", kEntityBomb)}) {
        const std::string name = std::filesystem::path(path).filename().string();
        EXPECT_EXIT(ConstructUncaught(path), ::testing::KilledBySignal(SIGABRT),
                    "Fatal error in .*" + name + " at line [0-9]+, column [0-9]+: .+")
            << name;
    }
}

TEST(HostileStateFile, UnusableStateFilesLeaveAnEmptyStateAndTheGameGoesOn) {
    ScratchDir dir;
    std::filesystem::create_directory(dir.Root() / "folder.xml");
    for (const std::string& file : std::vector<std::string>{
             dir.Path("missing.xml"), dir.Path("folder.xml"), dir.Write("empty.xml", ""),
             dir.Write("binary.xml", std::string("\0\x01\xff\xfe<URL>x</URL>", 16)),
             dir.Write("model.xml", ReadWholeFile(DataFile("textured_quad.fbx"))),
             dir.Write("bomb.xml", kEntityBomb),
             dir.Write("truncated.xml",
                       "<state><Name>Cut</Name><URL>missing.fbx</URL><Action><Na")}) {
        std::unique_ptr<Game> game;
        const std::string output = CapturedOutput(
            [&] { game = std::make_unique<Game>(dir.Write("states.xml", Table(file, file))); });
        EXPECT_THAT(output, HasSubstr("Finished loading xml.\n")) << file;
        ASSERT_EQ(game->m_States.count("Menu"), 1u) << file;
        GameState* state = game->m_States.at("Menu");
        // Nothing was read: no name (the bomb's would be megabytes long), no model, no action.
        EXPECT_EQ(state->GetName(), "") << file;
        EXPECT_TRUE(state->m_Models.empty() && state->m_Actions.empty()) << file;
        ASSERT_NE(game->m_Loader, nullptr);
        EXPECT_TRUE(game->m_Loader->m_Models.empty()) << file;
        // The state still runs its frame from frame 1 and is reset without trouble.
        EXPECT_TRUE(state->IsLoaded()) << file;
        EXPECT_EQ(state->m_CurrentFrame, 1) << file;
        game->m_Keyboard = Keyboard{};
        state->Update(16);
        state->Reset();
        state->Update(16);
        EXPECT_TRUE(game->m_DrawList.empty()) << file;
        delete game->m_Loader;
    }
}

TEST(HostileStateFile, ModelsThatCannotBeReadAreNamedAndLeftEmptyAgainOnEachReset) {
    ScratchDir dir;
    const std::string folder = dir.Root().string();
    const std::string missing = dir.Path("no_such_model.fbx");
    const std::string foreign = DataFile("not_a_model.fbx");  // a picture renamed to .fbx
    const std::string empty = dir.Write("empty.fbx", "");
    const std::string file =
        dir.Write("menu.xml", "<state><Name>Menu</Name><URL>" + missing + "</URL><URL>" + folder +
                                  "</URL><URL>" + foreign + "</URL><URL>" + empty +
                                  "</URL><URL></URL></state>");
    std::unique_ptr<Game> game;
    std::string output = CapturedOutput(
        [&] { game = std::make_unique<Game>(dir.Write("states.xml", Table(file))); });
    const std::string refused = "Call to KFbxImporter::Initialize() failed.\nError returned: ";
    const std::string expected = "Failed to open " + missing + ".\n" + refused +
                                 "Not a regular file: " + folder + "\n\n" + refused +
                                 "Not an FBX file: " + foreign + "\n\n" + refused +
                                 "Not an FBX file: " + empty + "\n\n";
    EXPECT_THAT(output, HasSubstr(expected));
    GameState* state = game->m_States.at("Menu");
    EXPECT_EQ(state->GetName(), "Menu");
    ASSERT_EQ(state->m_Models.size(), 5u);
    for (const Model* model : state->m_Models) {
        EXPECT_TRUE(model->m_Meshes.empty() && model->m_Nodes.empty());
    }
    output = CapturedOutput([&] { state->Reset(); });
    EXPECT_THAT(output, HasSubstr(expected));
    EXPECT_EQ(state->m_Models.size(), 10u);
    game->m_DrawList.clear();
    state->Update(16);
    EXPECT_EQ(game->m_DrawList.size(), 10u);
}

TEST(HostileStateFile, DeeplyNestedStateFileStillLoads) {
    ScratchDir dir;
    const std::string file =
        dir.Write("deep.xml", "<state><Name>Deep</Name>" + Repeat("<a>", 20000) + "x" +
                                  Repeat("</a>", 20000) + "<URL>missing.fbx</URL></state>");
    Game game(dir.Write("states.xml", "<game/>"));
    std::unique_ptr<MenuState> state;
    const std::string output =
        CapturedOutput([&] { state = std::make_unique<MenuState>(&game, file); });
    EXPECT_EQ(state->GetName(), "Deep");
    EXPECT_THAT(output, HasSubstr("Failed to open missing.fbx.\n"));
    EXPECT_EQ(state->m_Models.size(), 1u);
}

}  // namespace
