// The ASCII parser on small texts: syntax forms real files use, and the errors of broken ones.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "fbx/format/Parse.h"

namespace {

fbx::ParseResult Parse(const std::string& text) {
    return fbx::ParseBuffer(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
}

TEST(AsciiSyntax, RecordsValuesCommentsAndChildren) {
    const fbx::ParseResult r = Parse(
        "; FBX 6.1.0 project file\n"
        "; a comment\n"
        "Objects:  {\n"
        "  Model: \"Model::Box01\", \"Mesh\" {\n"
        "    Version: 232\n"
        "    Shading: Y\n"
        "    Name: \"say &quot;hi&quot;\"\n"
        "    Color: 0.5,1e-3,-2.5E+2\n"
        "    Empty: \n"
        "    Vertices: 1,2,3,\n"
        "      4,5,6\n"
        "      ,7.5,8\n"
        "    Deep: { Inner: { Leaf: 1 } }\n"
        "  }\n"
        "}\n");
    ASSERT_TRUE(r.ok) << r.error;
    EXPECT_FALSE(r.document.binary);
    EXPECT_EQ(r.document.version, 6100u);  // from the comment, as there is no FBXVersion
    const fbx::Record* model = r.document.root.Child("Objects")->Child("Model");
    ASSERT_NE(model, nullptr);
    EXPECT_EQ(model->TextAt(0), "Model::Box01");
    EXPECT_EQ(model->TextAt(1), "Mesh");
    EXPECT_EQ(model->ChildInt("Version"), 232);
    EXPECT_EQ(model->Child("Shading")->values[0].Type(), fbx::ValueType::Word);
    EXPECT_EQ(model->ChildText("Shading"), "Y");
    EXPECT_EQ(model->ChildText("Name"), "say \"hi\"");
    const fbx::Record* color = model->Child("Color");
    ASSERT_EQ(color->values.size(), 3u);
    EXPECT_EQ(color->DoubleAt(0), 0.5);
    EXPECT_EQ(color->DoubleAt(1), 1e-3);
    EXPECT_EQ(color->DoubleAt(2), -250.0);
    EXPECT_TRUE(model->Child("Empty")->values.empty());
    const fbx::Record* vertices = model->Child("Vertices");
    ASSERT_EQ(vertices->values.size(), 1u);  // packed: eight numbers over three lines
    EXPECT_EQ(vertices->values[0].Type(), fbx::ValueType::Float64Array);
    EXPECT_EQ(vertices->Doubles(), (std::vector<double>{1, 2, 3, 4, 5, 6, 7.5, 8}));
    EXPECT_EQ(model->Child("Deep")->Child("Inner")->ChildInt("Leaf"), 1);
}

TEST(AsciiSyntax, StarArraysBecomeOneValueOfTheNarrowestType) {
    const fbx::ParseResult r = Parse(
        "FBXHeaderExtension: { FBXVersion: 7400 }\n"
        "Geometry: 123, \"Geometry::\", \"Mesh\" {\n"
        "  Vertices: *6 {\n    a: 0,1,2,3,4,5.5\n  }\n"
        "  PolygonVertexIndex: *3 {\n    a: 0,1,-3\n  }\n"
        "  KeyTime: *2 {\n    a: 0,46186158000\n  }\n"
        "  Empty: *0 {\n  }\n"
        "}\n");
    ASSERT_TRUE(r.ok) << r.error;
    EXPECT_EQ(r.document.version, 7400u);
    const fbx::Record* g = r.document.root.Child("Geometry");
    ASSERT_NE(g, nullptr);
    EXPECT_EQ(g->IntAt(0), 123);
    ASSERT_EQ(g->Child("Vertices")->values.size(), 1u);
    EXPECT_TRUE(g->Child("Vertices")->children.empty());
    EXPECT_EQ(g->Child("Vertices")->values[0].Type(), fbx::ValueType::Float64Array);
    EXPECT_EQ(g->Child("Vertices")->values[0].DoubleAt(5), 5.5);
    EXPECT_EQ(g->Child("PolygonVertexIndex")->values[0].Type(), fbx::ValueType::Int32Array);
    EXPECT_EQ(g->Child("PolygonVertexIndex")->Ints(), (std::vector<std::int64_t>{0, 1, -3}));
    EXPECT_EQ(g->Child("KeyTime")->values[0].Type(), fbx::ValueType::Int64Array);
    EXPECT_EQ(g->Child("KeyTime")->values[0].IntAt(1), 46186158000);
    EXPECT_EQ(g->Child("Empty")->NumberCount(), 0u);
}

TEST(AsciiSyntax, SpecialNumberSpellingsAndShortLists) {
    const fbx::ParseResult r = Parse(
        "A: -1.#IND, 1.#INF, -1.#INF, nan\n"
        "B: 1,2,3,4\n"
        "C: 1,2,3,4,5\n"
        "D: 1, \"x\", 3, 4, 5, 6\n");
    ASSERT_TRUE(r.ok) << r.error;
    const fbx::Record* a = r.document.root.Child("A");
    ASSERT_EQ(a->values.size(), 4u);
    EXPECT_TRUE(std::isnan(a->DoubleAt(0)));
    EXPECT_EQ(a->DoubleAt(1), INFINITY);
    EXPECT_EQ(a->DoubleAt(2), -INFINITY);
    EXPECT_TRUE(std::isnan(a->DoubleAt(3)));
    EXPECT_EQ(r.document.root.Child("B")->values.size(), 4u);  // at the threshold: scalars
    EXPECT_EQ(r.document.root.Child("C")->values.size(), 1u);  // above it: one array
    EXPECT_EQ(r.document.root.Child("C")->values[0].Type(), fbx::ValueType::Int32Array);
    EXPECT_EQ(r.document.root.Child("D")->values.size(), 6u);  // a text prevents packing
}

TEST(AsciiErrors, BrokenTextsGiveAnErrorWithTheLineAndThePartialTree) {
    struct Case {
        const char* text;
        const char* message;
    };
    const Case cases[] = {
        {"A: 1\nB: {\n  C: 2\n", "never closed"},
        {"A: \"open string\n", "never closed"},
        {"A: 1\n}\n", "unexpected '}' at line 2"},
        {"A: 1\nB 2\n", "expected ':'"},
        {"A: *5 { a: 1,2 }\n", "declares 5 values but holds 2"},
        {"A: *3 { a: 1,\"x\",3 }\n", "not a number"},
        {"A: *3 { a: 1,2,3\n", "never closed"},
        {"A: *x { }\n", "element count"},
        {"A: 1.2.3.4\n", "not a number"},
        {"A: 1\nB: @\n", "unexpected '@' at line 2"},
    };
    for (const Case& c : cases) {
        const fbx::ParseResult r = Parse(c.text);
        EXPECT_FALSE(r.ok) << c.text;
        EXPECT_NE(r.error.find(c.message), std::string::npos) << c.text << " -> " << r.error;
        ASSERT_FALSE(r.document.root.children.empty()) << c.text;
        EXPECT_EQ(r.document.root.children[0].name, "A");
    }
}

TEST(AsciiDetection, TextThatIsNotFbxIsRefused) {
    for (const std::string text : {"", "hello world", "<xml/>", "; only a comment\n"}) {
        const fbx::ParseResult r = Parse(text);
        EXPECT_FALSE(r.ok) << text;
        EXPECT_FALSE(r.error.empty());
        EXPECT_FALSE(
            fbx::LooksLikeFbx(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
    }
    const std::string fbx = "\xEF\xBB\xBF; FBX 7.4.0 project file\n\nFBXHeaderExtension:  {\n}\n";
    EXPECT_TRUE(fbx::LooksLikeFbx(reinterpret_cast<const std::uint8_t*>(fbx.data()), fbx.size()));
    const fbx::ParseResult r = Parse(fbx);
    EXPECT_TRUE(r.ok) << r.error;
    EXPECT_EQ(r.document.version, 7400u);
}

TEST(ParseFile, MissingFileIsAnError) {
    const fbx::ParseResult r = fbx::ParseFile("/nonexistent/dir/model.fbx");
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.error.find("/nonexistent/dir/model.fbx"), std::string::npos) << r.error;
}

}  // namespace
