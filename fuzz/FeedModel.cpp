// Feed for the engine's model import: an FBX file all the way into a Model, in the authored
// look, so its records are also evaluated: node transforms, curves and skinning; and its
// embedded images decoded through the engine's texture loading.
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "fuzz/Feeds.h"
#include "fuzz/ScratchFile.h"
#include "import/SceneImport.h"
#include "model/Model.h"
#include "model/Pose.h"
#include "model/Skinning.h"

namespace fuzzing {

namespace {

// A password-protected input makes the import ask on standard input; it must read the end
// of input at once rather than wait for a keyboard.
void DetachStandardInput() {
    static const bool detached = std::freopen("/dev/null", "r", stdin) != nullptr;
    (void)detached;
}

void Check(bool promise, const char* what) {
    if (!promise) {
        std::fprintf(stderr, "imported model breaks its promise: %s\n", what);
        std::abort();
    }
}

bool AllFinite(const std::vector<float>& values) {
    for (float v : values) {
        if (!std::isfinite(v))
            return false;
    }
    return true;
}

// Poses the authored records at the stored pose and at the first, middle and last frame of
// every take, skinning every mesh: nothing may be out of range or non-finite.
void PoseAuthored(const AuthoredScene& scene) {
    for (const AuthoredMesh& mesh : scene.m_Meshes) {
        Check(mesh.m_CornerNormals.size() == mesh.m_CornerPoints.size() * 3,
              "a corner without its normal");
        for (std::uint32_t corner : mesh.m_Triangles)
            Check(corner < mesh.m_CornerPoints.size(), "a triangle names a missing corner");
        for (const MaterialRange& range : mesh.m_Ranges)
            Check(
                range.m_First + static_cast<std::size_t>(range.m_Count) <= mesh.m_Triangles.size(),
                "a material range runs past the triangles");
        for (const AuthoredMaterial& material : mesh.m_Materials) {
            if (const TextureImage* image = material.m_Texture.get())
                Check(image->m_Width > 0 && image->m_Height > 0 &&
                          image->m_Pixels.size() == static_cast<std::size_t>(image->m_Width) *
                                                        static_cast<std::size_t>(image->m_Height) *
                                                        4,
                      "a texture image whose pixels do not fill its size");
        }
    }
    std::vector<int> frames = {-1};
    for (const TakeSpan& take : scene.m_Takes) {
        frames.push_back(take.m_FirstFrame);
        frames.push_back(take.m_FirstFrame + (take.m_LastFrame - take.m_FirstFrame) / 2);
        frames.push_back(take.m_LastFrame);
    }
    std::vector<Matrix4> world;
    std::vector<float> positions, normals;
    for (int frame : frames) {
        EvaluateWorld(scene, BlendedFrameTime(scene, frame, frame + 1, 0.5f), world);
        for (const Matrix4& m : world)
            Check(m.IsFinite(), "a node's world transform is not finite");
        for (const AuthoredMesh& mesh : scene.m_Meshes) {
            SkinMesh(scene, mesh, world, positions, normals);
            Check(AllFinite(positions) && AllFinite(normals), "a skinned corner is not finite");
        }
    }
}

}  // namespace

ModelOutcome FeedModelImport(const std::uint8_t* data, std::size_t size) {
    static const ScratchFile file("model", ".fbx");
    DetachStandardInput();
    ModelOutcome outcome;
    if (!file.Write(data, size))
        return outcome;
    Model model;
    ImportModelFile(file.Path(), &model, ModelLook::Authored);
    if (model.m_Authored)
        PoseAuthored(*model.m_Authored);

    outcome.meshes = model.m_Meshes.size();
    outcome.nodes = model.m_Nodes.size();
    for (const auto& entry : model.m_Meshes) {
        const Mesh& mesh = entry.second;
        outcome.polygons += mesh.m_Polygons.size();
        for (const Polygon& polygon : mesh.m_Polygons) {
            for (const Vertex& vertex : mesh.Vertices(polygon)) {
                Check(mesh.Influences(vertex).size() == vertex.m_Skin.size(),
                      "a vertex's influences lie outside its mesh's table");
                for (const SkinInfluence& influence : mesh.Influences(vertex)) {
                    Check(influence.m_Bone >= 0 &&
                              static_cast<std::size_t>(influence.m_Bone) < mesh.m_BoneNames.size(),
                          "a skin influence names a bone the mesh does not have");
                }
            }
        }
    }
    for (const auto& entry : model.m_Animations)
        outcome.keyFrames += entry.second.m_Keys.size();
    return outcome;
}

}  // namespace fuzzing
