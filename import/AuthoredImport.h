// The authored look's import: every node of a scene with its transform properties and
// curves, its takes, and every mesh with its normals, materials by polygon and skin, into
// the model's AuthoredScene. Prints nothing but the texture lines of AuthoredTextures.h for
// textures the classic walk has not met; bad data is left out or made safe.
#pragma once

#include "model/Model.h"

class AuthoredTextures;
class KFbxScene;

// Builds model.m_Authored from the scene (replacing what it held). Materials' images come
// through textures; with none, materials show their colours alone.
void ImportAuthoredScene(KFbxScene& scene, Model& model, AuthoredTextures* textures = nullptr);
