// One mesh of the authored look's import: control points, per-corner normals and UVs,
// triangles by material, the node's materials and the skin.
#pragma once

#include <unordered_map>

#include "model/AuthoredScene.h"

class AuthoredTextures;
class KFbxNode;

// Scene nodes by their index in AuthoredScene::m_Nodes.
using NodeIndex = std::unordered_map<const KFbxNode*, int>;

// Appends the mesh of `node` (at index `index` of out.m_Nodes) to out.m_Meshes. Polygons with a
// control point out of range are left out; clusters whose bone is not in `nodes` or whose bind
// matrices are singular are left out; weights are kept positive and normalised per point.
// Materials' images come through textures (none when null); the corner UVs of a textured
// material's polygons carry its texture's placement.
void AddAuthoredMesh(const KFbxNode& node, int index, const NodeIndex& nodes, AuthoredScene& out,
                     AuthoredTextures* textures);
