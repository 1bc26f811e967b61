#include "tools/newgame/ModelSurvey.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "fbx/sdk/TextureLocation.h"
#include "fbx/sdk/fbxsdk.h"
#include "import/SceneImport.h"
#include "model/Model.h"
#include "model/Pose.h"
#include "tools/common/QuietStdout.h"

namespace {

namespace fs = std::filesystem;

// A relative name that stays inside the folder it is taken from: no root, no drive letter,
// no "..", not empty.
bool StaysInside(const std::string& name) {
    if (name.empty() || name.find('\0') != std::string::npos || name.find(':') != std::string::npos)
        return false;
    const fs::path path(name);
    if (path.has_root_path())
        return false;
    for (const fs::path& part : path) {
        if (part == "..")
            return false;
    }
    return path.has_filename();
}

bool SameFile(const fs::path& a, const fs::path& b) {
    std::error_code error;
    return fs::equivalent(a, b, error);
}

// Where the copy of a found image goes: at the texture's relative name when that is where the
// engine found it (so the copy is found the same way), else beside the model by its bare name.
TextureFile PlaceTexture(const fbx::TextureImageSource& source, const std::string& modelFile) {
    TextureFile texture;
    texture.m_Found = source.path;
    const fs::path folder = fs::path(modelFile).parent_path();
    if (StaysInside(source.name) && SameFile(folder / source.name, source.path)) {
        texture.m_Placed = fs::path(source.name).lexically_normal().generic_string();
    } else {
        texture.m_Placed = fs::path(source.path).filename().generic_string();
    }
    return texture;
}

void AddTexture(const KFbxTexture& texture, const std::string& modelFile,
                std::vector<TextureFile>& files) {
    const fbx::TextureImageSource source = fbx::LocateTextureImage(texture, modelFile);
    if (source.where != fbx::TextureImageSource::Where::File)
        return;  // embedded images travel inside the model, missing ones cannot be copied
    TextureFile file = PlaceTexture(source, modelFile);
    const bool known = std::any_of(files.begin(), files.end(), [&](const TextureFile& other) {
        return other.m_Placed == file.m_Placed;
    });
    if (!known && !file.m_Placed.empty())
        files.push_back(std::move(file));
}

// Every texture on every material property, the layers of layered textures too.
std::vector<TextureFile> TextureFiles(const KFbxScene& scene, const std::string& modelFile) {
    std::vector<TextureFile> files;
    for (int m = 0; m < scene.GetMaterialCount(); ++m) {
        const KFbxSurfaceMaterial* material = scene.GetMaterial(m);
        if (material == nullptr)
            continue;
        for (int p = 0; p < material->GetPropertyCount(); ++p) {
            const KFbxProperty property = material->GetPropertyAt(p);
            for (int s = 0; s < property.GetSrcObjectCount(); ++s) {
                const KFbxTexture* texture = KFbxCast<KFbxTexture>(property.GetSrcObject(s));
                if (texture == nullptr)
                    continue;
                if (const auto* layered = KFbxCast<KFbxLayeredTexture>(texture)) {
                    for (int t = 0; t < layered->GetSrcObjectCount(KFbxTexture::ClassId); ++t) {
                        const auto* inner = static_cast<const KFbxTexture*>(
                            layered->GetSrcObject(KFbxTexture::ClassId, t));
                        if (inner != nullptr)
                            AddTexture(*inner, modelFile, files);
                    }
                    continue;
                }
                AddTexture(*texture, modelFile, files);
            }
        }
    }
    return files;
}

}  // namespace

int FirstShownFrame(const SurveyedModel& model) {
    return model.m_Takes.empty() ? 0 : model.m_Takes.front().m_FirstFrame;
}

bool SurveyModel(const std::string& file, SurveyedModel& model, std::string& error) {
    model = SurveyedModel();
    model.m_File = file;
    {
        // Read as fbxinfo reads it, so that a file it cannot read fails with its reason before
        // the import (which would ask for a password on the terminal) sees it.
        KFbxSdkManager* manager = KFbxSdkManager::Create();
        KFbxScene* scene = KFbxScene::Create(manager, "");
        KFbxImporter* importer = KFbxImporter::Create(manager, "");
        const bool read = importer->Initialize(file.c_str()) && importer->Import(scene);
        if (read)
            model.m_Textures = TextureFiles(*scene, file);
        else
            error = importer->GetLastErrorString();
        manager->Destroy();
        if (!read)
            return false;
    }

    Model imported;
    {
        QuietStdout quiet;
        ImportModelFile(file, &imported, ModelLook::Authored);
    }
    if (imported.m_Authored) {
        const AuthoredScene& scene = *imported.m_Authored;
        model.m_Takes = scene.m_Takes;
        model.m_Sphere = SphereAround(PosedBox(scene, FrameTime(scene, FirstShownFrame(model))));
    }
    return true;
}
