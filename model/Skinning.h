// Skinning of the authored look: a mesh's corners placed by its node or, when skinned, by
// the linear blend of its bones' current world transforms.
#pragma once

#include <vector>

#include "model/AuthoredScene.h"
#include "model/Matrix4.h"

// Fills positions and normals (x y z per corner of mesh.m_CornerPoints) in the model's space
// for the nodes' world transforms `world` (EvaluateWorld). Skinned control points move with
// their bones: the sum over weights of BoneWorld * BindMatrix; points without weights, and
// every point of a mesh without a skin, follow the mesh node's world * geometric transform.
// Normals are turned with the same matrices and scaled to unit length. Nothing non-finite is
// written: such a corner lands at the origin with a zero normal.
void SkinMesh(const AuthoredScene& scene, const AuthoredMesh& mesh,
              const std::vector<Matrix4>& world, std::vector<float>& positions,
              std::vector<float>& normals);
