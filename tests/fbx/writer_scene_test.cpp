// Described scenes written in both layouts and both encodings, parsed back: the records that
// carry the content (geometry, names, connections, skins, keys) hold what was described, and
// the sections come in the same order as in files written by the vendor's tools.
#include <gtest/gtest.h>

#include <map>

#include "fbx/sdk/Importer.h"
#include "fbx/format/Encode.h"
#include "fbx/write/WriterScene.h"
#include "fbx/write/WriterSynthetic.h"
#include "writer_support.h"

namespace fbx::test {
namespace {

SceneDescription TestScene() {
    SceneDescription scene;
    const int mesh = scene.AddNode("Body", desc::NodeType::Mesh);
    desc::Mesh& m = scene.nodes[mesh].mesh;
    m.controlPoints = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {2, 0, 0.5}};
    m.polygons = {{0, 1, 2, 3}, {1, 4, 2}, {4}, {3, 4}};  // a quad, a triangle, a point, a line
    desc::LayerElement normals;
    normals.mapping = desc::Mapping::ByControlPoint;
    for (int i = 0; i < 5; ++i)
        normals.direct.insert(normals.direct.end(), {0, 0, 1});
    m.normals.push_back(normals);
    for (int layer = 0; layer < 2; ++layer) {
        desc::LayerElement uv;
        uv.name = layer ? "second" : "map1";
        uv.reference = desc::Reference::IndexToDirect;
        uv.direct = {0, 0, 1, 0, 1, 1};
        uv.index = {0, 1, 2, 0, 1, 2, 1, 2, 0, 1};
        m.uvs.push_back(uv);
    }
    desc::LayerElement colors;
    colors.mapping = desc::Mapping::ByPolygon;
    colors.direct = {1, 0, 0, 1, 0, 1, 0, 1, 0, 0, 1, 1, 1, 1, 1, 0.5};
    m.colors.push_back(colors);
    desc::MaterialElement materials;
    materials.mapping = desc::Mapping::ByPolygon;
    materials.indices = {0, 1, 1, 0};
    m.materials.push_back(materials);

    const int hip = scene.AddNode("Hip", desc::NodeType::Skeleton);
    const int knee = scene.AddNode("Knee", desc::NodeType::Skeleton, hip);
    scene.nodes[knee].translation = {0, -1.5, 0.25};
    scene.AddNode("Eye", desc::NodeType::Camera);
    scene.AddNode("Sun", desc::NodeType::Light);
    scene.AddNode("Hip", desc::NodeType::Null);  // a repeated name
    scene.nodes[mesh].materials = {0, 1};
    desc::Cluster c0, c1;
    c0.linkNode = hip;
    c0.indexes = {0, 1, 2};
    c0.weights = {1, 0.75, 0.5};
    c1.linkNode = knee;
    c1.indexes = {1, 2, 3, 4};
    c1.weights = {0.25, 0.5, 1, 1};
    c1.transformLink[13] = -1.5;
    scene.nodes[mesh].skin.clusters = {c0, c1};

    desc::Material skin;
    skin.name = "Skin \"matte\"";
    skin.diffuse = {0.9, 0.7, 0.6};
    skin.diffuseTextures = {0};
    desc::Material metal;
    metal.name = "Metal";
    metal.shading = desc::ShadingModel::Phong;
    metal.shininess = 64;
    metal.diffuseTextures = {0, 1};
    scene.materials = {skin, metal};
    desc::Texture t0, t1;
    t0.name = "skin";
    t0.fileName = "C:/art/skin.bmp";
    t0.relativeFileName = "skin.bmp";
    t0.uvScaling = {2, 3};
    t1.name = "scratches";
    t1.fileName = "C:/art/scratches.bmp";
    t1.relativeFileName = "scratches.bmp";
    scene.textures = {t0, t1};

