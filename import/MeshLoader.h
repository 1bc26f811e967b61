// Mesh loading: one mesh node of the scene becomes one engine Mesh of the target Model:
// a Polygon per polygon, a Vertex per corner, skin influences, layer normals and UVs,
// the node's materials and, for skinned meshes, its bone records.
#pragma once

#include "import/ImportContext.h"

class KFbxNode;

// Prints "Loading mesh: NAME" and adds the mesh to context->Target under the node's name.
void LoadMesh(KFbxNode* node, ImportContext* context);
