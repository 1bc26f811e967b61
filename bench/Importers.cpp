#include "bench/Importers.h"

#include <assimp/cimport.h>
#include <assimp/scene.h>

#include <cstdio>

#include "fbx/sdk/fbxsdk.h"
#include "import/SceneImport.h"
#include "model/Model.h"

namespace {

class EngineModel : public Imported {
public:
    std::size_t Size() const override {
        std::size_t corners = 0;
        for (const auto& entry : m_Model.m_Meshes) {
            for (const Polygon& polygon : entry.second.m_Polygons) {
                corners += polygon.m_Count;
            }
        }
        return corners;
    }
    Model m_Model;
};

class LibraryScene : public Imported {
public:
    LibraryScene() : m_Manager(KFbxSdkManager::Create()) {}
    ~LibraryScene() override { m_Manager->Destroy(); }
    std::size_t Size() const override { return m_Nodes; }

    KFbxSdkManager* m_Manager;
    std::size_t m_Nodes = 0;
};

class AssimpScene : public Imported {
public:
    explicit AssimpScene(const aiScene* scene) : m_Scene(scene) {}
    ~AssimpScene() override {
        if (m_Scene)
            aiReleaseImport(m_Scene);
    }
    std::size_t Size() const override {
        std::size_t faces = 0;
        for (unsigned i = 0; m_Scene && i < m_Scene->mNumMeshes; ++i) {
            faces += m_Scene->mMeshes[i]->mNumFaces;
        }
        return faces;
    }
    const aiScene* m_Scene;
};

std::size_t CountNodes(KFbxNode* node) {
    if (!node)
        return 0;
    std::size_t count = 1;
    for (int i = 0; i < node->GetChildCount(); ++i)
        count += CountNodes(node->GetChild(i));
    return count;
}

}  // namespace

std::unique_ptr<Imported> EngineImport(const std::string& path) {
    auto result = std::make_unique<EngineModel>();
    ImportModelFile(path, &result->m_Model);
    return result;
}

std::unique_ptr<Imported> LibraryImport(const std::string& path) {
    auto result = std::make_unique<LibraryScene>();
    KFbxScene* scene = KFbxScene::Create(result->m_Manager, "");
    KFbxImporter* importer = KFbxImporter::Create(result->m_Manager, "");
    if (importer->Initialize(path.c_str()) && importer->Import(scene)) {
        result->m_Nodes = CountNodes(scene->GetRootNode());
    }
    importer->Destroy();
    return result;
}

std::unique_ptr<Imported> AssimpImport(const std::string& path) {
    return std::make_unique<AssimpScene>(aiImportFile(path.c_str(), 0));
}
