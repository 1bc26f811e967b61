// Damaged input: the malformed corpus, truncations, random byte flips, deep nesting and
// absurd declared sizes. Each must end in success or a clear error, with bounded memory.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <random>
#include <string>
#include <vector>

#include "fbx/format/Parse.h"
#include "support_binary_builder.h"
#include "support_corpus.h"

namespace {

using fbxtest::BaseName;
using fbxtest::BinaryBuilder;
using Node = BinaryBuilder::Node;

fbx::ParseResult Parse(const std::vector<std::uint8_t>& bytes, std::size_t size) {
    return fbx::ParseBuffer(bytes.data(), size);
}

long PeakMemoryKiB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

TEST(Robustness, MalformedCorpusFilesEndCleanly) {
    const auto files = fbxtest::CorpusFiles("fbx-malformed");
    ASSERT_FALSE(files.empty());
    for (const std::string& path : files) {
        const fbx::ParseResult r = fbx::ParseFile(path);
        if (!r.ok) {
            EXPECT_FALSE(r.error.empty()) << BaseName(path);
        }
    }
}

const char* const kTruncated[] = {
    "maya_cube_6100_binary.fbx",
    "maya_cube_7400_binary.fbx",
    "maya_cube_big_endian_7500_binary.fbx",
    "maya_cube_7400_ascii.fbx",
    "max2009_cube_anim_6100_ascii.fbx",
    "max2009_cube_texture_5800_binary.fbx",
};

TEST(Robustness, TruncatedFilesFailWithAnError) {
    for (const char* name : kTruncated) {
        const std::vector<std::uint8_t> bytes =
            fbxtest::LoadFile(fbxtest::CorpusPath(std::string("fbx/") + name));
        ASSERT_FALSE(bytes.empty()) << name;
        std::vector<std::size_t> cuts;
        for (std::size_t n = 0; n < 64; ++n)
            cuts.push_back(n);
        for (std::size_t n = 64; n < bytes.size(); n += 97)
            cuts.push_back(n);
        for (std::size_t n : cuts) {
            // A copy of exactly n bytes, so reading past the cut is caught by the sanitizers.
            const std::vector<std::uint8_t> cut(bytes.begin(), bytes.begin() + n);
            const fbx::ParseResult r = Parse(cut, cut.size());
            if (!r.ok) {
                EXPECT_FALSE(r.error.empty()) << name << " cut at " << n;
            }
            // Inside the first record nothing can be complete.
            if (n < 400) {
                EXPECT_FALSE(r.ok) << name << " cut at " << n;
            }
        }
    }
}

TEST(Robustness, RandomByteFlipsNeverCrash) {
    std::mt19937 random(20240531);
    for (const char* name : kTruncated) {
        const std::vector<std::uint8_t> bytes =
            fbxtest::LoadFile(fbxtest::CorpusPath(std::string("fbx/") + name));
        ASSERT_FALSE(bytes.empty()) << name;
        for (int round = 0; round < 150; ++round) {
            std::vector<std::uint8_t> damaged = bytes;
            const int flips = 1 + static_cast<int>(random() % 4);
            for (int f = 0; f < flips; ++f) {
                damaged[random() % damaged.size()] ^= static_cast<std::uint8_t>(1 + random() % 255);
            }
            const fbx::ParseResult r = Parse(damaged, damaged.size());
            if (!r.ok) {
                EXPECT_FALSE(r.error.empty()) << name << " round " << round;
            }
        }
    }
}

TEST(Robustness, DeepAsciiNestingIsRefused) {
    std::string text;
    for (int i = 0; i < 100000; ++i)
        text += "A: {";
    const fbx::ParseResult r =
        fbx::ParseBuffer(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.error.find("nested deeper than"), std::string::npos) << r.error;
}

TEST(Robustness, DeepBinaryNestingIsRefused) {
    // 100000 records each holding the next: headers first, then the null terminators.
    const std::size_t levels = 100000;
    std::vector<std::uint8_t> file = BinaryBuilder(7400).Build({});
    file.resize(27);
    auto put32 = [&file](std::uint32_t v) {
        for (int i = 0; i < 4; ++i)
            file.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
    };
    for (std::size_t k = 0; k < levels; ++k) {
        const std::size_t end = 27 + 14 * levels + 13 * (levels - 1 - k);
        put32(static_cast<std::uint32_t>(end));
        put32(0);
        put32(0);
        file.push_back(1);
        file.push_back('A');
    }
    file.resize(file.size() + 13 * levels, 0);
    const fbx::ParseResult r = Parse(file, file.size());
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.error.find("nested deeper than"), std::string::npos) << r.error;
}

