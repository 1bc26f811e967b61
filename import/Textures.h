// Material textures: the bitmap behind a material's diffuse colour, read into the engine
// material's Texture.
#pragma once

class KFbxSurfaceMaterial;
struct Material;

// Walks the textures connected to the material's "DiffuseColor": layered textures when there
// are any (they never yield a loaded texture), else the plain ones, each loaded texture
// replacing the one before. A loaded texture makes the material valid. Always returns false.
bool LoadMaterialTextures(KFbxSurfaceMaterial* material, Material& target);
