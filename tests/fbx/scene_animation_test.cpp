// Take names and transform curves, in both file layouts.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "fbx/graph/TakeKeys.h"
#include "scene_support.h"
#include "support_corpus.h"

using scenetest::Fbx;
using scenetest::Imported;
using scenetest::TempFile;

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

    // Interpolation and slopes (value per second; a key a second): automatic tangents are flat
    // at the ends and follow the neighbours in between (0 to 3 over two seconds: 1.5), arriving
    // at a user key with its own slope; a linear key has its line's slope twice, a constant key
    // none; written slopes that are not finite are 0.
    using I = fbx::TakeInterpolation;
    using Shape = std::tuple<I, bool, double, double>;
    auto shapes = [&](const char* list) {
        std::vector<Shape> out;
        for (const fbx::TakeKey& k : keys("9", list))
            out.emplace_back(k.interpolation, k.constantNext, k.rightSlope, k.nextLeftSlope);
        return out;
    };
    EXPECT_EQ(shapes("0,0,U,a,n,46186158000,1,U,a,n,92372316000,3,U,s,5,6,n,"
                     "138558474000,2,L,184744632000,4,C,n,230930790000,4,C,s"),
              (std::vector<Shape>{{I::Cubic, false, 0, 1.5},
                                  {I::Cubic, false, 1.5, 5},
                                  {I::Cubic, false, 5, 6},
                                  {I::Linear, false, 2, 2},
                                  {I::Constant, true, 0, 0},
                                  {I::Constant, false, 0, 0}}));
    EXPECT_EQ(shapes("0,0,U,s,nan,inf,n,10,1,L"),
              (std::vector<Shape>{{I::Cubic, false, 0, 0}, {I::Linear, false, 0, 0}}));
}

// The X translation curve of a file's first take on pCube1.
KFCurve* CubeCurve(const Imported& file) {
    KFbxNode* cube = file.Find("pCube1");
    return cube && cube->SetCurrentTakeNode(1) ? cube->LclTranslation.GetKFCurve("X") : nullptr;
}

// Maya's same scenes saved as 6100 and 7xxx files: every key has the same interpolation and
// constant mode, and every span that is not constant the same slopes at both ends (what a
// constant key stores in 7xxx files is left over from editing and not compared).
TEST(SceneAnimation, KeyInterpolationAndSlopesAgreeBetweenLayouts) {
    constexpr int C = KFCURVE_INTERPOLATION_CONSTANT, L = KFCURVE_INTERPOLATION_LINEAR,
                  U = KFCURVE_INTERPOLATION_CUBIC, N = KFCURVE_CONSTANT_NEXT;
    // The letters of the 6100 texts: U,s,.. L C,s C,n ...
    const std::tuple<const char*, const char*, std::vector<int>> twins[] = {
        {"maya_anim_interpolation_6100_ascii.fbx",
         "maya_anim_interpolation_7700_binary.fbx",
         {U, L, C, C + N, C, L, C + N, C, C + N, U}},
        {"maya_interpolation_modes_6100_binary.fbx",
         "maya_interpolation_modes_7500_ascii.fbx",
         {U, U, L, L, U, U, U, C, C, C + N, C + N, U}},
    };
    for (const auto& [older, newer, kinds] : twins) {
        SCOPED_TRACE(older);
        Imported a(Fbx(older)), b(Fbx(newer));
        KFCurve* curves[2] = {CubeCurve(a), CubeCurve(b)};
        ASSERT_TRUE(curves[0] && curves[1]);
        for (KFCurve* curve : curves) {
            std::vector<int> read;
            for (int k = 0; k < curve->KeyGetCount(); ++k)
                read.push_back(curve->KeyGetInterpolation(k) + curve->KeyGetConstantMode(k));
            EXPECT_EQ(read, kinds);
        }
        for (int k = 0; k + 1 < curves[0]->KeyGetCount(); ++k) {
            if (curves[0]->KeyGetInterpolation(k) == C)
                continue;
            EXPECT_NEAR(curves[0]->KeyGetRightDerivative(k), curves[1]->KeyGetRightDerivative(k),
                        1e-4)
                << k;
            EXPECT_NEAR(curves[0]->KeyGetLeftDerivative(k + 1),
                        curves[1]->KeyGetLeftDerivative(k + 1), 1e-4)
                << k;
        }
    }
    // "0,0,U,s,-44.2699165344238,-43.9210891723633,..., 15395386000,-2,L, 30790772000,-4": the
    // written slopes, and -2 to -4 in a third of a second.
    Imported file(Fbx("maya_anim_interpolation_6100_ascii.fbx"));
    KFCurve* curve = CubeCurve(file);
    EXPECT_EQ(
        (std::vector<double>{std::round(curve->KeyGetRightDerivative(0) * 1e4),
                             std::round(curve->KeyGetLeftDerivative(1) * 1e4),
                             std::round(curve->KeyGetRightDerivative(1) * 1e4),
                             std::round(curve->KeyGetLeftDerivative(2) * 1e4),
                             curve->KeyGetLeftDerivative(0), curve->KeyGetRightDerivative(10),
                             1.0 * curve->KeyGetInterpolation(-1) + curve->KeyGetConstantMode(10)}),
        (std::vector<double>{-442699, -439211, -60000, -60000, 0, 0, L}));
}

