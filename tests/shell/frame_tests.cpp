// One frame's steps as the frame callback runs them: the keyboard step (raw flags become
// pressed 2, held 1, up 0), the Game's global keys, the timer (elapsed time, tick, frames per
// second) and the state walk (which states are shown, updated and reset).
#include <gtest/gtest.h>

#include "scratch_dir.h"
#include "shell/FrameTimer.h"
#include "shell/KeyboardInput.h"
#include "states/Game.h"
#include "states/GameState.h"

namespace {

TEST(KeyboardStepTest, RawFlagsBecomePressedHeldAndUpOncePerFrame) {
    // Frame by frame: the raw changes before the step ("+x" key down, "-x" key up), then the
    // states of 'a', 'r' and 'R' and whether any key is down. A repeated key-down (auto-repeat)
    // does not press again; a key pressed and released between two frames is never seen; case
    // matters, and a key-up of the other case (Shift came up first) leaves the key held.
    struct Frame {
        std::string m_Changes;
        std::vector<int> m_States;
        bool m_AnyDown;
    };
    const Frame frames[] = {
        {"+a", {2, 0, 0}, true},  {"", {1, 0, 0}, true},      {"+a", {1, 0, 0}, true},
        {"-a", {0, 0, 0}, false}, {"+a-a", {0, 0, 0}, false}, {"+r", {0, 2, 0}, true},
        {"-R", {0, 1, 0}, true},  {"", {0, 1, 0}, true},      {"-r", {0, 0, 0}, false}};
    Keyboard keyboard;
    for (const Frame& frame : frames) {
        for (std::size_t i = 0; i + 1 < frame.m_Changes.size(); i += 2) {
            (frame.m_Changes[i] == '+' ? PressKey : ReleaseKey)(keyboard, frame.m_Changes[i + 1]);
        }
        StepKeyboard(keyboard);
        const int* state = keyboard.m_KeyState;
        EXPECT_EQ((std::vector<int>{state['a'], state['r'], state['R']}), frame.m_States)
            << frame.m_Changes;
        EXPECT_EQ(keyboard.m_AnyKeyDown, frame.m_AnyDown) << frame.m_Changes;
    }
    // Every character code has its own state.
    PressKey(keyboard, 0);
    PressKey(keyboard, 255);
    StepKeyboard(keyboard);
    for (int code = 0; code < 256; ++code) {
        EXPECT_EQ(keyboard.m_KeyState[code], code % 255 == 0 ? 2 : 0) << code;
    }
}

// A state that writes what the frame asks of it into a shared log.
struct RecordingState : GameState {
    RecordingState(Game* game, const std::string& file, std::string name,
                   std::vector<std::string>* log, bool loaded)
        : GameState(game, file), m_Label(std::move(name)), m_Log(log), m_IsLoaded(loaded) {}

    bool IsLoaded() override { return m_IsLoaded; }
    void SetVisible(bool visible) override {
        m_Log->push_back(m_Label + (visible ? " shown" : " hidden"));
    }
    void Update(int value) override {
        m_Log->push_back(m_Label + " update " + std::to_string(value));
    }
    void Reset() override { m_Log->push_back(m_Label + " reset"); }

    std::string m_Label;
    std::vector<std::string>* m_Log;
    bool m_IsLoaded;
};

class FrameTest : public ::testing::Test {
protected:
    void TearDown() override { delete m_Game.m_Loader; }

    // Adds states of these names (the Game deletes them), the loader when one is named so.
    void AddStates(std::initializer_list<const char*> names, bool loaded = true) {
        const std::string file = m_Dir.Write("plain.xml", "<state><Name>x</Name></state>");
        for (const char* name : names) {
            auto* state = new RecordingState(&m_Game, file, name, &m_Log, loaded);
            (std::string(name) == "loader" ? m_Game.m_Loader : m_Game.m_States[name]) = state;
        }
    }
    // One frame's keyboard step and global keys, the key held down.
    void KeyFrame(unsigned char key) {
        PressKey(m_Game.m_Keyboard, key);
        StepKeyboard(m_Game.m_Keyboard);
        m_Game.HandleGlobalKeys();
    }

