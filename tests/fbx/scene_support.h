// Helpers for the scene tests: import a file into a fresh manager and summarise it, and write
// files of a given content.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <fstream>
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

    explicit Imported(const std::string& path, const char* password = nullptr) {
        if (password) {
            options->SetOption("PASSWORD", password);
            options->SetOption("PASSWORD ENABLE", true);
        }
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

// A file of the given content in the build folder, removed with the object.
class TempFile {
public:
    explicit TempFile(const std::string& content)
        : m_Path(std::string(ENGINE_BINARY_DIR) + "/fbx_test_" + std::to_string(getpid()) + "_" +
                 std::to_string(++s_Count) + ".fbx") {
        std::ofstream(m_Path, std::ios::binary) << content;
    }
    ~TempFile() { std::remove(m_Path.c_str()); }
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
    const std::string& Path() const { return m_Path; }

private:
    static inline int s_Count = 0;
    std::string m_Path;
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
