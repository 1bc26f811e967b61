// Pose evaluation of the authored look: which take and time a game frame shows, the value of
// an animation curve at a time, and the world transform of every node at that time.
#pragma once

#include <vector>

#include "model/AuthoredScene.h"
#include "model/Matrix4.h"

// Game frames per second: a frame is one tick of the game.
constexpr double kFramesPerSecond = 15.0;

// A take and a time in it; m_Take -1 shows the stored pose (no animation at all).
struct PoseTime {
    int m_Take = -1;
    double m_Seconds = 0.0;
};

// Numbers the takes' frames one after the other from frame 0: each take gets the frames from
// its start up to the first one at or past its stop, kFramesPerSecond to the second.
void NumberTakeFrames(std::vector<TakeSpan>& takes);

// The take and time that frame shows; m_Take -1 when the frame is outside every take.
PoseTime FrameTime(const AuthoredScene& scene, int frame);

// The time `fraction` (0 to 1) of the way from frame to next: between their times when next
// is the frame after it in the same take, else frame's own time.
PoseTime BlendedFrameTime(const AuthoredScene& scene, int frame, int next, float fraction);

// The curve's value at a time, by each key's interpolation; 0 for a curve without keys.
float EvaluateCurve(const AnimCurve& curve, double seconds);

// The node's local transform for the given translation, rotation (degrees) and scaling,
// with its offsets, pivots, pre- and post-rotation and rotation order.
Matrix4 LocalTransform(const TransformNode& node, const double (&translation)[3],
                       const double (&rotation)[3], const double (&scaling)[3]);

// The node's geometric transform (moves its own geometry only).
Matrix4 GeometricTransform(const TransformNode& node);

// The world transform of every node at the time, by index, composed down the parent chain
// with each node's inherit type. A non-finite result is replaced by the identity.
void EvaluateWorld(const AuthoredScene& scene, const PoseTime& time, std::vector<Matrix4>& world);
