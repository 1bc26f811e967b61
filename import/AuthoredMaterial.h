// The authored look's materials of a mesh: every material of its node, Lambert and Phong,
// with specular colour, shininess, alpha and the image on its diffuse colour.
#pragma once

#include <vector>

#include "model/AuthoredScene.h"

class AuthoredTextures;
class KFbxNode;

// Where a material's texture lands on the mesh's UVs: the texture is looked up at
// (m[0] u + m[1] v + m[2], m[3] u + m[4] v + m[5]).
struct UvPlacement {
    double m[6] = {1.0, 0.0, 0.0, 0.0, 1.0, 0.0};
    bool IsIdentity() const;
    // Places (u, v) in the texture.
    void Apply(float& u, float& v) const;
};

// A node's materials in slot order, and where each one's texture lands.
struct AuthoredMaterials {
    std::vector<AuthoredMaterial> m_Materials;  // a missing one becomes the default grey
    std::vector<UvPlacement> m_Placements;      // one per material
};

// The node's materials. With textures, a material's diffuse image is loaded through them: a
// textured material shows its image at full strength (the diffuse factor), lit, and one
// whose image is not fully opaque is blended. The texture's UV scale, translation and
// rotation (in degrees, about the middle of the image) make its placement:
// scale x (rotated u, v) + translation.
AuthoredMaterials ReadAuthoredMaterials(const KFbxNode& node, AuthoredTextures* textures);
