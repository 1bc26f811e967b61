// Damaged model files named by a state's "URL" (files that are no model at all are checked
// where a state names them): each import ends with a message or a partial model, never a
// crash, a hang or a runaway allocation.
#include <gmock/gmock.h>

#include "hostile_files.h"
#include "import/SceneImport.h"
#include "model/Model.h"
#include "scratch_dir.h"

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

struct Imported {
    std::string m_Output;
    Model m_Model;
};

Imported Import(const std::string& path) {
    Imported result;
    result.m_Output = CapturedOutput([&] { ImportModelFile(path, &result.m_Model); });
    return result;
}

// Whether the part occurs in the text exactly once.
bool Once(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos && text.find(part) == text.rfind(part);
}

TEST(HostileModel, CountsFarBeyondTheFileOrDeepNestingGiveAnEmptyModel) {
    ScratchDir dir;
    for (const auto& [path, deep] : std::vector<std::pair<std::string, bool>>{
             {DataFile("huge_counts.fbx"), false},
             // Two billion doubles claimed, 24 bytes present; a deflate stream of four bytes
             // that claims to inflate to two gigabytes; an array running past the file's end.
             {DataFile("vertices_two_billion.fbx"), false},
             {DataFile("vertices_deflate_bomb.fbx"), false},
             {DataFile("vertices_past_end.fbx"), false},
             // Nesting that would exhaust the stack of a recursive reader.
             {dir.Write("closed.fbx", DeepAsciiFbx(200000, true)), true},
             {dir.Write("open.fbx", DeepAsciiFbx(200000, false)), true},
             {dir.Write("binary.fbx", DeepBinaryFbx(100000)), true}}) {
        const Imported got = Import(path);
        // The file is recognised (its version or its takes are reported) but yields no mesh.
        const std::string seen = deep ? "Take Information" : "FBX version number for file " + path;
        EXPECT_THAT(got.m_Output, HasSubstr(seen)) << path;
        EXPECT_THAT(got.m_Output, Not(HasSubstr("Loading mesh"))) << path;
        EXPECT_TRUE(got.m_Model.m_Meshes.empty()) << path;
        EXPECT_TRUE(!deep || got.m_Model.m_Nodes.empty()) << path;
    }
}

TEST(HostileModel, LoopsInConnectionsVisitEachNodeOnce) {
    // Each node is its parent's parent (or its own); the mesh inside the loop still loads,
    // once, and the walk ends.
    for (const auto& [file, mesh] : {std::pair{"connection_loop.fbx", "Self"},
                                     std::pair{"connection_loop_6100.fbx", "Mirror"}}) {
        const Imported got = Import(DataFile(file));
        EXPECT_TRUE(Once(got.m_Output, "Loading mesh: " + std::string(mesh) + "\n"))
            << got.m_Output;
        ASSERT_EQ(got.m_Model.m_Meshes.count(mesh), 1u);
        EXPECT_EQ(got.m_Model.m_Meshes.at(mesh).m_Polygons.size(), 1u);
    }
    const std::string output = Import(DataFile("connection_loop.fbx")).m_Output;
    EXPECT_TRUE(Once(output, "Loading animation: Ping\n"));
    EXPECT_TRUE(Once(output, "Loading animation: Pong\n"));
}

TEST(HostileModel, IndicesOutsideTheirArraysStillGiveTheMesh) {
    // Corner, normal, UV, material and skin indices all point past their arrays.
    const Imported got = Import(DataFile("bad_indices.fbx"));
    EXPECT_THAT(got.m_Output, HasSubstr("Loading mesh: Liar\n"));
    ASSERT_EQ(got.m_Model.m_Meshes.count("Liar"), 1u);
    const Mesh& mesh = got.m_Model.m_Meshes.at("Liar");
    ASSERT_EQ(mesh.m_Polygons.size(), 1u);
    EXPECT_EQ(mesh.Vertices(mesh.m_Polygons.front()).size(), 3u);
    // Only points of the file's three control points, or the origin for a missing one.
    for (const Vertex& vertex : mesh.Vertices(mesh.m_Polygons.front())) {
        for (float coordinate : vertex.m_Point) {
            EXPECT_TRUE(coordinate == 0.0f || coordinate == 1.0f) << coordinate;
        }
        for (const SkinInfluence& influence : mesh.Influences(vertex)) {
            EXPECT_LT(static_cast<std::size_t>(influence.m_Bone), mesh.m_BoneNames.size());
        }
    }
}

}  // namespace
