// Feed for the engine's model import: an FBX file all the way into a Model.
#include <cstdio>
#include <cstdlib>

#include "fuzz/Feeds.h"
#include "fuzz/ScratchFile.h"
#include "import/SceneImport.h"
#include "model/Model.h"

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

}  // namespace

ModelOutcome FeedModelImport(const std::uint8_t* data, std::size_t size) {
    static const ScratchFile file("model", ".fbx");
    DetachStandardInput();
    ModelOutcome outcome;
    if (!file.Write(data, size))
        return outcome;
    Model model;
    ImportModelFile(file.Path(), &model);

    outcome.meshes = model.m_Meshes.size();
    outcome.nodes = model.m_Nodes.size();
    for (const auto& entry : model.m_Meshes) {
        const Mesh& mesh = entry.second;
        outcome.polygons += mesh.m_Polygons.size();
        for (const Polygon& polygon : mesh.m_Polygons) {
            for (const Vertex& vertex : polygon.m_Vertices) {
                for (const SkinInfluence& influence : vertex.m_Skin) {
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
