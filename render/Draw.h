// Model drawing: places each model, compiles each mesh into a display list on its first draw
// and replays that list afterwards.
#pragma once

#include "model/Model.h"

// Composes the model's translation, then its rotation about X, Y and Z, onto the current
// model-view matrix.
void PlaceModel(const Model& model);

// Composes the model's translation and rotation onto the current model-view matrix (they are
// not undone afterwards, so models drawn one after the other accumulate), then draws its
// meshes inside a push/pop. Always returns false.
bool DrawModel(Model& model);

// Draws every mesh in name order, each inside its own push/pop.
void DrawMeshes(Model& model);

// Fills the polygon's flat face normal from the face points of its first three corners.
void ComputeFaceNormal(Polygon& polygon, VertexRun<const Vertex> corners);

// Scales the vector to unit length; the zero vector stays zero.
void Normalize(float vector[3]);
