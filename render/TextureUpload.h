// Texture upload: hands a mesh's first material's loaded texture to OpenGL under the
// texture's own serial id. Model::AddMesh (declared in Model.h) calls it on insertion.
#pragma once

#include "render/Model.h"

// Binds the texture's id, sets linear filtering and uploads the RGB pixels (no mipmaps).
// Does nothing when the mesh has no material or its first material's texture is not loaded.
void UploadTexture(const Mesh& mesh);
