// Damaged input: the malformed corpus, truncations, random byte flips, deep nesting and
// absurd declared sizes. Each must end in success or a clear error, with bounded memory.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "support_binary_builder.h"
#include "support_corpus.h"

namespace {

using fbxtest::BinaryBuilder;
using Node = BinaryBuilder::Node;
using Bytes = std::vector<std::uint8_t>;

fbx::ParseResult Parse(const Bytes& bytes) {
    return fbx::ParseBuffer(bytes.data(), bytes.size());
}

// Every malformed corpus file, truncations of files of each encoding, header size and byte
// order at every length up to 64 and every 97 bytes after, and 150 rounds of up to four
// random byte flips: a failed parse says why, and nothing is complete inside the first record.
TEST(Robustness, MalformedTruncatedAndFlippedFilesEndCleanly) {
    for (const std::string& path : fbxtest::CorpusFiles("fbx-malformed")) {
        const fbx::ParseResult r = fbx::ParseFile(path);
        EXPECT_TRUE(r.ok || !r.error.empty()) << path;
    }
    std::mt19937 random(20240531);
    for (const char* name :
         {"maya_cube_6100_binary.fbx", "maya_cube_7400_binary.fbx",
          "maya_cube_big_endian_7500_binary.fbx", "maya_cube_7400_ascii.fbx",
          "max2009_cube_anim_6100_ascii.fbx", "max2009_cube_texture_5800_binary.fbx"}) {
        const Bytes bytes = fbxtest::LoadFile(fbxtest::CorpusPath(std::string("fbx/") + name));
        ASSERT_FALSE(bytes.empty()) << name;
        for (std::size_t n = 0; n < bytes.size(); n += n < 64 ? 1 : 97) {
            // A copy of exactly n bytes, so reading past the cut is caught by the sanitizers.
            const fbx::ParseResult r = Parse({bytes.begin(), bytes.begin() + n});
            EXPECT_TRUE(n >= 400 ? r.ok || !r.error.empty() : !r.ok && !r.error.empty())
                << name << " cut at " << n;
        }
        for (int round = 0; round < 150; ++round) {
            Bytes damaged = bytes;
            for (int f = 0, flips = 1 + static_cast<int>(random() % 4); f < flips; ++f)
                damaged[random() % damaged.size()] ^= static_cast<std::uint8_t>(1 + random() % 255);
            const fbx::ParseResult r = Parse(damaged);
            EXPECT_TRUE(r.ok || !r.error.empty()) << name << " round " << round;
        }
    }
}

TEST(Robustness, DeepNestingIsRefusedInBothEncodings) {
    std::string text;
    Node deep("A");
    for (int i = 0; i < 600; ++i) {
        text += "A: {";
        Node parent("A");
        parent.children = {std::move(deep)};
        deep = std::move(parent);
    }
    for (const fbx::ParseResult& r :
         {fbxtest::ParseText(text), Parse(BinaryBuilder(7400).Build({deep}))}) {
        EXPECT_FALSE(r.ok);
        EXPECT_NE(r.error.find("nested deeper than"), std::string::npos) << r.error;
    }
}

TEST(Robustness, HugeDeclaredCountsAreCheckedBeforeAllocating) {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const long before = usage.ru_maxrss;
    const BinaryBuilder b(7400);
    const Bytes tiny = BinaryBuilder::Compress(Bytes(64, 0));
    // Array type, declared count, encoding, payload, and the error it must give.
    const std::tuple<char, std::uint32_t, std::uint32_t, Bytes, const char*> cases[] = {
        {'d', 0xFFFFFFFFu, 1, tiny, "more than its"},
        {'d', 0xFFFFFFFFu, 0, Bytes(16), "holds 16 bytes"},
        {'i', 100, 1, tiny, "different size"},
        {'i', 8, 1, Bytes(40, 0x55), "does not decode"},
        {'f', 2, 7, Bytes(8), "unknown encoding"},
    };
    for (const auto& [type, count, encoding, payload, message] : cases) {
        Node node("Vertices");
        b.RawArray(node, type, count, encoding, payload);
        const fbx::ParseResult r = Parse(b.Build({node}));
        EXPECT_FALSE(r.ok) << message;
        EXPECT_NE(r.error.find(message), std::string::npos) << r.error;
        EXPECT_NE(r.error.find("\"Vertices\""), std::string::npos) << r.error;
    }
    const fbx::ParseResult r = fbxtest::ParseText("Vertices: *99999999999 { a: 1,2,3 }\n");
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.error.find("declares 99999999999 values"), std::string::npos) << r.error;
    getrusage(RUSAGE_SELF, &usage);
    EXPECT_LT(usage.ru_maxrss - before, 64 * 1024);
}

