// Surface materials and textures of the SDK-style interface.
//
// A material's colours are properties found by name ("DiffuseColor", "TransparencyFactor",
// ...): the file's value, else the file's property template, else the format's default.
// Textures reach a material property as its source objects; a layered texture stacks several
// textures on one property.
#pragma once

#include <string>
#include <vector>

#include "fbx/sdk/SdkObject.h"

class KFbxSurfaceMaterial : public KFbxObject {
    KFBX_CLASS(KFbxSurfaceMaterial)
public:
    static const char* const sShadingModel;
    static const char* const sEmissive;
    static const char* const sEmissiveFactor;
    static const char* const sAmbient;
    static const char* const sAmbientFactor;
    static const char* const sDiffuse;
    static const char* const sDiffuseFactor;
    static const char* const sTransparentColor;
    static const char* const sTransparencyFactor;
    static const char* const sSpecular;
    static const char* const sSpecularFactor;
    static const char* const sShininess;
    static const char* const sReflection;
    static const char* const sReflectionFactor;

    KFbxSurfaceMaterial(KFbxSdkManager* manager, const char* name) : KFbxObject(manager, name) {}
    // As the file writes it ("lambert", "Phong", ...).
    const char* GetShadingModel() const { return m_ShadingModel.c_str(); }

private:
    friend class fbx::SceneBuilder;
    std::string m_ShadingModel;
};

class KFbxSurfaceLambert : public KFbxSurfaceMaterial {
    KFBX_CLASS(KFbxSurfaceLambert)
public:
    KFbxSurfaceLambert(KFbxSdkManager* manager, const char* name)
        : KFbxSurfaceMaterial(manager, name) {}
    KFbxTypedProperty<fbxDouble3> GetEmissiveColor() const { return FindProperty(sEmissive); }
    KFbxTypedProperty<fbxDouble3> GetAmbientColor() const { return FindProperty(sAmbient); }
    KFbxTypedProperty<fbxDouble3> GetDiffuseColor() const { return FindProperty(sDiffuse); }
    KFbxTypedProperty<double> GetTransparencyFactor() const {
        return FindProperty(sTransparencyFactor);
    }
};

class KFbxSurfacePhong : public KFbxSurfaceLambert {
    KFBX_CLASS(KFbxSurfacePhong)
public:
    KFbxSurfacePhong(KFbxSdkManager* manager, const char* name)
        : KFbxSurfaceLambert(manager, name) {}
    KFbxTypedProperty<fbxDouble3> GetSpecularColor() const { return FindProperty(sSpecular); }
    KFbxTypedProperty<double> GetShininess() const { return FindProperty(sShininess); }
    KFbxTypedProperty<fbxDouble3> GetReflectionColor() const { return FindProperty(sReflection); }
    KFbxTypedProperty<double> GetReflectionFactor() const {
        return FindProperty(sReflectionFactor);
    }
};

class KFbxTexture : public KFbxObject {
    KFBX_CLASS(KFbxTexture)
public:
    KFbxTexture(KFbxSdkManager* manager, const char* name) : KFbxObject(manager, name) {}

    // The path as the tool wrote it, and the one relative to the file.
    const char* GetFileName() const { return m_FileName.c_str(); }
    const char* GetRelativeFileName() const { return m_RelativeFileName.c_str(); }
    double GetScaleU() const { return m_Scale[0]; }
    double GetScaleV() const { return m_Scale[1]; }
    double GetTranslationU() const { return m_Translation[0]; }
    double GetTranslationV() const { return m_Translation[1]; }
    double GetRotationU() const { return m_Rotation[0]; }
    double GetRotationV() const { return m_Rotation[1]; }
    double GetRotationW() const { return m_Rotation[2]; }
    double GetDefaultAlpha() const { return m_Alpha; }
    bool GetSwapUV() const { return m_SwapUV; }

private:
    friend class fbx::SceneBuilder;
    std::string m_FileName;
    std::string m_RelativeFileName;
    double m_Scale[2] = {1.0, 1.0};
    double m_Translation[2] = {0.0, 0.0};
    double m_Rotation[3] = {0.0, 0.0, 0.0};
    double m_Alpha = 1.0;
    bool m_SwapUV = false;
};

// Several textures stacked on one property; its sources are the textures, bottom first as
// the file connects them.
class KFbxLayeredTexture : public KFbxTexture {
    KFBX_CLASS(KFbxLayeredTexture)
public:
    enum EBlendMode {
        eTRANSLUCENT,
        eADDITIVE,
        eMODULATE,
        eMODULATE2,
        eOVER,
        eNORMAL,
        eDISSOLVE,
        eDARKEN,
        eCOLORBURN,
        eLINEARBURN,
        eDARKERCOLOR,
        eLIGHTEN,
        eSCREEN,
        eCOLORDODGE,
        eLINEARDODGE,
        eLIGHTERCOLOR,
        eSOFTLIGHT,
        eHARDLIGHT,
        eVIVIDLIGHT,
        eLINEARLIGHT,
        ePINLIGHT,
        eHARDMIX,
        eDIFFERENCE,
        eEXCLUSION,
        eSUBTRACT,
        eDIVIDE,
        eHUE,
        eSATURATION,
        eCOLOR,
        eLUMINOSITY,
        eOVERLAY,
        eBLENDMODECOUNT
    };

    KFbxLayeredTexture(KFbxSdkManager* manager, const char* name) : KFbxTexture(manager, name) {}
    // The blend mode of the texture at that index; false (mode untouched) out of range.
    bool GetTextureBlendMode(int index, EBlendMode& mode) const;

private:
    friend class fbx::SceneBuilder;
    std::vector<int> m_BlendModes;
};
