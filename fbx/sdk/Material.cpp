#include "fbx/sdk/Material.h"

const char* const KFbxSurfaceMaterial::sShadingModel = "ShadingModel";
const char* const KFbxSurfaceMaterial::sEmissive = "EmissiveColor";
const char* const KFbxSurfaceMaterial::sEmissiveFactor = "EmissiveFactor";
const char* const KFbxSurfaceMaterial::sAmbient = "AmbientColor";
const char* const KFbxSurfaceMaterial::sAmbientFactor = "AmbientFactor";
const char* const KFbxSurfaceMaterial::sDiffuse = "DiffuseColor";
const char* const KFbxSurfaceMaterial::sDiffuseFactor = "DiffuseFactor";
const char* const KFbxSurfaceMaterial::sTransparentColor = "TransparentColor";
const char* const KFbxSurfaceMaterial::sTransparencyFactor = "TransparencyFactor";
const char* const KFbxSurfaceMaterial::sSpecular = "SpecularColor";
const char* const KFbxSurfaceMaterial::sSpecularFactor = "SpecularFactor";
const char* const KFbxSurfaceMaterial::sShininess = "ShininessExponent";
const char* const KFbxSurfaceMaterial::sReflection = "ReflectionColor";
const char* const KFbxSurfaceMaterial::sReflectionFactor = "ReflectionFactor";

bool KFbxLayeredTexture::GetTextureBlendMode(int index, EBlendMode& mode) const {
    if (index < 0 || index >= static_cast<int>(m_BlendModes.size()))
        return false;
    int value = m_BlendModes[static_cast<std::size_t>(index)];
    if (value < 0 || value >= eBLENDMODECOUNT)
        return false;
    mode = static_cast<EBlendMode>(value);
    return true;
}
