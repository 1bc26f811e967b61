// Helpers for the scene tests: import a file into a fresh manager and summarise it.
#pragma once

#include <memory>
#include <string>

#include "fbx/sdk/Summary.h"
#include "fbx/sdk/fbxsdk.h"

namespace scenetest {

// One import: manager, scene and importer, released together.
struct Imported {
    KFbxSdkManager* manager = KFbxSdkManager::Create();
    KFbxScene* scene = KFbxScene::Create(manager, "");
    KFbxImporter* importer = KFbxImporter::Create(manager, "");
    KFbxStreamOptionsFbxReader* options = KFbxStreamOptionsFbxReader::Create(manager, "");
    bool initialized = false;
    bool imported = false;

    explicit Imported(const std::string& path) {
        initialized = importer->Initialize(path.c_str());
        if (initialized)
            imported = importer->Import(scene, options);
    }
    ~Imported() { manager->Destroy(); }
    Imported(const Imported&) = delete;
    Imported& operator=(const Imported&) = delete;

    std::string Summary() const { return fbx::SummarizeScene(*importer, *scene); }
    KFbxNode* Find(const char* name) const {
        for (int i = 0; i < scene->GetNodeCount(); ++i) {
            if (std::string(scene->GetNode(i)->GetName()) == name)
                return scene->GetNode(i);
        }
        return nullptr;
    }
};

inline std::string Fbx(const std::string& name) {
    return std::string(ENGINE_CORPUS_DIR) + "/fbx/" + name;
}

// The summary without its first line (version and encoding).
inline std::string Body(const std::string& summary) {
    std::size_t eol = summary.find('\n');
    return eol == std::string::npos ? std::string() : summary.substr(eol + 1);
}

}  // namespace scenetest
