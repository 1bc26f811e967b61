// The authored look's materials of a mesh: every material of its node, Lambert and Phong,
// with specular colour, shininess and alpha.
#pragma once

#include <vector>

#include "model/AuthoredScene.h"

class KFbxNode;

// The node's materials in slot order (a missing one becomes the default grey).
std::vector<AuthoredMaterial> ReadAuthoredMaterials(const KFbxNode& node);
