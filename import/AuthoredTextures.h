// The authored look's texture images of one model import.
//
// Each texture of the scene is found as modelling tools leave it (the image embedded in the
// model file first, then files beside the model; fbx/sdk/TextureLocation.h), decoded once
// per process however many materials and models show it, and handed to the drawing side as
// soon as it is decoded (model/TextureImage.h).
//
// Console lines: a texture whose image cannot be found or decoded prints
// "Failed to load NAME." as the classic look's bitmap reader does, so the report differs from
// the classic one only where an image now loads; an image too large for the memory budget
// says so, and a layered texture says once that only its first layer is drawn.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>

#include "model/TextureImage.h"

class KFbxLayeredTexture;
class KFbxSurfaceMaterial;
class KFbxTexture;

// The image a material shows on its diffuse colour, and the texture that places it.
struct DiffuseTexture {
    std::shared_ptr<TextureImage> m_Image;   // null: the material shows its colours alone
    const KFbxTexture* m_Texture = nullptr;  // its UV scale, translation and rotation
};

class AuthoredTextures {
public:
    explicit AuthoredTextures(std::string modelFile) : m_ModelFile(std::move(modelFile)) {}

    // The texture's image, tried once per import; null when it cannot be had. With report,
    // a failure prints its line (every time, as the classic walk prints it).
    std::shared_ptr<TextureImage> Image(const KFbxTexture& texture, bool report);

    // A layered texture's first layer, which is drawn; the first time, a texture with more
    // layers says that the rest are not. With report, a failure prints its line.
    std::shared_ptr<TextureImage> FirstLayer(const KFbxLayeredTexture& layered, bool report);

    // What the material shows on its diffuse colour: the first layer of its first layered
    // texture when it has one, else the last of its plain textures that loads (as the classic
    // look keeps the last). Textures not met before report their failures.
    DiffuseTexture Diffuse(const KFbxSurfaceMaterial& material);

private:
    std::shared_ptr<TextureImage> Load(const KFbxTexture& texture, const std::string& name);

    std::string m_ModelFile;
    // Every texture tried, with its image (null when it failed).
    std::map<const KFbxTexture*, std::shared_ptr<TextureImage>> m_Tried;
    std::set<const KFbxLayeredTexture*> m_LayersReported;
};

// While one is alive on a thread, the classic texture walk of that thread's import asks its
// AuthoredTextures instead of reading bitmaps (the authored look's import).
class AuthoredTextureScope {
public:
    explicit AuthoredTextureScope(AuthoredTextures& textures);
    ~AuthoredTextureScope();
    AuthoredTextureScope(const AuthoredTextureScope&) = delete;
    AuthoredTextureScope& operator=(const AuthoredTextureScope&) = delete;

    // The textures of the import running on this thread in the authored look, else null.
    static AuthoredTextures* Current();

private:
    AuthoredTextures* m_Previous;
};
