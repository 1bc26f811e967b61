// A second opinion on written 7500 files: Debian's assimp, loaded at run time so that the
// test program needs no link dependency, must import them with the described content.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <assimp/scene.h>

#include <cstdio>
#include <string>

#include "fbx/write/WriterScene.h"
#include "fbx/write/WriterSynthetic.h"

namespace fbx::test {
namespace {

class Assimp {
public:
    Assimp() {
        m_Library = dlopen("libassimp.so.5", RTLD_NOW | RTLD_LOCAL);
        if (!m_Library)
            m_Library = dlopen("libassimp.so", RTLD_NOW | RTLD_LOCAL);
        if (!m_Library)
            return;
        m_Import = reinterpret_cast<ImportFn>(dlsym(m_Library, "aiImportFile"));
        m_Release = reinterpret_cast<ReleaseFn>(dlsym(m_Library, "aiReleaseImport"));
        m_Error = reinterpret_cast<ErrorFn>(dlsym(m_Library, "aiGetErrorString"));
        m_Texture = reinterpret_cast<TextureFn>(dlsym(m_Library, "aiGetMaterialTexture"));
    }
    ~Assimp() {
        if (m_Library)
            dlclose(m_Library);
    }
    Assimp(const Assimp&) = delete;
    Assimp& operator=(const Assimp&) = delete;

    bool Available() const { return m_Import && m_Release && m_Error && m_Texture; }
    const aiScene* Import(const std::string& path) const { return m_Import(path.c_str(), 0); }
    void Release(const aiScene* scene) const { m_Release(scene); }
    std::string Error() const { return m_Error(); }
    // File name of a material's first diffuse texture, or "".
    std::string DiffuseTexture(const aiMaterial* material) const {
        aiString path;
        if (m_Texture(material, aiTextureType_DIFFUSE, 0, &path, nullptr, nullptr, nullptr, nullptr,
                      nullptr, nullptr) != aiReturn_SUCCESS) {
            return "";
        }
        return path.C_Str();
    }

private:
    using ImportFn = const aiScene* (*)(const char*, unsigned int);
    using ReleaseFn = void (*)(const aiScene*);
    using ErrorFn = const char* (*)();
    using TextureFn = aiReturn (*)(const aiMaterial*, aiTextureType, unsigned int, aiString*,
                                   aiTextureMapping*, unsigned int*, ai_real*, aiTextureOp*,
                                   aiTextureMapMode*, unsigned int*);
    void* m_Library = nullptr;
    ImportFn m_Import = nullptr;
    ReleaseFn m_Release = nullptr;
    ErrorFn m_Error = nullptr;
    TextureFn m_Texture = nullptr;
};

class AssimpReads : public ::testing::TestWithParam<bool> {};

TEST_P(AssimpReads, SkinnedAnimatedGrid) {
    Assimp assimp;
    if (!assimp.Available())
        GTEST_SKIP() << "libassimp is not installed";
    const bool binary = GetParam();
    SyntheticOptions options;
    options.corners = 4 * 100;
    options.clusters = 4;
    options.takes = 1;
    options.keys = 10;
    options.texture = "grid.bmp";
    const std::string path = std::string(ENGINE_BINARY_DIR) + "/writer_assimp_grid" +
                             (binary ? "_binary" : "_ascii") + ".fbx";
    std::string error;
    ASSERT_TRUE(WriteFile(path, MakeSyntheticScene(options), 7500, binary, &error)) << error;

    const aiScene* scene = assimp.Import(path);
    ASSERT_NE(nullptr, scene) << assimp.Error();
    ASSERT_EQ(1u, scene->mNumMeshes);
    const aiMesh* mesh = scene->mMeshes[0];
    EXPECT_EQ(400u, mesh->mNumVertices);  // one vertex per polygon corner
    EXPECT_EQ(100u, mesh->mNumFaces);
    EXPECT_TRUE(mesh->HasNormals());
    EXPECT_TRUE(mesh->HasTextureCoords(0));
    EXPECT_EQ(4u, mesh->mNumBones);
    EXPECT_EQ(1u, scene->mNumAnimations);
    ASSERT_GE(scene->mNumMaterials, 1u);
    EXPECT_NE(std::string::npos,
              assimp.DiffuseTexture(scene->mMaterials[mesh->mMaterialIndex]).find("grid.bmp"));
    assimp.Release(scene);
    std::remove(path.c_str());
}

INSTANTIATE_TEST_SUITE_P(BothEncodings, AssimpReads, ::testing::Values(true, false));

}  // namespace
}  // namespace fbx::test
