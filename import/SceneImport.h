// Scene import: reads one model file into the context's scene (printing the version and
// take report), then walks the scene's nodes into the target Model.
#pragma once

#include <string>

#include "import/ImportContext.h"
#include "model/Model.h"
#include "model/ModelLook.h"

class KFbxNode;

// Reads the file into context->Scene. Prints the version lines and take information, asks
// once for a password when the file needs one. Returns the result of the last import try.
bool LoadScene(ImportContext* context, const char* fileName);

// Walks the children of the scene's root into context->Target.
void WalkScene(ImportContext* context);

// WalkScene, then returns a copy of the Model.
Model LoadModel(ImportContext* context);

// One node of the walk: reports its type, loads meshes and skeletons, then its children.
// A node without an attribute is skipped together with its whole subtree.
void WalkNode(ImportContext* context, KFbxNode* node);

// The whole import of one model file into model, in the engine's calling order: manager
// and scene made, LoadScene, the walk of LoadModel (without its copy), manager destroyed.
// In the authored look the scene's authored records are built too (ImportAuthoredScene) and
// textures load images of every format (AuthoredTextures.h): the console report is the same
// in both looks but where an image now loads.
void ImportModelFile(const std::string& fileName, Model* model,
                     ModelLook look = ModelLook::Classic);
