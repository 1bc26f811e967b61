// The object graph on hand-built record trees: names, connections, templates, older layouts.
#include <gtest/gtest.h>

#include <string>

#include "fbx/graph/ObjectGraph.h"

namespace {

using fbx::Record;
using fbx::Value;

Record Rec(std::string name, std::vector<Value> values = {}, std::vector<Record> children = {}) {
    Record r;
    r.name = std::move(name);
    r.values = std::move(values);
    r.children = std::move(children);
    return r;
}
Value Text(const char* text) {
    return Value::MakeText(text);
}
Value Int(std::int64_t v) {
    return Value::MakeInt(v);
}
Value Num(double v) {
    return Value::MakeFloat(v);
}

std::size_t FindObject(const fbx::ObjectGraph& graph, const std::string& kind,
                       const std::string& name) {
    for (std::size_t i = 0; i < graph.Objects().size(); ++i) {
        if (graph.At(i).kind == kind && graph.At(i).name == name)
            return i;
    }
    return fbx::kNoObject;
}

TEST(SceneGraph, NamesLoseTheirClassPrefixInBothSpellings) {
    std::string cls, name;
    fbx::SplitObjectName(std::string("pCube1\0\1Model", 13), cls, name);
    EXPECT_EQ(cls, "Model");
    EXPECT_EQ(name, "pCube1");
    fbx::SplitObjectName("Model::ns:arm::left", cls, name);
    EXPECT_EQ(cls, "Model");
    EXPECT_EQ(name, "ns:arm::left");
    fbx::SplitObjectName("plain", cls, name);
    EXPECT_EQ(cls, "");
    EXPECT_EQ(name, "plain");
}

TEST(SceneGraph, NewerLayoutConnectsByIdAndFallsBackOnTemplates) {
    fbx::Document doc;
    doc.version = 7500;
    doc.root.children = {
        Rec("Definitions", {},
            {Rec("ObjectType", {Text("Material")},
                 {Rec("PropertyTemplate", {Text("FbxSurfaceLambert")},
                      {Rec("Properties70", {},
                           {Rec("P", {Text("DiffuseColor"), Text("Color"), Text(""), Text("A"),
                                      Num(0.1), Num(0.2), Num(0.3)})})})})}),
        Rec("Objects", {},
            {Rec("Model", {Int(5), Value::MakeText(std::string("b\0\1Model", 8)), Text("Null")}),
             Rec("Model", {Int(6), Text("Model::a"), Text("Null")}),
             Rec("Material", {Int(7), Text("Material::m"), Text("")},
                 {Rec("Properties70", {},
                      {Rec("P", {Text("AmbientColor"), Text("Color"), Text(""), Text("A"), Num(1),
                                 Num(0), Num(0)})})})}),
        Rec("Connections", {},
            {Rec("C", {Text("OO"), Int(6), Int(0)}), Rec("C", {Text("OO"), Int(5), Int(0)}),
             Rec("C", {Text("OO"), Int(7), Int(6)}), Rec("C", {Text("OO"), Int(99), Int(6)}),
             Rec("C", {Text("OP"), Int(5), Int(7), Text("DiffuseColor")})}),
    };
    auto graph = fbx::ObjectGraph::Build(std::move(doc));
    std::vector<std::size_t> roots = graph->Sources(graph->Root(), "Model");
    ASSERT_EQ(roots.size(), 2u);
    EXPECT_EQ(graph->At(roots[0]).name, "a");  // connection order, not object order
    EXPECT_EQ(graph->At(roots[1]).name, "b");
    std::size_t material = FindObject(*graph, "Material", "m");
    ASSERT_NE(material, fbx::kNoObject);
    EXPECT_EQ(graph->FindProperty(material, "AmbientColor")->numbers[0], 1.0);
    const fbx::PropertyValue* diffuse = graph->FindProperty(material, "DiffuseColor");
    ASSERT_NE(diffuse, nullptr);
    EXPECT_DOUBLE_EQ(diffuse->numbers[2], 0.3);
    EXPECT_EQ(graph->FindProperty(material, "Missing"), nullptr);
    EXPECT_EQ(graph->PropertySources(material, "DiffuseColor").size(), 1u);
    EXPECT_EQ(graph->Sources(roots[0]).size(), 1u);  // the unknown id 99 is skipped
}

TEST(SceneGraph, OlderLayoutGetsGeometryAttributesAndCurves) {
    fbx::Document doc;
    doc.version = 6100;
    doc.root.children = {
        Rec("Objects", {},
            {Rec("Model", {Text("Model::box"), Text("Mesh")},
                 {Rec("Vertices", {Num(0), Num(0), Num(0)}), Rec("PolygonVertexIndex", {Int(-1)})}),
             Rec("Model", {Text("Model::bone"), Text("LimbNode")})}),
        Rec("Connections", {},
            {Rec("Connect", {Text("OO"), Text("Model::box"), Text("Model::Scene")}),
             Rec("Connect", {Text("OO"), Text("Model::bone"), Text("Model::box")}),
             Rec("Connect", {Text("OO"), Text("Model::bone"), Text("Model::bone")})}),
        Rec("Takes", {},
            {Rec("Current", {Text("Walk")}),
             Rec("Take", {Text("Walk")},
                 {Rec("Model", {Text("Model::bone")},
                      {Rec("Channel", {Text("Transform")},
                           {Rec("Channel", {Text("T")},
                                {Rec("Channel", {Text("X")},
                                     {Rec("KeyCount", {Int(1)}),
                                      Rec("Key",
                                          {Int(0), Num(2.5),
                                           Value::MakeText("L", fbx::ValueType::Word)})})})})})})}),
    };
    auto graph = fbx::ObjectGraph::Build(std::move(doc));
    std::size_t box = FindObject(*graph, "Model", "box");
    std::size_t bone = FindObject(*graph, "Model", "bone");
    ASSERT_NE(box, fbx::kNoObject);
    ASSERT_EQ(graph->Sources(box, "Geometry").size(), 1u);
    ASSERT_EQ(graph->Sources(bone, "NodeAttribute").size(), 1u);
    EXPECT_EQ(graph->At(graph->Sources(bone, "NodeAttribute")[0]).subclass, "LimbNode");
    EXPECT_EQ(graph->Sources(bone, "Model").size(), 0u);  // self-connection dropped
    EXPECT_EQ(graph->CurrentTake(), "Walk");
    std::size_t stack = FindObject(*graph, "AnimationStack", "Walk");
    ASSERT_NE(stack, fbx::kNoObject);
    std::size_t layer = graph->Sources(stack, "AnimationLayer").at(0);
    std::size_t curveNode = graph->Sources(layer, "AnimationCurveNode").at(0);
    EXPECT_EQ(graph->At(curveNode).name, "T");
    std::size_t curve = graph->PropertySources(curveNode, "d|X").at(0);
    EXPECT_DOUBLE_EQ(graph->At(curve).record->Child("KeyValueFloat")->Doubles().at(0), 2.5);
}

}  // namespace
