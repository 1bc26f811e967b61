// A second opinion on written 7500 files: Debian's assimp, loaded at run time so that the
// test program needs no link dependency, must import them with the described content.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <assimp/scene.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "fbx/write/WriterScene.h"
#include "fbx/write/WriterSynthetic.h"

namespace {

template <class Function>
Function* Symbol(void* library, const char* name) {
    return library ? reinterpret_cast<Function*>(dlsym(library, name)) : nullptr;
}

using GetTexture = aiReturn(const aiMaterial*, aiTextureType, unsigned, aiString*,
                            aiTextureMapping*, unsigned*, ai_real*, aiTextureOp*, aiTextureMapMode*,
                            unsigned*);

class AssimpReads : public ::testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        m_Library = dlopen("libassimp.so.5", RTLD_NOW | RTLD_LOCAL);
        m_Import = Symbol<const aiScene*(const char*, unsigned)>(m_Library, "aiImportFile");
        m_Release = Symbol<void(const aiScene*)>(m_Library, "aiReleaseImport");
        m_Error = Symbol<const char*()>(m_Library, "aiGetErrorString");
        m_Texture = Symbol<GetTexture>(m_Library, "aiGetMaterialTexture");
        if (!m_Import || !m_Release || !m_Error || !m_Texture)
            GTEST_SKIP() << "libassimp is not installed";
    }
    void TearDown() override {
        m_Scenes.clear();
        if (m_Library)
            dlclose(m_Library);
    }

    // Writes the scene as a 7500 file of this test's encoding and imports it with assimp;
    // the scene is released with the test.
    const aiScene* WriteAndImport(const fbx::SceneDescription& description, const char* stem) {
        const std::string path = std::string(ENGINE_BINARY_DIR) + "/" + stem +
                                 (GetParam() ? "_binary" : "_ascii") + ".fbx";
        std::string why;
        EXPECT_TRUE(fbx::WriteFile(path, description, 7500, GetParam(), &why)) << why;
        const aiScene* scene = m_Import(path.c_str(), 0);
        std::remove(path.c_str());
        EXPECT_NE(nullptr, scene) << m_Error();
        m_Scenes.emplace_back(scene, m_Release);
        return scene;
    }

    void* m_Library = nullptr;
    const aiScene* (*m_Import)(const char*, unsigned) = nullptr;
    void (*m_Release)(const aiScene*) = nullptr;
    const char* (*m_Error)() = nullptr;
    GetTexture* m_Texture = nullptr;
    std::vector<std::unique_ptr<const aiScene, void (*)(const aiScene*)>> m_Scenes;
};

TEST_P(AssimpReads, SkinnedAnimatedGrid) {
    fbx::SyntheticOptions options;
    options.corners = 4 * 100;
    options.clusters = 4;
    options.takes = 1;
    options.keys = 10;
    options.texture = "grid.bmp";
    const aiScene* scene = WriteAndImport(fbx::MakeSyntheticScene(options), "writer_assimp_grid");
    ASSERT_NE(nullptr, scene);
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
    EXPECT_EQ(m_Texture(scene->mMaterials[mesh->mMaterialIndex], aiTextureType_DIFFUSE, 0, &file,
                        nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              aiReturn_SUCCESS);
    EXPECT_NE(std::string::npos, std::string(file.C_Str()).find("grid.bmp"));
}

// The character's one mesh comes back split by material, each part with every bone, one
// vertex per polygon corner in all; the takes keep their names and lengths.
TEST_P(AssimpReads, SkinnedCharacter) {
    fbx::CharacterOptions options;
    const fbx::SceneDescription character = fbx::MakeSkinnedCharacter(options);
    const aiScene* scene = WriteAndImport(character, "writer_assimp_character");
    ASSERT_NE(nullptr, scene);
    ASSERT_EQ(4u, scene->mNumMeshes);
    std::size_t vertices = 0;
    for (unsigned m = 0; m < scene->mNumMeshes; ++m) {
        const aiMesh* mesh = scene->mMeshes[m];
        EXPECT_STREQ("Body", mesh->mName.C_Str());
        EXPECT_TRUE(mesh->HasNormals());
        EXPECT_EQ(static_cast<unsigned>(options.bones), mesh->mNumBones);
        vertices += mesh->mNumVertices;
    }
    std::size_t corners = 0;
    for (const auto& polygon : character.nodes[0].mesh.polygons)
        corners += polygon.size();
    EXPECT_EQ(corners, vertices);
    ASSERT_EQ(2u, scene->mNumAnimations);
    const aiAnimation* walk = scene->mAnimations[0];
    const aiAnimation* wave = scene->mAnimations[1];
    EXPECT_STREQ("Walk", walk->mName.C_Str());
    EXPECT_STREQ("Wave", wave->mName.C_Str());
    EXPECT_DOUBLE_EQ(2.0, walk->mDuration / walk->mTicksPerSecond);
    EXPECT_DOUBLE_EQ(1.5, wave->mDuration / wave->mTicksPerSecond);
}

INSTANTIATE_TEST_SUITE_P(BothEncodings, AssimpReads, ::testing::Values(true, false));

}  // namespace
