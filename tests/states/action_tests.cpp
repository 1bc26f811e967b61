// The per-frame action pass of a menu state: held keys select actions, events switch the
// Game's state, frames step on ticks, and the ten movements move or turn the models.
#include <gmock/gmock.h>

#include <memory>
#include <tuple>

#include "model/Model.h"
#include "scratch_dir.h"
#include "states/Game.h"
#include "states/MenuState.h"
#include "states/StateAction.h"

namespace {

std::string Action(const std::string& name, const std::string& trigger, int start, int end,
                   const std::string& event = "") {
    return "<Action><Name>" + name + "</Name><Trigger>" + trigger + "</Trigger><Start_Frame>" +
           std::to_string(start) + "</Start_Frame><End_Frame>" + std::to_string(end) +
           "</End_Frame><Event>" + event + "</Event></Action>";
}

class ActionTest : public ::testing::Test {
protected:
    void Make(const std::string& defaultAction, const std::string& actions) {
        m_State = std::make_unique<MenuState>(
            &m_Game, m_Dir.Write("menu.xml",
                                 "<state><Name>Menu</Name><URL>m.fbx</URL>"
                                 "<Default_Action>" +
                                     defaultAction + "</Default_Action>" + actions + "</state>"));
    }
    void Keys(const std::string& keys, KeyState state) {
        for (char key : keys) {
            m_Game.m_Keyboard.m_KeyState[static_cast<unsigned char>(key)] = state;
        }
    }

    // One frame of the running state, as the frame loop drives it.
    void Frame(int elapsed, bool tick) {
        m_Game.m_DrawList.clear();
        m_Game.m_Tick = tick;
        m_State->Update(elapsed);
    }
    void ExpectAt(const std::string& action, int frame) const {
        EXPECT_EQ(m_State->m_CurrentAction, action);
        EXPECT_EQ(m_State->m_CurrentFrame, frame);
    }