TEST(Robustness, HugeDeclaredCountsAreCheckedBeforeAllocating) {
    const long before = PeakMemoryKiB();
    BinaryBuilder b(7400);
    const std::vector<std::uint8_t> tiny =
        BinaryBuilder::Compress(std::vector<std::uint8_t>(64, 0));
    struct Case {
        char type;
        std::uint32_t count;
        std::uint32_t encoding;
        std::vector<std::uint8_t> payload;
        const char* message;
    };
    const Case cases[] = {
        {'d', 0xFFFFFFFFu, 1, tiny, "more than its"},
        {'d', 0xFFFFFFFFu, 0, std::vector<std::uint8_t>(16), "holds 16 bytes"},
        {'i', 100, 1, tiny, "different size"},
        {'i', 8, 1, std::vector<std::uint8_t>(40, 0x55), "does not decode"},
        {'f', 2, 7, std::vector<std::uint8_t>(8), "unknown encoding"},
    };
    for (const Case& c : cases) {
        Node node("Vertices");
        b.RawArray(node, c.type, c.count, c.encoding, c.payload);
        const std::vector<std::uint8_t> file = b.Build({node});
        const fbx::ParseResult r = Parse(file, file.size());
        EXPECT_FALSE(r.ok) << c.message;
        EXPECT_NE(r.error.find(c.message), std::string::npos) << r.error;
        EXPECT_NE(r.error.find("\"Vertices\""), std::string::npos) << r.error;
    }
    const std::string text = "Vertices: *99999999999 { a: 1,2,3 }\n";
    const fbx::ParseResult r =
        fbx::ParseBuffer(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.error.find("declares 99999999999 values"), std::string::npos) << r.error;
    EXPECT_LT(PeakMemoryKiB() - before, 64 * 1024);
}

TEST(Robustness, RecordOffsetsAreCheckedAgainstParentAndFile) {
    BinaryBuilder b(7400);
    Node child("Child");
    b.Int32(child, 1);
    Node parent("Parent");
    parent.children = {child};
    const std::vector<std::uint8_t> good = b.Build({parent});
    ASSERT_TRUE(Parse(good, good.size()).ok);

    // The parent ends past the file.
    std::vector<std::uint8_t> bad = good;
    bad[27] = 0xFF;
    bad[28] = 0xFF;
    fbx::ParseResult r = Parse(bad, bad.size());
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.error.find("record \"Parent\" at offset 27 ends past the end of the file"),
              std::string::npos)
        << r.error;

    // The child ends past its parent.
    bad = good;
    const std::size_t childAt = 27 + 13 + 6;
    bad[childAt] = static_cast<std::uint8_t>(bad[childAt] + 20);
    r = Parse(bad, bad.size());
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.error.find("\"Child\" at offset 46 ends past the end of its parent"),
              std::string::npos)
        << r.error;
    ASSERT_EQ(r.document.root.children.size(), 1u);  // the partial tree
    EXPECT_EQ(r.document.root.children[0].name, "Parent");

    // Values that declare more bytes than the record holds.
    bad = good;
    bad[childAt + 8] = 100;
    r = Parse(bad, bad.size());
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.error.find("bytes of values"), std::string::npos) << r.error;

    // An unknown value type.
    bad = good;
    bad[childAt + 13 + 5] = 'Q';
    r = Parse(bad, bad.size());
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.error.find("unknown type code 0x51"), std::string::npos) << r.error;
}

}  // namespace
