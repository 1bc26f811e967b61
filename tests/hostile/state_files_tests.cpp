// Damaged, missing and foreign files where the state table and state files are named: a
// broken state table ends the program at start-up naming the file, line and column; every
// other file leaves its state empty (or its model empty) and the game goes on.
#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <utility>
#include <vector>

#include "hostile_support.h"
#include "model/Model.h"
#include "states/Game.h"
#include "states/GameState.h"
#include "states/MenuState.h"

namespace {

// Entities that refer to each other ten times a level: levels deep, it expands to
// 10^levels copies of a 100-character text.
std::string EntityBomb(int levels) {
    std::string text = "<?xml version=\"1.0\"?>\n<!DOCTYPE state [\n<!ENTITY e0 \"" +
                       std::string(100, 'a') + "\">\n";
    for (int level = 1; level <= levels; ++level) {
        text += "<!ENTITY e" + std::to_string(level) + " \"";
        for (int i = 0; i < 10; ++i) {
            text += "&e" + std::to_string(level - 1) + ";";
        }
        text += "\">\n";
    }
    return text + "]>\n<state><Name>&e" + std::to_string(levels) + ";</Name></state>\n";
}

std::string NestedState(int depth) {
    std::string text = "<state><Name>Deep</Name>";
    for (int i = 0; i < depth; ++i)
        text += "<a>";
    text += "x";
    for (int i = 0; i < depth; ++i)
        text += "</a>";
    return text + "<URL>missing.fbx</URL></state>";
}

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
    const std::vector<std::pair<std::string, std::string>> tables = {
        {"empty.xml", dir.Write("empty.xml", "")},
        {"binary.xml", dir.Write("binary.xml", std::string("\0\x01\xff\xfe garbage", 13))},
        {"folder.xml", (dir.Root() / "folder.xml").string()},
        {"bomb.xml", dir.Write("bomb.xml", EntityBomb(8))},
    };
    std::filesystem::create_directory(dir.Root() / "folder.xml");
    for (const auto& [name, path] : tables) {
        EXPECT_EXIT(ConstructUncaught(path), ::testing::KilledBySignal(SIGABRT),
                    "Fatal error in .*" + name + " at line [0-9]+, column [0-9]+: .+")
            << name;
    }
}

TEST(HostileStateFile, UnusableStateFilesLeaveAnEmptyStateAndTheGameGoesOn) {
    ScratchDir dir;
    std::filesystem::create_directory(dir.Root() / "folder.xml");
    const std::vector<std::string> files = {
        dir.Path("missing.xml"),
        (dir.Root() / "folder.xml").string(),
        dir.Write("empty.xml", ""),
        dir.Write("binary.xml", std::string("\0\x01\xff\xfe<URL>x</URL>", 16)),
        dir.Write("model.xml", ReadWholeFile(DataFile("textured_quad.fbx"))),
        dir.Write("bomb.xml", EntityBomb(6)),
        dir.Write("truncated.xml", "<state><Name>Cut</Name><URL>missing.fbx</URL><Action><Na"),
    };
    for (const std::string& file : files) {
        Game* game = nullptr;
        const std::string output =
            CapturedOutput([&] { game = new Game(dir.Write("states.xml", Table(file, file))); });
        EXPECT_NE(output.find("Finished loading xml.\n"), std::string::npos) << file;
        ASSERT_EQ(game->m_States.count("Menu"), 1u) << file;
        GameState* state = game->m_States.at("Menu");
        // Nothing was read: no name (the bomb's would be megabytes long), no model, no action.
        EXPECT_EQ(state->GetName(), "") << file;
        EXPECT_TRUE(state->m_Models.empty()) << file;
        EXPECT_TRUE(state->m_Actions.empty()) << file;
        ASSERT_NE(game->m_Loader, nullptr);
        EXPECT_TRUE(game->m_Loader->m_Models.empty()) << file;
        // The state still runs its frame and is reset without trouble.
        EXPECT_TRUE(state->IsLoaded()) << file;
        game->m_Keyboard = Keyboard{};
        state->Update(16);
        state->Reset();
        state->Update(16);
        EXPECT_TRUE(game->m_DrawList.empty()) << file;
        delete game->m_Loader;
        delete game;
    }
}

TEST(HostileStateFile, ModelsThatCannotBeReadAreNamedAndLeftEmptyAgainOnEachReset) {
    ScratchDir dir;
    const std::string folder = dir.Root().string();
    const std::string missing = dir.Path("no_such_model.fbx");
    const std::string foreign = DataFile("not_a_model.fbx");
    const std::string file =
        dir.Write("menu.xml", "<state><Name>Menu</Name><URL>" + missing + "</URL><URL>" + folder +
                                  "</URL><URL>" + foreign + "</URL><URL></URL></state>");
    Game* game = nullptr;
    std::string output =
        CapturedOutput([&] { game = new Game(dir.Write("states.xml", Table(file))); });
    const std::string expected =
        "Failed to open " + missing + ".\n" +
        "Call to KFbxImporter::Initialize() failed.\nError returned: Not a regular file: " + folder +
        "\n\n" +
        "Call to KFbxImporter::Initialize() failed.\nError returned: Not an FBX file: " + foreign +
        "\n\n";
    EXPECT_NE(output.find(expected), std::string::npos) << output;
    GameState* state = game->m_States.at("Menu");
    EXPECT_EQ(state->GetName(), "Menu");
    ASSERT_EQ(state->m_Models.size(), 4u);
    for (const Model* model : state->m_Models) {
        EXPECT_TRUE(model->m_Meshes.empty());
    }

    output = CapturedOutput([&] { state->Reset(); });
    EXPECT_NE(output.find(expected), std::string::npos) << output;
    EXPECT_EQ(state->m_Models.size(), 8u);
    game->m_DrawList.clear();
    state->Update(16);
    EXPECT_EQ(game->m_DrawList.size(), 8u);
    delete game;
}

TEST(HostileStateFile, DeeplyNestedStateFileStillLoads) {
    ScratchDir dir;
    const std::string file = dir.Write("deep.xml", NestedState(20000));
    MenuState* state = nullptr;
    Game* game = nullptr;
    const std::string output = CapturedOutput([&] {
        game = new Game(dir.Write("states.xml", "<game/>"));
        state = new MenuState(game, file);
    });
    EXPECT_EQ(state->GetName(), "Deep");
    EXPECT_NE(output.find("Failed to open missing.fbx.\n"), std::string::npos) << output;
    EXPECT_EQ(state->m_Models.size(), 1u);
    delete state;
    delete game;
}

}  // namespace
