// The authored look's import: every node of a scene with its transform properties and
// curves, its takes, and every mesh with its normals, materials by polygon and skin, into
// the model's AuthoredScene. Prints nothing but the texture lines of AuthoredTextures.h for
// textures the classic walk has not met; bad data is left out or made safe.
#pragma once

#include <vector>

#include "model/Model.h"

class AuthoredTextures;
class KFbxScene;

// Every mesh's geometry (points, corners, triangles by material slot, skin), in the order of
// the scene's nodes: the bulk of the authored import. It only reads the scene and prints
// nothing, so it may run on a second thread beside the classic walk of the same scene.
std::vector<AuthoredMesh> ReadAuthoredMeshes(KFbxScene& scene);

// Builds model.m_Authored from the scene (replacing what it held), with the meshes that
// ReadAuthoredMeshes read from it (taken over), or reading them itself when null. Materials'
// images come through textures; with none, materials show their colours alone.
void ImportAuthoredScene(KFbxScene& scene, Model& model, AuthoredTextures* textures = nullptr,
                         std::vector<AuthoredMesh>* meshes = nullptr);
