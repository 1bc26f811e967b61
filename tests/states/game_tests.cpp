// The Game and its state table: values read, states made, reload and destruction, and what
// the user sees when the table is malformed.
#include <gtest/gtest.h>

#include <csignal>

#include "scratch_dir.h"
#include "states/Game.h"
#include "states/MenuState.h"

namespace {

std::string Entry(const std::string& type, const std::string& name, const std::string& file) {
    return "<state><type>" + type + "</type><name>" + name + "</name><resources>" + file +
           "</resources></state>";
}

class GameTest : public ::testing::Test {
protected:
    std::string State(const std::string& name, const std::string& content = "") {
        return m_Dir.Write(name + ".xml",
                           "<state><Name>" + name + "</Name>" + content + "</state>");
    }
    std::string Table(const std::string& body) {
        return m_Dir.Write("states.xml", "<game>" + body + "</game>");
    }

    ScratchDir m_Dir;
};

TEST_F(GameTest, ReadsTheTableMakesItsMenuStatesAndSaysWhenItIsDone) {
    // A title inside a state counts when it comes first; only exact "MenuState" types are
    // made, and of two states of one name the second stays.
    const std::string other = State("Other");
    const std::string table = Table(
        "<return_action>r</return_action><reload_action>l</reload_action>"
        "<pause_game>pause</pause_game><loader>" +
        State("Loading") +
        "</loader><Width>800px</Width><Height>tall</Height><default>Menu</default>"
        "<state><Title>Demo</Title><type>MenuState</type><name>Menu</name><resources>" +
        State("First") + "</resources></state>" +
        Entry("MenuState", "Menu", State("Second", "<URL>a.fbx</URL><URL>b.fbx</URL>")) +
        Entry("menustate", "Lower", other) + Entry("Level", "Level", other) +
        Entry("", "Untyped", other) + "<Title>Top</Title>");
    ::testing::internal::CaptureStdout();
    Game game(table);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              "Failed to open a.fbx.\nFailed to open b.fbx.\nFinished loading xml.\n");
    EXPECT_EQ(std::string({game.m_ReturnKey, game.m_ReloadKey, game.m_PauseKey}), "rlp");
    EXPECT_EQ(game.m_Title, "Demo");
    EXPECT_EQ(std::make_pair(game.m_Viewport.m_Width, game.m_Viewport.m_Height),
              std::make_pair(800, 0));
    EXPECT_EQ(game.m_DefaultState + " " + game.m_CurrentState, "Menu Menu");
    ASSERT_NE(game.m_Loader, nullptr);
    EXPECT_EQ(game.m_Loader->GetName(), "Loading");
    EXPECT_TRUE(game.m_Loader->IsLoaded());
    ASSERT_EQ(game.m_States.size(), 1u);
    GameState* menu = game.m_States["Menu"];
    ASSERT_NE(dynamic_cast<MenuState*>(menu), nullptr);
    EXPECT_EQ(menu->GetName(), "Second");
    // States are loaded when made, their models on the draw list.
    EXPECT_TRUE(menu->IsLoaded());
    EXPECT_EQ(menu->m_Models.size(), 2u);
    EXPECT_EQ(game.m_DrawList, menu->m_Models);
    delete game.m_Loader;
}

TEST_F(GameTest, ReloadReadsTheTableAgainAndReturnsToTheDefault) {
    const std::string menu = State("Menu");
    Game game(
        Table("<Title>Old</Title><default>Menu</default>" + Entry("MenuState", "Menu", menu)));
    GameState* before = game.m_States["Menu"];
    game.m_CurrentState = "Elsewhere";
    Table("<Title>New</Title><default>Menu</default>" + Entry("MenuState", "Menu", menu) +
          Entry("MenuState", "Extra", menu));
    game.LoadStates();
    EXPECT_EQ(game.m_Title, "New");
    EXPECT_EQ(game.m_CurrentState, "Menu");
    EXPECT_EQ(game.m_States.size(), 2u);
    EXPECT_NE(game.m_States["Menu"], before);  // made anew
}

// A state that counts its destruction.
struct ProbeState : GameState {
    using GameState::GameState;
    ~ProbeState() override { ++s_Destroyed; }
    static inline int s_Destroyed = 0;
};

TEST_F(GameTest, MissingKeysReadAsNoKeyAndDestroyingTheGameDestroysItsStates) {
    auto* game = new Game(Table(""));
    EXPECT_EQ(static_cast<unsigned char>(game->m_ReloadKey), 0xFF);  // never fires
    EXPECT_EQ(game->m_PauseKey, '\0');
    EXPECT_EQ(game->m_Loader, nullptr);
    game->m_States["A"] = new ProbeState(game, State("Probe"));
    game->m_States["B"] = new ProbeState(game, State("Probe"));
    game->m_States["Empty"] = nullptr;
    delete game;
    EXPECT_EQ(ProbeState::s_Destroyed, 2);
}

// Builds a Game where nothing catches what it throws, as at the program's start.
void ConstructUncaught(const std::string& table) noexcept {
    Game game(table);
}

TEST_F(GameTest, MalformedTableStopsTheProgramAndSaysWhere) {
    const std::string table = m_Dir.Write(
        "states.xml", "<game>\n  <Title>Demo</Title>\n  <default>Menu</dflt>\n</game>\n");
    EXPECT_EXIT(
        ConstructUncaught(table), ::testing::KilledBySignal(SIGABRT),
        "Fatal error in .*states\\.xml at line 3, column 18: expected end of tag .default.");
}

}  // namespace