    desc::Take walk;
    walk.name = "Walk";
    desc::NodeAnimation a;
    a.node = knee;
    a.rotation[0].times = {0, 1924423250, 3848846500};
    a.rotation[0].values = {0, 45, -30.5};
    walk.nodes.push_back(a);
    desc::Take idle;
    idle.name = "Idle";
    desc::NodeAnimation b;
    b.node = mesh;
    b.translation[1].times = {0, 46186158000};
    b.translation[1].values = {0.25, 1};
    idle.nodes.push_back(b);
    scene.takes = {walk, idle};
    scene.password = "open sesame";
    return scene;
}

struct Combination {
    int version;
    bool binary;
};

std::string Describe(const ::testing::TestParamInfo<Combination>& info) {
    return std::to_string(info.param.version) + (info.param.binary ? "Binary" : "Ascii");
}

class SceneRoundTrip : public ::testing::TestWithParam<Combination> {
protected:
    void SetUp() override {
        m_Scene = TestScene();
        Document doc = BuildDocument(m_Scene, Version(), Binary());
        ParseResult parsed = Binary() ? ParseBytes(WriteBinary(doc)) : ParseText(WriteAscii(doc));
        ASSERT_TRUE(parsed.ok) << parsed.error;
        m_Doc = std::move(parsed.document);
        ASSERT_NE(nullptr, m_Doc.root.Child("Objects"));
        ASSERT_NE(nullptr, m_Doc.root.Child("Connections"));
    }
    int Version() const { return GetParam().version; }
    bool Binary() const { return GetParam().binary; }
    std::string Name(const char* cls, const char* name) const {
        return ObjectName(cls, name, Binary());
    }
    const Record& Objects() const { return *m_Doc.root.Child("Objects"); }
    // The object record whose name value (index 0 in 6100, 1 in 7500) matches.
    const Record* FindObject(const char* recordName, const std::string& name) const {
        const std::size_t at = Version() < 7000 ? 0 : 1;
        for (const Record* r : Objects().Children(recordName)) {
            if (r->TextAt(at) == name)
                return r;
        }
        return nullptr;
    }
    const Record* MeshRecord() const {
        return Version() < 7000 ? FindObject("Model", Name("Model", "Body"))
                                : FindObject("Geometry", Name("Geometry", "Body"));
    }
    // Connections as child -> parents, by name (6100) or id (7500).
    std::multimap<std::string, std::string> Links(const char* type = "OO") const {
        std::multimap<std::string, std::string> links;
        for (const Record& c : m_Doc.root.Child("Connections")->children) {
            if (c.TextAt(0) != type)
                continue;
            if (Version() < 7000) {
                links.emplace(c.TextAt(1),
                              c.TextAt(2) + (c.values.size() > 3 ? "|" + c.TextAt(3) : ""));
            } else {
                links.emplace(
                    std::to_string(c.IntAt(1)),
                    std::to_string(c.IntAt(2)) + (c.values.size() > 3 ? "|" + c.TextAt(3) : ""));
            }
        }
        return links;
    }
    std::string Key(const char* recordName, const std::string& name) const {
        const Record* r = FindObject(recordName, name);
        if (!r)
            return "?";
        return Version() < 7000 ? name : std::to_string(r->IntAt(0));
    }
    bool Linked(const std::string& child, const std::string& parent) const {
        auto links = Links(parent.find('|') == std::string::npos ? "OO" : "OP");
        auto range = links.equal_range(child);
        for (auto it = range.first; it != range.second; ++it) {
            if (it->second == parent)
                return true;
        }
        return false;
    }

