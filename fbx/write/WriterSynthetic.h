// Synthetic scenes of a chosen size for tests, benchmarks and the demo: a grid mesh with a
// given number of polygon corners, a chain of bones skinning it, and animated takes.
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

}  // namespace fbx
