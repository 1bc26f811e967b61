// The ASCII parser on small texts: syntax forms real files use, and the errors of broken ones.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support_corpus.h"
#include "support_tree.h"

namespace {

using fbxtest::ParseText;
using fbxtest::TreeText;

// Records, values, comments and children; a *N list is one value of the narrowest type that
// holds it, and plain lists of more than four numbers are packed alike (even over several
// lines), unless a text is among them.
TEST(AsciiSyntax, RecordsValuesArraysAndSpecialNumbers) {
    const fbx::ParseResult r = ParseText(
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
        "}\n"
        "Geometry: 123, \"Geometry::\", \"Mesh\" {\n"
        "  Vertices: *6 {\n    a: 0,1,2,3,4,5.5\n  }\n"
        "  PolygonVertexIndex: *3 {\n    a: 0,1,-3\n  }\n"
        "  KeyTime: *2 {\n    a: 0,46186158000\n  }\n"
        "  Empty: *0 {\n  }\n"
        "}\n"
        "A: -1.#IND, 1.#INF, -1.#INF, nan\n"
        "B: 1,2,3,4\n"
        "C: 1,2,3,4,5\n"
        "D: 1, \"x\", 3, 4, 5, 6\n");
    ASSERT_TRUE(r.ok) << r.error;
    EXPECT_FALSE(r.document.binary);
    EXPECT_EQ(r.document.version, 6100u);  // from the comment, as there is no FBXVersion
    EXPECT_EQ(TreeText(r.document.root), R"(Objects:
  Model: S"Model::Box01", S"Mesh"
    Version: L232
    Shading: W"Y"
    Name: S"say "hi""
    Color: D0.5, D0.001, D-250
    Empty:
    Vertices: d[1,2,3,4,5,6,7.5,8]
    Deep:
      Inner:
        Leaf: L1
Geometry: L123, S"Geometry::", S"Mesh"
  Vertices: d[0,1,2,3,4,5.5]
  PolygonVertexIndex: i[0,1,-3]
  KeyTime: l[0,46186158000]
  Empty: i[]
A: Dnan, Dinf, D-inf, Dnan
B: L1, L2, L3, L4
C: i[1,2,3,4,5]
D: L1, S"x", L3, L4, L5, L6
)");
}

TEST(AsciiSyntax, EmbeddedContentIsDecodedFromBase64) {
    // "OTk5" is "999"; "+/9A" (the last two letters of the alphabet and a digit) is FB FF 40.
    // Real files write the text after a leading comma, possibly split over several strings;
    // an empty Content holds nothing.
    const fbx::ParseResult r = ParseText(
        "V: {\n  Content: \"OTk5+/9A\"\n}\nV: {\n  Content: ,\n \"OTk\",\n \"5+/9A\"\n}\n"
        "V: {\n  Content: \n}\n");
    ASSERT_TRUE(r.ok) << r.error;
    const std::vector<const fbx::Record*> videos = r.document.root.Children("V");
    ASSERT_EQ(videos.size(), 3u);
    for (const fbx::Record* video : {videos[0], videos[1]}) {
        const fbx::Record* content = video->Child("Content");
        ASSERT_TRUE(content && content->values.size() == 1);
        EXPECT_EQ(content->values[0].Type(), fbx::ValueType::Raw);
        EXPECT_EQ(content->TextAt(0), std::string("999\xFB\xFF@"));
    }
    EXPECT_TRUE(videos[2]->Child("Content")->values.empty());
}

TEST(AsciiErrors, BrokenTextsGiveAnErrorWithTheLineAndThePartialTree) {
    const std::pair<const char*, const char*> cases[] = {
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
    for (const auto& [text, message] : cases) {
        const fbx::ParseResult r = ParseText(text);
        EXPECT_FALSE(r.ok) << text;
        EXPECT_NE(r.error.find(message), std::string::npos) << text << " -> " << r.error;
        ASSERT_FALSE(r.document.root.children.empty()) << text;
        EXPECT_EQ(r.document.root.children[0].name, "A");
    }
}

TEST(AsciiDetection, TextThatIsNotFbxAndMissingFilesAreRefused) {
    auto looksLikeFbx = [](const std::string& text) {
        return fbx::LooksLikeFbx(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    };
    for (const std::string text : {"", "hello world", "<xml/>", "; only a comment\n"}) {
        const fbx::ParseResult r = ParseText(text);
        EXPECT_FALSE(r.ok || r.error.empty()) << text;
        EXPECT_FALSE(looksLikeFbx(text)) << text;
    }
    // The FBXVersion record, not the comment, gives the version.
    const std::string fbx =
        "\xEF\xBB\xBF; FBX 7.3.0 project file\n\nFBXHeaderExtension:  {\n FBXVersion: 7400\n}\n";
    EXPECT_TRUE(looksLikeFbx(fbx));
    const fbx::ParseResult r = ParseText(fbx);
    EXPECT_TRUE(r.ok) << r.error;
    EXPECT_EQ(r.document.version, 7400u);

    const fbx::ParseResult missing = fbx::ParseFile("/nonexistent/dir/model.fbx");
    EXPECT_FALSE(missing.ok);
    EXPECT_NE(missing.error.find("/nonexistent/dir/model.fbx"), std::string::npos) << missing.error;
}

}  // namespace