// Arrays of a megabyte and more are decoded beside the parse: each still lands in its place,
// and a damaged one stops the file where it is, whatever follows.
TEST(Robustness, LargeArraysKeepTheirPlaceAndADamagedOneEndsTheFileThere) {
    const BinaryBuilder b(7500);
    std::vector<double> big(200000);
    for (std::size_t i = 0; i < big.size(); ++i)
        big[i] = static_cast<double>(i % 1000) * 0.5;
    Node a("A"), damaged("B"), c("C"), objects("Objects"), after("After");
    b.Scalar(a, 'I', 7);
    b.Array(a, 'd', big, true);
    b.Scalar(damaged, 'I', 1);
    // 300,000 ints promised, 4 bytes fewer compressed.
    b.RawArray(damaged, 'i', 300000, 1, BinaryBuilder::Compress(Bytes(1199996, 1)));
    b.Scalar(c, 'I', 3);
    b.Scalar(after, 'I', 4);
    for (bool damage : {false, true}) {
        objects.children = damage ? std::vector<Node>{a, damaged, c} : std::vector<Node>{a, c};
        const fbx::ParseResult r = Parse(b.Build({objects, after}));
        const fbx::Record& root = r.document.root;
        ASSERT_EQ(root.children.size(), damage ? 1u : 2u) << r.error;
        const fbx::Record& read = root.children[0];
        ASSERT_EQ(read.children.size(), 2u);
        ASSERT_EQ(read.children[0].values.size(), 2u);
        const fbx::Value& array = read.children[0].values[1];
        ASSERT_EQ(array.Count(), big.size());
        EXPECT_EQ(array.DoubleAt(1999), big[1999]);
        EXPECT_EQ(r.ok, !damage);
        if (damage) {
            EXPECT_EQ(read.children[1].name, "B");
            EXPECT_EQ(read.children[1].values.size(), 1u);
            EXPECT_NE(r.error.find("\"B\""), std::string::npos) << r.error;
            EXPECT_NE(r.error.find("different size"), std::string::npos) << r.error;
        }
    }
}

TEST(Robustness, RecordOffsetsAreCheckedAgainstParentAndFile) {
    const BinaryBuilder b(7400);
    Node child("Child"), parent("Parent");
    b.Scalar(child, 'I', 1);
    parent.children = {child};
    const Bytes good = b.Build({parent});
    ASSERT_TRUE(Parse(good).ok);
    const std::size_t childAt = 27 + 13 + 6;
    // The byte changed, its new value, and the error it must give.
    const std::tuple<std::size_t, std::uint8_t, const char*> damages[] = {
        {28, 0xFF, "record \"Parent\" at offset 27 ends past the end of the file"},
        {childAt, static_cast<std::uint8_t>(good[childAt] + 20),
         "\"Child\" at offset 46 ends past the end of its parent"},
        {childAt + 8, 100, "bytes of values"},
        {childAt + 13 + 5, 'Q', "unknown type code 0x51"},
    };
    for (const auto& [at, value, message] : damages) {
        Bytes bad = good;
        bad[at] = value;
        const fbx::ParseResult r = Parse(bad);
        EXPECT_FALSE(r.ok) << message;
        EXPECT_NE(r.error.find(message), std::string::npos) << r.error;
        // The tree read before the damage is kept.
        ASSERT_EQ(r.document.root.children.size(), 1u) << message;
        EXPECT_EQ(r.document.root.children[0].name, "Parent");
    }
}

}  // namespace
