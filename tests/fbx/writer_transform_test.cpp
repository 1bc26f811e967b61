// Node transform properties and key interpolation as the writer spells them, in both layouts
// and encodings, checked on the records a reader sees and against the real twin files that
// Maya wrote of one animated scene in the 6100 and 7700 layouts.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <tuple>
#include <vector>

#include "fbx/format/Parse.h"
#include "fbx/graph/ObjectGraph.h"
#include "fbx/write/WriterScene.h"
#include "scene_support.h"

namespace fbx {
namespace {

class WriterLayouts : public ::testing::TestWithParam<std::tuple<int, bool>> {
protected:
    // Writes the scene in this test's layout and encoding and parses it back.
    Document WriteAndParse(const SceneDescription& scene, const std::string& stem) const {
        const auto [version, binary] = GetParam();
        const std::string path = std::string(ENGINE_BINARY_DIR) + "/" + stem + "_" +
                                 std::to_string(version) + (binary ? "_binary.fbx" : "_ascii.fbx");
        std::string error;
        EXPECT_TRUE(WriteFile(path, scene, version, binary, &error)) << error;
        ParseResult parsed = ParseFile(path);
        std::remove(path.c_str());
        EXPECT_TRUE(parsed.ok) << parsed.error;
        return std::move(parsed.document);
    }
};

// Properties a model states itself (not through a template); numbers empty: not written.
struct Written {
    const char* node;
    const char* property;
    std::vector<double> numbers;
};

TEST_P(WriterLayouts, NodePropertiesOnlyWhereSet) {
    SceneDescription scene;
    scene.AddNode("Plain", desc::NodeType::Null);
    desc::Node& set = scene.nodes[scene.AddNode("Set", desc::NodeType::Skeleton)];
    set.rotationOffset = {1, 2, 3};
    set.rotationPivot = {4, 5, 6};
    set.scalingOffset = {7, 8, 9};
    set.scalingPivot = {10, 11, 12};
    set.preRotation = {13, 14, 15};
    set.postRotation = {16, 17, 18};
    set.rotationActive = false;
    set.rotationOrder = desc::kZXY;
    set.inheritType = desc::kRrs;
    set.geometricTranslation = {19, 20, 21};
    set.geometricRotation = {22, 23, 24};
    set.geometricScaling = {2, 3, 4};
    desc::Node& odd = scene.nodes[scene.AddNode("Odd", desc::NodeType::Null)];
    odd.rotationOrder = 7;
    odd.inheritType = -1;
    odd.preRotation = {0, 0, 90};

    const Written kWritten[] = {
        {"Set", "RotationOffset", {1, 2, 3}},
        {"Set", "RotationPivot", {4, 5, 6}},
        {"Set", "ScalingOffset", {7, 8, 9}},
        {"Set", "ScalingPivot", {10, 11, 12}},
        {"Set", "PreRotation", {13, 14, 15}},
        {"Set", "PostRotation", {16, 17, 18}},
        {"Set", "RotationActive", {0}},
        {"Set", "RotationOrder", {4}},
        {"Set", "InheritType", {2}},
        {"Set", "GeometricTranslation", {19, 20, 21}},
        {"Set", "GeometricRotation", {22, 23, 24}},
        {"Set", "GeometricScaling", {2, 3, 4}},
        // Defaults stay unwritten, except the two that Maya writes on every node.
        {"Plain", "RotationActive", {1}},
        {"Plain", "InheritType", {1}},
        {"Plain", "RotationOffset", {}},
        {"Plain", "RotationPivot", {}},
        {"Plain", "ScalingOffset", {}},
        {"Plain", "ScalingPivot", {}},
        {"Plain", "PreRotation", {}},
        {"Plain", "PostRotation", {}},
        {"Plain", "RotationOrder", {}},
        {"Plain", "GeometricTranslation", {}},
        {"Plain", "GeometricRotation", {}},
        {"Plain", "GeometricScaling", {}},
        // Values out of range are written as the defaults.
        {"Odd", "RotationOrder", {}},
        {"Odd", "InheritType", {1}},
        {"Odd", "PreRotation", {0, 0, 90}},
    };
    auto graph = ObjectGraph::Build(WriteAndParse(scene, "writer_node_properties"));
    for (const Written& w : kWritten) {
        const Object* model = nullptr;
        for (const Object& o : graph->Objects()) {
            if (o.kind == "Model" && o.name == w.node)
                model = &o;
        }
        ASSERT_NE(model, nullptr) << w.node;
        std::vector<double> numbers;
        for (const PropertyValue& p : model->properties) {
            if (p.name == w.property)
                numbers = p.numbers;
        }
        EXPECT_EQ(numbers, w.numbers) << w.node << " " << w.property;
    }
}

// One key as both layouts describe it: the interpolation ("Cs" constant, "Cn" constant
// holding the next value, "L" linear, "U" cubic), and for linear and cubic keys the slope
// leaving it and the one arriving at the next key (value units per second). Tangent weights
// are left out: the writer does not write weighted tangents.
struct Key {
    std::int64_t time;
    double value;
    std::string kind;
    double right, nextLeft;
};

void ExpectSameKeys(const std::vector<Key>& actual, const std::vector<Key>& expected,
                    const std::string& what) {
    ASSERT_EQ(actual.size(), expected.size()) << what;
    for (std::size_t k = 0; k < actual.size(); ++k) {
        EXPECT_EQ(actual[k].time, expected[k].time) << what << " key " << k;
        EXPECT_EQ(actual[k].kind, expected[k].kind) << what << " key " << k;
        EXPECT_NEAR(actual[k].value, expected[k].value, 1e-5) << what << " key " << k;
        EXPECT_NEAR(actual[k].right, expected[k].right, 1e-4) << what << " key " << k;
        EXPECT_NEAR(actual[k].nextLeft, expected[k].nextLeft, 1e-4) << what << " key " << k;
    }
}

// The keys of a 7000+ AnimationCurve record: one flags value and four floats per run of
// KeyAttrRefCount keys.
std::vector<Key> KeysOfCurve(const Record& curve) {
    const auto times = curve.Child("KeyTime")->Ints();
    const auto values = curve.Child("KeyValueFloat")->Doubles();
    const auto flags = curve.Child("KeyAttrFlags")->Ints();
    const auto data = curve.Child("KeyAttrDataFloat")->Doubles();
    const auto counts = curve.Child("KeyAttrRefCount")->Ints();
    std::vector<Key> keys;
    for (std::size_t run = 0; run < counts.size(); ++run) {
        for (std::int64_t i = 0; i < counts[run]; ++i) {
            const std::size_t k = keys.size();
            const std::int64_t f = flags[run];
            Key key{times[k], values[k], (f & 0x04) ? "L" : (f & 0x08) ? "U" : "C", 0, 0};
            if (key.kind == "C") {
                key.kind += (f & 0x100) ? "n" : "s";
            } else {
                key.right = data[run * 4];
                key.nextLeft = data[run * 4 + 1];
            }
            keys.push_back(key);
        }
    }
    return keys;
}

// The keys of a pre-7000 take channel: "Key: time, value, letter, ..." at KeyVer 4005. Linear
// keys get the straight line's slopes, as the 7000+ layout stores them.
std::vector<Key> KeysOfChannel(const Record& channel) {
    const Record& list = *channel.Child("Key");
    std::size_t at = 0;
    auto number = [&] { return list.values[at++].AsDouble(); };
    auto letter = [&] { return list.values[at++].AsText(); };
    std::vector<Key> keys;
    while (at < list.values.size()) {
        Key key{list.values[at++].AsInt(), number(), letter(), 0, 0};
        if (key.kind == "C")
            key.kind += letter();
        if (key.kind == "U") {
            EXPECT_EQ(letter(), "s");
            key.right = number();
            key.nextLeft = number();
            if (letter() == "a")
                at += 2;  // tangent weights
        }
        keys.push_back(key);
    }
    for (std::size_t k = 0; k + 1 < keys.size(); ++k) {
        if (keys[k].kind == "L") {
            keys[k].right = keys[k].nextLeft = (keys[k + 1].value - keys[k].value) /
                                               (keys[k + 1].time - keys[k].time) *
                                               desc::kTicksPerSecond;
        }
    }
    return keys;
}

const Record* Child(const Record& parent, const char* name, const std::string& first = "") {
    for (const Record& r : parent.children) {
        if (r.name == name && (first.empty() || r.TextAt(0) == first))
            return &r;
    }
    return nullptr;
}

// The X translation channel of the first take's first model (pre-7000 files).
const Record* TakeChannelX(const Document& doc) {
    const Record* take = Child(*Child(doc.root, "Takes"), "Take");
    const Record* transform = Child(*Child(*take, "Model"), "Channel", "Transform");
    return Child(*Child(*transform, "Channel", "T"), "Channel", "X");
}

// The 7000+ curves of a file, in file order.
std::vector<const Record*> Curves(const Document& doc) {
    std::vector<const Record*> curves;
    for (const Record& r : Child(doc.root, "Objects")->children) {
        if (r.name == "AnimationCurve")
            curves.push_back(&r);
    }
    return curves;
}

TEST_P(WriterLayouts, KeysAsMayaWritesThem) {
    // The twins hold one curve with every kind of key; they must agree with each other...
    const Document real6100 =
        ParseFile(scenetest::Fbx("maya_anim_interpolation_6100_ascii.fbx")).document;
    const Document real7700 =
        ParseFile(scenetest::Fbx("maya_anim_interpolation_7700_ascii.fbx")).document;
    const std::vector<Key> expected = KeysOfChannel(*TakeChannelX(real6100));
    ExpectSameKeys(KeysOfCurve(*Curves(real7700).at(0)), expected, "Maya's 7700 twin");

    // ...and with what the writer makes of the same keys.
    desc::Curve curve;
    for (const Key& key : expected) {
        curve.times.push_back(key.time);
        curve.values.push_back(key.value);
        curve.interpolation.push_back(key.kind == "L"    ? desc::Interp::Linear
                                      : key.kind == "U"  ? desc::Interp::Cubic
                                      : key.kind == "Cs" ? desc::Interp::Constant
                                                         : desc::Interp::ConstantNext);
        curve.rightSlopes.push_back(key.right);
        curve.nextLeftSlopes.push_back(key.nextLeft);
    }
    SceneDescription scene;
    scene.AddNode("pCube1", desc::NodeType::Null);
    scene.takes.resize(1);
    scene.takes[0].name = "Take 001";
    scene.takes[0].nodes.resize(1);
    scene.takes[0].nodes[0].node = 0;
    scene.takes[0].nodes[0].translation[0] = curve;
    // Linear keys without slopes get the line's; keys alike share one attribute in 7000+ files.
    const std::int64_t second = desc::kTicksPerSecond;
    desc::Curve& ramp = scene.takes[0].nodes[0].translation[1];
    ramp = {{0, second, 2 * second, 3 * second}, {0, 3, 3, 3}};
    ramp.interpolation.resize(4, desc::Interp::Linear);

    const Document written = WriteAndParse(scene, "writer_keys");
    if (std::get<0>(GetParam()) < 7000) {
        ExpectSameKeys(KeysOfChannel(*TakeChannelX(written)), expected, "written 6100");
        return;
    }
    const auto curves = Curves(written);
    ASSERT_EQ(curves.size(), 2u);
    ExpectSameKeys(KeysOfCurve(*curves[0]), expected, "written 7500");
    ExpectSameKeys(KeysOfCurve(*curves[1]),
                   {{0, 0, "L", 3, 3},
                    {second, 3, "L", 0, 0},
                    {2 * second, 3, "L", 0, 0},
                    {3 * second, 3, "L", 0, 0}},
                   "ramp");
    EXPECT_EQ(curves[1]->Child("KeyAttrRefCount")->Ints(), (std::vector<std::int64_t>{1, 3}));
}

INSTANTIATE_TEST_SUITE_P(LayoutsAndEncodings, WriterLayouts,
                         ::testing::Combine(::testing::Values(6100, 7500), ::testing::Bool()));

}  // namespace
}  // namespace fbx
