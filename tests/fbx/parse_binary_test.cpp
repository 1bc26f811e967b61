// A tree holding every value type, written by our encoders in binary (32- and 64-bit record
// headers, both byte orders, compressed or not, older files' scalar lists) and in ASCII (both
// array styles), reads back as the same tree, every number bit for bit; and how the binary
// parser packs scalar lists.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "fbx/format/Encode.h"
#include "support_corpus.h"
#include "support_tree.h"

namespace fbx {
namespace {

using fbxtest::TreeText;

Record Rec(std::string name, std::vector<Value> values = {}, std::vector<Record> children = {}) {
    return Record{std::move(name), std::move(values), std::move(children)};
}
Value Text(const std::string& text, ValueType type = ValueType::String) {
    return Value::MakeText(text, type);
}

Document Sample(std::uint32_t version, bool binary) {
    std::vector<double> vertices;
    std::vector<std::int32_t> indices;
    for (int i = 0; i < 300; ++i) {
        vertices.push_back(std::sin(i * 0.37) * 1000.0 / 3.0);
        indices.push_back(i % 4 == 3 ? ~(i % 97) : i % 97);
    }
    const Value id = Value::MakeInt(1234567890123LL);
    Document doc;
    doc.version = version;
    doc.root.children = {
        Rec("References"),
        Rec("Objects", {},
            {Rec("Geometry", {id, Text(ObjectName("Geometry", "pCube1", binary)), Text("Mesh")},
                 {Rec("Vertices", {Value::MakeArray(vertices)}),
                  Rec("PolygonVertexIndex", {Value::MakeArray(indices)}),
                  Rec("Small", {Value::MakeArray(std::vector<float>{0.5f, -1.25f, 3.0e-7f, 0.8f})}),
                  Rec("Ids", {Value::MakeArray(std::vector<std::int64_t>{1, -2, 1LL << 40})}),
                  Rec("Flags", {Value::MakeArray(std::vector<std::uint8_t>{1, 0, 1})}),
                  Rec("Empty", {Value::MakeArray(std::vector<double>{})}),
                  Rec("Exact", {Value::MakeArray(
                                   std::vector<double>{0.1, 1.0 / 3.0, 1e-300, 123456789.123456789,
                                                       5e-324, 1.7976931348623157e308, -42.0})})}),
             Rec("P",
                 {Text("Lcl Translation"), Text("Lcl Translation"), Text(""), Text("A"),
                  Value::MakeFloat(0.1), Value::MakeFloat(-2.5e-300), Value::MakeFloat(1.0 / 3.0)}),
             Rec("P", {Text("Quoted \"name\""), Text("KString"), Text(""), Text(""),
                       Text("C:\\path\\file.png")}),
             Rec("Scalars", {Value::MakeInt(-7, ValueType::Int16),
                             Value::MakeInt(-2147483648, ValueType::Int32),
                             Value::MakeInt(std::numeric_limits<std::int64_t>::max()),
                             Value::MakeFloat(0.8f, ValueType::Float32)}),
             Rec("Big", {Value::MakeInt(-9007199254740993LL), Value::MakeFloat(6.02214076e23)}),
             Rec("Content", {Text(std::string("\x89PNG\0\x01", 6), ValueType::Raw)}),
             Rec("Shading", {Value::MakeBool(true), Text("Y", ValueType::Word)})}),
        Rec("Connections", {}, {Rec("C", {Text("OO"), id, Value::MakeInt(0)})})};
    return doc;
}

struct Case {
    std::uint32_t version;
    bool binary;
    bool bigEndian;
    bool compress;
};

class EncodedTrees : public ::testing::TestWithParam<Case> {};

TEST_P(EncodedTrees, ReadBackAsTheSameTree) {
    const Case c = GetParam();
    const Document doc = Sample(c.version, c.binary);
    ParseResult parsed;
    if (c.binary) {
        BinaryWriteOptions options;
        options.bigEndian = c.bigEndian;
        options.compress = c.compress;
        const std::vector<std::uint8_t> bytes = WriteBinary(doc, options);
        ASSERT_TRUE(IsBinaryFbx(bytes.data(), bytes.size()));
        // Real files end with this magic, padded to 16 bytes after the version.
        const std::uint8_t magic[16] = {0xf8, 0x5a, 0x8c, 0x6a, 0xde, 0xf5, 0xd9, 0x7e,
                                        0xec, 0xe9, 0x0c, 0xe3, 0x75, 0x8f, 0x29, 0x0b};
        EXPECT_EQ(0, std::memcmp(bytes.data() + bytes.size() - 16, magic, 16));
        EXPECT_EQ(0u, (bytes.size() - 144) % 16);
        parsed = ParseBuffer(bytes.data(), bytes.size());
    } else {
        const std::string text = WriteAscii(doc);
        const std::string comment = c.version < 7000 ? "; FBX 6.1.0 " : "; FBX 7.5.0 ";
        EXPECT_EQ(0u, text.rfind(comment + "project file\n", 0));
        EXPECT_EQ(c.version >= 7000, text.find("Vertices: *300 {") != std::string::npos);
        EXPECT_NE(std::string::npos, text.find("\"Geometry::pCube1\""));
        EXPECT_NE(std::string::npos, text.find("Quoted &quot;name&quot;"));
        EXPECT_NE(std::string::npos, text.find("\tContent: ,\n \"iVBORwAB\"\n"));
        parsed = fbxtest::ParseText(text);
    }
    ASSERT_TRUE(parsed.ok) << parsed.error;
    EXPECT_EQ(c.binary, parsed.document.binary);
    EXPECT_EQ(c.bigEndian, parsed.document.bigEndian);
    EXPECT_EQ(c.version, parsed.document.version);
    EXPECT_EQ(TreeText(doc.root, false), TreeText(parsed.document.root, false));
    // From 7000 on, binary files keep every value's type too.
    if (c.binary && c.version >= 7000) {
        EXPECT_EQ(TreeText(doc.root), TreeText(parsed.document.root));
    }
}

INSTANTIATE_TEST_SUITE_P(
    AllEncodings, EncodedTrees,
    ::testing::Values(Case{7400, true, false, false}, Case{7400, true, true, true},
                      Case{7500, true, false, false}, Case{7500, true, false, true},
                      Case{7700, true, true, true}, Case{7100, true, true, false},
                      Case{6100, true, false, true}, Case{7500, false, false, false},
                      Case{6100, false, false, false}));

// The encoder compresses large arrays only and refuses names too long for the format; the
// parser needs the whole header.
TEST(Encoders, CompressOnlyLargeArraysRefuseLongNamesNeedWholeHeaders) {
    BinaryWriteOptions raw;
    raw.compress = false;
    EXPECT_LT(WriteBinary(Sample(7500, true)).size(), WriteBinary(Sample(7500, true), raw).size());
    Document small;
    small.root.children = {Rec("A", {Value::MakeArray(std::vector<std::int32_t>{1, 2})})};
    const std::vector<std::uint8_t> file = WriteBinary(small);
    EXPECT_EQ(file.size(), WriteBinary(small, raw).size());
    EXPECT_TRUE(LooksLikeFbx(file.data(), file.size()));
    EXPECT_FALSE(IsBinaryFbx(file.data(), 20) || IsBinaryFbx(nullptr, 0));
    const ParseResult r = ParseBuffer(file.data(), 24);
    EXPECT_NE(r.ok ? std::string::npos : r.error.find("header"), std::string::npos) << r.error;
    small.root.children = {Rec(std::string(300, 'x'))};
    EXPECT_THROW(WriteBinary(small), WriteError);
}

// Plain scalar lists as older files write them: more than four numbers become one array of
// the widest type present, unless a text is among them.
TEST(BinaryPacking, LongScalarListsBecomeOneArray) {
    auto i = [](int v) { return Value::MakeInt(v, ValueType::Int32); };
    const Value letter = Text("U", ValueType::Word), half = Value::MakeFloat(0.5);
    Document doc;
    doc.version = 6100;
    doc.root.children = {
        Rec("PolygonVertexIndex", {i(0), i(-1), i(-2), i(-3), i(-4), i(-5),
                                   Value::MakeInt(9, ValueType::Int16), Value::MakeBool(true)}),
        Rec("KeyTime", {i(0), i(1), i(2), i(3), i(4), Value::MakeInt(46186158000LL)}),
        Rec("Mixed", {i(0), i(1), i(2), i(3), i(4), Value::MakeFloat(0.5, ValueType::Float32)}),
        Rec("Color", {half, half, half, half}),
        Rec("Property", {Text("Lcl Translation"), i(1), i(2), i(3), i(4), i(5), i(6)}),
        Rec("Key", {Value::MakeInt(0), half, letter, Text("s", ValueType::Word), half, half})};
    const std::vector<std::uint8_t> file = WriteBinary(doc);
    const ParseResult r = ParseBinary(file.data(), file.size());
    ASSERT_TRUE(r.ok) << r.error;
    EXPECT_EQ(TreeText(r.document.root), R"(PolygonVertexIndex: i[0,-1,-2,-3,-4,-5,9,1]
KeyTime: l[0,1,2,3,4,46186158000]
Mixed: d[0,1,2,3,4,0.5]
Color: D0.5, D0.5, D0.5, D0.5
Property: S"Lcl Translation", I1, I2, I3, I4, I5, I6
Key: L0, D0.5, W"U", W"s", D0.5, D0.5
)");
}

}  // namespace
}  // namespace fbx
