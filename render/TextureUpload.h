// Texture upload: hands a mesh's first material's loaded texture to OpenGL under the
// texture's own serial id, when Model::AddMesh inserts the mesh.
#pragma once

#include "model/Model.h"

// Binds the texture's id, sets linear filtering and uploads the RGB pixels (no mipmaps).
// Does nothing when the mesh has no material or its first material's texture is not loaded.
void UploadTexture(const Mesh& mesh);

// Makes every later Model::AddMesh upload the inserted mesh's texture (the mesh-insertion
// hook of model/Model.h). The engine installs it once at start-up, before any model loads.
void InstallTextureUpload();
