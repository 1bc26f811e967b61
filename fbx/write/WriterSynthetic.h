// Synthetic scenes of a chosen size for tests, benchmarks and the demo: a grid mesh with a
// given number of polygon corners, a chain of bones skinning it, and animated takes; a cube;
// a skinned, animated character.
#pragma once

#include <cstddef>
#include <string>

#include "fbx/write/SceneDescription.h"

namespace fbx {

struct SyntheticOptions {
    std::size_t corners = 24;  // polygon corners of the mesh (quads, the last one smaller)
    int clusters = 0;          // bones in a chain, each skinning part of the mesh
    int takes = 0;             // animated takes
    int keys = 0;              // keys per animated curve
    std::string texture;       // file name of a diffuse texture, or none
    std::string password;
};

// A grid mesh "Grid" (normals, UVs, one material "GridMaterial"), bones "Bone0".."BoneK-1"
// along the grid's X axis, takes "Take 001".. animating the bones' rotation (or the mesh's
// translation when there are no bones) at 24 keys per second.
SceneDescription MakeSyntheticScene(const SyntheticOptions& options);

// A unit cube with six quads, normals, UVs and a phong material, optionally textured.
SceneDescription MakeCubeScene(const std::string& texture = "");

struct CharacterOptions {
    // About this many polygon corners in the mesh; at most 2,000,000. Small counts give the
    // coarsest mesh the skeleton allows (about 750 corners).
    std::size_t corners = 5000;
    // From 22 (hips, three spine bones, neck, head, and shoulder, arm, forearm, hand, thigh,
    // shin, foot and toe on each side) to 1000; bones past 22 go to small chains, in turn:
    // left and right fingers, left and right thumb, head top, left and right toe tip, nose.
    int bones = 30;
    // The first this many of "Walk" (2 s: two strides, legs and arms swinging, knees and elbows
    // bending) and "Wave" (1.5 s: the right arm raised, the forearm waving, the head turning).
    int takes = 2;
};

// A skinned, animated character about two units tall, standing on y = 0 and facing +z, for
// tests, benchmarks and the demo: one mesh node "Body" at the origin made of tubes that follow
// the bones (torso and head, arms, legs, feet, and the extra chains), with per-corner normals,
// UVs and materials "Skin", "Shirt", "Trousers" and "Shoes" (phong) per polygon; every
// control point weighted to one or two bones, the weights summing to 1, blended across each
// joint; skeleton nodes ("Hips" the root, names as in common humanoid rigs) whose bind pose
// the clusters' Transform (the mesh's world matrix) and TransformLink (the bone's) record.
// The arms carry pre-rotations (Maya's joint orients), the thighs rotation order XZY and the
// head ZXY. Keys are cubic with slopes on the swinging channels, linear on the others.
SceneDescription MakeSkinnedCharacter(const CharacterOptions& options = {});

}  // namespace fbx
