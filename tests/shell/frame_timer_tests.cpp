// The frame timer: elapsed time, the fixed-rate tick and the frames per second.
#include <vector>

#include "shell/FrameTimer.h"
#include "shell_test_support.h"

namespace {

using FrameTimerTest = ShellTest;

// Runs frames of a fixed length from clock start; returns the frames (1-based) that ticked.
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

TEST_F(FrameTimerTest, ClockGoingBackwardsGivesZeroElapsed) {
    auto game = MakeGame();
    game->m_TimerLastClock = 5000;
    EXPECT_EQ(StepTimer(*game, 4000), 0);
    EXPECT_EQ(game->m_TimerLastClock, 4000);
    EXPECT_EQ(game->m_TimerCurrentClock, 4000);
    EXPECT_EQ(StepTimer(*game, 4025), 25);
}

TEST_F(FrameTimerTest, TenMillisecondFramesTickEverySeventhFrame) {
    auto game = MakeGame();
    // 1000 / 15 = 66 ms; the excess is dropped, so 70 ms pass between ticks.
    EXPECT_EQ(TickingFrames(*game, 1000, 10, 30), (std::vector<int>{7, 14, 21, 28}));
    EXPECT_EQ(game->m_TickAccumulator, 20);
}

TEST_F(FrameTimerTest, TickFlagLastsOneFrame) {
    auto game = MakeGame();
    game->m_TimerLastClock = 0;
    StepTimer(*game, 100);
    EXPECT_TRUE(game->m_Tick);
    StepTimer(*game, 101);
    EXPECT_FALSE(game->m_Tick);
}

TEST_F(FrameTimerTest, FramesPerSecondRollsOverOnceASecond) {
    auto game = MakeGame();
    TickingFrames(*game, 0, 10, 99);
    EXPECT_EQ(game->m_FramesPerSecond, 0);  // no full second yet
    StepTimer(*game, 1000);
    EXPECT_EQ(game->m_FramesPerSecond, 100);
    EXPECT_EQ(game->m_FrameCounter, 0);
    // Slow frames: the time past the second is dropped, not carried.
    TickingFrames(*game, 1000, 300, 4);
    EXPECT_EQ(game->m_FramesPerSecond, 4);
    EXPECT_EQ(game->m_SecondAccumulator, 0);
    TickingFrames(*game, 2200, 300, 3);
    EXPECT_EQ(game->m_FramesPerSecond, 4);
    EXPECT_EQ(game->m_SecondAccumulator, 900);
}

}  // namespace
