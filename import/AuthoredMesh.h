// One mesh of the authored look's import: control points, per-corner normals and UVs,
// triangles by material, the node's materials and the skin.
#pragma once

#include <unordered_map>

#include "model/AuthoredScene.h"

class AuthoredTextures;
class KFbxNode;

// Scene nodes by their index in AuthoredScene::m_Nodes.
using NodeIndex = std::unordered_map<const KFbxNode*, int>;

// Reads the geometry of the mesh of `node` (at index `index` of the scene's nodes) into
// `target`: control points, per-corner normals and UVs, triangles by material slot (the node's
// material count decides the slots) and the skin, whose bind matrices take the node's
// geometric transform `geometric`. Polygons with a control point out of range are left out;
// clusters whose bone is not in `nodes` or whose bind matrices are singular are left out;
// weights are kept positive and normalised per point. False, leaving `target` as it was, for a
// node without a mesh. It only reads the scene, so it may run beside other readers of it.
bool ReadAuthoredGeometry(const KFbxNode& node, int index, const NodeIndex& nodes,
                          const Matrix4& geometric, AuthoredMesh& target);

// Gives a mesh from ReadAuthoredGeometry the node's materials, their images through textures
// (none when null), and puts each textured material's texture placement on the UVs of its
// corners.
void FinishAuthoredMesh(const KFbxNode& node, AuthoredMesh& mesh, AuthoredTextures* textures);
