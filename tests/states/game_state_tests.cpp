// Loading a state file: values, models, actions, malformed files and resets.
#include <string>

#include <gtest/gtest.h>

#include "model/Model.h"
#include "state_test_support.h"
#include "states/Game.h"
#include "states/GameState.h"
#include "states/StateAction.h"

namespace {
class GameStateTest : public StatesTest {
protected:
    void SetUp() override { m_Game = new Game(m_Dir.Write("states.xml", "<game/>")); }
    void TearDown() override { delete m_Game; }

    // Loads a plain state from the given file text; the test owns it.
    GameState* Load(const std::string& text) {
        m_DrawListBefore = m_Game->m_DrawList.size();
        return new GameState(m_Game, m_Dir.Write("state.xml", text));
    }

    Game* m_Game = nullptr;
    std::size_t m_DrawListBefore = 0;
};

TEST_F(GameStateTest, ReadsNamePositionSizeAndMusic) {
    GameState* state = Load(
        "<state><Name>Title screen</Name><X_Position>12.9</X_Position>"
        "<Y_Position>-3</Y_Position><Width>640</Width><Height>480x</Height>"
        "<BackgroundMusic>theme.wav</BackgroundMusic></state>");
    EXPECT_EQ(state->GetName(), "Title screen");
    EXPECT_FLOAT_EQ(state->m_Position[0], 12.0f);
    EXPECT_FLOAT_EQ(state->m_Position[1], -3.0f);
    EXPECT_FLOAT_EQ(state->m_Position[2], 0.0f);
    EXPECT_EQ(state->m_Width, 640);
    EXPECT_EQ(state->m_Height, 480);
    EXPECT_EQ(state->m_BackgroundMusic, "theme.wav");
    EXPECT_TRUE(state->IsLoaded());
    EXPECT_EQ(state->m_CurrentFrame, 1);
    EXPECT_TRUE(state->m_Actions.empty());
    delete state;
}

TEST_F(GameStateTest, AnActionNameBeforeTheStateNameBecomesTheStateName) {
    GameState* state = Load("<state><Action><Name>Walk</Name></Action><Name>Menu</Name></state>");
    EXPECT_EQ(state->GetName(), "Walk");
    delete state;
}

TEST_F(GameStateTest, EachUrlMakesOneModelPlacedAtTheStatePosition) {
    GameState* state = Load(
        "<state><X_Position>4</X_Position><Z_Position>-7</Z_Position><URL>a.fbx</URL>"
        "<group><URL>b.fbx</URL></group><URL>c.fbx</URL></state>");
    ASSERT_EQ(state->m_Models.size(), 3u);
    for (const Model* model : state->m_Models) {
        EXPECT_FLOAT_EQ(model->m_Position[0], 4.0f);
        EXPECT_FLOAT_EQ(model->m_Position[2], -7.0f);
        EXPECT_EQ(model->m_Frame, 1);
    }
    // Loading hands the models to the Game's draw list, in file order.
    ASSERT_EQ(m_Game->m_DrawList.size(), m_DrawListBefore + 3);
    auto drawn = m_Game->m_DrawList.begin();
    std::advance(drawn, m_DrawListBefore);
    for (Model* model : state->m_Models) {
        EXPECT_EQ(*drawn++, model);
    }
    delete state;
}

TEST_F(GameStateTest, ReadsActionsAndTheLaterOfTwoAlikeWins) {
    GameState* state = Load(
        "<state><Name>S</Name><Default_Action>Walk</Default_Action>"
        "<Action><Name>Walk</Name><Start_Frame>2</Start_Frame><End_Frame>4</End_Frame></Action>"
        "<Action><Name>Walk</Name><Start_Frame>5</Start_Frame><End_Frame>9</End_Frame>"
        "<Trigger>wx</Trigger><Event>Next</Event><StopMoving>1</StopMoving>"
        "<SoundFX>step.wav</SoundFX></Action>"
        "<Action><Name>Idle</Name></Action></state>");
    ASSERT_EQ(state->m_Actions.size(), 2u);
    const StateAction* walk = state->m_Actions["Walk"];
    ASSERT_NE(walk, nullptr);
    EXPECT_EQ(walk->m_Name, "Walk");
    EXPECT_EQ(walk->m_StartFrame, 5);
    EXPECT_EQ(walk->m_EndFrame, 9);
    EXPECT_EQ(walk->m_Trigger, 'w');
    EXPECT_EQ(walk->m_Event, "Next");
    EXPECT_EQ(walk->m_StopMoving, 1);
    EXPECT_EQ(walk->m_SoundFX, "step.wav");
    const StateAction* idle = state->m_Actions["Idle"];
    ASSERT_NE(idle, nullptr);
    EXPECT_EQ(idle->m_Trigger, '\0');
    EXPECT_EQ(idle->m_StartFrame, 0);
    EXPECT_EQ(idle->m_Event, "");
    // The default action's start frame is current after loading.
    EXPECT_EQ(state->m_CurrentAction, "Walk");
    EXPECT_EQ(state->m_CurrentFrame, 5);
    delete state;
}

TEST_F(GameStateTest, DefaultActionNamingNothingLeavesFrameOneAndAnEmptyEntry) {
    GameState* state = Load(
        "<state><Default_Action>Run</Default_Action>"
        "<Action><Name>Walk</Name><Start_Frame>5</Start_Frame></Action></state>");
    EXPECT_EQ(state->m_CurrentFrame, 1);
    EXPECT_EQ(state->m_CurrentAction, "Run");
    ASSERT_EQ(state->m_Actions.count("Run"), 1u);
    EXPECT_EQ(state->m_Actions["Run"], nullptr);
    delete state;
}

TEST_F(GameStateTest, MalformedFileLeavesAnEmptyLoadedState) {
    GameState* state = Load("<state><Name>Broken</Name><URL>a.fbx</URL><Action></state>");
    EXPECT_TRUE(state->IsLoaded());
    EXPECT_EQ(state->GetName(), "");
    EXPECT_TRUE(state->m_Models.empty());
    EXPECT_TRUE(state->m_Actions.empty());
    EXPECT_EQ(state->m_CurrentFrame, 1);
    EXPECT_EQ(m_Game->m_DrawList.size(), m_DrawListBefore);
    delete state;

    GameState* missing = new GameState(m_Game, m_Dir.Path("no-such-file.xml"));
    EXPECT_TRUE(missing->IsLoaded());
    EXPECT_TRUE(missing->m_Models.empty());
    delete missing;
}

TEST_F(GameStateTest, GameGoesOnWhenAStateFileIsMalformed) {
    const std::string broken = m_Dir.Write("broken.xml", "<state><Name>x</state>");
    const std::string good = m_Dir.Write("good.xml", "<state><Name>Good</Name></state>");
    Game game(m_Dir.Write(
        "table.xml",
        "<game><default>Broken</default><state><type>MenuState</type><name>Broken</name>"
        "<resources>" +
            broken +
            "</resources></state><state><type>MenuState</type><name>Good</name><resources>" + good +
            "</resources></state></game>"));
    ASSERT_EQ(game.m_States.size(), 2u);
    EXPECT_TRUE(game.m_States["Broken"]->IsLoaded());
    EXPECT_EQ(game.m_States["Broken"]->GetName(), "");
    EXPECT_EQ(game.m_States["Good"]->GetName(), "Good");
}

TEST_F(GameStateTest, ResetLoadsAgainAndAppendsAnotherCopyOfEachModel) {
    GameState* state = Load(
        "<state><Name>S</Name><URL>a.fbx</URL><URL>b.fbx</URL><Default_Action>Walk"
        "</Default_Action><Action><Name>Walk</Name><Start_Frame>3</Start_Frame></Action>"
        "</state>");
    const StateAction* before = state->m_Actions["Walk"];
    state->m_CurrentFrame = 42;
    state->Reset();
    EXPECT_TRUE(state->IsLoaded());
    EXPECT_EQ(state->m_Models.size(), 4u);
    EXPECT_NE(state->m_Actions["Walk"], before);
    EXPECT_EQ(state->m_CurrentFrame, 3);
    delete state;
}

TEST_F(GameStateTest, UpdatePlacesTheModelsOnTheDrawListEachTime) {
    GameState* state = Load("<state><Y_Position>2</Y_Position><URL>a.fbx</URL></state>");
    m_Game->m_DrawList.clear();
    state->m_Rotation[1] = 30.0f;
    state->m_CurrentFrame = 6;
    state->Update(16);
    EXPECT_EQ(state->m_LastUpdate, 16);
    ASSERT_EQ(m_Game->m_DrawList.size(), 1u);
    const Model* model = m_Game->m_DrawList.front();
    EXPECT_FLOAT_EQ(model->m_Position[1], 2.0f);
    EXPECT_FLOAT_EQ(model->m_Rotation[1], 30.0f);
    EXPECT_EQ(model->m_Frame, 6);
    m_Game->m_DrawList.clear();
    delete state;
}
}  // namespace
