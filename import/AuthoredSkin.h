// The authored look's skin of a mesh: its clusters' bones and bind matrices, and each
// control point's normalised bone weights.
#pragma once

#include "import/AuthoredMesh.h"

class KFbxMesh;

// Fills target's m_Clusters, m_WeightStart and m_Weights from the mesh's skins (nothing for
// a mesh without one). target.m_Points must hold the control points already.
void ReadAuthoredSkin(const KFbxMesh& mesh, const NodeIndex& nodes, const Matrix4& geometric,
                      AuthoredMesh& target);
