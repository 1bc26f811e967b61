// Take names and transform curves, in both file layouts.
#include <gtest/gtest.h>

#include "fbx/graph/TakeKeys.h"
#include "scene_support.h"

using scenetest::Fbx;
using scenetest::Imported;

namespace {

TEST(SceneAnimation, TakesStartWithDefaultThenTheFileTakes) {
    Imported file(Fbx("maya_transform_animation_6100_ascii.fbx"));
    ASSERT_TRUE(file.imported);
    KFbxNode* cube = file.Find("pCube1");
    ASSERT_EQ(cube->GetTakeNodeNameCount(), 2);
    EXPECT_STREQ(cube->GetTakeNodeName(0), "Default");
    EXPECT_STREQ(cube->GetTakeNodeName(1), "Take 001");
    EXPECT_EQ(cube->GetTakeNodeName(2), nullptr);
    EXPECT_FALSE(cube->SetCurrentTakeNode(2));
    EXPECT_FALSE(cube->SetCurrentTakeNode("No such take"));
    // The Default take holds no curves.
    EXPECT_TRUE(cube->SetCurrentTakeNode(0));
    EXPECT_EQ(cube->LclTranslation.GetKFCurve("X"), nullptr);
}

TEST(SceneAnimation, TransformKeysInBothLayouts) {
    for (const char* name :
         {"maya_transform_animation_6100_ascii.fbx", "maya_transform_animation_6100_binary.fbx",
          "maya_transform_animation_7500_ascii.fbx", "maya_transform_animation_7500_binary.fbx"}) {
        Imported file(Fbx(name));
        ASSERT_TRUE(file.imported) << name;
        KFbxNode* cube = file.Find("pCube1");
        ASSERT_TRUE(cube->SetCurrentTakeNode("Take 001")) << name;
        KFCurve* x = cube->LclTranslation.GetKFCurve("X");
        ASSERT_NE(x, nullptr) << name;
        // Key: 1924423250,0,... 26941925500,1,... 46186158000,-1
        ASSERT_EQ(x->KeyGetCount(), 3);
        EXPECT_DOUBLE_EQ(x->KeyGetValue(0), 0.0);
        EXPECT_DOUBLE_EQ(x->KeyGetValue(1), 1.0);
        EXPECT_DOUBLE_EQ(x->KeyGetValue(2), -1.0);
        EXPECT_EQ(x->KeyGetTime(1).Get(), 26941925500LL);
        EXPECT_DOUBLE_EQ(x->KeyGetValue(3), 0.0);
        EXPECT_EQ(cube->LclTranslation.GetKFCurve("Y")->KeyGetValue(1), 2.0);
        EXPECT_NE(cube->LclRotation.GetKFCurve("Z"), nullptr);
        EXPECT_NE(cube->LclScaling.GetKFCurve("X"), nullptr);
        EXPECT_EQ(cube->LclTranslation.GetKFCurve("W"), nullptr);
        EXPECT_EQ(cube->LclTranslation.GetKFCurve("X", "Default"), nullptr);
    }
}

TEST(SceneAnimation, MaxCubeKeys) {
    for (const char* name :
         {"max2009_cube_anim_5800_ascii.fbx", "max2009_cube_anim_6100_binary.fbx"}) {
        Imported file(Fbx(name));
        ASSERT_TRUE(file.imported) << name;
        KFbxNode* box = file.Find("Box01");
        ASSERT_NE(box, nullptr);
        ASSERT_TRUE(box->SetCurrentTakeNode("Take 001"));
        KFCurve* x = box->LclTranslation.GetKFCurve("X");
        ASSERT_NE(x, nullptr) << name;
        // Key: 0,0,... 46186158000,-70,... 92372316000,70,...
        ASSERT_EQ(x->KeyGetCount(), 3);
        EXPECT_DOUBLE_EQ(x->KeyGetValue(1), -70.0);
        EXPECT_DOUBLE_EQ(x->KeyGetValue(2), 70.0);
        EXPECT_EQ(x->KeyGetTime(2).Get(), 92372316000LL);
        EXPECT_DOUBLE_EQ(x->KeyGetTime(1).GetSecondDouble(), 1.0);
        KFCurve* rz = box->LclRotation.GetKFCurve("Z");
        ASSERT_NE(rz, nullptr);
        EXPECT_DOUBLE_EQ(rz->KeyGetValue(1), -90.0);
    }
}

TEST(SceneAnimation, EveryInterpolationKindIsReadKeyByKey) {
    for (const char* name :
         {"maya_anim_interpolation_6100_ascii.fbx", "maya_anim_interpolation_6100_binary.fbx",
          "maya_anim_interpolation_7700_ascii.fbx"}) {
        Imported file(Fbx(name));
        ASSERT_TRUE(file.imported) << name;
        KFbxNode* cube = file.Find("pCube1");
        ASSERT_TRUE(cube->SetCurrentTakeNode(1));
        KFCurve* x = cube->LclTranslation.GetKFCurve("X");
        ASSERT_NE(x, nullptr) << name;
        // Cubic, linear, constant (s and n), ...: values 0,-2,-4,...,-16,-14.
        ASSERT_EQ(x->KeyGetCount(), 10) << name;
        const double values[10] = {0, -2, -4, -6, -8, -10, -12, -14, -16, -14};
        for (int k = 0; k < 10; ++k)
            EXPECT_DOUBLE_EQ(x->KeyGetValue(k), values[k]) << name << " key " << k;
        EXPECT_EQ(x->KeyGetTime(9).Get(), 84674623000LL);
        EXPECT_EQ(cube->LclTranslation.GetKFCurve("Y"), nullptr);
    }
}

TEST(SceneAnimation, KeyListsFollowTheirGrammar) {
    auto channel = [](std::vector<fbx::Value> values, int count, int keyVer) {
        fbx::Record r;
        r.name = "Channel";
        fbx::Record ver;
        ver.name = "KeyVer";
        ver.values.push_back(fbx::Value::MakeInt(keyVer));
        fbx::Record n;
        n.name = "KeyCount";
        n.values.push_back(fbx::Value::MakeInt(count));
        fbx::Record key;
        key.name = "Key";
        key.values = std::move(values);
        r.children = {ver, n, key};
        return r;
    };
    auto num = [](double v) { return fbx::Value::MakeFloat(v); };
    auto word = [](const char* w) { return fbx::Value::MakeText(w, fbx::ValueType::Word); };
    // Cubic with weights, a 'p' key with two weight letters (4005), a 't' key, a 'd' key.
    fbx::Record c = channel(
        {num(0),    num(1),    word("U"), word("s"), num(0), num(0),  word("a"), num(1),    num(2),
         num(10),   num(2),    word("U"), word("p"), num(1), num(2),  word("n"), word("l"), num(3),
         num(20),   num(3),    word("U"), word("t"), num(1), num(2),  num(3),    num(30),   num(4),
         word("U"), word("d"), num(5),    word("r"), num(6), num(40), num(5),    word("L")},
        5, 4005);
    std::vector<fbx::TakeKey> keys = fbx::ReadTakeKeys(c, 6100);
    ASSERT_EQ(keys.size(), 5u);
    EXPECT_EQ(keys[3].time, 30);
    EXPECT_DOUBLE_EQ(keys[4].value, 5.0);
    // A declared count larger than the list: only what is there.
    fbx::Record longer =
        channel({num(0), num(1), word("L"), num(5), num(2), word("L")}, 1000000, 4005);
    EXPECT_EQ(fbx::ReadTakeKeys(longer, 6100).size(), 2u);
    // Garbage where a letter belongs stops the list.
    fbx::Record broken = channel({num(0), num(1), word("L"), num(5), num(2), num(7)}, 2, 4005);
    EXPECT_EQ(fbx::ReadTakeKeys(broken, 6100).size(), 1u);
}

}  // namespace
