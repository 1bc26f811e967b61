// The import of model files: the console report line by line and the Model it fills, for
// files of the corpus (expected values read from its ASCII files) and files written here.
#include <cstdio>

#include "import_support.h"

namespace {

using SceneImport = ScratchTest<>;
using fbx::desc::LayerElement;
using fbx::desc::Mapping;
using Floats = std::vector<float>;

std::string Corpus(const std::string& name) {
    return std::string(ENGINE_CORPUS_DIR) + "/fbx/" + name;
}

// One field (position, colour, UV...) of every corner of a model's meshes, in order.
template <std::size_t N>
Floats Corners(const Model& model, float (Vertex::*field)[N]) {
    Floats all;
    for (const auto& [name, mesh] : model.m_Meshes) {
        for (const Polygon& polygon : mesh.m_Polygons) {
            for (const Vertex& v : mesh.Vertices(polygon)) {
                all.insert(all.end(), v.*field, v.*field + N);
            }
        }
    }
    return all;
}

TEST_F(SceneImport, CubeBecomesOneMeshOfSixQuadsTheSameFromEveryEncoding) {
    for (const char* name :
         {"maya_cube_7500_ascii.fbx", "maya_cube_7500_binary.fbx", "maya_cube_6100_ascii.fbx"}) {
        SCOPED_TRACE(name);
        const std::string path = Corpus(name);
        Model model;
        const std::string report = ImportReport(path, model);
        const std::string version = path.find("6100") == path.npos ? "7.5.0" : "6.1.0";
        EXPECT_EQ(report,
                  "FBX version number for this FBX SDK is 7.7.0\nFBX version number for file " +
                      path + " is " + version +
                      "\n\nTake Information\n    Number of takes: 1\n    Current take: \"Take "
                      "001\"\n\n    Take 0\n         Name: \"Take 001\"\n         Description: "
                      "\"\"\n         Import Name: \"Take 001\"\n         Import State: true\n\n"
                      "Mesh: 0\nLoading mesh: pCube1\nLoading material: lambert1\n");
        ASSERT_EQ(model.m_Meshes.size(), 1u);
        const Mesh& mesh = model.m_Meshes.at("pCube1");
        // PolygonVertexIndex starts 0,1,3,-3 and UVIndex 0,1,3,2. Normals by polygon vertex
        // land in the colour: the first face points along +Z.
        const Floats positions = Corners(model, &Vertex::m_Position);
        ASSERT_EQ(positions.size(), 6u * 4 * 3);  // six quads
        EXPECT_EQ(Floats(positions.begin(), positions.begin() + 12),
                  (Floats{-.5f, -.5f, .5f, .5f, -.5f, .5f, .5f, .5f, .5f, -.5f, .5f, .5f}));
        EXPECT_EQ(Corners(model, &Vertex::m_Point), positions);
        EXPECT_EQ(Corners(model, &Vertex::m_FacePoint), positions);
        const Floats colours = Corners(model, &Vertex::m_Color);
        EXPECT_EQ(Floats(colours.begin(), colours.begin() + 8), (Floats{0, 0, 1, 1, 0, 0, 1, 1}));
        const Floats uvs = Corners(model, &Vertex::m_UV);
        EXPECT_EQ(Floats(uvs.begin(), uvs.begin() + 8),
                  (Floats{0.375f, 0, 0.625f, 0, 0.625f, 0.25f, 0.375f, 0.25f}));
        EXPECT_TRUE(mesh.Vertices(mesh.m_Polygons[0]).front().m_Skin.empty());

        ASSERT_EQ(mesh.m_Materials.size(), 1u);
        const Material& m = mesh.m_Materials[0];
        EXPECT_EQ(m.m_Name, "lambert1");
        EXPECT_TRUE(m.m_Valid && !m.m_HasTexture);
        // Maya writes TransparencyFactor 1 for an opaque lambert: alpha is 1 - 1.
        EXPECT_EQ(
            (Floats{m.m_Ambient[1], m.m_Diffuse[0], m.m_Diffuse[2], m.m_Emissive[0], m.m_Alpha}),
            (Floats{0, 0.5f, 0.5f, 0, 0}));
        EXPECT_TRUE(model.m_Animations.empty());
    }
}

TEST_F(SceneImport, SkinnedMeshGetsInfluencesAndBonesAndSkeletonNodes) {
    Model model;
    const std::string report = ImportReport(Corpus("maya_transformed_skin_7700_ascii.fbx"), model);
    // Walk order: the mesh and its bones, then the skeleton root and its chain.
    std::size_t from = 0;
    for (const char* line :
         {"Loading mesh: pCube1", "Loading bones for mesh: pCube1", "Added a bone. 3 of 3",
          "Loading animation: joint1", "Loading animation: joint2", "Loading animation: joint3",
          "Added animation for joint3 with 0 keys."}) {
        from = report.find("\n" + std::string(line) + "\n", from);
        ASSERT_NE(from, std::string::npos) << line;
    }

    const Mesh& mesh = model.m_Meshes.at("pCube1");
    EXPECT_EQ(mesh.m_Bones.size(), 3u);
    EXPECT_EQ(mesh.m_BoneNames.size(), 3u);
    std::size_t influenced = 0;
    for (const Polygon& polygon : mesh.m_Polygons) {
        for (const Vertex& vertex : mesh.Vertices(polygon)) {
            float total = 0.0f;
            for (const SkinInfluence& influence : mesh.Influences(vertex)) {
                ASSERT_LT(static_cast<std::size_t>(influence.m_Bone), mesh.m_BoneNames.size());
                EXPECT_NE(influence.m_Weight, 0.0f);
                total += influence.m_Weight;
            }
            influenced += vertex.m_Skin.empty() ? 0 : 1;
            EXPECT_NEAR(total, vertex.m_Skin.empty() ? 0.0f : 1.0f, 1e-3f);  // normalised by Maya
        }
    }
    EXPECT_GT(influenced, 0u);

    ASSERT_EQ(model.m_Nodes.size(), 3u);
    EXPECT_EQ(model.m_Nodes.at("joint1").m_Parent, "");
    EXPECT_EQ(model.m_Nodes.at("joint2").m_Parent, "joint1");
    EXPECT_EQ(model.m_Nodes.at("joint3").m_Parent, "joint2");
    EXPECT_EQ(model.m_Animations.size(), 3u);
}

TEST_F(SceneImport, VersionOutOfRangePrintsBothVersionLines) {
    std::string cube = ReadText(Corpus("maya_cube_7500_ascii.fbx"));
    cube.replace(cube.find("FBXVersion: 7500"), 16, "FBXVersion: 8000");
    const std::string future = Write("future.fbx", cube);
    Model model;
    const std::string report = ImportReport(future, model);
    const std::string versions =
        "\n\nFBX version number for this FBX SDK is 7.7.0\nFBX version number for file " + future +
        " is 8.0.0\n\n";
    EXPECT_EQ(report.rfind("Call to KFbxImporter::Initialize() failed.\nError returned: ", 0), 0u);
    EXPECT_EQ(report.rfind(versions), report.size() - versions.size()) << report;
    EXPECT_TRUE(model.m_Meshes.empty());
}

TEST_F(SceneImport, PasswordIsAskedForOnceAndChecked) {
    // A copy of the ASCII cube protected by the password "opensesame".
    std::string text = ReadText(Corpus("maya_cube_7500_ascii.fbx"));
    text.insert(text.find("FBXVersion: 7500\n") + 17,
                "\tEncryptionType: 1\n\tPasswordHash: \"7a9214a9c2bf1ce7\"\n");
    const std::string file = Write("protected.fbx", text);
    const std::string prompt = "Please enter password: ";
    for (const bool right : {true, false}) {
        const std::string answer = right ? "opensesame\n" : "letmein\nopensesame\n";
        EXPECT_NE(std::freopen(Write("answer.txt", answer).c_str(), "r", stdin), nullptr);
        Model model;
        const std::string report = ImportReport(file, model);
        // One retry only: the prompt appears once, and nothing is loaded after a wrong answer.
        EXPECT_NE(report.find(prompt), std::string::npos);
        EXPECT_EQ(report.find(prompt), report.rfind(prompt));
        EXPECT_EQ(
            report.find(prompt + "\nPassword is wrong, import aborted.\n") != std::string::npos,
            !right);
        EXPECT_EQ(model.m_Meshes.size(), right ? 1u : 0u);
    }
}

TEST_F(SceneImport, NodeTypesAreReportedInWalkOrder) {
    // The root's children: Null, Mesh, Bone (a LimbNode), Camera, Light, StereoCamera,
    // NurbsCurve, NurbsSurface, NurbsTrim, LodGroup with LOD_0 and LOD_1 (Nulls with spheres).
    Model model;
    const std::string report =
        ImportReport(Corpus("maya_node_attribute_zoo_7500_ascii.fbx"), model);
    const std::string takesEnd = "Import State: true\n\n";  // the node walk follows
    EXPECT_EQ(report.substr(report.find(takesEnd) + takesEnd.size()),
              "NULL:\nMesh: 0\nLoading mesh: Mesh\nLoading material: lambert1\nLoading "
              "animation: Bone\nAdded animation for Bone with 0 keys.\nCAMERA:\nLIGHT:\nCAMERA:\n"
              "NURBS_CURVE:\nNURBS_SURFACE:\nSomething: 14\nSomething: 18\nNULL:\nMesh: 0\n"
              "Loading mesh: pSphere1\nLoading material: lambert1\nNULL:\nMesh: 0\nLoading "
              "mesh: pSphere1\nLoading material: lambert1\n");
    // The second sphere has the first one's name, so only one of them is kept.
    EXPECT_EQ(model.m_Meshes.size(), 2u);
    EXPECT_EQ(model.m_Meshes.count("pSphere1"), 1u);
}

TEST_F(SceneImport, TakesFollowOneAnotherInTheKeyFrames) {
    // "Middle" has scaling curves in all four takes, with 1, 1, 1 and 2 keys on X; the
    // scaling X curve decides how many key frames each take gives.
    Model model;
    const std::string report = ImportReport(Corpus("blender_279_sausage_6100_ascii.fbx"), model);
    EXPECT_NE(report.find("Added animation for Middle with 5 keys.\n"), std::string::npos);
    const Animation& middle = model.m_Animations.at("Middle");
    ASSERT_EQ(middle.m_Keys.size(), 5u);
    for (const KeyFrame& key : middle.m_Keys) {
        EXPECT_TRUE(key.m_HasTranslation && key.m_HasRotation && key.m_HasScale);
        EXPECT_EQ(key.m_RotationAngle, 0.0f);
    }
    EXPECT_FLOAT_EQ(middle.m_Keys[0].m_Scale[0], 0.999999940395355f);
    EXPECT_FLOAT_EQ(middle.m_Keys[4].m_Scale[0], 1.0f);  // "Wiggle", second key
}

// A layer element of the given values, indexed (index to direct) when indices are given.
LayerElement Element(std::vector<double> direct, std::vector<std::int32_t> index,
                     Mapping mapping = Mapping::ByPolygonVertex) {
    using fbx::desc::Reference;
    return {"", mapping, index.empty() ? Reference::Direct : Reference::IndexToDirect,
            std::move(direct), std::move(index)};
}

TEST_F(SceneImport, LayersGiveEachCornerItsNormalAsColourAndItsUV) {
    const LayerElement uv = Element({0, 0, 1, 0, 1, 1, 0, 1}, {1, 2, 3, 0});
    const LayerElement later = Element({5, 5, 6, 6, 7, 7, 8, 8}, {3, 2, 1, 0});
    const LayerElement byPoint =
        Element({5, 5, 6, 6, 7, 7, 8, 8}, {3, 2, 1, 0}, Mapping::ByControlPoint);
    // The normals are front (0, 0, 1) and up; corner 0 takes up, the others front.
    const Floats lit = {0, 1, 0, 1, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 1, 1};
    const Floats grey = {.7f, .7f, .7f, 1, .7f, .7f, .7f, 1, .7f, .7f, .7f, 1, .7f, .7f, .7f, 1};
    const struct {
        std::vector<LayerElement> layers;  // of UVs
        bool plainIndex;                   // every IndexToDirect of the file rewritten as Index
        Floats colours, uvs;
    } cases[] = {
        {{uv}, false, lit, {1, 0, 1, 1, 0, 1, 0, 0}},
        // By polygon vertex, a later layer is read at the first layer's UV indices...
        {{uv, later}, false, lit, {6, 6, 7, 7, 8, 8, 5, 5}},
        // ...by control point, through its own.
        {{uv, byPoint}, false, lit, {8, 8, 7, 7, 6, 6, 5, 5}},
        // Elements with Index reference are not read.
        {{uv}, true, grey, Floats(8, -1.0f)},
    };
    for (const auto& c : cases) {
        fbx::SceneDescription scene;
        fbx::desc::Mesh& mesh = scene.nodes[scene.AddNode("Quad", fbx::desc::NodeType::Mesh)].mesh;
        mesh.controlPoints = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
        mesh.polygons = {{0, 1, 2, 3}};
        mesh.normals = {Element({0, 0, 1, 0, 1, 0}, {1, 0, 0, 0})};
        mesh.uvs = c.layers;
        std::string text = ReadText(WriteScene(scene, false));
        for (std::size_t at; c.plainIndex && (at = text.find("IndexToDirect")) != text.npos;) {
            text.replace(at, 13, "Index");
        }
        Model model;
        ImportReport(Write("quad.fbx", text), model);
        EXPECT_EQ(Corners(model, &Vertex::m_Color), c.colours) << &c - cases;
        EXPECT_EQ(Corners(model, &Vertex::m_UV), c.uvs) << &c - cases;
    }
}

}  // namespace
