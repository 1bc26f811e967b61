// Material textures: the bitmap behind a material's diffuse colour, read into the engine
// material's Texture.
#pragma once

#include <string>

class KFbxSurfaceMaterial;
class KFbxTexture;
struct Material;

// The texture's file name as the import reads it and reports it: the relative name, else the
// absolute one, with backslashes turned into slashes.
std::string TextureFileName(const KFbxTexture& texture);

// Walks the textures connected to the material's "DiffuseColor": layered textures when there
// are any (they never yield a loaded texture), else the plain ones, each loaded texture
// replacing the one before. A loaded texture makes the material valid. Always returns false.
// During an authored-look import (AuthoredTextureScope) the plain textures' images are
// loaded by that import's AuthoredTextures instead, and the first layered texture's first
// layer too; the material then gets no bitmap.
bool LoadMaterialTextures(KFbxSurfaceMaterial* material, Material& target);
