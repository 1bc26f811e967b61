// Damaged and foreign model files named by a state's "URL": each import ends with a message
// or a partial model, never a crash, a hang or a runaway allocation.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "hostile_support.h"
#include "import/SceneImport.h"
#include "model/Model.h"

namespace {

struct Imported {
    std::string m_Output;
    Model m_Model;
};

Imported Import(const std::string& path) {
    Imported result;
    result.m_Output = CapturedOutput([&] { ImportModelFile(path, &result.m_Model); });
    return result;
}

std::size_t Occurrences(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

// A binary file with one mesh geometry whose "Vertices" value is the given array.
std::string BinaryWithVertices(const std::string& array) {
    const BinaryRecord version{"FBXVersion", std::string("I\xe8\x1c\0\0", 5), {}, 1};
    const BinaryRecord vertices{"Vertices", array, {}, 1};
    const BinaryRecord geometry{
        "Geometry",
        EncodeInt64(5) + EncodeString(std::string("Geo\0\1Geometry", 13)) + EncodeString("Mesh"),
        {vertices},
        3};
    return BinaryFbx({BinaryRecord{"FBXHeaderExtension", "", {version}, 0},
                      BinaryRecord{"Objects", "", {geometry}, 0}});
}

TEST(HostileModel, FilesThatAreNoModelSayWhyAndLeaveAnEmptyModel) {
    ScratchDir dir;
    const std::string missing = dir.Path("Assets/models/missing.fbx");
    Imported got = Import(missing);
    EXPECT_EQ(got.m_Output, "Failed to open " + missing + ".\n");
    EXPECT_TRUE(got.m_Model.m_Meshes.empty());

    // A folder is refused as one; an empty file and a picture renamed to .fbx as no model.
    got = Import(dir.Root().string());
    EXPECT_EQ(got.m_Output,
              "Call to KFbxImporter::Initialize() failed.\n"
              "Error returned: Not a regular file: " +
                  dir.Root().string() + "\n\n");
    for (const std::string& path : {dir.Write("empty.fbx", ""), DataFile("not_a_model.fbx")}) {
        got = Import(path);
        EXPECT_EQ(got.m_Output,
                  "Call to KFbxImporter::Initialize() failed.\n"
                  "Error returned: Not an FBX file: " +
                      path + "\n\n");
        EXPECT_TRUE(got.m_Model.m_Meshes.empty()) << path;
        EXPECT_TRUE(got.m_Model.m_Nodes.empty()) << path;
    }
}

TEST(HostileModel, CountsFarBeyondTheFileGiveAnEmptyModel) {
    ScratchDir dir;
    const std::vector<std::pair<std::string, std::string>> files = {
        {"ascii", ReadWholeFile(DataFile("huge_counts.fbx"))},
        // Two billion doubles claimed, 24 bytes present.
        {"raw", BinaryWithVertices(EncodeArray('d', 0x7FFFFFFF, 0, std::string(24, '\0')))},
        // A deflate stream of six bytes that claims to inflate to two gigabytes.
        {"deflate",
         BinaryWithVertices(EncodeArray('d', 0x10000000, 1, "\x78\x9c\x63\x60\x00\x00"))},
        // An array whose byte length runs past the end of the file.
        {"past_end",
         BinaryWithVertices(EncodeArray('d', 3, 0, std::string(24, '\0'))).substr(0, 120)},
    };
    for (const auto& [name, bytes] : files) {
        const std::string path = dir.Write(name + ".fbx", bytes);
        const Imported got = Import(path);
        // The file is recognised (its version is reported) but yields no mesh.
        EXPECT_NE(got.m_Output.find("FBX version number for file " + path), std::string::npos)
            << name << ":\n"
            << got.m_Output;
        EXPECT_EQ(got.m_Output.find("Loading mesh"), std::string::npos) << name;
        EXPECT_TRUE(got.m_Model.m_Meshes.empty()) << name;
    }
}

TEST(HostileModel, DeepNestingEndsTheImportWithoutExhaustingTheStack) {
    ScratchDir dir;
    const std::vector<std::pair<std::string, std::string>> files = {
        {"ascii_closed", DeepAsciiFbx(200000, true)},
        {"ascii_open", DeepAsciiFbx(200000, false)},
        {"binary", DeepBinaryFbx(100000)},
    };
    for (const auto& [name, bytes] : files) {
        const Imported got = Import(dir.Write(name + ".fbx", bytes));
        EXPECT_NE(got.m_Output.find("Take Information"), std::string::npos) << name;
        EXPECT_TRUE(got.m_Model.m_Meshes.empty()) << name;
        EXPECT_TRUE(got.m_Model.m_Nodes.empty()) << name;
    }
}

TEST(HostileModel, LoopsInConnectionsVisitEachNodeOnce) {
    // Each node is its parent's parent (or its own); the mesh inside the loop still loads,
    // once, and the walk ends.
    Imported got = Import(DataFile("connection_loop.fbx"));
    EXPECT_EQ(Occurrences(got.m_Output, "Loading mesh: Self\n"), 1u) << got.m_Output;
    ASSERT_EQ(got.m_Model.m_Meshes.count("Self"), 1u);
    EXPECT_EQ(got.m_Model.m_Meshes.at("Self").m_Polygons.size(), 1u);
    EXPECT_EQ(Occurrences(got.m_Output, "Loading animation: Ping\n"), 1u);
    EXPECT_EQ(Occurrences(got.m_Output, "Loading animation: Pong\n"), 1u);

    got = Import(DataFile("connection_loop_6100.fbx"));
    EXPECT_EQ(Occurrences(got.m_Output, "Loading mesh: Mirror\n"), 1u) << got.m_Output;
    ASSERT_EQ(got.m_Model.m_Meshes.count("Mirror"), 1u);
    EXPECT_EQ(got.m_Model.m_Meshes.at("Mirror").m_Polygons.size(), 1u);
}

TEST(HostileModel, IndicesOutsideTheirArraysStillGiveTheMesh) {
    // Corner, normal, UV, material and skin indices all point past their arrays.
    const Imported got = Import(DataFile("bad_indices.fbx"));
    EXPECT_NE(got.m_Output.find("Loading mesh: Liar\n"), std::string::npos) << got.m_Output;
    ASSERT_EQ(got.m_Model.m_Meshes.count("Liar"), 1u);
    const Mesh& mesh = got.m_Model.m_Meshes.at("Liar");
    ASSERT_EQ(mesh.m_Polygons.size(), 1u);
    EXPECT_EQ(mesh.m_Polygons.front().m_Vertices.size(), 3u);
    // Only points of the file's three control points, or the origin for a missing one.
    for (const Vertex& vertex : mesh.m_Polygons.front().m_Vertices) {
        for (float coordinate : vertex.m_Point) {
            EXPECT_TRUE(coordinate == 0.0f || coordinate == 1.0f) << coordinate;
        }
        for (const SkinInfluence& influence : vertex.m_Skin) {
            EXPECT_LT(static_cast<std::size_t>(influence.m_Bone), mesh.m_BoneNames.size());
        }
    }
}

}  // namespace
