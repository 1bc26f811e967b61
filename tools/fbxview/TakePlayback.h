// Which take and game frame the viewer shows, and the playing of it. Frames are numbered as
// the game numbers them (model/Pose.h NumberTakeFrames: the takes one after the other from
// frame 0) and played at the game's rate, one frame a tick, looping within the take.
#pragma once

#include <vector>

#include "model/AuthoredScene.h"

struct TakePlayback {
    int m_Take = -1;  // index into the scene's takes; -1 when it has none
    int m_Frame = 0;  // the game frame shown
    bool m_Playing = false;
    double m_SinceTick = 0.0;  // milliseconds since the last tick, while playing
};

// The first take at its first frame, paused; frame 0 of no take when there are none.
TakePlayback StartPlayback(const std::vector<TakeSpan>& takes);

// The next take (step 1) or the previous one (-1), wrapping round, at its first frame.
void SelectTake(TakePlayback& playback, const std::vector<TakeSpan>& takes, int step);

// One frame on (step 1) or back (-1) within the take: from its last frame on to its first,
// from its first back to its last.
void StepFrame(TakePlayback& playback, const std::vector<TakeSpan>& takes, int step);

// The frame shown after the current one.
int FollowingFrame(const TakePlayback& playback, const std::vector<TakeSpan>& takes);

// Starts or stops playing; a start waits a whole tick before the first step.
void TogglePlaying(TakePlayback& playback);

// Moves the playing clock on by the elapsed milliseconds. As the engine's timer does, once a
// tick's time (1/15 s) has gathered the frame steps on and the time left over is dropped.
// Returns how far the clock is towards the next tick, 0 to 1 (0 while paused), for drawing
// between the two frames.
float AdvancePlayback(TakePlayback& playback, const std::vector<TakeSpan>& takes,
                      double elapsedMilliseconds);
