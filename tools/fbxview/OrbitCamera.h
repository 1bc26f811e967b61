// The viewer's camera: it looks at a target point from some distance, turned about the
// vertical axis and tilted above or below the horizon, and moves in steps that scale with the
// size of the model it framed.
#pragma once

#include "tools/common/ModelBox.h"

struct OrbitCamera {
    double m_Target[3] = {0.0, 0.0, 0.0};  // the point looked at, in the model's space
    double m_Distance = 1.0;               // from the target to the eye, always above zero
    double m_Yaw = 0.0;     // degrees about the vertical axis; 0 looks from +Z towards -Z
    double m_Pitch = 0.0;   // degrees above the horizon, within +-kMaxPitch
    double m_Radius = 1.0;  // the framed sphere's radius: bounds the zoom and the depth range
};

// The engine's vertical field of view, degrees.
constexpr double kFieldOfView = 45.0;
// The camera stops short of looking straight down or up.
constexpr double kMaxPitch = 89.0;

// Looks at the sphere from the starting angle (a little from the right, a little above),
// from just far enough that all of it shows with a margin in a window of that width and
// height.
OrbitCamera FrameSphere(const BoxSphere& sphere, int width, int height);

// Turns the eye about the target: yaw about the vertical axis, pitch up or down.
void Orbit(OrbitCamera& camera, double yawDegrees, double pitchDegrees);

// Moves the eye towards the target (factor above 1) or away from it (below 1), within a
// hundredth and a thousand times the framed radius.
void Zoom(OrbitCamera& camera, double factor);

// Slides the target and the eye sideways (right) and up (up), both in heights of the view
// at the target's distance.
void Pan(OrbitCamera& camera, double right, double up);

// Sets the projection (the engine's perspective, with a depth range that holds the framed
// model and its grid) and the model-view matrix of the eye, for a viewport of that size.
void ApplyCamera(const OrbitCamera& camera, int width, int height);
