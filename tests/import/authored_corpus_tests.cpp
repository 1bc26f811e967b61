// The authored look places every mesh of the 7.x corpus files where Debian's assimp does: the
// world-space bounding box of each mesh node in the stored pose, compared with the one
// assimp's node transforms give. assimp is loaded at run time; without it the test skips.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <assimp/scene.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <string>

#include "import/SceneImport.h"
#include "model/Pose.h"

namespace fs = std::filesystem;

namespace {

struct Box {
    double low[3] = {INFINITY, INFINITY, INFINITY};
    double high[3] = {-INFINITY, -INFINITY, -INFINITY};
    void Add(double x, double y, double z) {
        const double p[3] = {x, y, z};
        for (int i = 0; i < 3; ++i) {
            low[i] = std::min(low[i], p[i]);
            high[i] = std::max(high[i], p[i]);
        }
    }
    void Add(const Box& other) {
        Add(other.low[0], other.low[1], other.low[2]);
        Add(other.high[0], other.high[1], other.high[2]);
    }
    double Size() const {
        double sum = 0.0;
        for (int i = 0; i < 3; ++i)
            sum += (high[i] - low[i]) * (high[i] - low[i]);
        return std::sqrt(sum);
    }
};

using Boxes = std::map<std::string, Box>;

// Each assimp node's meshes (faces of three or more corners) under its world transform,
// leaving out the root's own transform, where assimp puts whole-scene conversions.
void CollectAssimp(const aiScene& scene, const aiNode& node, const aiMatrix4x4& parent, bool root,
                   Boxes& boxes) {
    const aiMatrix4x4 world = root ? parent : parent * node.mTransformation;
    for (unsigned m = 0; m < node.mNumMeshes; ++m) {
        const aiMesh& mesh = *scene.mMeshes[node.mMeshes[m]];
        for (unsigned f = 0; f < mesh.mNumFaces; ++f) {
            const aiFace& face = mesh.mFaces[f];
            if (face.mNumIndices < 3)
                continue;
            for (unsigned k = 0; k < face.mNumIndices; ++k) {
                const aiVector3D p = world * mesh.mVertices[face.mIndices[k]];
                boxes[node.mName.C_Str()].Add(p.x, p.y, p.z);
            }
        }
    }
    for (unsigned c = 0; c < node.mNumChildren; ++c)
        CollectAssimp(scene, *node.mChildren[c], world, false, boxes);
}

Boxes CollectEngine(const AuthoredScene& scene) {
    std::vector<Matrix4> world;
    EvaluateWorld(scene, PoseTime(), world);
    Boxes boxes;
    for (const AuthoredMesh& mesh : scene.m_Meshes) {
        const Matrix4 m = world[static_cast<std::size_t>(mesh.m_Node)] *
                          GeometricTransform(scene.m_Nodes[static_cast<std::size_t>(mesh.m_Node)]);
        for (std::uint32_t corner : mesh.m_Triangles) {
            const float* p = &mesh.m_Points[mesh.m_CornerPoints[corner] * 3];
            float out[3];
            m.TransformPoint({p[0], p[1], p[2]}, out);
            boxes[mesh.m_Name].Add(out[0], out[1], out[2]);
        }
    }
    return boxes;
}

TEST(AuthoredCorpus, MeshesLandWhereAssimpPutsThem) {
    void* library = dlopen("libassimp.so.5", RTLD_NOW | RTLD_LOCAL);
    auto* import = library ? reinterpret_cast<const aiScene* (*)(const char*, unsigned)>(
                                 dlsym(library, "aiImportFile"))
                           : nullptr;
    auto* release =
        library ? reinterpret_cast<void (*)(const aiScene*)>(dlsym(library, "aiReleaseImport"))
                : nullptr;
    if (!import || !release)
        GTEST_SKIP() << "libassimp is not installed";
    int compared = 0;
    for (const auto& entry : fs::directory_iterator(fs::path(ENGINE_CORPUS_DIR) / "fbx")) {
        const std::string name = entry.path().filename().string();
        if (name.find("_7") == std::string::npos)
            continue;
        const aiScene* peer = import(entry.path().c_str(), 0);
        if (!peer || !peer->mRootNode)
            continue;
        Boxes expected;
        CollectAssimp(*peer, *peer->mRootNode, aiMatrix4x4(), true, expected);
        release(peer);

        testing::internal::CaptureStdout();
        Model model;
        ImportModelFile(entry.path().string(), &model, ModelLook::Authored);
        testing::internal::GetCapturedStdout();
        ASSERT_TRUE(model.m_Authored) << name;
        const Boxes actual = CollectEngine(*model.m_Authored);

        Box whole;
        for (const auto& [node, box] : expected)
            whole.Add(box);
        const double tolerance = 1e-3 * std::max(whole.Size(), 1e-9);
        for (const auto& [node, box] : expected) {
            auto found = actual.find(node);
            ASSERT_NE(found, actual.end()) << name << ": no mesh node " << node;
            for (int i = 0; i < 3; ++i) {
                EXPECT_NEAR(found->second.low[i], box.low[i], tolerance) << name << " " << node;
                EXPECT_NEAR(found->second.high[i], box.high[i], tolerance) << name << " " << node;
            }
        }
        ++compared;
    }
    EXPECT_GT(compared, 10);
}

}  // namespace
