// The authored look's import: every node of a scene with its transform properties and
// curves, its takes, and every mesh with its normals, materials by polygon and skin, into
// the model's AuthoredScene. Prints nothing; bad data is left out or made safe.
#pragma once

#include "model/Model.h"

class KFbxScene;

// Builds model.m_Authored from the scene (replacing what it held).
void ImportAuthoredScene(KFbxScene& scene, Model& model);
