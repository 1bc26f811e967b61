// The Game and its state table: values read, states made, reload and destruction, and what
// the user sees when the table is malformed.
#include <csignal>
#include <string>

#include <gtest/gtest.h>

#include "state_test_support.h"
#include "states/Game.h"
#include "states/GameState.h"
#include "states/MenuState.h"

namespace {
class GameTest : public StatesTest {
protected:
    // A state file whose only content is its name.
    std::string NamedState(const std::string& file, const std::string& name) {
        return m_Dir.Write(file, "<state><Name>" + name + "</Name></state>");
    }

    static std::string StateEntry(const std::string& type, const std::string& name,
                                  const std::string& resources) {
        return "<state><type>" + type + "</type><name>" + name + "</name><resources>" + resources +
               "</resources></state>";
    }
};

TEST_F(GameTest, ReadsTheTopLevelValues) {
    const std::string menu = NamedState("menu.xml", "Main menu");
    const std::string loading = NamedState("loading.xml", "Loading");
    const std::string table =
        m_Dir.Write("states.xml",
                    "<game><return_action>r</return_action><reload_action>l</reload_action>"
                    "<pause_game>pause</pause_game><loader>" +
                        loading +
                        "</loader><Title>Demo</Title><Width>800px</Width>"
                        "<Height>tall</Height><default>Menu</default>" +
                        StateEntry("MenuState", "Menu", menu) + "</game>");

    ::testing::internal::CaptureStdout();
    Game game(table);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Finished loading xml.\n");

    EXPECT_EQ(game.m_ReturnKey, 'r');
    EXPECT_EQ(game.m_ReloadKey, 'l');
    EXPECT_EQ(game.m_PauseKey, 'p');
    EXPECT_EQ(game.m_Title, "Demo");
    EXPECT_EQ(game.m_Viewport.m_Width, 800);
    EXPECT_EQ(game.m_Viewport.m_Height, 0);
    EXPECT_EQ(game.m_DefaultState, "Menu");
    EXPECT_EQ(game.m_CurrentState, "Menu");
    ASSERT_NE(game.m_Loader, nullptr);
    EXPECT_EQ(game.m_Loader->GetName(), "Loading");
    EXPECT_TRUE(game.m_Loader->IsLoaded());
    ASSERT_EQ(game.m_States.size(), 1u);
    ASSERT_NE(dynamic_cast<MenuState*>(game.m_States["Menu"]), nullptr);
    EXPECT_EQ(game.m_States["Menu"]->GetName(), "Main menu");
    EXPECT_EQ(game.m_Tick, false);
    EXPECT_EQ(game.m_TickRate, 15);
    EXPECT_EQ(game.m_FramesPerSecond, 0);
}

TEST_F(GameTest, MissingElementsGiveEmptyValues) {
    Game game(m_Dir.Write("states.xml", "<game/>"));
    EXPECT_EQ(game.m_ReturnKey, '\0');
    EXPECT_EQ(game.m_PauseKey, '\0');
    // Without "reload_action" the reload key can never fire.
    EXPECT_EQ(static_cast<unsigned char>(game.m_ReloadKey), 0xFF);
    EXPECT_EQ(game.m_Loader, nullptr);
    EXPECT_EQ(game.m_Title, "");
    EXPECT_EQ(game.m_Viewport.m_Width, 0);
    EXPECT_EQ(game.m_Viewport.m_Height, 0);
    EXPECT_EQ(game.m_DefaultState, "");
    EXPECT_EQ(game.m_CurrentState, "");
    EXPECT_TRUE(game.m_States.empty());
}

TEST_F(GameTest, OnlyExactMenuStateTypesAreMadeAndARepeatedNameKeepsTheSecond) {
    const std::string first = NamedState("first.xml", "First");
    const std::string second = NamedState("second.xml", "Second");
    const std::string other = NamedState("other.xml", "Other");
    Game game(m_Dir.Write(
        "states.xml",
        "<game><default>Menu</default>" + StateEntry("MenuState", "Menu", first) +
            StateEntry("MenuState", "Menu", second) + StateEntry("menustate", "Lower", other) +
            StateEntry("Level", "Level", other) + StateEntry("", "Untyped", other) + "</game>"));
    ASSERT_EQ(game.m_States.size(), 1u);
    EXPECT_EQ(game.m_States["Menu"]->GetName(), "Second");
}

TEST_F(GameTest, TitleInsideAStateCountsWhenItComesFirst) {
    const std::string menu = NamedState("menu.xml", "Menu");
    Game game(m_Dir.Write("states.xml",
                          "<game><state><Title>From state</Title><type>MenuState</type>"
                          "<name>Menu</name><resources>" +
                              menu + "</resources></state><Title>Top</Title></game>"));
    EXPECT_EQ(game.m_Title, "From state");
    EXPECT_EQ(game.m_States.count("Menu"), 1u);
}

TEST_F(GameTest, StatesAreLoadedWhenMadeAndTheirModelsAreOnTheDrawList) {
    const std::string menu =
        m_Dir.Write("menu.xml", "<s><Name>Menu</Name><URL>a.fbx</URL><URL>b.fbx</URL></s>");
    Game game(m_Dir.Write("states.xml", "<game><default>Menu</default>" +
                                            StateEntry("MenuState", "Menu", menu) + "</game>"));
    GameState* state = game.m_States["Menu"];
    ASSERT_NE(state, nullptr);
    EXPECT_TRUE(state->IsLoaded());
    EXPECT_EQ(state->m_Models.size(), 2u);
    EXPECT_EQ(game.m_DrawList, state->m_Models);
}

TEST_F(GameTest, ReloadReadsTheTableAgainAndReturnsToTheDefault) {
    const std::string menu = NamedState("menu.xml", "Menu");
    const std::string table =
        m_Dir.Write("states.xml", "<game><Title>Old</Title><default>Menu</default>" +
                                      StateEntry("MenuState", "Menu", menu) + "</game>");
    Game game(table);
    GameState* before = game.m_States["Menu"];
    game.m_CurrentState = "Elsewhere";

    m_Dir.Write("states.xml", "<game><Title>New</Title><default>Menu</default>" +
                                  StateEntry("MenuState", "Menu", menu) +
                                  StateEntry("MenuState", "Extra", menu) + "</game>");
    game.LoadStates();
    EXPECT_EQ(game.m_Title, "New");
    EXPECT_EQ(game.m_CurrentState, "Menu");
    EXPECT_EQ(game.m_States.size(), 2u);
    EXPECT_NE(game.m_States["Menu"], before);  // made anew
}

// A state that tells when it is destroyed.
class ProbeState : public GameState {
public:
    ProbeState(Game* game, const std::string& file, int* destroyed)
        : GameState(game, file), m_Destroyed(destroyed) {}
    ~ProbeState() override { ++*m_Destroyed; }

private:
    int* m_Destroyed;
};

TEST_F(GameTest, DestroyingTheGameDestroysItsStates) {
    const std::string file = NamedState("probe.xml", "Probe");
    int destroyed = 0;
    auto* game = new Game(m_Dir.Write("states.xml", "<game/>"));
    game->m_States["A"] = new ProbeState(game, file, &destroyed);
    game->m_States["B"] = new ProbeState(game, file, &destroyed);
    game->m_States["Empty"] = nullptr;
    delete game;
    EXPECT_EQ(destroyed, 2);
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

TEST_F(GameTest, MissingTableStopsTheProgramAndSaysWhich) {
    const std::string table = m_Dir.Path("absent.xml");
    EXPECT_EXIT(ConstructUncaught(table), ::testing::KilledBySignal(SIGABRT),
                "Fatal error in .*absent\\.xml at line [0-9]+, column [0-9]+: .+");
}
}  // namespace
