// The room a model takes up in the authored look, for framing it in the viewer and placing it
// in a new game: the box round its posed meshes and the sphere round that box.
#pragma once

#include "model/AuthoredScene.h"
#include "model/Pose.h"

// An axis-aligned box in the model's space.
struct ModelBox {
    double m_Min[3] = {0.0, 0.0, 0.0};
    double m_Max[3] = {0.0, 0.0, 0.0};
    bool m_Empty = true;  // no point taken in yet: m_Min and m_Max mean nothing
};

// A sphere holding a box; never empty, always finite, with a radius above zero.
struct BoxSphere {
    double m_Centre[3] = {0.0, 0.0, 0.0};
    double m_Radius = 1.0;
};

// The box round every mesh corner of the scene posed at the time, each placed as drawing
// places it: by its node's world and geometric transform, or bent by its bones when skinned.
// Empty when the scene has no corners.
ModelBox PosedBox(const AuthoredScene& scene, const PoseTime& time);

// The box's centre and half its diagonal. An empty box, or one too large to frame, gives the
// unit sphere at the origin; a box too small to frame (a single point) gets radius 1 round its
// centre.
BoxSphere SphereAround(const ModelBox& box);
