// The import of real model files: the console report line by line and the Model it fills.
// Expected values are read from the ASCII files of the corpus.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "import/SceneImport.h"
#include "model/Model.h"

namespace {

namespace fs = std::filesystem;

std::string Corpus(const std::string& name) { return std::string(ENGINE_CORPUS_DIR) + "/fbx/" + name; }

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

// Imports a file as a state does and returns its console report.
std::string Import(const std::string& path, Model& model) {
    ::testing::internal::CaptureStdout();
    ImportModelFile(path, &model);
    return ::testing::internal::GetCapturedStdout();
}

const Vertex& VertexAt(const Polygon& polygon, std::size_t k) {
    auto it = polygon.m_Vertices.begin();
    std::advance(it, k);
    return *it;
}

TEST(SceneImport, CubeReportFollowsTheFile) {
    for (const char* name : {"maya_cube_7500_ascii.fbx", "maya_cube_7500_binary.fbx"}) {
        SCOPED_TRACE(name);
        const std::string path = Corpus(name);
        Model model;
        const std::vector<std::string> lines = Lines(Import(path, model));
        const std::vector<std::string> expected = {
            "FBX version number for this FBX SDK is 7.7.0",
            "FBX version number for file " + path + " is 7.5.0",
            "",
            "Take Information",
            "    Number of takes: 1",
            "    Current take: \"Take 001\"",
            "",
            "    Take 0",
            "         Name: \"Take 001\"",
            "         Description: \"\"",
            "         Import Name: \"Take 001\"",
            "         Import State: true",
            "",
            "Mesh: 0",
            "Loading mesh: pCube1",
            "Loading material: lambert1",
        };
        EXPECT_EQ(lines, expected);
    }
}

TEST(SceneImport, CubeBecomesOneMeshOfSixQuads) {
    Model model;
    Import(Corpus("maya_cube_7500_ascii.fbx"), model);
    ASSERT_EQ(model.m_Meshes.size(), 1u);
    const Mesh& mesh = model.m_Meshes.at("pCube1");
    EXPECT_EQ(mesh.m_NodeName, "pCube1");
    EXPECT_EQ(mesh.m_DisplayList, -1);
    ASSERT_EQ(mesh.m_Polygons.size(), 6u);
    for (const Polygon& polygon : mesh.m_Polygons) {
        EXPECT_EQ(polygon.m_Vertices.size(), 4u);
        EXPECT_EQ(polygon.m_Normal[0], -1.0f);  // computed when first drawn
    }
    // PolygonVertexIndex starts 0,1,3,-3: control points 0, 1, 3, 2.
    const Polygon& first = mesh.m_Polygons[0];
    const Vertex& v0 = VertexAt(first, 0);
    EXPECT_FLOAT_EQ(v0.m_Position[0], -0.5f);
    EXPECT_FLOAT_EQ(v0.m_Position[1], -0.5f);
    EXPECT_FLOAT_EQ(v0.m_Position[2], 0.5f);
    const Vertex& v2 = VertexAt(first, 2);
    EXPECT_FLOAT_EQ(v2.m_Point[0], 0.5f);
    EXPECT_FLOAT_EQ(v2.m_FacePoint[1], 0.5f);
    EXPECT_FLOAT_EQ(v2.m_Position[2], 0.5f);
    // Normals by polygon vertex land in the colour: the first face points along +Z.
    EXPECT_FLOAT_EQ(v0.m_Color[0], 0.0f);
    EXPECT_FLOAT_EQ(v0.m_Color[1], 0.0f);
    EXPECT_FLOAT_EQ(v0.m_Color[2], 1.0f);
    // UVs through UVIndex 0,1,3,2: (0.375, 0) and (0.625, 0.25).
    EXPECT_FLOAT_EQ(v0.m_UV[0], 0.375f);
    EXPECT_FLOAT_EQ(v0.m_UV[1], 0.0f);
    EXPECT_FLOAT_EQ(v2.m_UV[0], 0.625f);
    EXPECT_FLOAT_EQ(v2.m_UV[1], 0.25f);
    EXPECT_TRUE(v0.m_Skin.empty());

    ASSERT_EQ(mesh.m_Materials.size(), 1u);
    const Material& material = mesh.m_Materials[0];
    EXPECT_EQ(material.m_Name, "lambert1");
    EXPECT_TRUE(material.m_Valid);
    EXPECT_FALSE(material.m_HasTexture);
    EXPECT_FLOAT_EQ(material.m_Diffuse[0], 0.5f);
    EXPECT_FLOAT_EQ(material.m_Ambient[1], 0.0f);
    // Maya writes TransparencyFactor 1 for an opaque lambert: alpha is 1 - 1.
    EXPECT_FLOAT_EQ(material.m_Alpha, 0.0f);
    EXPECT_TRUE(model.m_Animations.empty());
}

TEST(SceneImport, SameSceneGivesSameModelFromEveryEncoding) {
    Model ascii, binary, older;
    Import(Corpus("maya_cube_7500_ascii.fbx"), ascii);
    Import(Corpus("maya_cube_7500_binary.fbx"), binary);
    Import(Corpus("maya_cube_6100_ascii.fbx"), older);
    for (const Model* other : {&binary, &older}) {
        ASSERT_EQ(other->m_Meshes.size(), ascii.m_Meshes.size());
        const Mesh& a = ascii.m_Meshes.begin()->second;
        const Mesh& b = other->m_Meshes.begin()->second;
        ASSERT_EQ(a.m_Polygons.size(), b.m_Polygons.size());
        for (std::size_t p = 0; p < a.m_Polygons.size(); ++p) {
            ASSERT_EQ(a.m_Polygons[p].m_Vertices.size(), b.m_Polygons[p].m_Vertices.size());
            auto vb = b.m_Polygons[p].m_Vertices.begin();
            for (const Vertex& va : a.m_Polygons[p].m_Vertices) {
                for (int i = 0; i < 3; ++i) EXPECT_FLOAT_EQ(va.m_Position[i], vb->m_Position[i]);
                for (int i = 0; i < 2; ++i) EXPECT_FLOAT_EQ(va.m_UV[i], vb->m_UV[i]);
                ++vb;
            }
        }
    }
}

TEST(SceneImport, SkinnedMeshGetsInfluencesAndBonesAndSkeletonNodes) {
    Model model;
    const std::vector<std::string> lines =
        Lines(Import(Corpus("maya_transformed_skin_7700_ascii.fbx"), model));
    // Walk order: the mesh, then the skeleton root and its chain.
    auto at = [&](const std::string& line) {
        for (std::size_t i = 0; i < lines.size(); ++i)
            if (lines[i] == line) return static_cast<int>(i);
        return -1;
    };
    ASSERT_GE(at("Loading mesh: pCube1"), 0);
    EXPECT_GE(at("Loading bones for mesh: pCube1"), 0);
    EXPECT_GE(at("Added a bone. 3 of 3"), 0);
    EXPECT_LT(at("Loading mesh: pCube1"), at("Loading animation: joint1"));
    EXPECT_LT(at("Loading animation: joint1"), at("Loading animation: joint2"));
    EXPECT_LT(at("Loading animation: joint2"), at("Loading animation: joint3"));
    EXPECT_GE(at("Added animation for joint3 with 0 keys."), 0);

    const Mesh& mesh = model.m_Meshes.at("pCube1");
    EXPECT_EQ(mesh.m_Bones.size(), 3u);
    EXPECT_EQ(mesh.m_BoneNames.size(), 3u);
    std::size_t influenced = 0;
    for (const Polygon& polygon : mesh.m_Polygons) {
        for (const Vertex& vertex : polygon.m_Vertices) {
            float total = 0.0f;
            for (const SkinInfluence& influence : vertex.m_Skin) {
                ASSERT_GE(influence.m_Bone, 0);
                ASSERT_LT(static_cast<std::size_t>(influence.m_Bone), mesh.m_BoneNames.size());
                EXPECT_NE(influence.m_Weight, 0.0f);
                total += influence.m_Weight;
            }
            if (!vertex.m_Skin.empty()) {
                ++influenced;
                EXPECT_NEAR(total, 1.0f, 1e-3f);  // Maya normalises skin weights
            }
        }
    }
    EXPECT_GT(influenced, 0u);

    ASSERT_EQ(model.m_Nodes.size(), 3u);
    EXPECT_EQ(model.m_Nodes.at("joint1").m_Parent, "");
    EXPECT_EQ(model.m_Nodes.at("joint2").m_Parent, "joint1");
    EXPECT_EQ(model.m_Nodes.at("joint3").m_Parent, "joint2");
    EXPECT_EQ(model.m_Animations.size(), 3u);
}

TEST(SceneImport, MissingAndForeignFilesLeaveAnEmptyModel) {
    Model model;
    const std::string missing = "/no/such/model.fbx";
    EXPECT_EQ(Import(missing, model), "Failed to open " + missing + ".\n");
    EXPECT_TRUE(model.m_Meshes.empty());

    const fs::path text = fs::temp_directory_path() / "import_tests_not_fbx.txt";
    std::ofstream(text) << "just some words, not a model\n";
    const std::vector<std::string> lines = Lines(Import(text.string(), model));
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[0], "Call to KFbxImporter::Initialize() failed.");
    EXPECT_EQ(lines[1].rfind("Error returned: ", 0), 0u);
    EXPECT_TRUE(model.m_Meshes.empty());
    fs::remove(text);
}

