// The per-frame action pass of a menu state: held keys select actions, events switch the
// Game's state, frames step on ticks, and the ten movements move or turn the models.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "model/Model.h"
#include "state_test_support.h"
#include "states/Game.h"
#include "states/MenuState.h"
#include "states/StateAction.h"

namespace {
class ActionTest : public StatesTest {
protected:
    void SetUp() override { m_Game = new Game(m_Dir.Write("states.xml", "<game/>")); }
    void TearDown() override {
        delete m_State;
        delete m_Game;
    }

    static std::string Action(const std::string& name, const std::string& trigger, int start,
                              int end, const std::string& event = "") {
        return "<Action><Name>" + name + "</Name><Trigger>" + trigger + "</Trigger><Start_Frame>" +
               std::to_string(start) + "</Start_Frame><End_Frame>" + std::to_string(end) +
               "</End_Frame><Event>" + event + "</Event></Action>";
    }

    void Make(const std::string& defaultAction, const std::string& actions) {
        m_State = new MenuState(
            m_Game, m_Dir.Write("menu.xml",
                                "<state><Name>Menu</Name><URL>m.fbx</URL>"
                                "<Default_Action>" +
                                    defaultAction + "</Default_Action>" + actions + "</state>"));
    }

    void Hold(unsigned char key) { m_Game->m_Keyboard.m_KeyState[key] = kKeyHeld; }
    void Release(unsigned char key) { m_Game->m_Keyboard.m_KeyState[key] = kKeyUp; }

    // One frame of the running state, as the frame loop drives it.
    void Frame(int elapsed, bool tick) {
        m_Game->m_DrawList.clear();
        m_Game->m_Tick = tick;
        m_State->Update(elapsed);
    }

