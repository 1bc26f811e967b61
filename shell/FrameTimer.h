// The frame timer: elapsed milliseconds per frame, the fixed-rate tick flag and the frames
// per second, all kept in the Game.
#pragma once

class Game;

// Advances the Game's timer to the clock reading now (milliseconds) and returns this
// frame's elapsed time, never negative. Sets the tick flag for the frame in which the tick
// interval is reached, and rolls the frames-per-second count over once a second; the excess
// time is dropped in both cases.
int StepTimer(Game& game, int now);