TEST(SceneImport, VersionOutOfRangePrintsBothVersionLines) {
    // A copy of the ASCII cube claiming version 8000.
    std::ifstream in(Corpus("maya_cube_7500_ascii.fbx"));
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const std::string from = "FBXVersion: 7500";
    ASSERT_NE(text.find(from), std::string::npos);
    text.replace(text.find(from), from.size(), "FBXVersion: 8000");
    const fs::path path = fs::temp_directory_path() / "import_tests_future.fbx";
    std::ofstream(path) << text;

    Model model;
    const std::vector<std::string> lines = Lines(Import(path.string(), model));
    ASSERT_EQ(lines.size(), 6u);
    EXPECT_EQ(lines[0], "Call to KFbxImporter::Initialize() failed.");
    EXPECT_EQ(lines[3], "FBX version number for this FBX SDK is 7.7.0");
    EXPECT_EQ(lines[4], "FBX version number for file " + path.string() + " is 8.0.0");
    fs::remove(path);
}

}  // namespace

namespace {

// A copy of the ASCII cube protected by the password "opensesame".
fs::path WriteProtectedCube() {
    std::ifstream in(Corpus("maya_cube_7500_ascii.fbx"));
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const std::string anchor = "FBXVersion: 7500\n";
    text.insert(text.find(anchor) + anchor.size(),
                "\tEncryptionType: 1\n\tPasswordHash: \"7a9214a9c2bf1ce7\"\n");
    const fs::path path = fs::temp_directory_path() / "import_tests_protected.fbx";
    std::ofstream(path) << text;
    return path;
}

// Runs the import with standard input reading the given text.
std::string ImportWithInput(const fs::path& file, const std::string& input, Model& model) {
    const fs::path answer = fs::temp_directory_path() / "import_tests_answer.txt";
    std::ofstream(answer) << input;
    EXPECT_NE(std::freopen(answer.string().c_str(), "r", stdin), nullptr);
    const std::string report = Import(file.string(), model);
    fs::remove(answer);
    return report;
}

TEST(SceneImport, PasswordIsAskedForOnceAndChecked) {
    const fs::path file = WriteProtectedCube();

    Model right;
    std::string report = ImportWithInput(file, "opensesame\n", right);
    EXPECT_NE(report.find("Please enter password: "), std::string::npos);
    EXPECT_EQ(report.find("Password is wrong"), std::string::npos);
    EXPECT_EQ(right.m_Meshes.size(), 1u);

    Model wrong;
    report = ImportWithInput(file, "letmein\nopensesame\n", wrong);
    EXPECT_NE(report.find("Please enter password: \nPassword is wrong, import aborted.\n"),
              std::string::npos);
    // One retry only: the prompt appears once, and nothing is loaded.
    EXPECT_EQ(report.find("Please enter password: "), report.rfind("Please enter password: "));
    EXPECT_TRUE(wrong.m_Meshes.empty());
    fs::remove(file);
}

}  // namespace

