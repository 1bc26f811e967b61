#include "tools/fbxview/TakePlayback.h"

#include <algorithm>
#include <cmath>

#include "model/Pose.h"

namespace {

constexpr double kTickMilliseconds = 1000.0 / kFramesPerSecond;

// The take played, or null when there is none.
const TakeSpan* CurrentTake(const TakePlayback& playback, const std::vector<TakeSpan>& takes) {
    if (playback.m_Take < 0 || static_cast<std::size_t>(playback.m_Take) >= takes.size()) {
        return nullptr;
    }
    return &takes[static_cast<std::size_t>(playback.m_Take)];
}

// The frame `step` frames from frame within the take's frames, wrapping round.
int WrappedFrame(const TakeSpan& take, int frame, int step) {
    const long long first = take.m_FirstFrame;
    const long long count = std::max(1LL, static_cast<long long>(take.m_LastFrame) - first + 1);
    const long long offset = (static_cast<long long>(frame) - first + step) % count;
    return static_cast<int>(first + (offset < 0 ? offset + count : offset));
}

}  // namespace

TakePlayback StartPlayback(const std::vector<TakeSpan>& takes) {
    TakePlayback playback;
    if (!takes.empty()) {
        playback.m_Take = 0;
        playback.m_Frame = takes.front().m_FirstFrame;
    }
    return playback;
}

void SelectTake(TakePlayback& playback, const std::vector<TakeSpan>& takes, int step) {
    if (takes.empty()) {
        return;
    }
    const long long count = static_cast<long long>(takes.size());
    long long take = (std::max(0, playback.m_Take) + static_cast<long long>(step)) % count;
    if (take < 0) {
        take += count;
    }
    playback.m_Take = static_cast<int>(take);
    playback.m_Frame = takes[static_cast<std::size_t>(take)].m_FirstFrame;
    playback.m_SinceTick = 0.0;
}

void StepFrame(TakePlayback& playback, const std::vector<TakeSpan>& takes, int step) {
    if (const TakeSpan* take = CurrentTake(playback, takes)) {
        playback.m_Frame = WrappedFrame(*take, playback.m_Frame, step);
    }
}

int FollowingFrame(const TakePlayback& playback, const std::vector<TakeSpan>& takes) {
    const TakeSpan* take = CurrentTake(playback, takes);
    return take != nullptr ? WrappedFrame(*take, playback.m_Frame, 1) : playback.m_Frame;
}

void TogglePlaying(TakePlayback& playback) {
    playback.m_Playing = !playback.m_Playing;
    playback.m_SinceTick = 0.0;
}

float AdvancePlayback(TakePlayback& playback, const std::vector<TakeSpan>& takes,
                      double elapsedMilliseconds) {
    if (!playback.m_Playing || CurrentTake(playback, takes) == nullptr) {
        return 0.0f;
    }
    if (std::isfinite(elapsedMilliseconds) && elapsedMilliseconds > 0.0) {
        playback.m_SinceTick += elapsedMilliseconds;
    }
    if (playback.m_SinceTick >= kTickMilliseconds) {
        playback.m_SinceTick = 0.0;
        StepFrame(playback, takes, 1);
    }
    return static_cast<float>(std::clamp(playback.m_SinceTick / kTickMilliseconds, 0.0, 1.0));
}
