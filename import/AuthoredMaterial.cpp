#include "import/AuthoredMaterial.h"

#include <algorithm>
#include <cmath>

#include "fbx/sdk/fbxsdk.h"
#include "import/AuthoredTextures.h"

namespace {

// A number property, or the fallback when the material does not have it or it is not finite.
double Number(const KFbxSurfaceMaterial& material, const char* name, double fallback) {
    const KFbxProperty property = material.FindProperty(name);
    if (!property.IsValid())
        return fallback;
    const double value = property.Get<double>();
    return std::isfinite(value) ? value : fallback;
}

// A colour property times its factor, each part kept within 0 to 1.
void Colour(const KFbxSurfaceMaterial& material, const char* colour, const char* factor,
            float (&out)[4]) {
    const KFbxProperty property = material.FindProperty(colour);
    if (!property.IsValid())
        return;
    const fbxDouble3 value = property.Get<fbxDouble3>();
    const double scale = Number(material, factor, 1.0);
    for (int i = 0; i < 3; ++i) {
        const double part = value[i] * scale;
        out[i] = std::isfinite(part) ? static_cast<float>(std::clamp(part, 0.0, 1.0)) : 0.0f;
    }
}

// Opacity where the file gives it; else one less the transparency (its factor times the
// transparent colour's mean, where there is one).
float Alpha(const KFbxSurfaceMaterial& material) {
    double alpha = 1.0;
    if (material.FindProperty("Opacity").IsValid()) {
        alpha = Number(material, "Opacity", 1.0);
    } else {
        double transparency = Number(material, "TransparencyFactor", 0.0);
        const KFbxProperty colour = material.FindProperty("TransparentColor");
        if (colour.IsValid()) {
            const fbxDouble3 c = colour.Get<fbxDouble3>();
            const double mean = (c[0] + c[1] + c[2]) / 3.0;
            transparency *= std::isfinite(mean) ? mean : 0.0;
        }
        alpha = 1.0 - transparency;
    }
    return static_cast<float>(std::clamp(alpha, 0.0, 1.0));
}

UvPlacement Placement(const KFbxTexture& texture) {
    const double pi = 3.14159265358979323846;
    const double angle = texture.GetRotationW() * pi / 180.0;
    const double c = std::cos(angle), s = std::sin(angle);
    const double su = texture.GetScaleU(), sv = texture.GetScaleV();
    const double tu = texture.GetTranslationU(), tv = texture.GetTranslationV();
    // Rotated about (0.5, 0.5), then scaled, then moved.
    UvPlacement placement;
    const double m[6] = {su * c, -su * s, su * (0.5 - 0.5 * c + 0.5 * s) + tu,
                         sv * s, sv * c,  sv * (0.5 - 0.5 * s - 0.5 * c) + tv};
    for (double v : m) {
        if (!std::isfinite(v))
            return placement;
    }
    std::copy(m, m + 6, placement.m);
    return placement;
}

AuthoredMaterial ReadMaterial(const KFbxSurfaceMaterial& source) {
    AuthoredMaterial material;
    material.m_Name = source.GetName();
    Colour(source, "AmbientColor", "AmbientFactor", material.m_Ambient);
    Colour(source, "DiffuseColor", "DiffuseFactor", material.m_Diffuse);
    Colour(source, "EmissiveColor", "EmissiveFactor", material.m_Emissive);
    if (source.GetClassId().Is(KFbxSurfacePhong::ClassId)) {
        Colour(source, "SpecularColor", "SpecularFactor", material.m_Specular);
        double shininess = Number(source, "ShininessExponent", Number(source, "Shininess", 20.0));
        material.m_Shininess = static_cast<float>(std::clamp(shininess, 0.0, 128.0));
    }
    const float alpha = Alpha(source);
    for (float* colour :
         {material.m_Ambient, material.m_Diffuse, material.m_Specular, material.m_Emissive})
        colour[3] = alpha;
    material.m_Blended = alpha < 1.0f;
    return material;
}

}  // namespace

bool UvPlacement::IsIdentity() const {
    return m[0] == 1.0 && m[1] == 0.0 && m[2] == 0.0 && m[3] == 0.0 && m[4] == 1.0 && m[5] == 0.0;
}

void UvPlacement::Apply(float& u, float& v) const {
    const double pu = m[0] * u + m[1] * v + m[2];
    const double pv = m[3] * u + m[4] * v + m[5];
    u = std::isfinite(pu) ? static_cast<float>(pu) : 0.0f;
    v = std::isfinite(pv) ? static_cast<float>(pv) : 0.0f;
}

AuthoredMaterials ReadAuthoredMaterials(const KFbxNode& node, AuthoredTextures* textures) {
    AuthoredMaterials out;
    const int count = node.GetMaterialCount();
    for (int k = 0; k < count; ++k) {
        const KFbxSurfaceMaterial* source = node.GetMaterial(k);
        out.m_Materials.push_back(source ? ReadMaterial(*source) : AuthoredMaterial());
        out.m_Placements.emplace_back();
        if (!source || !textures)
            continue;
        DiffuseTexture diffuse = textures->Diffuse(*source);
        if (!diffuse.m_Image)
            continue;
        AuthoredMaterial& material = out.m_Materials.back();
        const float strength =
            static_cast<float>(std::clamp(Number(*source, "DiffuseFactor", 1.0), 0.0, 1.0));
        for (int i = 0; i < 3; ++i)
            material.m_Diffuse[i] = strength;
        material.m_Blended = material.m_Blended || diffuse.m_Image->m_HasAlpha;
        material.m_Texture = std::move(diffuse.m_Image);
        if (diffuse.m_Texture)
            out.m_Placements.back() = Placement(*diffuse.m_Texture);
    }
    return out;
}