namespace {

// The report lines that the node walk prints, without the version and take lines before it.
std::vector<std::string> WalkLines(const std::string& report) {
    std::vector<std::string> lines = Lines(report);
    std::size_t first = 0;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].rfind("         Import State:", 0) == 0) first = i + 2;
    }
    return std::vector<std::string>(lines.begin() + static_cast<long>(first), lines.end());
}

TEST(SceneImport, NodeTypesAreReportedInWalkOrder) {
    // The root's children as the file connects them: Null, Mesh, Bone (a LimbNode), Camera,
    // Light, StereoCamera, NurbsCurve, NurbsSurface, NurbsTrim, LodGroup with LOD_0 and LOD_1,
    // each a Null holding a sphere mesh.
    Model model;
    const std::vector<std::string> walk =
        WalkLines(Import(Corpus("maya_node_attribute_zoo_7500_ascii.fbx"), model));
    const std::vector<std::string> expected = {
        "NULL:",
        "Mesh: 0",
        "Loading mesh: Mesh",
        "Loading material: lambert1",
        "Loading animation: Bone",
        "Added animation for Bone with 0 keys.",
        "CAMERA:",
        "LIGHT:",
        "CAMERA:",
        "NURBS_CURVE:",
        "NURBS_SURFACE:",
        "Something: 14",
        "Something: 18",
        "NULL:",
        "Mesh: 0",
        "Loading mesh: pSphere1",
        "Loading material: lambert1",
        "NULL:",
        "Mesh: 0",
        "Loading mesh: pSphere1",
        "Loading material: lambert1",
    };
    EXPECT_EQ(walk, expected);
    // The second sphere has the first one's name, so only one of them is kept.
    EXPECT_EQ(model.m_Meshes.size(), 2u);
    EXPECT_EQ(model.m_Meshes.count("pSphere1"), 1u);
}

TEST(SceneImport, TakesFollowOneAnotherInTheKeyFrames) {
    // "Middle" has scaling curves in all four takes, with 1, 1, 1 and 2 keys on X; the
    // scaling X curve decides how many key frames each take gives.
    Model model;
    const std::string report = Import(Corpus("blender_279_sausage_6100_ascii.fbx"), model);
    EXPECT_NE(report.find("Added animation for Middle with 5 keys.\n"), std::string::npos);
    const Animation& middle = model.m_Animations.at("Middle");
    ASSERT_EQ(middle.m_Keys.size(), 5u);
    for (const KeyFrame& key : middle.m_Keys) {
        EXPECT_TRUE(key.m_HasTranslation);
        EXPECT_TRUE(key.m_HasRotation);
        EXPECT_TRUE(key.m_HasScale);
        EXPECT_EQ(key.m_RotationAngle, 0.0f);
    }
    EXPECT_FLOAT_EQ(middle.m_Keys[0].m_Scale[0], 0.999999940395355f);
    EXPECT_FLOAT_EQ(middle.m_Keys[4].m_Scale[0], 1.0f);  // "Wiggle", second key
}

}  // namespace
