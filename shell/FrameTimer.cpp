#include "shell/FrameTimer.h"

#include "states/Game.h"

int StepTimer(Game& game, int now) {
    // Unsigned subtraction: a clock that wraps round still gives the small difference.
    int elapsed = static_cast<int>(static_cast<unsigned int>(now) -
                                   static_cast<unsigned int>(game.m_TimerLastClock));
    game.m_TimerCurrentClock = now;
    game.m_TimerLastClock = now;
    if (elapsed < 0) {
        elapsed = 0;
    }
    // A rate of zero or less would divide by zero; it ticks every frame instead.
    const int interval = game.m_TickRate > 0 ? 1000 / game.m_TickRate : 0;
    game.m_TickAccumulator += elapsed;
    game.m_SecondAccumulator += elapsed;
    game.m_FrameCounter += 1;
    game.m_Tick = false;
    if (game.m_TickAccumulator >= interval) {
        game.m_TickAccumulator = 0;
        game.m_Tick = true;
    }
    if (game.m_SecondAccumulator >= 1000) {
        game.m_FramesPerSecond = game.m_FrameCounter;
        game.m_FrameCounter = 0;
        game.m_SecondAccumulator = 0;
    }
    return elapsed;
}
