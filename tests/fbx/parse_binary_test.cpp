// The binary parser on files built byte by byte: every value type, arrays raw and
// compressed, 32- and 64-bit record headers, both byte orders, and scalar-list packing.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "fbx/format/Parse.h"
#include "support_binary_builder.h"

namespace {

using fbxtest::BinaryBuilder;
using Node = BinaryBuilder::Node;

class BinaryLayouts : public ::testing::TestWithParam<std::tuple<std::uint32_t, bool>> {};

TEST_P(BinaryLayouts, ScalarsTextsArraysAndChildrenRoundTrip) {
    const auto [version, bigEndian] = GetParam();
    BinaryBuilder b(version, bigEndian);
    Node scalars{"Scalars"};
    b.Bool(scalars, true);
    b.Int16(scalars, -12345);
    b.Int32(scalars, -2000000000);
    b.Int64(scalars, 1907292236800);
    b.Float32(scalars, 1.5f);
    b.Float64(scalars, -0.1);
    b.String(scalars, std::string("pCube1\0\1Model", 13));
    b.String(scalars, std::string("\x89PNG\0\x01", 6), 'R');
    b.Char(scalars, 'Y');

    Node arrays{"Arrays"};
    b.Int32Array(arrays, {1, -2, 3});
    b.Int64Array(arrays, {1LL << 40, -5}, true);
    b.Float32Array(arrays, {0.25f, -8.0f});
    b.Float64Array(arrays, std::vector<double>(1000, 2.5), true);
    b.BoolArray(arrays, {1, 0, 1});
    b.Int32Array(arrays, {});

    Node parent{"Parent"};
    parent.children = {scalars, arrays, Node{"Empty"}};
    Node second{"Second"};
    b.Int32(second, 7);
    const std::vector<std::uint8_t> file = b.Build({parent, second});

    ASSERT_TRUE(fbx::IsBinaryFbx(file.data(), file.size()));
    const fbx::ParseResult r = fbx::ParseBuffer(file.data(), file.size());
    ASSERT_TRUE(r.ok) << r.error;
    EXPECT_TRUE(r.document.binary);
    EXPECT_EQ(r.document.bigEndian, bigEndian);
    EXPECT_EQ(r.document.version, version);
    ASSERT_EQ(r.document.root.children.size(), 2u);
    EXPECT_EQ(r.document.root.children[1].IntAt(0), 7);
    const fbx::Record& p = r.document.root.children[0];
    ASSERT_EQ(p.children.size(), 3u);
    EXPECT_TRUE(p.children[2].values.empty());

    const fbx::Record& s = p.children[0];
    ASSERT_EQ(s.values.size(), 9u);
    EXPECT_EQ(s.values[0].Type(), fbx::ValueType::Bool);
    EXPECT_EQ(s.IntAt(0), 1);
    EXPECT_EQ(s.values[1].Type(), fbx::ValueType::Int16);
    EXPECT_EQ(s.IntAt(1), -12345);
    EXPECT_EQ(s.values[2].Type(), fbx::ValueType::Int32);
    EXPECT_EQ(s.IntAt(2), -2000000000);
    EXPECT_EQ(s.values[3].Type(), fbx::ValueType::Int64);
    EXPECT_EQ(s.IntAt(3), 1907292236800);
    EXPECT_EQ(s.values[4].Type(), fbx::ValueType::Float32);
    EXPECT_EQ(s.DoubleAt(4), 1.5);
    EXPECT_EQ(s.values[5].Type(), fbx::ValueType::Float64);
    EXPECT_EQ(s.DoubleAt(5), -0.1);
    EXPECT_EQ(s.TextAt(6), std::string("pCube1\0\1Model", 13));
    EXPECT_EQ(s.values[7].Type(), fbx::ValueType::Raw);
    EXPECT_EQ(s.TextAt(7), std::string("\x89PNG\0\x01", 6));
    EXPECT_EQ(s.values[8].Type(), fbx::ValueType::Word);
    EXPECT_EQ(s.TextAt(8), "Y");

    const fbx::Record& a = p.children[1];
    ASSERT_EQ(a.values.size(), 6u);
    ASSERT_NE(a.values[0].Int32s(), nullptr);
    EXPECT_EQ(a.values[0].Count(), 3u);
    EXPECT_EQ(a.values[0].Int32s()[1], -2);
    ASSERT_NE(a.values[1].Int64s(), nullptr);
    EXPECT_EQ(a.values[1].Int64s()[0], 1LL << 40);
    EXPECT_EQ(a.values[1].Int64s()[1], -5);
    ASSERT_NE(a.values[2].Float32s(), nullptr);
    EXPECT_EQ(a.values[2].Float32s()[1], -8.0f);
    ASSERT_NE(a.values[3].Float64s(), nullptr);
    ASSERT_EQ(a.values[3].Count(), 1000u);
    EXPECT_EQ(a.values[3].Float64s()[999], 2.5);
    ASSERT_NE(a.values[4].Bools(), nullptr);
    EXPECT_EQ(a.values[4].IntAt(0), 1);
    EXPECT_EQ(a.values[4].IntAt(1), 0);
    EXPECT_EQ(a.values[5].Count(), 0u);
    EXPECT_TRUE(a.values[5].IsArray());
}

INSTANTIATE_TEST_SUITE_P(HeadersAndByteOrders, BinaryLayouts,
                         ::testing::Combine(::testing::Values(6100u, 7400u, 7500u, 7700u),
                                            ::testing::Bool()));

fbx::Record ParseOne(const Node& node, std::uint32_t version = 7400) {
    const std::vector<std::uint8_t> file = BinaryBuilder(version).Build({node});
    fbx::ParseResult r = fbx::ParseBinary(file.data(), file.size());
    EXPECT_TRUE(r.ok) << r.error;
    return r.ok && !r.document.root.children.empty() ? r.document.root.children[0] : fbx::Record{};
}

TEST(BinaryPacking, LongScalarListsBecomeOneArray) {
    BinaryBuilder b(6100);
    Node doubles{"Vertices"};
    for (int i = 0; i < 3000; ++i)
        b.Float64(doubles, i * 0.5);
    fbx::Record r = ParseOne(doubles);
    ASSERT_EQ(r.values.size(), 1u);
    EXPECT_EQ(r.values[0].Type(), fbx::ValueType::Float64Array);
    EXPECT_EQ(r.NumberCount(), 3000u);
    EXPECT_EQ(r.values[0].DoubleAt(2999), 1499.5);

    Node ints{"PolygonVertexIndex"};
    for (int i = 0; i < 6; ++i)
        b.Int32(ints, -i);
    b.Int16(ints, 9);
    b.Bool(ints, true);
    r = ParseOne(ints);
    ASSERT_EQ(r.values.size(), 1u);
    EXPECT_EQ(r.values[0].Type(), fbx::ValueType::Int32Array);
    EXPECT_EQ(r.Ints(), (std::vector<std::int64_t>{0, -1, -2, -3, -4, -5, 9, 1}));

    Node wide{"KeyTime"};
    for (int i = 0; i < 5; ++i)
        b.Int32(wide, i);
    b.Int64(wide, 46186158000);
    r = ParseOne(wide);
    ASSERT_EQ(r.values.size(), 1u);
    EXPECT_EQ(r.values[0].Type(), fbx::ValueType::Int64Array);
    EXPECT_EQ(r.values[0].IntAt(5), 46186158000);

    Node mixed{"Mixed"};
    for (int i = 0; i < 5; ++i)
        b.Int32(mixed, i);
    b.Float32(mixed, 0.5f);
    r = ParseOne(mixed);
    ASSERT_EQ(r.values.size(), 1u);
    EXPECT_EQ(r.values[0].Type(), fbx::ValueType::Float64Array);
    EXPECT_EQ(r.values[0].DoubleAt(5), 0.5);
}

TEST(BinaryPacking, ShortListsAndListsWithTextsStayScalars) {
    BinaryBuilder b(6100);
    Node color{"Color"};
    for (int i = 0; i < 4; ++i)
        b.Float64(color, 1.0);
    EXPECT_EQ(ParseOne(color).values.size(), 4u);

    Node property{"Property"};
    b.String(property, "Lcl Translation");
    for (int i = 0; i < 6; ++i)
        b.Float64(property, i);
    EXPECT_EQ(ParseOne(property).values.size(), 7u);

    Node key{"Key"};
    b.Int64(key, 0);
    b.Float64(key, 1.0);
    b.Char(key, 'U');
    b.Char(key, 's');
    b.Float64(key, 0.0);
    b.Float64(key, 0.0);
    const fbx::Record r = ParseOne(key);
    ASSERT_EQ(r.values.size(), 6u);
    EXPECT_EQ(r.TextAt(2), "U");
    EXPECT_EQ(r.TextAt(3), "s");
}

TEST(BinaryHeader, DetectionAndShortHeaders) {
    const std::vector<std::uint8_t> file = BinaryBuilder(7400).Build({Node{"A"}});
    EXPECT_TRUE(fbx::IsBinaryFbx(file.data(), file.size()));
    EXPECT_TRUE(fbx::LooksLikeFbx(file.data(), file.size()));
    EXPECT_FALSE(fbx::IsBinaryFbx(file.data(), 20));
    EXPECT_FALSE(fbx::IsBinaryFbx(nullptr, 0));
    const fbx::ParseResult r = fbx::ParseBuffer(file.data(), 24);
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.error.find("header"), std::string::npos) << r.error;
}

}  // namespace
