// Drawing in the authored look: every model from its AuthoredScene, its meshes placed by
// their nodes' world transforms at the model's (blended) frame, smooth shaded with every
// material, skinned meshes bent by their bones each frame, and blended materials drawn last.
#pragma once

#include <list>

#include "model/Model.h"

// Draws one frame's models onto the current model-view matrix. Each model is placed inside
// its own push/pop (translation, then rotation about X, Y and Z), so models do not move one
// another. Meshes that are not skinned are compiled into display lists on their first draw
// (the names are kept in the mesh); skinned meshes are skinned anew every frame. Surfaces of
// blended materials are drawn after the opaque surfaces of all the models. Every OpenGL state
// changed here is restored before returning. Null entries and models without authored
// records draw nothing.
void DrawAuthoredModels(const std::list<Model*>& models);
