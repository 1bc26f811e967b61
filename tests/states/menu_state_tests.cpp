// The menu state's own load cycle: loaded on construction, background music after a reset.
#include <string>

#include <gtest/gtest.h>

#include "state_test_support.h"
#include "states/Game.h"
#include "states/MenuState.h"

namespace {
class MenuStateTest : public StatesTest {
protected:
    void SetUp() override { m_Game = new Game(m_Dir.Write("states.xml", "<game/>")); }
    void TearDown() override { delete m_Game; }

    Game* m_Game = nullptr;
};

TEST_F(MenuStateTest, LoadedAtOnceButMusicOnlyAfterAReset) {
    MenuState state(m_Game, m_Dir.Write("menu.xml",
                                        "<state><Name>Menu</Name><URL>a.fbx</URL>"
                                        "<BackgroundMusic>menu.ogg</BackgroundMusic></state>"));
    EXPECT_TRUE(state.IsLoaded());
    EXPECT_EQ(state.m_CompositeMusic, "");
    EXPECT_TRUE(state.m_Children.empty());
    EXPECT_EQ(state.m_Models.size(), 1u);

    state.Reset();
    EXPECT_TRUE(state.IsLoaded());
    EXPECT_EQ(state.m_CompositeMusic, "menu.ogg");
    EXPECT_EQ(state.m_Models.size(), 2u);

    state.Reset();
    EXPECT_EQ(state.m_Models.size(), 3u);
}

TEST_F(MenuStateTest, ResetOfAFileThatBrokeKeepsWhatTheStateHeld) {
    const std::string file = m_Dir.Write("menu.xml",
                                         "<state><Name>Menu</Name><URL>a.fbx</URL>"
                                         "<BackgroundMusic>menu.ogg</BackgroundMusic></state>");
    MenuState state(m_Game, file);
    m_Dir.Write("menu.xml", "<state><Name>Menu");
    state.Reset();
    EXPECT_TRUE(state.IsLoaded());
    EXPECT_EQ(state.GetName(), "Menu");
    EXPECT_EQ(state.m_Models.size(), 1u);
    EXPECT_EQ(state.m_CompositeMusic, "menu.ogg");
}

TEST_F(MenuStateTest, MalformedFileGivesNoMusicAfterAReset) {
    MenuState state(m_Game, m_Dir.Write("menu.xml", "<state><BackgroundMusic>x</state>"));
    state.Reset();
    EXPECT_TRUE(state.IsLoaded());
    EXPECT_EQ(state.m_CompositeMusic, "");
}
}  // namespace