// ---- Hand-written takes -------------------------------------------------------------------

constexpr long long kSecond = 46186158000LL;

std::string Ticks(double seconds) {
    return std::to_string(static_cast<long long>(seconds * kSecond));
}

// "Name: *N { a: list }", N counted from the list.
std::string Array(const std::string& name, const std::string& list) {
    const auto n = 1 + std::count(list.begin(), list.end(), ',');
    return "\t\t" + name + ": *" + std::to_string(n) + " { a: " + list + " }\n";
}

// A curve body with keys at the given seconds (values 1, 2, ...), then the given records.
std::string Curve(const std::vector<double>& seconds, const std::string& more = "") {
    std::string times, values;
    for (std::size_t k = 0; k < seconds.size(); ++k) {
        times += (k ? "," : "") + Ticks(seconds[k]);
        values += (k ? "," : "") + std::to_string(k + 1);
    }
    return Array("KeyTime", times) + Array("KeyValueFloat", values) + more;
}

// A take of a hand-written file: its name, the lines of its Take record (6100) or its stack's
// Properties70 (7500), and its curves on the X, Y and Z translation of node "Box" (7500: curve
// bodies; 6100: the X channel's Key list).
struct HandTake {
    std::string name;
    std::string lines;
    std::vector<std::string> curves;
};

std::string Span7500(const char* name, const std::string& value) {
    return std::string("\t\t\tP: \"") + name + "\", \"KTime\", \"Time\", \"\"," + value + "\n";
}

std::string File7500(const std::vector<HandTake>& takes) {
    std::string objects = "\tModel: 1, \"Model::Box\", \"Null\" {\n\t}\n";
    std::string links = "\tC: \"OO\",1,0\n";
    int id = 10;
    for (const HandTake& take : takes) {
        const std::string stack = std::to_string(id++), layer = std::to_string(id++),
                          node = std::to_string(id++);
        objects += "\tAnimationStack: " + stack + ", \"AnimStack::" + take.name +
                   "\", \"\" {\n\t\tProperties70:  {\n" + take.lines + "\t\t}\n\t}\n" +
                   "\tAnimationLayer: " + layer + ", \"AnimLayer::Base\", \"\" {\n\t}\n" +
                   "\tAnimationCurveNode: " + node + ", \"AnimCurveNode::T\", \"\" {\n\t}\n";
        links += "\tC: \"OO\"," + layer + "," + stack + "\n\tC: \"OO\"," + node + "," + layer +
                 "\n\tC: \"OP\"," + node + ",1, \"Lcl Translation\"\n";
        for (std::size_t c = 0; c < take.curves.size() && c < 3; ++c) {
            const std::string curve = std::to_string(id++);
            objects += "\tAnimationCurve: " + curve + ", \"AnimCurve::\", \"\" {\n" +
                       take.curves[c] + "\t}\n";
            links += "\tC: \"OP\"," + curve + "," + node + ", \"d|" + "XYZ"[c] + "\"\n";
        }
    }
    return "; FBX 7.5.0 project file\nFBXHeaderExtension:  {\n\tFBXVersion: 7500\n}\n"
           "Objects:  {\n" +
           objects + "}\nConnections:  {\n" + links + "}\n";
}