    ScratchDir m_Dir;
    Game m_Game{m_Dir.Write("states.xml", "<game/>")};
    std::unique_ptr<MenuState> m_State;
};

TEST_F(ActionTest, FramesStepOnTicksWrappingBeforeTheEndFrameAndStayPastTheEnd) {
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

    Make("Stuck", Action("Stuck", "", 10, 3));
    Frame(16, true);
    Frame(16, true);
    EXPECT_EQ(m_State->m_CurrentFrame, 10);
}

TEST_F(ActionTest, HeldOrPressedTriggerOfTheExactCharacterSelectsItsActionAndRestartsIt) {
    Make("Idle", Action("Idle", "", 1, 4) + Action("Wave", "W", 20, 30));
    Keys("w", kKeyHeld);
    Frame(16, false);
    ExpectAt("Idle", 1);
    Keys("W", kKeyPressed);
    Frame(16, false);
    ExpectAt("Wave", 20);
    // Held through a tick: it fires again (back to 20), then steps once.
    Keys("W", kKeyHeld);
    Frame(16, true);
    ExpectAt("Wave", 21);
    Keys("W", kKeyUp);
    Frame(16, false);
    ExpectAt("Idle", 21);

    // Two held triggers both fire; the last by name wins (here a movement, which also moves).
    Make("Idle",
         Action("Beta", "b", 7, 9) + Action("Alpha", "a", 3, 5) + Action("MoveUp", "u", 0, 0));
    Keys("abu", kKeyHeld);
    Frame(10, false);
    ExpectAt("MoveUp", 0);
    EXPECT_FLOAT_EQ(m_State->m_Position[1], 3.0f);
    Keys("u", kKeyUp);
    Frame(10, false);
    ExpectAt("Beta", 7);
}

TEST_F(ActionTest, EventSwitchesTheGameAndHandsBackTheDefaultActionButNoTriggerAbove127Fires) {
    // "é" in UTF-8 starts with the byte 0xC3.
    Make("Idle", Action("Idle", "", 1, 4) + Action("Start", "g", 7, 9, "Level one") +
                     Action("Accent", "\xC3\xA9", 50, 60, "Elsewhere"));
    ASSERT_NE(m_State->m_Actions["Accent"], nullptr);
    EXPECT_LT(static_cast<signed char>(m_State->m_Actions["Accent"]->m_Trigger), 0);
    for (int& state : m_Game.m_Keyboard.m_KeyState) {
        state = kKeyHeld;
    }
    Frame(16, false);
    EXPECT_EQ(m_Game.m_CurrentState, "Level one");
    ExpectAt("Idle", 7);
}

TEST_F(ActionTest, EachMovementMovesByPointThreeTimesTheLastUpdateWhileHeld) {
    // Rotation about X, Y, Z and position X, Y, Z of the state and of its model, placed in
    // the same frame.
    const auto placement = [](const float* rotation, const float* position) {
        return std::vector<float>{rotation[0], rotation[1], rotation[2],
                                  position[0], position[1], position[2]};
    };
    // Each movement, the value it changes in that order and whether up or down.
    const std::tuple<const char*, int, float> movements[] = {
        {"RotateUp", 0, 1}, {"RotateDown", 0, -1}, {"RotateLeft", 1, -1}, {"RotateRight", 1, 1},
        {"MoveUp", 4, 1},   {"MoveDown", 4, -1},   {"MoveLeft", 3, -1},   {"MoveRight", 3, 1},
        {"ZoomIn", 5, 1},   {"ZoomOut", 5, -1}};
    for (const auto& [name, changed, sign] : movements) {
        std::vector<float> moved(6, 0.0f);
        moved[static_cast<std::size_t>(changed)] = sign * 9.0f;
        const auto near = ::testing::Pointwise(::testing::FloatNear(1e-4f), moved);
        Make("Idle", Action(name, "k", 2, 6));
        Keys("k", kKeyHeld);
        Frame(10, false);
        Frame(20, false);
        EXPECT_THAT(placement(m_State->m_Rotation, m_State->m_Position), near) << name;
        const Model* model = m_State->m_Models.front();
        EXPECT_THAT(placement(model->m_Rotation, model->m_Position), near) << name;
        Keys("k", kKeyUp);  // released: nothing moves any more
        Frame(10, false);
        EXPECT_THAT(placement(m_State->m_Rotation, m_State->m_Position), near) << name;
    }
}

TEST_F(ActionTest, MovementNeedsItsExactNameItsKeyAndElapsedTimeAndOppositesCancel) {
    Make("RotateLeft", Action("RotateLeft", "a", 0, 0) + Action("RotateRight", "d", 0, 0) +
                           Action("ZoomIn", "z", 0, 0) + Action("moveleft", "m", 4, 9) +
                           Action("Move Left", "n", 4, 9));
    Frame(10, false);  // the default action alone turns nothing
    EXPECT_EQ(m_State->m_CurrentAction, "RotateLeft");
    // Opposite turns cancel; no elapsed time, no zoom; misnamed movements do not move.
    for (const auto& [keys, elapsed] :
         {std::pair{"ad", 10}, std::pair{"z", 0}, std::pair{"mn", 10}}) {
        Keys(keys, kKeyHeld);
        Frame(elapsed, true);
        Keys(keys, kKeyUp);
    }
    EXPECT_THAT(m_State->m_Rotation, ::testing::Each(0.0f));
    EXPECT_THAT(m_State->m_Position, ::testing::Each(0.0f));
    // Misnamed movements still select their frame range.
    ExpectAt("moveleft", 5);
}

TEST_F(ActionTest, PlainStateRunsNoActions) {
    GameState plain(
        &m_Game, m_Dir.Write("plain.xml", "<state>" + Action("MoveLeft", "a", 4, 9) + "</state>"));
    Keys("a", kKeyHeld);
    m_Game.m_Tick = true;
    plain.Update(10);
    EXPECT_FLOAT_EQ(plain.m_Position[0], 0.0f);
    EXPECT_EQ(plain.m_CurrentFrame, 1);
}

}  // namespace
