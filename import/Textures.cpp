#include "import/Textures.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "fbx/sdk/fbxsdk.h"
#include "import/AuthoredTextures.h"
#include "import/Bitmap.h"
#include "model/Material.h"

namespace {

std::string PickFileName(const KFbxTexture& texture) {
    std::string name = texture.GetRelativeFileName();
    if (name.empty())
        name = texture.GetFileName();
    return name;
}

// Files written on Windows name textures with backslashes.
std::string WithForwardSlashes(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

void WalkLayeredTextures(const KFbxProperty& property) {
    const int layeredCount = property.GetSrcObjectCount(KFbxLayeredTexture::ClassId);
    for (int i = 0; i < layeredCount; ++i) {
        auto* layered =
            KFbxCast<KFbxLayeredTexture>(property.GetSrcObject(KFbxLayeredTexture::ClassId, i));
        if (!layered)
            continue;
        const int textureCount = layered->GetSrcObjectCount(KFbxTexture::ClassId);
        for (int j = 0; j < textureCount; ++j) {
            auto* texture = KFbxCast<KFbxTexture>(layered->GetSrcObject(KFbxTexture::ClassId, j));
            if (!texture)
                continue;
            std::printf("Loading texture: %s\n", texture->GetName());
            KFbxLayeredTexture::EBlendMode mode = KFbxLayeredTexture::eTRANSLUCENT;
            layered->GetTextureBlendMode(j, mode);
            // Only the first character of the name is taken here, and a texture is tried only
            // when that leaves nothing: this path has never yielded a loaded texture.
            const std::string picked = PickFileName(*texture);
            const std::string fileName = picked.empty() ? std::string() : picked.substr(0, 1);
            if (fileName.empty()) {
                Texture attempt;
                attempt.m_Name = texture->GetName();
                LoadImage(attempt, fileName);
            }
        }
        // The authored look draws the first layer of the first layered texture.
        if (AuthoredTextures* authored = AuthoredTextureScope::Current(); authored && i == 0)
            authored->FirstLayer(*layered, true);
    }
}

void WalkTextures(const KFbxProperty& property, Material& target) {
    const int textureCount = property.GetSrcObjectCount(KFbxTexture::ClassId);
    for (int i = 0; i < textureCount; ++i) {
        auto* texture = KFbxCast<KFbxTexture>(property.GetSrcObject(KFbxTexture::ClassId, i));
        if (!texture || texture->Is(KFbxLayeredTexture::ClassId))
            continue;
        std::printf("Loading texture: %s\n", texture->GetName());
        if (AuthoredTextures* authored = AuthoredTextureScope::Current()) {
            // The authored look reads every image format itself; no bitmap is read here.
            authored->Image(*texture, true);
            continue;
        }
        const std::string picked = PickFileName(*texture);
        if (picked.empty())
            continue;

        auto* loaded = new Texture();
        loaded->m_Name = texture->GetName();
        if (!LoadImage(*loaded, WithForwardSlashes(picked))) {
            delete loaded;
            continue;
        }
        loaded->m_ScaleU = static_cast<float>(texture->GetScaleU());
        loaded->m_ScaleV = static_cast<float>(texture->GetScaleV());
        loaded->m_TranslationU = static_cast<float>(texture->GetTranslationU());
        loaded->m_TranslationV = static_cast<float>(texture->GetTranslationV());
        loaded->m_RotationU = static_cast<float>(texture->GetRotationU());
        loaded->m_RotationV = static_cast<float>(texture->GetRotationV());
        loaded->m_RotationW = static_cast<float>(texture->GetRotationW());
        loaded->m_Alpha = static_cast<float>(texture->GetDefaultAlpha());
        target.m_Texture = *loaded;
        target.m_HasTexture = true;
        target.m_TextureId = target.m_Texture.m_Id;
        target.m_TextureScale[0] = target.m_Texture.m_ScaleU;
        target.m_TextureScale[1] = target.m_Texture.m_ScaleV;
        target.m_Valid = true;
        // The loaded texture is left behind after the copy; the loader has always kept it.
    }
}

}  // namespace

std::string TextureFileName(const KFbxTexture& texture) {
    return WithForwardSlashes(PickFileName(texture));
}

bool LoadMaterialTextures(KFbxSurfaceMaterial* material, Material& target) {
    if (!material)
        return false;
    const KFbxProperty diffuse = material->FindProperty("DiffuseColor");
    if (!diffuse.IsValid())
        return false;
    if (diffuse.GetSrcObjectCount(KFbxLayeredTexture::ClassId) > 0) {
        WalkLayeredTextures(diffuse);
    } else {
        WalkTextures(diffuse, target);
    }
    return false;
}