std::string File6100(const std::vector<HandTake>& takes) {
    std::string text =
        "; FBX 6.1.0 project file\nFBXHeaderExtension:  {\n\tFBXVersion: 6100\n}\n"
        "Objects:  {\n\tModel: \"Model::Box\", \"Null\" {\n\t}\n}\n"
        "Connections:  {\n\tConnect: \"OO\", \"Model::Box\", \"Model::Scene\"\n}\nTakes:  {\n";
    for (const HandTake& take : takes) {
        text += "\tTake: \"" + take.name + "\" {\n" + take.lines;
        if (!take.curves.empty()) {
            text +=
                "\t\tModel: \"Model::Box\" {\n\t\t\tChannel: \"Transform\" {\n"
                "\t\t\t\tChannel: \"T\" {\n\t\t\t\t\tChannel: \"X\" {\n"
                "\t\t\t\t\t\tKeyVer: 4005\n\t\t\t\t\t\tKey: " +
                take.curves[0] + "\n\t\t\t\t\t}\n\t\t\t\t}\n\t\t\t}\n\t\t}\n";
        }
        text += "\t}\n";
    }
    return text + "}\n";
}

std::string RunCommand(const std::string& command) {
    std::string out;
    if (FILE* pipe = popen(command.c_str(), "r")) {
        char buffer[4096];
        for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
            out.append(buffer, n);
        pclose(pipe);
    }
    return out;
}

// What a take plays: the file's local span, else its reference span, else its keys' span,
// else nothing; fbxinfo numbers the game frames of the takes one after the other, 15 to the
// second, and prints its summary otherwise unchanged.
TEST(SceneAnimation, TakeSpansAndTheirGameFramesInFbxinfo) {
    const std::string s1 = Ticks(1), s2 = Ticks(2), s3 = Ticks(3);
    const std::vector<HandTake> v7 = {
        {"Local",
         Span7500("LocalStart", s1) + Span7500("LocalStop", s3) + Span7500("ReferenceStart", "0") +
             Span7500("ReferenceStop", Ticks(9)),
         {Curve({0, 5})}},
        {"Backwards",
         Span7500("LocalStart", s3) + Span7500("LocalStop", s2) + Span7500("ReferenceStart", s1) +
             Span7500("ReferenceStop", s2),
         {}},
        {"StopOnly", Span7500("LocalStop", s2), {}},
        {"Keys", Span7500("LocalStop", "nan"), {Curve({0.5, 1.5}), "", Curve({3})}},
        {"Nothing", "", {}},
    };
    const std::vector<HandTake> v6 = {
        {"Local", "\t\tLocalTime: " + s1 + "," + s3 + "\n", {"0,0,L," + s2 + ",1,L"}},
        {"Backwards",
         "\t\tLocalTime: " + s2 + ",0\n\t\tReferenceTime: " + s1 + "," + s2 + "\n",
         {}},
        {"Keys", "\t\tLocalTime: nan," + s1 + "\n", {Ticks(1) + ",0,L," + Ticks(1.5) + ",1,L"}},
        {"Nothing", "", {}},
    };
    const std::vector<std::pair<std::string, std::vector<std::string>>> files = {
        {File7500(v7),
         {"Local 1 3 frames 0 to 30 (2.00 s)", "Backwards 1 2 frames 31 to 46 (1.00 s)",
          "StopOnly 0 2 frames 47 to 77 (2.00 s)", "Keys 0.5 3 frames 78 to 116 (2.50 s)",
          "Nothing 0 0 frames 117 to 117 (0.00 s)"}},
        {File6100(v6),
         {"Local 1 3 frames 0 to 30 (2.00 s)", "Backwards 1 2 frames 31 to 46 (1.00 s)",
          "Keys 1 1.5 frames 47 to 55 (0.50 s)", "Nothing 0 0 frames 56 to 56 (0.00 s)"}},
    };
    for (const auto& [text, expected] : files) {
        TempFile written(text);
        Imported file(written.Path());
        ASSERT_TRUE(file.imported) << file.importer->GetLastErrorString();
        // Each take: its span on the scene (as the importer has it too) and the frames line
        // fbxinfo prints after its take line.
        const std::string info = RunCommand(std::string(FBXINFO_EXECUTABLE) + " " + written.Path());
        std::vector<std::string> read;
        for (int t = 0; t < file.importer->GetTakeCount(); ++t) {
            const KFbxTakeInfo* take = file.importer->GetTakeInfo(t);
            const KFbxTakeInfo* onScene = file.scene->GetTakeInfo(take->mName.c_str());
            ASSERT_TRUE(onScene);
            const KTimeSpan span = onScene->mLocalTimeSpan;
            EXPECT_TRUE(span.GetStart() == take->mLocalTimeSpan.GetStart() &&
                        span.GetStop() == take->mLocalTimeSpan.GetStop());
            std::ostringstream line;
            line << take->mName << " " << span.GetStart().GetSecondDouble() << " "
                 << span.GetStop().GetSecondDouble();
            const std::string takeLine = "take \"" + take->mName + "\"\n  ";
            const std::size_t at = info.find(takeLine);
            if (at != std::string::npos) {
                const std::size_t from = at + takeLine.size();
                line << " " << info.substr(from, info.find('\n', from) - from);
            }
            read.push_back(line.str());
        }
        EXPECT_EQ(read, expected);
        EXPECT_FALSE(file.scene->GetTakeInfo("Default") || file.scene->GetTakeInfo("No such") ||
                     file.scene->GetTakeInfo(nullptr));
        std::string unnumbered;
        std::istringstream lines(info);
        for (std::string l; std::getline(lines, l);)
            unnumbered += l.rfind("  frames ", 0) == 0 ? "" : l + "\n";
        EXPECT_EQ(unnumbered, file.Summary());
    }
}

