// What real exporters write that a strict reader would refuse: character arrays, records
// whose end offset is written as 0, and non-finite numbers in the spellings tools print.
// Damage of the same kind must still end with an error.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "fbx/format/Parse.h"
#include "support_binary_builder.h"

namespace {

using fbxtest::BinaryBuilder;
using Node = BinaryBuilder::Node;

fbx::ParseResult Parse(const std::vector<std::uint8_t>& bytes) {
    return fbx::ParseBuffer(bytes.data(), bytes.size());
}

fbx::ParseResult Parse(const std::string& text) {
    return fbx::ParseBuffer(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
}

TEST(Tolerance, CharacterArraysReadAsUnsignedBytes) {
    for (bool compress : {false, true}) {
        for (bool bigEndian : {false, true}) {
            BinaryBuilder b(7500, bigEndian);
            Node thumbnail("ImageData");
            b.Array(thumbnail, 'c', std::vector<std::uint8_t>{0, 7, 200, 255}, compress);
            const fbx::ParseResult r = Parse(b.Build({thumbnail}));
            ASSERT_TRUE(r.ok) << r.error;
            EXPECT_EQ(r.document.root.Child("ImageData")->Ints(),
                      (std::vector<std::int64_t>{0, 7, 200, 255}));
        }
    }
    BinaryBuilder b(7400);
    Node unknown("Data");
    b.RawArray(unknown, 'q', 2, 0, {1, 2});
    const fbx::ParseResult r = Parse(b.Build({unknown}));
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.error.find("unknown type code 0x71"), std::string::npos) << r.error;
}

// Top-level records A: I5, P: S"p" { C: D2.5 }, Z: I9 in a 7400 file, with the end offsets
// (the first four bytes of a record) of the records named in zeroed set to 0.
std::vector<std::uint8_t> WithoutEndOffsets(const std::string& zeroed) {
    BinaryBuilder b(7400);
    Node a("A"), p("P"), c("C"), z("Z");
    b.Scalar(a, 'I', std::int32_t{5});
    b.String(p, "p");
    b.Scalar(c, 'D', 2.5);
    b.Scalar(z, 'I', std::int32_t{9});
    p.children = {c};
    std::vector<std::uint8_t> file = b.Build({a, p, z});
    const std::size_t at[] = {27, 27 + 19, 27 + 19 + 20};  // A, P, C
    for (std::size_t i = 0; i < 3; ++i) {
        if (zeroed.find("APC"[i]) != std::string::npos)
            std::fill(file.begin() + at[i], file.begin() + at[i] + 4, 0);
    }
    return file;
}

TEST(Tolerance, ZeroEndOffsetsEndWhereTheContentsEnd) {
    fbx::ParseResult r = Parse(WithoutEndOffsets("AC"));
    ASSERT_TRUE(r.ok) << r.error;
    ASSERT_EQ(r.document.root.children.size(), 3u);
    EXPECT_EQ(r.document.root.Child("A")->IntAt(0), 5);
    ASSERT_EQ(r.document.root.Child("P")->children.size(), 1u);
    EXPECT_EQ(r.document.root.Child("P")->Child("C")->DoubleAt(0), 2.5);
    EXPECT_EQ(r.document.root.Child("Z")->IntAt(0), 9);

    // A record that holds records cannot do without its end offset.
    r = Parse(WithoutEndOffsets("P"));
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.error.find("\"P\" at offset 46 has no end offset"), std::string::npos) << r.error;
    // A file cut after a record without end offset still lacks its closing null record.
    std::vector<std::uint8_t> cut = WithoutEndOffsets("A");
    cut.resize(46);
    r = Parse(cut);
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.error.find("without the null record"), std::string::npos) << r.error;
}

TEST(Tolerance, NonFiniteNumbersInTheirPrintedSpellings) {
    const double inf = INFINITY;
    const struct {
        const char* text;
        double value;  // NAN for any not-a-number
    } kCases[] = {
        {"inf", inf},      {"-inf", -inf},      {"+inf", inf},     {"INF", inf},
        {"infinity", inf}, {"-Infinity", -inf}, {"1.#INF", inf},   {"-1.#INF", -inf},
        {"1.#inf00", inf}, {"+1.#INF", inf},    {"nan", NAN},      {"-nan", NAN},
        {"NaN", NAN},      {"1.#IND", NAN},     {"-1.#IND", NAN},  {"1.#QNAN", NAN},
        {"1.#SNAN", NAN},  {"-1.#qnan0", NAN},  {"nan(ind)", NAN}, {"-nan(ind)", NAN},
    };
    for (const auto& c : kCases) {
        const std::string t = c.text,
                          text = "V: " + t + "\nA: *3 { a: 1," + t + ",2 }\nW: " + t + ",1";
        const fbx::ParseResult r = Parse(text);
        ASSERT_TRUE(r.ok) << t << ": " << r.error;
        for (const char* name : {"V", "A", "W"}) {
            const double got = r.document.root.Child(name)->Doubles().at(name[0] == 'A' ? 1 : 0);
            EXPECT_TRUE(std::isnan(c.value) ? std::isnan(got) : got == c.value) << t << " " << name;
        }
    }
    for (const char* damaged : {"V: 1.#XYZ\n", "A: *2 { a: 1,nan(ind }\n", "V: -infx\n"}) {
        const fbx::ParseResult r = Parse(damaged);
        EXPECT_FALSE(r.ok) << damaged;
        EXPECT_FALSE(r.error.empty()) << damaged;
    }
}

}  // namespace
