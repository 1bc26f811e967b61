// A second opinion on written 7500 files: Debian's assimp, loaded at run time so that the
// test program needs no link dependency, must import them with the described content.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <assimp/scene.h>

#include <cstdio>
#include <string>

#include "fbx/write/WriterScene.h"
#include "fbx/write/WriterSynthetic.h"

namespace {

template <class Function>
Function* Symbol(void* library, const char* name) {
    return library ? reinterpret_cast<Function*>(dlsym(library, name)) : nullptr;
}

class AssimpReads : public ::testing::TestWithParam<bool> {};

TEST_P(AssimpReads, SkinnedAnimatedGrid) {
    void* library = dlopen("libassimp.so.5", RTLD_NOW | RTLD_LOCAL);
    auto* import = Symbol<const aiScene*(const char*, unsigned)>(library, "aiImportFile");
    auto* release = Symbol<void(const aiScene*)>(library, "aiReleaseImport");
    auto* error = Symbol<const char*()>(library, "aiGetErrorString");
    auto* texture =
        Symbol<aiReturn(const aiMaterial*, aiTextureType, unsigned, aiString*, aiTextureMapping*,
                        unsigned*, ai_real*, aiTextureOp*, aiTextureMapMode*, unsigned*)>(
            library, "aiGetMaterialTexture");
    if (!import || !release || !error || !texture)
        GTEST_SKIP() << "libassimp is not installed";
    fbx::SyntheticOptions options;
    options.corners = 4 * 100;
    options.clusters = 4;
    options.takes = 1;
    options.keys = 10;
    options.texture = "grid.bmp";
    const std::string path = std::string(ENGINE_BINARY_DIR) + "/writer_assimp_grid" +
                             (GetParam() ? "_binary" : "_ascii") + ".fbx";
    std::string why;
    ASSERT_TRUE(fbx::WriteFile(path, fbx::MakeSyntheticScene(options), 7500, GetParam(), &why))
        << why;

    const aiScene* scene = import(path.c_str(), 0);
    std::remove(path.c_str());
    ASSERT_NE(nullptr, scene) << error();
    ASSERT_EQ(1u, scene->mNumMeshes);
    const aiMesh* mesh = scene->mMeshes[0];
    EXPECT_EQ(400u, mesh->mNumVertices);  // one vertex per polygon corner
    EXPECT_EQ(100u, mesh->mNumFaces);
    EXPECT_TRUE(mesh->HasNormals());
    EXPECT_TRUE(mesh->HasTextureCoords(0));
    EXPECT_EQ(4u, mesh->mNumBones);
    EXPECT_EQ(1u, scene->mNumAnimations);
    ASSERT_GE(scene->mNumMaterials, 1u);
    aiString file;
    EXPECT_EQ(texture(scene->mMaterials[mesh->mMaterialIndex], aiTextureType_DIFFUSE, 0, &file,
                      nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              aiReturn_SUCCESS);
    EXPECT_NE(std::string::npos, std::string(file.C_Str()).find("grid.bmp"));
    release(scene);
    dlclose(library);
}

INSTANTIATE_TEST_SUITE_P(BothEncodings, AssimpReads, ::testing::Values(true, false));

}  // namespace