    Game* m_Game = nullptr;
    MenuState* m_State = nullptr;
};

TEST_F(ActionTest, FramesStepThroughTheRangeOnTicksWithoutShowingTheEndFrame) {
    Make("Idle", Action("Idle", "", 5, 8));
    // Key code 0 is the empty trigger's key; nothing holds it here.
    EXPECT_EQ(m_State->m_CurrentFrame, 5);
    std::vector<int> frames;
    for (int i = 0; i < 6; ++i) {
        Frame(16, true);
        frames.push_back(m_State->m_CurrentFrame);
        Frame(16, false);  // no tick: the frame stays
        EXPECT_EQ(m_State->m_CurrentFrame, frames.back());
    }
    EXPECT_EQ(frames, (std::vector<int>{6, 7, 5, 6, 7, 5}));
    EXPECT_EQ(m_State->m_Models.front()->m_Frame, 5);
}

TEST_F(ActionTest, FrameBeyondTheEndFrameStaysPut) {
    Make("Stuck", Action("Stuck", "", 10, 3));
    for (int i = 0; i < 3; ++i) {
        Frame(16, true);
        EXPECT_EQ(m_State->m_CurrentFrame, 10);
    }
}

TEST_F(ActionTest, HeldTriggerSelectsItsActionAndRestartsItsRange) {
    Make("Idle", Action("Idle", "", 1, 4) + Action("Wave", "w", 20, 30));
    Hold('w');
    Frame(16, false);
    EXPECT_EQ(m_State->m_CurrentAction, "Wave");
    EXPECT_EQ(m_State->m_CurrentFrame, 20);
    // Held through a tick: it fires again (back to 20), then steps once.
    Frame(16, true);
    EXPECT_EQ(m_State->m_CurrentFrame, 21);
    Release('w');
    Frame(16, false);
    EXPECT_EQ(m_State->m_CurrentAction, "Idle");
    EXPECT_EQ(m_State->m_CurrentFrame, 21);
}

TEST_F(ActionTest, TriggerMatchesTheExactCharacterPressedOrHeld) {
    Make("Idle", Action("Wave", "W", 20, 30));
    Hold('w');
    Frame(16, false);
    EXPECT_EQ(m_State->m_CurrentAction, "Idle");
    EXPECT_EQ(m_State->m_CurrentFrame, 1);
    m_Game->m_Keyboard.m_KeyState['W'] = kKeyPressed;
    Frame(16, false);
    EXPECT_EQ(m_State->m_CurrentAction, "Wave");
    EXPECT_EQ(m_State->m_CurrentFrame, 20);
}

TEST_F(ActionTest, EventSwitchesTheGameAndHandsBackTheDefaultAction) {
    Make("Idle", Action("Idle", "", 1, 4) + Action("Start", "g", 7, 9, "Level one"));
    m_Game->m_CurrentState = "Menu";
    Hold('g');
    Frame(16, false);
    EXPECT_EQ(m_Game->m_CurrentState, "Level one");
    EXPECT_EQ(m_State->m_CurrentAction, "Idle");
    EXPECT_EQ(m_State->m_CurrentFrame, 7);
}

TEST_F(ActionTest, TriggerAboveCode127NeverFires) {
    // "é" in UTF-8 starts with the byte 0xC3.
    Make("Idle", Action("Accent", "\xC3\xA9", 50, 60, "Elsewhere"));
    ASSERT_NE(m_State->m_Actions["Accent"], nullptr);
    EXPECT_LT(static_cast<signed char>(m_State->m_Actions["Accent"]->m_Trigger), 0);
    for (int code = 0; code < 256; ++code) {
        m_Game->m_Keyboard.m_KeyState[code] = kKeyHeld;
    }
    Frame(16, true);
    EXPECT_EQ(m_State->m_CurrentAction, "Idle");
    EXPECT_EQ(m_State->m_CurrentFrame, 1);
    EXPECT_EQ(m_Game->m_CurrentState, "");
}

TEST_F(ActionTest, TwoHeldTriggersBothFireAndTheLastByNameWins) {
    Make("Idle",
         Action("Beta", "b", 7, 9) + Action("Alpha", "a", 3, 5) + Action("MoveUp", "u", 0, 0));
    Hold('a');
    Hold('b');
    Hold('u');
    Frame(10, false);
    EXPECT_EQ(m_State->m_CurrentAction, "MoveUp");
    EXPECT_EQ(m_State->m_CurrentFrame, 0);
    EXPECT_FLOAT_EQ(m_State->m_Position[1], 3.0f);
    Release('u');
    Frame(10, false);
    EXPECT_EQ(m_State->m_CurrentAction, "Beta");
    EXPECT_EQ(m_State->m_CurrentFrame, 7);
}

struct Movement {
    const char* m_Name;
    bool m_Rotation;  // true: rotation angles; false: position
    int m_Axis;
    float m_Sign;
};

class MovementTest : public ActionTest, public ::testing::WithParamInterface<Movement> {};

TEST_P(MovementTest, MovesByAStepOfPointThreeTimesTheLastUpdateWhileHeld) {
    const Movement& movement = GetParam();
    Make("Idle", Action(movement.m_Name, "k", 2, 6));
    Hold('k');
    Frame(10, false);
    Frame(20, false);
    const float expected = movement.m_Sign * (3.0f + 6.0f);
    for (int axis = 0; axis < 3; ++axis) {
        const float wanted = axis == movement.m_Axis ? expected : 0.0f;
        EXPECT_NEAR((movement.m_Rotation ? m_State->m_Rotation : m_State->m_Position)[axis], wanted,
                    1e-4);
        EXPECT_FLOAT_EQ((movement.m_Rotation ? m_State->m_Position : m_State->m_Rotation)[axis],
                        0.0f);
    }
    // The models are placed at the new position and rotation in the same frame.
    const Model* model = m_State->m_Models.front();
    EXPECT_NEAR((movement.m_Rotation ? model->m_Rotation : model->m_Position)[movement.m_Axis],
                expected, 1e-4);
    // Released: nothing moves any more.
    Release('k');
    Frame(10, false);
    EXPECT_NEAR((movement.m_Rotation ? m_State->m_Rotation : m_State->m_Position)[movement.m_Axis],
                expected, 1e-4);
}

INSTANTIATE_TEST_SUITE_P(
    TenMovements, MovementTest,
    ::testing::Values(Movement{"RotateUp", true, 0, 1.0f}, Movement{"RotateDown", true, 0, -1.0f},
                      Movement{"RotateLeft", true, 1, -1.0f},
                      Movement{"RotateRight", true, 1, 1.0f}, Movement{"MoveUp", false, 1, 1.0f},
                      Movement{"MoveDown", false, 1, -1.0f}, Movement{"MoveLeft", false, 0, -1.0f},
                      Movement{"MoveRight", false, 0, 1.0f}, Movement{"ZoomIn", false, 2, 1.0f},
                      Movement{"ZoomOut", false, 2, -1.0f}),
    [](const ::testing::TestParamInfo<Movement>& info) { return std::string(info.param.m_Name); });

TEST_F(ActionTest, MovementNamesMustMatchExactly) {
    Make("Idle", Action("moveleft", "a", 4, 9) + Action("Move Left", "b", 4, 9));
    Hold('a');
    Hold('b');
    Frame(100, true);
    EXPECT_FLOAT_EQ(m_State->m_Position[0], 0.0f);
    // It still selects its frame range.
    EXPECT_EQ(m_State->m_CurrentAction, "moveleft");
    EXPECT_EQ(m_State->m_CurrentFrame, 5);
}

TEST_F(ActionTest, MoveLeftWhileHeldSitsAtStartAndShowsStartPlusOneOnTicks) {
    Make("Idle", Action("MoveLeft", "a", 4, 9));
    Hold('a');
    Frame(10, false);
    EXPECT_FLOAT_EQ(m_State->m_Position[0], -3.0f);
    EXPECT_EQ(m_State->m_CurrentFrame, 4);
    Frame(10, true);
    EXPECT_FLOAT_EQ(m_State->m_Position[0], -6.0f);
    EXPECT_EQ(m_State->m_CurrentFrame, 5);
}

TEST_F(ActionTest, MovementNeedsItsKeyAndElapsedTimeAndOppositesCancel) {
    Make("RotateLeft", Action("RotateLeft", "a", 0, 0) + Action("RotateRight", "d", 0, 0) +
                           Action("ZoomIn", "z", 0, 0));
    // The default action alone turns nothing.
    Frame(10, false);
    EXPECT_EQ(m_State->m_CurrentAction, "RotateLeft");
    EXPECT_FLOAT_EQ(m_State->m_Rotation[1], 0.0f);
    Hold('a');
    Hold('d');
    Frame(10, false);
    EXPECT_FLOAT_EQ(m_State->m_Rotation[1], 0.0f);
    Release('a');
    Release('d');
    Hold('z');
    Frame(0, false);
    EXPECT_FLOAT_EQ(m_State->m_Position[2], 0.0f);
}

TEST_F(ActionTest, PlainStateRunsNoActions) {
    GameState* plain = new GameState(
        m_Game, m_Dir.Write("plain.xml", "<state>" + Action("MoveLeft", "a", 4, 9) + "</state>"));
    Hold('a');
    m_Game->m_Tick = true;
    plain->Update(10);
    EXPECT_FLOAT_EQ(plain->m_Position[0], 0.0f);
    EXPECT_EQ(plain->m_CurrentFrame, 1);
    delete plain;
}
}  // namespace
