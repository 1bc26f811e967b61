// The per-frame node transform: moves, turns and scales a mesh by the key frame that the
// model's current frame selects for the mesh's scene node.
#pragma once

#include <string>

#include "model/Model.h"

// Issues translate, node rotation (Z, Y, X), key rotation and scale on the current matrix.
// Does nothing when the node has no animation or the frame is outside its key frames.
void ApplyNodeTransform(int frame, Model& model, std::string nodeName);
