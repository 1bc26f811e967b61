// Record-tree serialisers: a hand-built tree written in binary (both header sizes, both byte
// orders, compressed or not) and ASCII (both array styles) reads back as the same tree.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "fbx/format/Encode.h"
#include "writer_support.h"

namespace fbx::test {
namespace {

// A tree exercising every value type, nesting, empty blocks and large arrays.
Document SampleDocument(std::uint32_t version, bool binary) {
    Document doc;
    doc.version = version;
    std::vector<double> vertices;
    std::vector<std::int32_t> indices;
    for (int i = 0; i < 3000; ++i) {
        vertices.push_back(std::sin(i * 0.37) * 1000.0 / 3.0);
        indices.push_back(i % 4 == 3 ? ~(i % 97) : i % 97);
    }
    Record header = MakeRecord(
        "FBXHeaderExtension", {},
        {MakeRecord("FBXHeaderVersion", {I32(1003)}), MakeRecord("FBXVersion", {I32(version)})});
    Record geometry = MakeRecord(
        "Geometry",
        {I64(1234567890123LL), Str(ObjectName("Geometry", "pCube1", binary)), Str("Mesh")},
        {MakeRecord("Vertices", {Value::MakeArray(vertices)}),
         MakeRecord("PolygonVertexIndex", {Value::MakeArray(indices)}),
         MakeRecord("Small", {Value::MakeArray(std::vector<float>{0.5f, -1.25f, 3.0e-7f})}),
         MakeRecord("Ids", {Value::MakeArray(std::vector<std::int64_t>{1, -2, 1LL << 40})}),
         MakeRecord("Flags", {Value::MakeArray(std::vector<std::uint8_t>{1, 0, 1})}),
         MakeRecord("Empty", {Value::MakeArray(std::vector<double>{})})});
    Record props =
        MakeRecord("Properties70", {},
                   {MakeRecord("P", {Str("Lcl Translation"), Str("Lcl Translation"), Str(""),
                                     Str("A"), F64(0.1), F64(-2.5e-300), F64(1.0 / 3.0)}),
                    MakeRecord("P", {Str("Quoted \"name\""), Str("KString"), Str(""), Str(""),
                                     Str("C:\\path\\file.png")})});
    Record scalars =
        MakeRecord("Scalars", {Value::MakeInt(-7, ValueType::Int16), I32(-2147483647 - 1),
                               I64(std::numeric_limits<std::int64_t>::max()),
                               Value::MakeFloat(0.25, ValueType::Float32), F64(6.02214076e23)});
    Record objects = MakeRecord("Objects", {}, {geometry, props, scalars});
    doc.root.children = {header, MakeRecord("References"), objects,
                         MakeRecord("Connections", {},
                                    {MakeRecord("C", {Str("OO"), I64(1234567890123LL), I64(0)})})};
    return doc;
}

std::uint64_t ReadUint(const std::vector<std::uint8_t>& bytes, std::size_t at, int size,
                       bool bigEndian) {
    std::uint64_t v = 0;
    for (int i = 0; i < size; ++i) {
        int shift = bigEndian ? (size - 1 - i) * 8 : i * 8;
        v |= static_cast<std::uint64_t>(bytes.at(at + i)) << shift;
    }
    return v;
}

struct BinaryCase {
    std::uint32_t version;
    bool bigEndian;
    bool compress;
};

class BinaryRoundTrip : public ::testing::TestWithParam<BinaryCase> {};

TEST_P(BinaryRoundTrip, ReadsBackTheSameTree) {
    const BinaryCase c = GetParam();
    Document doc = SampleDocument(c.version, true);
    BinaryWriteOptions options;
    options.bigEndian = c.bigEndian;
    options.compress = c.compress;
    options.scalarListsBefore7000 = false;
    std::vector<std::uint8_t> bytes = WriteBinary(doc, options);

    ASSERT_GE(bytes.size(), 27u);
    EXPECT_EQ(0, std::memcmp(bytes.data(), "Kaydara FBX Binary  \0\x1a", 22));
    EXPECT_EQ(c.bigEndian ? 1 : 0, bytes[22]);
    EXPECT_EQ(c.version, ReadUint(bytes, 23, 4, c.bigEndian));
    // The first record's header: end offset, counts, then the name length and name.
    const int field = c.version >= 7500 ? 8 : 4;
    EXPECT_EQ(18u, bytes.at(27 + 3 * field));
    EXPECT_EQ(0, std::memcmp(&bytes.at(28 + 3 * field), "FBXHeaderExtension", 18));
    const std::uint64_t end = ReadUint(bytes, 27, field, c.bigEndian);
    EXPECT_GT(end, 27u);
    EXPECT_LT(end, bytes.size());
    // Footer: closing magic, with the version 136 bytes before the end.
    const std::uint8_t magic[16] = {0xf8, 0x5a, 0x8c, 0x6a, 0xde, 0xf5, 0xd9, 0x7e,
                                    0xec, 0xe9, 0x0c, 0xe3, 0x75, 0x8f, 0x29, 0x0b};
    EXPECT_EQ(0, std::memcmp(bytes.data() + bytes.size() - 16, magic, 16));
    EXPECT_EQ(c.version, ReadUint(bytes, bytes.size() - 140, 4, c.bigEndian));
    EXPECT_EQ(0u, (bytes.size() - 144) % 16);

    ParseResult parsed = ParseBytes(bytes);
    ASSERT_TRUE(parsed.ok) << parsed.error;
    EXPECT_TRUE(parsed.document.binary);
    EXPECT_EQ(c.bigEndian, parsed.document.bigEndian);
    EXPECT_EQ(c.version, parsed.document.version);
    EXPECT_TRUE(SameTree(doc.root, parsed.document.root));
    // Names keep their binary spelling and typed arrays keep their type.
    const Record* geometry = parsed.document.root.Child("Objects")->Child("Geometry");
    ASSERT_NE(nullptr, geometry);
    EXPECT_EQ(std::string("pCube1\0\x01Geometry", 16), geometry->TextAt(1));
    EXPECT_NE(nullptr, geometry->Child("Vertices")->values.at(0).Float64s());
    EXPECT_NE(nullptr, geometry->Child("PolygonVertexIndex")->values.at(0).Int32s());
    EXPECT_NE(nullptr, geometry->Child("Small")->values.at(0).Float32s());
}

INSTANTIATE_TEST_SUITE_P(
    AllEncodings, BinaryRoundTrip,
    ::testing::Values(BinaryCase{7400, false, false}, BinaryCase{7400, false, true},
                      BinaryCase{7500, false, false}, BinaryCase{7500, false, true},
                      BinaryCase{7500, true, true}, BinaryCase{7100, true, false}));

TEST(BinaryWriter, CompressionShrinksLargeArraysOnly) {
    Document doc = SampleDocument(7500, true);
    BinaryWriteOptions raw;
    raw.compress = false;
    std::vector<std::uint8_t> plain = WriteBinary(doc, raw);
    std::vector<std::uint8_t> packed = WriteBinary(doc);
    EXPECT_LT(packed.size(), plain.size());
    // A small array stays raw even when compression is on: its encoding field reads 0.
    Document small;
    small.version = 7500;
    small.root.children = {MakeRecord("A", {Value::MakeArray(std::vector<std::int32_t>{1, 2})})};
    std::vector<std::uint8_t> bytes = WriteBinary(small);
    // 27 header + 25 record header + 1 name, then 'i', count, encoding.
    ASSERT_EQ('i', bytes.at(53));
    EXPECT_EQ(2u, ReadUint(bytes, 54, 4, false));
    EXPECT_EQ(0u, ReadUint(bytes, 58, 4, false));
}

TEST(BinaryWriter, PreSevenThousandListsBecomeScalarsLikeRealFiles) {
    Document doc = SampleDocument(6100, true);
    std::vector<std::uint8_t> bytes = WriteBinary(doc);
    ParseResult parsed = ParseBytes(bytes);
    ASSERT_TRUE(parsed.ok) << parsed.error;
    EXPECT_TRUE(SameTree(doc.root, parsed.document.root));
}

TEST(BinaryWriter, RejectsNamesTooLongForTheFormat) {
    Document doc;
    doc.root.children = {MakeRecord(std::string(300, 'x'))};
    EXPECT_THROW(WriteBinary(doc), WriteError);
}

TEST(AsciiWriter, SevenThousandLayoutReadsBackTheSameTree) {
    Document doc = SampleDocument(7500, false);
    std::string text = WriteAscii(doc);
    EXPECT_EQ(0u, text.rfind("; FBX 7.5.0 project file\n", 0));
    EXPECT_NE(std::string::npos, text.find("Vertices: *3000 {"));
    EXPECT_NE(std::string::npos, text.find("\"Geometry::pCube1\""));
    EXPECT_NE(std::string::npos, text.find("Quoted &quot;name&quot;"));
    EXPECT_EQ(std::string::npos, text.find("\"\"name"));

    ParseResult parsed = ParseText(text);
    ASSERT_TRUE(parsed.ok) << parsed.error;
    EXPECT_FALSE(parsed.document.binary);
    EXPECT_EQ(7500u, parsed.document.version);
    EXPECT_TRUE(SameTree(doc.root, parsed.document.root));
    const Record* p =
        parsed.document.root.Child("Objects")->Child("Properties70")->Children("P").at(1);
    EXPECT_EQ("Quoted \"name\"", p->TextAt(0));
}

TEST(AsciiWriter, SixThousandLayoutWritesPlainNumberLists) {
    Document doc = SampleDocument(6100, false);
    std::string text = WriteAscii(doc);
    EXPECT_EQ(0u, text.rfind("; FBX 6.1.0 project file\n", 0));
    EXPECT_EQ(std::string::npos, text.find("*3000"));
    EXPECT_NE(std::string::npos, text.find("PolygonVertexIndex: 0,1,2,-4,"));
    // Long lists are broken over several lines, each ending with a comma.
    std::size_t start = text.find("Vertices: ");
    std::size_t end = text.find("PolygonVertexIndex");
    std::string vertices = text.substr(start, end - start);
    EXPECT_GT(std::count(vertices.begin(), vertices.end(), '\n'), 5);
    EXPECT_EQ(std::string::npos, vertices.find("\n,"));

    ParseResult parsed = ParseText(text);
    ASSERT_TRUE(parsed.ok) << parsed.error;
    EXPECT_EQ(6100u, parsed.document.version);
    EXPECT_TRUE(SameTree(doc.root, parsed.document.root));
}

TEST(AsciiWriter, NumbersReadBackBitForBit) {
    const std::vector<double> values = {
        0.1, 1.0 / 3.0, 1e-300, 123456789.123456789, 5e-324, 1.7976931348623157e308, -42.0};
    Document doc;
    doc.version = 7500;
    doc.root.children = {MakeRecord("List", {Value::MakeArray(values)}),
                         MakeRecord("Big", {I64(-9007199254740993LL)})};
    ParseResult parsed = ParseText(WriteAscii(doc));
    ASSERT_TRUE(parsed.ok) << parsed.error;
    std::vector<double> back = parsed.document.root.Child("List")->Doubles();
    ASSERT_EQ(values.size(), back.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        std::uint64_t a, b;
        std::memcpy(&a, &values[i], 8);
        std::memcpy(&b, &back[i], 8);
        EXPECT_EQ(a, b) << "value " << i;
    }
    EXPECT_EQ(-9007199254740993LL, parsed.document.root.Child("Big")->IntAt(0));
}

TEST(AsciiWriter, FormatsVersionsAndNames) {
    EXPECT_EQ("7.5.0", VersionText(7500));
    EXPECT_EQ("6.1.0", VersionText(6100));
    EXPECT_EQ("Model::Box 01", ObjectName("Model", "Box 01", false));
    EXPECT_EQ(std::string("Box 01\0\x01Model", 13), ObjectName("Model", "Box 01", true));
    EXPECT_EQ("0.1", FormatDouble(0.1));
    EXPECT_EQ("1", FormatDouble(1.0));
    // Floats are written as the double they widen to, so ASCII files keep their exact value.
    EXPECT_EQ("0.800000011920929", FormatDouble(0.8f).substr(0, 17));
}

}  // namespace
}  // namespace fbx::test
