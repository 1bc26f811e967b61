// The parsers against the real files of the corpus: every file parses, files of one scene agree.
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "support_corpus.h"
#include "support_tree.h"

namespace {

using fbxtest::BaseName;
using fbxtest::CorpusFiles;
using fbxtest::CorpusPath;
using fbxtest::TreeText;

// Records that only binary files write, left out when trees are compared.
const std::set<std::string> kBinaryOnly = {
    "EncryptionType", "FileId",    "CreationTime", "FBXHeaderExtension",
    "Creator",        "SceneInfo", "Video"};

// Every file parses as the encoding and version its name NAME_VVVV_encoding.fbx states.
// NAME_VVVV_ascii.fbx and NAME_VVVV_binary.fbx hold the same tree, and so do the big-endian
// maya_cube files and their little-endian siblings, whose geometry must be identical, not
// merely close. A few pairs were exported with different settings; their first difference is
// a real one (checked by reading both files) and must stay the first.
TEST(ParseCorpus, EveryFileParsesAndFilesOfOneSceneAgree) {
    const std::map<std::string, std::string> known = {
        {"maya_node_attribute_zoo_6100",
         "//Objects/Model[Model::StereoCamera]/Properties60/Property[FocalLength]: value 3"},
        {"maya_texture_layers_6100",
         "//Objects/Model[Model::pCube1]/LayerElementTexture/BlendMode[Normal]: value 0"},
        {"maya_transform_animation_7500",
         "//Objects/Model/Properties70/P[Lcl Translation]: 7 values against 5"},
    };
    std::map<std::string, fbx::ParseResult> read;  // by file name
    int pairs = 0;
    for (const std::string& path : CorpusFiles("fbx")) {
        const std::string name = BaseName(path);
        const std::size_t at = name.rfind('_');
        fbx::ParseResult& r = read[name] = fbx::ParseFile(path);
        ASSERT_TRUE(r.ok) << name << ": " << r.error;
        EXPECT_FALSE(r.document.root.children.empty()) << name;
        EXPECT_EQ(r.document.binary, name.find("_binary") != std::string::npos) << name;
        EXPECT_EQ(r.document.bigEndian, name.find("big_endian") != std::string::npos) << name;
        EXPECT_EQ(std::to_string(r.document.version), name.substr(at - 4, 4)) << name;
        std::string sibling = name.substr(0, at) + "_ascii.fbx", scene = name.substr(0, at);
        if (r.document.bigEndian)
            sibling = "maya_cube_" + name.substr(at - 4);
        if (!r.document.binary || !read.count(sibling))
            continue;
        ++pairs;
        const fbx::Document& other = read[sibling].document;
        const std::string difference =
            fbxtest::TreeDifference(other.root, r.document.root, kBinaryOnly);
        const std::string expected = known.count(scene) ? known.at(scene) : "";
        EXPECT_EQ(difference.substr(0, expected.empty() ? std::string::npos : expected.size()),
                  expected)
            << name;
        if (r.document.bigEndian) {
            const char* holder = r.document.version == 6100 ? "Model" : "Geometry";
            EXPECT_EQ(TreeText(*other.root.Child("Objects")->Child(holder)),
                      TreeText(*r.document.root.Child("Objects")->Child(holder)));
        }
    }
    EXPECT_GE(read.size(), 40u) << "corpus not found under " << CorpusPath("fbx");
    EXPECT_GE(pairs, 34);
}

}  // namespace
