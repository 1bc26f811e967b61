// Matrices of described nodes, composed the way FBX readers compose them (see desc::Node), for
// generators that need a bind pose: a skin cluster's Transform and TransformLink are the
// world matrices of its mesh and its bone at bind time.
//
// Matrices are column-major (desc::Matrix4) and act on column vectors: a point p lands at M * p.
#pragma once

#include "fbx/write/SceneDescription.h"

namespace fbx::desc {

Matrix4 Multiply(const Matrix4& a, const Matrix4& b);  // a * b
Matrix4 TranslationMatrix(const Vec3& t);
Matrix4 ScalingMatrix(const Vec3& s);
// Euler angles in degrees applied in the given RotationOrder (kXYZ: Rz * Ry * Rx).
Matrix4 RotationMatrix(const Vec3& degrees, int order = kXYZ);
Vec3 TransformPoint(const Matrix4& m, const Vec3& p);
Vec3 TransformDirection(const Matrix4& m, const Vec3& v);  // without the translation

// The node's local matrix from its unanimated values: T * Roff * Rp * Rpre * R * Rpost^-1 *
// Rp^-1 * Soff * Sp * S * Sp^-1, pre- and post-rotation only where rotationActive is set.
Matrix4 LocalMatrix(const Node& node);

// The node's world matrix: its parents' local matrices times its own, as the plain product
// (inherit type RSrs; the others differ only under a parent's scaling). A parent index out of
// range, or a parent chain that loops, ends the chain there. Identity for an invalid index.
Matrix4 WorldMatrix(const Scene& scene, int node);

// The geometric transform of the node (Tg * Rg * Sg), applied to its own geometry only.
Matrix4 GeometricMatrix(const Node& node);

}  // namespace fbx::desc