    ScratchDir m_Dir;
    Game m_Game{m_Dir.Write("states.xml", "<game><Title>Test</Title><default>b</default></game>")};
    std::vector<std::string> m_Log;
};

// Runs frames of a fixed length from clock start; the frames (1-based) that ticked.
std::vector<int> TickingFrames(Game& game, int start, int frameLength, int frames) {
    game.m_TimerLastClock = start;
    std::vector<int> ticked;
    for (int frame = 1; frame <= frames; ++frame) {
        EXPECT_EQ(StepTimer(game, start + frame * frameLength), frameLength);
        if (game.m_Tick) {
            ticked.push_back(frame);
        }
    }
    return ticked;
}

TEST_F(FrameTest, TimerGivesZeroElapsedWhenTheClockGoesBackwards) {
    m_Game.m_TimerLastClock = 5000;
    EXPECT_EQ(StepTimer(m_Game, 4000), 0);
    EXPECT_EQ(std::make_pair(m_Game.m_TimerLastClock, m_Game.m_TimerCurrentClock),
              std::make_pair(4000, 4000));
    EXPECT_EQ(StepTimer(m_Game, 4025), 25);
}

TEST_F(FrameTest, TimerTicksLastOneFrameAndComeEverySeventhTenMillisecondFrame) {
    // 1000 / 15 = 66 ms; the excess is dropped, so 70 ms pass between ticks.
    EXPECT_EQ(TickingFrames(m_Game, 1000, 10, 30), (std::vector<int>{7, 14, 21, 28}));
    EXPECT_EQ(m_Game.m_TickAccumulator, 20);
    EXPECT_EQ(TickingFrames(m_Game, 2000, 100, 2), (std::vector<int>{1, 2}));
    StepTimer(m_Game, 2201);
    EXPECT_FALSE(m_Game.m_Tick);
}

TEST_F(FrameTest, TimerRollsTheFramesPerSecondOverOnceASecond) {
    TickingFrames(m_Game, 0, 10, 99);
    EXPECT_EQ(m_Game.m_FramesPerSecond, 0);  // no full second yet
    StepTimer(m_Game, 1000);
    EXPECT_EQ(std::make_pair(m_Game.m_FramesPerSecond, m_Game.m_FrameCounter),
              std::make_pair(100, 0));
    // Slow frames: the time past the second is dropped, not carried.
    TickingFrames(m_Game, 1000, 300, 4);
    EXPECT_EQ(std::make_pair(m_Game.m_FramesPerSecond, m_Game.m_SecondAccumulator),
              std::make_pair(4, 0));
    TickingFrames(m_Game, 2200, 300, 3);
    EXPECT_EQ(std::make_pair(m_Game.m_FramesPerSecond, m_Game.m_SecondAccumulator),
              std::make_pair(4, 900));
}

TEST_F(FrameTest, OnlyTheLoadedCurrentStateIsShownAndUpdatedOrElseTheLoaderIsShown) {
    AddStates({"c", "a", "B", "loader"});  // names compare exactly
    AddStates({"u"}, false);
    m_Game.m_States["none"] = nullptr;
    const std::pair<const char*, std::vector<std::string>> walks[] = {
        {"a", {"B hidden", "a shown", "a update 16", "loader hidden", "c hidden", "u hidden"}},
        {"u", {"B hidden", "a hidden", "c hidden", "u hidden", "loader shown"}},
        {"b", {"B hidden", "a hidden", "c hidden", "u hidden"}}};
    for (const auto& [current, log] : walks) {
        m_Log.clear();
        m_Game.m_CurrentState = current;
        m_Game.UpdateStates(16);
        EXPECT_EQ(m_Log, log) << current;
    }
}

TEST_F(FrameTest, ReturnKeyGoesToTheDefaultStateAndResetsOnce) {
    AddStates({"zed", "alpha"});
    m_Game.m_DefaultState = "alpha";
    m_Game.m_CurrentState = "zed";
    m_Game.m_ReturnKey = 'r';
    KeyFrame('r');
    EXPECT_EQ(m_Game.m_CurrentState, "alpha");
    EXPECT_EQ(m_Log, (std::vector<std::string>{"alpha reset", "zed reset"}));
    m_Game.m_CurrentState = "zed";
    KeyFrame('r');  // still held: nothing more happens
    KeyFrame('r');
    EXPECT_EQ(m_Game.m_CurrentState, "zed");
    EXPECT_EQ(m_Log.size(), 2u);
}

TEST_F(FrameTest, OnlyKeyCodesBelow128CanFire) {
    int* states = m_Game.m_Keyboard.m_KeyState;
    states['q'] = states[200] = states[255] = kKeyPressed;
    states['h'] = kKeyHeld;
    EXPECT_TRUE(m_Game.KeyPressedThisFrame('q'));
    for (int code : {int{'h'}, 200, 0xFF}) {  // held; pressed but past 127
        EXPECT_FALSE(m_Game.KeyPressedThisFrame(static_cast<char>(code))) << code;
    }
    AddStates({"a"});
    m_Game.m_ReturnKey = static_cast<char>(200);
    m_Game.HandleGlobalKeys();
    EXPECT_TRUE(m_Log.empty());
}

TEST_F(FrameTest, ReloadKeyRereadsTheStateTable) {
    m_Game.m_ReloadKey = 'l';
    for (const char* title : {"Reloaded", "Again"}) {
        m_Dir.Write("states.xml", "<game><reload_action>l</reload_action><Title>" +
                                      std::string(title) + "</Title></game>");
        KeyFrame('l');  // held the second time: no second reload
        EXPECT_EQ(m_Game.m_Title, "Reloaded");
    }
}

}  // namespace