    SceneDescription m_Scene;
    Document m_Doc;
};

TEST_P(SceneRoundTrip, SectionsComeInTheOrderRealFilesUse) {
    const bool modern = Version() >= 7000;
    std::string corpus = std::string(ENGINE_CORPUS_DIR) + "/fbx/maya_cube_" +
                         (modern ? "7500" : "6100") + (Binary() ? "_binary.fbx" : "_ascii.fbx");
    ParseResult real = ParseFile(corpus);
    ASSERT_TRUE(real.ok) << real.error;
    std::vector<std::string> expected, written;
    for (const Record& r : real.document.root.children)
        expected.push_back(r.name);
    for (const Record& r : m_Doc.root.children)
        written.push_back(r.name);
    EXPECT_EQ(expected, written);
    EXPECT_EQ(static_cast<std::uint32_t>(Version()), m_Doc.version);
    EXPECT_EQ(Version(), m_Doc.root.Child("FBXHeaderExtension")->ChildInt("FBXVersion"));
}

TEST_P(SceneRoundTrip, MeshGeometryAndLayersReadBack) {
    const Record* mesh = MeshRecord();
    ASSERT_NE(nullptr, mesh);
    EXPECT_EQ(std::vector<double>({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 2, 0, 0.5}),
              mesh->Child("Vertices")->Doubles());
    EXPECT_EQ(std::vector<std::int64_t>({0, 1, 2, -4, 1, 4, -3, -5, 3, -5}),
              mesh->Child("PolygonVertexIndex")->Ints());
    auto uvs = mesh->Children("LayerElementUV");
    ASSERT_EQ(2u, uvs.size());
    EXPECT_EQ(1, uvs[1]->IntAt(0));
    EXPECT_EQ("second", uvs[1]->ChildText("Name"));
    EXPECT_EQ("IndexToDirect", uvs[1]->ChildText("ReferenceInformationType"));
    EXPECT_EQ(10u, uvs[1]->Child("UVIndex")->NumberCount());
    const Record* normals = mesh->Child("LayerElementNormal");
    ASSERT_NE(nullptr, normals);
    EXPECT_EQ("ByVertice", normals->ChildText("MappingInformationType"));
    EXPECT_EQ(15u, normals->Child("Normals")->NumberCount());
    const Record* colors = mesh->Child("LayerElementColor");
    ASSERT_NE(nullptr, colors);
    EXPECT_EQ("ByPolygon", colors->ChildText("MappingInformationType"));
    EXPECT_EQ(0.5, colors->Child("Colors")->Doubles().back());
    const Record* materials = mesh->Child("LayerElementMaterial");
    ASSERT_NE(nullptr, materials);
    EXPECT_EQ(std::vector<std::int64_t>({0, 1, 1, 0}), materials->Child("Materials")->Ints());
    auto layers = mesh->Children("Layer");
    ASSERT_EQ(2u, layers.size());
    EXPECT_EQ(4u, layers[0]->Children("LayerElement").size());
    ASSERT_EQ(1u, layers[1]->Children("LayerElement").size());
    EXPECT_EQ("LayerElementUV", layers[1]->Child("LayerElement")->ChildText("Type"));
    EXPECT_EQ(1, layers[1]->Child("LayerElement")->ChildInt("TypedIndex"));
}

TEST_P(SceneRoundTrip, NodesKeepTheirKindsAndTransforms) {
    const std::size_t kindAt = Version() < 7000 ? 1 : 2;
    std::map<std::string, std::string> kinds;
    for (const Record* model : Objects().Children("Model")) {
        kinds[model->TextAt(kindAt - 1)] = model->TextAt(kindAt);
    }
    EXPECT_EQ(6u, Objects().Children("Model").size());
    // The repeated "Hip" gets a name of its own where objects are known by name.
    EXPECT_EQ(Version() < 7000 ? 6u : 5u, kinds.size());
    EXPECT_EQ("Mesh", kinds[Name("Model", "Body")]);
    EXPECT_EQ("LimbNode", kinds[Name("Model", "Knee")]);
    EXPECT_EQ("Camera", kinds[Name("Model", "Eye")]);
    EXPECT_EQ("Light", kinds[Name("Model", "Sun")]);
    const Record* knee = FindObject("Model", Name("Model", "Knee"));
    ASSERT_NE(nullptr, knee);
    const Record* props = knee->Child(Version() < 7000 ? "Properties60" : "Properties70");
    ASSERT_NE(nullptr, props);
    bool found = false;
    for (const Record& p : props->children) {
        if (p.TextAt(0) == "Lcl Translation") {
            EXPECT_EQ(std::vector<double>({0, -1.5, 0.25}), p.Doubles());
            found = true;
        }
    }
    EXPECT_TRUE(found);
    if (Version() >= 7000) {
        // What a node is comes from its attribute: the knee's says it is a skeleton.
        std::string kneeId = Key("Model", Name("Model", "Knee"));
        bool skeleton = false;
        for (const Record* attr : Objects().Children("NodeAttribute")) {
            if (Linked(std::to_string(attr->IntAt(0)), kneeId)) {
                skeleton =
                    attr->TextAt(2) == "LimbNode" && attr->ChildText("TypeFlags") == "Skeleton";
            }
        }
        EXPECT_TRUE(skeleton);
    } else {
        EXPECT_EQ("Skeleton", knee->ChildText("TypeFlags"));
    }
}

TEST_P(SceneRoundTrip, ConnectionsBuildTheTreeSkinAndMaterials) {
    const bool modern = Version() >= 7000;
    const std::string root = modern ? "0" : Name("Model", "Scene");
    const std::string body = Key("Model", Name("Model", "Body"));
    const std::string hip = Key("Model", Name("Model", "Hip"));
    const std::string knee = Key("Model", Name("Model", "Knee"));
    EXPECT_TRUE(Linked(body, root));
    EXPECT_TRUE(Linked(hip, root));
    EXPECT_TRUE(Linked(knee, hip));
    // Materials hang off the mesh node in slot order.
    std::vector<std::string> slots;
    for (const Record& c : m_Doc.root.Child("Connections")->children) {
        std::string child = modern ? std::to_string(c.IntAt(1)) : c.TextAt(1);
        std::string parent = modern ? std::to_string(c.IntAt(2)) : c.TextAt(2);
        if (parent == body && (child == Key("Material", Name("Material", "Skin \"matte\"")) ||
                               child == Key("Material", Name("Material", "Metal")))) {
            slots.push_back(child);
        }
    }
    ASSERT_EQ(2u, slots.size());
    EXPECT_EQ(Key("Material", Name("Material", "Skin \"matte\"")), slots[0]);
    // Clusters: indexes and weights as described, linked to their bones.
    std::vector<const Record*> clusters;
    for (const Record* d : Objects().Children("Deformer")) {
        if (d->TextAt(modern ? 2 : 1) == "Cluster")
            clusters.push_back(d);
    }
    ASSERT_EQ(2u, clusters.size());
    EXPECT_EQ(std::vector<std::int64_t>({1, 2, 3, 4}), clusters[1]->Child("Indexes")->Ints());
    EXPECT_EQ(std::vector<double>({0.25, 0.5, 1, 1}), clusters[1]->Child("Weights")->Doubles());
    EXPECT_EQ(-1.5, clusters[1]->Child("TransformLink")->Doubles().at(13));
    std::string clusterKey =
        modern ? std::to_string(clusters[1]->IntAt(0)) : clusters[1]->TextAt(0);
    EXPECT_TRUE(Linked(knee, clusterKey));
    // The single texture reaches the first material's diffuse colour; the second material
    // stacks two textures in a layered texture.
    const std::string skinMaterial = Key("Material", Name("Material", "Skin \"matte\""));
    EXPECT_TRUE(Linked(Key("Texture", Name("Texture", "skin")), skinMaterial + "|DiffuseColor"));
    auto layered = Objects().Children("LayeredTexture");
    ASSERT_EQ(1u, layered.size());
    std::string layeredKey = modern ? std::to_string(layered[0]->IntAt(0)) : layered[0]->TextAt(0);
    EXPECT_TRUE(Linked(layeredKey, Key("Material", Name("Material", "Metal")) + "|DiffuseColor"));
    EXPECT_TRUE(Linked(Key("Texture", Name("Texture", "scratches")), layeredKey));
    const Record* texture = FindObject("Texture", Name("Texture", "skin"));
    ASSERT_NE(nullptr, texture);
    EXPECT_EQ("C:/art/skin.bmp", texture->ChildText("FileName"));
    EXPECT_EQ("skin.bmp", texture->ChildText("RelativeFilename"));
    EXPECT_EQ(std::vector<double>({2, 3}), texture->Child("ModelUVScaling")->Doubles());
}

// Key times and values of the knee's X rotation in the "Walk" take.
TEST_P(SceneRoundTrip, TakesCarryTheirKeys) {
    const Record* takes = m_Doc.root.Child("Takes");
    ASSERT_NE(nullptr, takes);
    EXPECT_EQ("Walk", takes->ChildText("Current"));
    auto takeRecords = takes->Children("Take");
    ASSERT_EQ(2u, takeRecords.size());
    EXPECT_EQ("Idle", takeRecords[1]->TextAt(0));
    EXPECT_EQ(std::vector<std::int64_t>({0, 46186158000}),
              takeRecords[1]->Child("LocalTime")->Ints());

    std::vector<std::int64_t> times;
    std::vector<double> values;
    if (Version() < 7000) {
        const Record* model = takeRecords[0]->Child("Model");
        ASSERT_NE(nullptr, model);
        EXPECT_EQ(Name("Model", "Knee"), model->TextAt(0));
        const Record* transform = model->Child("Channel");
        ASSERT_NE(nullptr, transform);
        const Record* x = transform->Children("Channel").at(1)->Children("Channel").at(0);
        EXPECT_EQ("R", transform->Children("Channel").at(1)->TextAt(0));
        EXPECT_EQ(3, x->ChildInt("KeyCount"));
        const Record* key = x->Child("Key");
        ASSERT_NE(nullptr, key);
        ASSERT_EQ(9u, key->values.size());
        for (std::size_t k = 0; k < 3; ++k) {
            times.push_back(key->values[3 * k].AsInt());
            values.push_back(key->values[3 * k + 1].AsDouble());
            EXPECT_EQ("L", key->values[3 * k + 2].AsText());
        }
    } else {
        auto stacks = Objects().Children("AnimationStack");
        ASSERT_EQ(2u, stacks.size());
        EXPECT_EQ(Name("AnimStack", "Walk"), stacks[0]->TextAt(1));
        auto curves = Objects().Children("AnimationCurve");
        ASSERT_EQ(2u, curves.size());
        times = curves[0]->Child("KeyTime")->Ints();
        values = curves[0]->Child("KeyValueFloat")->Doubles();
        // The curve reaches the knee's rotation through an "R" curve node.
        std::string curveId = std::to_string(curves[0]->IntAt(0));
        bool reachesKnee = false;
        for (const Record* node : Objects().Children("AnimationCurveNode")) {
            std::string nodeId = std::to_string(node->IntAt(0));
            if (Linked(curveId, nodeId + "|d|X") &&
                Linked(nodeId, Key("Model", Name("Model", "Knee")) + "|Lcl Rotation")) {
                reachesKnee = true;
            }
        }
        EXPECT_TRUE(reachesKnee);
    }
    EXPECT_EQ(std::vector<std::int64_t>({0, 1924423250, 3848846500}), times);
    EXPECT_EQ(std::vector<double>({0, 45, -30.5}), values);
}

TEST_P(SceneRoundTrip, DefinitionsCountTheObjects) {
    const Record* defs = m_Doc.root.Child("Definitions");
    ASSERT_NE(nullptr, defs);
    std::int64_t sum = 0;
    for (const Record* type : defs->Children("ObjectType")) {
        std::int64_t count = type->ChildInt("Count");
        sum += count;
        if (type->TextAt(0) != "GlobalSettings" || Version() < 7000) {
            EXPECT_EQ(static_cast<std::size_t>(count), Objects().Children(type->TextAt(0)).size())
                << type->TextAt(0);
        }
    }
    EXPECT_EQ(sum, defs->ChildInt("Count"));
}

TEST_P(SceneRoundTrip, PasswordMarksTheHeader) {
    const Record* header = m_Doc.root.Child("FBXHeaderExtension");
    EXPECT_EQ(1, header->ChildInt("EncryptionType"));
    EXPECT_EQ(PasswordHash("open sesame"), header->ChildText("PasswordHash"));
}

INSTANTIATE_TEST_SUITE_P(LayoutsAndEncodings, SceneRoundTrip,
                         ::testing::Values(Combination{6100, false}, Combination{6100, true},
                                           Combination{7500, false}, Combination{7500, true}),
                         Describe);

TEST(PasswordHash, IsFnv1aOfThePassword) {
    EXPECT_EQ("cbf29ce484222325", PasswordHash(""));
    EXPECT_EQ("af63dc4c8601ec8c", PasswordHash("a"));
    EXPECT_EQ(16u, PasswordHash("open sesame").size());
    SceneDescription open;
    Document doc = BuildDocument(open, 7500);
    const Record& header = doc.root.children.at(0);
    EXPECT_EQ(nullptr, header.Child("PasswordHash"));
}

TEST(SyntheticScene, HasExactlyTheRequestedCornersAndNormalisedWeights) {
    for (std::size_t corners : {1u, 2u, 5u, 24u, 1001u}) {
        SyntheticOptions options;
        options.corners = corners;
        options.clusters = 3;
        options.takes = 2;
        options.keys = 5;
        SceneDescription scene = MakeSyntheticScene(options);
        const desc::Node& grid = scene.nodes.at(0);
        std::size_t total = 0;
        for (const auto& polygon : grid.mesh.polygons) {
            EXPECT_GE(polygon.size(), 1u);
            for (std::int32_t i : polygon) {
                EXPECT_LT(static_cast<std::size_t>(i), grid.mesh.controlPoints.size());
            }
            total += polygon.size();
        }
        EXPECT_EQ(corners, total);
        std::vector<double> weight(grid.mesh.controlPoints.size(), 0.0);
        ASSERT_EQ(3u, grid.skin.clusters.size());
        for (const desc::Cluster& c : grid.skin.clusters) {
            for (std::size_t k = 0; k < c.indexes.size(); ++k)
                weight.at(c.indexes[k]) += c.weights[k];
        }
        for (double w : weight)
            EXPECT_NEAR(1.0, w, 1e-12);
        ASSERT_EQ(2u, scene.takes.size());
        EXPECT_EQ(5u, scene.takes[1].nodes.at(0).rotation[2].times.size());
    }
}

TEST(SceneWriter, RepeatedNamesStayDistinctInTheNamedLayout) {
    SceneDescription scene;
    scene.AddNode("Box", desc::NodeType::Null);
    scene.AddNode("Box", desc::NodeType::Null, 0);
    ParseResult parsed = ParseText(WriteAscii(BuildDocument(scene, 6100)));
    ASSERT_TRUE(parsed.ok) << parsed.error;
    auto connects = parsed.document.root.Child("Connections")->Children("Connect");
    ASSERT_EQ(2u, connects.size());
    EXPECT_EQ("Model::Box", connects[0]->TextAt(1));
    EXPECT_EQ("Model::Box 1", connects[1]->TextAt(1));
    EXPECT_EQ("Model::Box", connects[1]->TextAt(2));
}

TEST(SceneWriter, BadIndicesAndParentLoopsAreIgnored) {
    SceneDescription scene;
    int a = scene.AddNode("A", desc::NodeType::Mesh);
    int b = scene.AddNode("B", desc::NodeType::Null, a);
    scene.nodes[a].parent = b;  // a loop
    scene.nodes[a].materials = {7};
    scene.nodes[a].skin.clusters.push_back({});
    scene.nodes[a].skin.clusters[0].linkNode = 42;
    desc::Take take;
    take.name = "T";
    take.nodes.push_back({});
    take.nodes[0].node = -3;
    scene.takes.push_back(take);
    for (int version : {6100, 7500}) {
        ParseResult parsed = ParseBytes(WriteBinary(BuildDocument(scene, version, true)));
        ASSERT_TRUE(parsed.ok) << parsed.error;
        EXPECT_EQ(2u, parsed.document.root.Child("Objects")->Children("Model").size());
    }
}

TEST(SceneWriter, WriteFileReportsWhyItFailed) {
    std::string error;
    EXPECT_FALSE(WriteFile("/nonexistent-dir/x.fbx", MakeCubeScene(), 7500, true, &error));
    EXPECT_NE(std::string::npos, error.find("/nonexistent-dir/x.fbx"));
    std::string path = std::string(ENGINE_BINARY_DIR) + "/writer_test_cube.fbx";
    ASSERT_TRUE(WriteFile(path, MakeCubeScene("cube.bmp"), 6100, false, &error)) << error;
    ParseResult parsed = ParseFile(path);
    ASSERT_TRUE(parsed.ok) << parsed.error;
    EXPECT_EQ(6100u, parsed.document.version);
    std::remove(path.c_str());
}

}  // namespace
}  // namespace fbx::test
