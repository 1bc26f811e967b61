// Loading a state file: values, models, actions, malformed files and resets, for a plain
// state and for the menu state (which reads its background music on a reset).
#include <gmock/gmock.h>

#include <memory>

#include "model/Model.h"
#include "scratch_dir.h"
#include "states/Game.h"
#include "states/MenuState.h"
#include "states/StateAction.h"

namespace {

using ::testing::ElementsAre;

class GameStateTest : public ::testing::Test {
protected:
    std::unique_ptr<GameState> Load(const std::string& text) {
        return std::make_unique<GameState>(&m_Game, m_Dir.Write("state.xml", text));
    }

    ScratchDir m_Dir;
    Game m_Game{m_Dir.Write("states.xml", "<game/>")};
};

TEST_F(GameStateTest, ReadsItsValuesAndMakesOneModelPerUrlDrawnInFileOrder) {
    const auto state = Load(
        "<state><Name>Title screen</Name><X_Position>12.9</X_Position>"
        "<Y_Position>-3</Y_Position><Width>640</Width><Height>480x</Height>"
        "<BackgroundMusic>theme.wav</BackgroundMusic><URL>a.fbx</URL>"
        "<group><URL>b.fbx</URL></group><URL>c.fbx</URL></state>");
    EXPECT_EQ(state->GetName(), "Title screen");
    EXPECT_THAT(state->m_Position, ElementsAre(12.0f, -3.0f, 0.0f));
    EXPECT_EQ(state->m_Width, 640);
    EXPECT_EQ(state->m_Height, 480);
    EXPECT_EQ(state->m_BackgroundMusic, "theme.wav");
    EXPECT_TRUE(state->IsLoaded());
    ASSERT_EQ(state->m_Models.size(), 3u);
    for (const Model* model : state->m_Models) {
        EXPECT_THAT(model->m_Position, ElementsAre(12.0f, -3.0f, 0.0f));
        EXPECT_EQ(model->m_Frame, 1);
    }
    EXPECT_EQ(m_Game.m_DrawList, state->m_Models);
    // The name is the first "Name" in the file, an action's too.
    EXPECT_EQ(Load("<state><Action><Name>Walk</Name></Action><Name>Menu</Name></state>")->GetName(),
              "Walk");
}

TEST_F(GameStateTest, ReadsActionsAndTheLaterOfTwoAlikeWins) {
    const auto state = Load(
        "<state><Name>S</Name><Default_Action>Walk</Default_Action>"
        "<Action><Name>Walk</Name><Start_Frame>2</Start_Frame><End_Frame>4</End_Frame></Action>"
        "<Action><Name>Walk</Name><Start_Frame>5</Start_Frame><End_Frame>9</End_Frame>"
        "<Trigger>wx</Trigger><Event>Next</Event><StopMoving>1</StopMoving>"
        "<SoundFX>step.wav</SoundFX></Action><Action><Name>Idle</Name></Action></state>");
    ASSERT_EQ(state->m_Actions.size(), 2u);
    const StateAction* walk = state->m_Actions["Walk"];
    ASSERT_NE(walk, nullptr);
    EXPECT_THAT((std::vector<int>{walk->m_StartFrame, walk->m_EndFrame, walk->m_Trigger,
                                  walk->m_StopMoving}),
                ElementsAre(5, 9, 'w', 1));
    EXPECT_THAT((std::vector<std::string>{walk->m_Name, walk->m_Event, walk->m_SoundFX}),
                ElementsAre("Walk", "Next", "step.wav"));
    ASSERT_NE(state->m_Actions["Idle"], nullptr);
    EXPECT_EQ(state->m_Actions["Idle"]->m_Trigger, '\0');
    // The default action's start frame is current after loading.
    EXPECT_EQ(state->m_CurrentAction, "Walk");
    EXPECT_EQ(state->m_CurrentFrame, 5);

    // A default action naming nothing leaves frame one and an empty entry.
    const auto other = Load(
        "<state><Default_Action>Run</Default_Action>"
        "<Action><Name>Walk</Name><Start_Frame>5</Start_Frame></Action></state>");
    EXPECT_EQ(other->m_CurrentFrame, 1);
    EXPECT_EQ(other->m_CurrentAction, "Run");
    ASSERT_EQ(other->m_Actions.count("Run"), 1u);
    EXPECT_EQ(other->m_Actions["Run"], nullptr);
}

TEST_F(GameStateTest, ResetLoadsAgainAddingACopyOfEachModelAndUpdateDrawsThemAll) {
    const auto state = Load(
        "<state><Name>S</Name><Y_Position>2</Y_Position><URL>a.fbx</URL><URL>b.fbx</URL>"
        "<Default_Action>Walk</Default_Action><Action><Name>Walk</Name><Start_Frame>3"
        "</Start_Frame></Action></state>");
    const StateAction* before = state->m_Actions["Walk"];
    state->m_CurrentFrame = 42;
    state->Reset();
    EXPECT_TRUE(state->IsLoaded());
    EXPECT_EQ(state->m_Models.size(), 4u);
    EXPECT_NE(state->m_Actions["Walk"], before);
    EXPECT_EQ(state->m_CurrentFrame, 3);

    // Each update places every model at the state's position, turn and frame and draws it.
    m_Game.m_DrawList.clear();
    state->m_Rotation[1] = 30.0f;
    state->m_CurrentFrame = 6;
    state->Update(16);
    EXPECT_EQ(state->m_LastUpdate, 16);
    EXPECT_EQ(m_Game.m_DrawList, state->m_Models);
    for (const Model* model : state->m_Models) {
        EXPECT_THAT(model->m_Position, ElementsAre(0.0f, 2.0f, 0.0f));
        EXPECT_THAT(model->m_Rotation, ElementsAre(0.0f, 30.0f, 0.0f));
        EXPECT_EQ(model->m_Frame, 6);
    }
}

TEST_F(GameStateTest, MenuStateIsLoadedAtOnceButReadsItsMusicOnlyOnAReset) {
    const std::string file = m_Dir.Write("menu.xml",
                                         "<state><Name>Menu</Name><URL>a.fbx</URL>"
                                         "<BackgroundMusic>menu.ogg</BackgroundMusic></state>");
    MenuState state(&m_Game, file);
    EXPECT_TRUE(state.IsLoaded());
    EXPECT_EQ(state.m_CompositeMusic, "");
    state.Reset();
    EXPECT_EQ(state.m_CompositeMusic, "menu.ogg");
    EXPECT_EQ(state.m_Models.size(), 2u);
    // A reset of a file that broke since keeps what the state held.
    m_Dir.Write("menu.xml", "<state><Name>Menu");
    state.Reset();
    EXPECT_TRUE(state.IsLoaded());
    EXPECT_EQ(state.GetName(), "Menu");
    EXPECT_EQ(state.m_Models.size(), 2u);
    EXPECT_EQ(state.m_CompositeMusic, "menu.ogg");

    MenuState malformed(&m_Game, m_Dir.Write("bad.xml", "<state><BackgroundMusic>x</state>"));
    malformed.Reset();
    EXPECT_TRUE(malformed.IsLoaded());
    EXPECT_EQ(malformed.m_CompositeMusic, "");
}

}  // namespace
