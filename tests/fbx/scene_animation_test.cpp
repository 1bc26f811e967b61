// Take names and transform curves, in both file layouts.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "fbx/graph/TakeKeys.h"
#include "scene_support.h"
#include "support_corpus.h"

using scenetest::Fbx;
using scenetest::Imported;

namespace {

// The importer lists the file's takes; each node has the "Default" take, then those.
TEST(SceneAnimation, TakesStartWithDefaultThenTheFileTakes) {
    Imported file(Fbx("maya_transform_animation_6100_binary.fbx"));
    ASSERT_TRUE(file.imported);
    ASSERT_EQ(file.importer->GetTakeCount(), 1);
    EXPECT_STREQ(file.importer->GetCurrentTakeName(), "Take 001");
    KFbxTakeInfo* take = file.importer->GetTakeInfo(0);
    ASSERT_TRUE(take && take->mSelect);
    EXPECT_EQ(take->mName + "|" + take->mImportName, "Take 001|Take 001");
    EXPECT_EQ(file.importer->GetTakeInfo(1), nullptr);
    Imported blender(Fbx("blender_279_sausage_6100_ascii.fbx"));
    ASSERT_TRUE(blender.imported);
    EXPECT_EQ(blender.importer->GetTakeCount(), 4);
    EXPECT_EQ(blender.scene->GetTakeNames().size(), 4u);

    KFbxNode* cube = file.Find("pCube1");
    ASSERT_EQ(cube->GetTakeNodeNameCount(), 2);
    EXPECT_EQ(std::string(cube->GetTakeNodeName(0)) + "|" + cube->GetTakeNodeName(1),
              "Default|Take 001");
    EXPECT_EQ(cube->GetTakeNodeName(2), nullptr);
    EXPECT_FALSE(cube->SetCurrentTakeNode(2) || cube->SetCurrentTakeNode("No such take"));
    EXPECT_TRUE(cube->SetCurrentTakeNode("Take 001"));
    EXPECT_EQ(cube->GetCurrentTakeNodeIndex(), 1);
    EXPECT_NE(cube->LclTranslation.GetKFCurve("X"), nullptr);
    EXPECT_FALSE(cube->LclTranslation.GetKFCurve("X", "Default") ||
                 cube->LclTranslation.GetKFCurve("W"));
    // The Default take holds no curves.
    EXPECT_TRUE(cube->SetCurrentTakeNode(0));
    EXPECT_EQ(cube->LclTranslation.GetKFCurve("X"), nullptr);
}

// The X translation keys of a file's first take, as its ASCII text lists them, the time of one
// of them, and the second key of another curve: "R" "Z" is the Z rotation (NaN: no such curve).
void CheckKeys(const char* name, const char* nodeName, const std::vector<double>& x, int timedKey,
               long long ticks, const char* group, const char* axis, double other) {
    SCOPED_TRACE(name);
    Imported file(Fbx(name));
    ASSERT_TRUE(file.imported);
    KFbxNode* node = file.Find(nodeName);
    ASSERT_TRUE(node && node->SetCurrentTakeNode(1));
    KFCurve* curve = node->LclTranslation.GetKFCurve("X");
    ASSERT_NE(curve, nullptr);
    std::vector<double> keys;
    for (int k = 0; k <= curve->KeyGetCount(); ++k)
        keys.push_back(curve->KeyGetValue(k));
    EXPECT_EQ(keys.back(), 0.0);  // past the last key
    keys.pop_back();
    EXPECT_EQ(keys, x);
    EXPECT_EQ(curve->KeyGetTime(timedKey).Get(), ticks);
    EXPECT_DOUBLE_EQ(curve->KeyGetTime(timedKey).GetSecondDouble(), ticks / 46186158000.0);
    KFbxProperty& property = *group == 'T' ? node->LclTranslation : node->LclRotation;
    curve = property.GetKFCurve(axis);
    EXPECT_EQ(curve != nullptr, !std::isnan(other));
    if (curve) {
        EXPECT_EQ(curve->KeyGetValue(1), other);
        EXPECT_NE(node->LclScaling.GetKFCurve("X"), nullptr);
    }
}

TEST(SceneAnimation, TransformKeysInEveryLayoutAndEncoding) {
    for (const char* name :
         {"maya_transform_animation_6100_ascii.fbx", "maya_transform_animation_6100_binary.fbx",
          "maya_transform_animation_7500_ascii.fbx", "maya_transform_animation_7500_binary.fbx"}) {
        CheckKeys(name, "pCube1", {0, 1, -1}, 1, 26941925500LL, "T", "Y", 2.0);
    }
    for (const char* name :
         {"max2009_cube_anim_5800_ascii.fbx", "max2009_cube_anim_6100_binary.fbx"})
        CheckKeys(name, "Box01", {0, -70, 70}, 2, 92372316000LL, "R", "Z", -90.0);
    // Cubic, linear, constant (s and n), ... keys.
    for (const char* name :
         {"maya_anim_interpolation_6100_ascii.fbx", "maya_anim_interpolation_6100_binary.fbx",
          "maya_anim_interpolation_7700_ascii.fbx"}) {
        CheckKeys(name, "pCube1", {0, -2, -4, -6, -8, -10, -12, -14, -16, -14}, 9, 84674623000LL,
                  "T", "Y", NAN);
    }
}

// Key lists of older files: each interpolation letter is followed by its own parameters.
TEST(SceneAnimation, KeyListsFollowTheirGrammar) {
    auto keys = [](const char* count, const char* list) {
        const fbx::ParseResult r =
            fbxtest::ParseText(std::string("Channel: {\n KeyVer: 4005\n") + " KeyCount: " + count +
                               "\n Key: " + list + "\n}\n");
        EXPECT_TRUE(r.ok) << r.error;
        return fbx::ReadTakeKeys(r.document.root.children.at(0), 6100);
    };
    // Cubic with weights, a 'p' key with two weight letters (4005), a 't' key, a 'd' key.
    const auto all = keys("5",
                          "0,1,U,s,0,0,a,1,2,10,2,U,p,1,2,n,l,3,20,3,U,t,1,2,3,30,4,U,d,5,r,6,"
                          "40,5,L");
    ASSERT_EQ(all.size(), 5u);
    EXPECT_EQ(all[3].time, 30);
    EXPECT_DOUBLE_EQ(all[4].value, 5.0);
    // A declared count larger than the list: only what is there.
    EXPECT_EQ(keys("1000000", "0,1,L,5,2,L").size(), 2u);
    // Garbage where a letter belongs stops the list.
    EXPECT_EQ(keys("2", "0,1,L,5,2,7").size(), 1u);
}

}  // namespace
