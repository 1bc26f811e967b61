// Where a new game's state puts its model: centred in front of the engine's camera, filling a
// fair part of the picture, inside the far plane.
#pragma once

#include "tools/common/ModelBox.h"

// A state's X_Position, Y_Position and Z_Position: the engine reads whole numbers.
struct StatePosition {
    long m_X = 0;
    long m_Y = 0;
    long m_Z = 0;
};

// The position that brings the sphere's centre onto the camera's line of sight (the camera
// sits at the origin looking down -Z with a 45 degree vertical field of view, near plane 0.1,
// far plane 10000), at the distance where the sphere fills about two thirds of the picture's
// height. A sphere too large for that is pushed back only as far as the far plane allows; one
// so small that whole units cannot centre it stands at least one unit in front of the camera.
StatePosition PlaceInView(const BoxSphere& sphere);