// Key attributes of a 7000+ curve that are missing or damaged: an attribute whose run of
// keys overruns the curve, a negative run, a slope that is not a number, attributes without
// KeyAttrRefCount (one key each) and too few slopes, flags that name no single interpolation,
// a curve without any attribute.
TEST(SceneAnimation, DamagedKeyAttributesFallBackToLinearAndZeroSlopes) {
    TempFile written(File7500(
        {{"Take",
          "",
          {Curve({0, 1, 2}, Array("KeyAttrFlags", "8,4,2") + Array("KeyAttrRefCount", "1,-3,100") +
                                Array("KeyAttrDataFloat", "1.5,nan,0,0,9,9,0,0,4,5,0,0")),
           Curve({0, 1, 2}, Array("KeyAttrFlags", "258,14") + Array("KeyAttrDataFloat", "7.5")),
           Curve({0, 1, 2})}}}));
    Imported file(written.Path());
    ASSERT_TRUE(file.imported) << file.importer->GetLastErrorString();
    KFbxNode* box = file.Find("Box");
    ASSERT_TRUE(box->SetCurrentTakeNode("Take"));
    // Per key: interpolation plus constant mode, right slope, left slope.
    using Keys = std::vector<std::tuple<int, double, double>>;
    constexpr int C = KFCURVE_INTERPOLATION_CONSTANT, L = KFCURVE_INTERPOLATION_LINEAR,
                  U = KFCURVE_INTERPOLATION_CUBIC, N = KFCURVE_CONSTANT_NEXT;
    const std::pair<const char*, Keys> curves[] = {
        {"X", {{U, 1.5, 0}, {C, 4, 0}, {C, 4, 5}}},
        {"Y", {{C + N, 7.5, 0}, {L, 0, 0}, {L, 0, 0}}},
        {"Z", {{L, 0, 0}, {L, 0, 0}, {L, 0, 0}}},
    };
    for (const auto& [axis, expected] : curves) {
        KFCurve* curve = box->LclTranslation.GetKFCurve(axis);
        ASSERT_TRUE(curve && curve->KeyGetCount() == 3) << axis;
        Keys read;
        for (int k = 0; k < 3; ++k) {
            read.emplace_back(curve->KeyGetInterpolation(k) + curve->KeyGetConstantMode(k),
                              curve->KeyGetRightDerivative(k), curve->KeyGetLeftDerivative(k));
        }
        EXPECT_EQ(read, expected) << axis;
    }
}

}  // namespace
