// Node transform properties beyond Lcl T/R/S (offsets, pivots, pre- and post-rotation,
// rotation order, inherit type, geometric transform), in both file layouts.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "scene_support.h"

using scenetest::Fbx;
using scenetest::Imported;
using scenetest::TempFile;

namespace {

using Values = std::vector<double>;
using Properties = std::map<std::string, Values>;

// Every one of the properties, as its handle on the node reads it (to 6 decimals: the binary
// files' 90 is 90.00000000000001).
Properties Read(const KFbxNode& n) {
    Properties read;
    for (const KFbxProperty* p :
         {&n.RotationOffset, &n.RotationPivot, &n.ScalingOffset, &n.ScalingPivot, &n.PreRotation,
          &n.PostRotation, &n.GeometricTranslation, &n.GeometricRotation, &n.GeometricScaling}) {
        const fbxDouble3 v = p->Get<fbxDouble3>();
        read[p->GetName()] = {v[0], v[1], v[2]};
    }
    read["RotationOrder"] = {1.0 * n.RotationOrder.Get()};
    read["InheritType"] = {1.0 * n.InheritType.Get()};
    read["RotationActive"] = {n.RotationActive.Get() ? 1.0 : 0.0};
    for (auto& [name, values] : read) {
        for (double& v : values)
            v = std::round(v * 1e6) / 1e6;
    }
    return read;
}

// The format's defaults with the given properties in their place.
Properties Expected(const Properties& given) {
    Properties all = {{"RotationOrder", {0}}, {"InheritType", {0}}, {"RotationActive", {0}}};
    for (const char* name :
         {"RotationOffset", "RotationPivot", "ScalingOffset", "ScalingPivot", "PreRotation",
          "PostRotation", "GeometricTranslation", "GeometricRotation"})
        all[name] = {0, 0, 0};
    all["GeometricScaling"] = {1, 1, 1};
    for (const auto& [name, values] : given)
        all[name] = values;
    return all;
}

// Maya's HumanIK rig as 6100 and 7400 files: effectors with pre- and post-rotation and a
// geometric transform, joints that do not inherit scale.
TEST(SceneTransform, CorpusNodesGiveTheirTransformPropertiesInBothLayouts) {
    const std::pair<const char*, Properties> nodes[] = {
        {"Character1_Hips", {{"InheritType", {2}}, {"RotationActive", {1}}}},
        {"Character1_RightHandIndex3",
         {{"PreRotation", {0, 2.000065, 0}}, {"InheritType", {2}}, {"RotationActive", {1}}}},
        {"Character1_Ctrl_LeftElbowEffector",
         {{"PreRotation", {90, 0, 0}},
          {"PostRotation", {90, 0, 0}},
          {"GeometricTranslation", {0, 0, -10}},
          {"InheritType", {1}},
          {"RotationActive", {1}}}},
        {"Character1_Ctrl_LeftWristEffector",
         {{"PreRotation", {90, 0, 0}},
          {"PostRotation", {90, 0, 0}},
          {"GeometricRotation", {0, 0, 90}},
          {"InheritType", {1}},
          {"RotationActive", {1}}}},
    };
    for (const char* name : {"maya_human_ik_6100_ascii.fbx", "maya_human_ik_7400_binary.fbx"}) {
        Imported file(Fbx(name));
        ASSERT_TRUE(file.imported);
        for (const auto& [node, given] : nodes)
            EXPECT_EQ(Read(*file.Find(node)), Expected(given)) << name << " " << node;
    }
}

// What no corpus file sets, written by hand in both layouts: "Given" sets every property;
// on "Odd", values out of range (rotation order 9, inherit type 1.5), not finite or missing
// keep the format's default; "Plain" sets none (7500: its template's inherit type counts).
TEST(SceneTransform, HandWrittenValuesAndDefaults) {
    const std::pair<const char*, const char*> given[] = {{"RotationOffset", "1,2,3"},
                                                         {"RotationPivot", "4,5,6"},
                                                         {"ScalingOffset", "7,8,9"},
                                                         {"ScalingPivot", "-1,-2,-3"},
                                                         {"PreRotation", "10,20,30"},
                                                         {"PostRotation", "-10,-20,-30"},
                                                         {"GeometricTranslation", "0.5,0,0"},
                                                         {"GeometricRotation", "0,45,0"},
                                                         {"GeometricScaling", "2,3,4"},
                                                         {"RotationOrder", "4"},
                                                         {"InheritType", "2"},
                                                         {"RotationActive", "1"}};
    const std::pair<const char*, const char*> odd[] = {{"RotationOrder", "9"},
                                                       {"InheritType", "1.5"},
                                                       {"PreRotation", "nan,5,inf"},
                                                       {"GeometricScaling", "2"}};
    // Models 1, 2 and 3 (7500 ids).
    auto model = [](const char* id, const char* name, const auto& properties, bool newer) {
        std::string text = "\tModel: " + std::string(newer ? id + std::string(", ") : "") +
                           "\"Model::" + name + "\", \"Null\" {\n\t\tProperties" +
                           (newer ? "70" : "60") + ":  {\n";
        for (const auto& [property, value] : properties) {
            text += std::string(newer ? "\t\t\tP: \"" : "\t\t\tProperty: \"") + property +
                    "\", \"Vector3D\", \"\"" + (newer ? ", \"\"," : ",") + value + "\n";
        }
        return text + "\t\t}\n\t}\n";
    };
    const std::vector<std::pair<const char*, const char*>> none;
    Properties writtenValues;
    for (const auto& [name, list] : given) {
        std::istringstream in(list);
        for (double v; in >> v; in.ignore())
            writtenValues[name].push_back(v);
    }
    for (const bool newer : {false, true}) {
        SCOPED_TRACE(newer ? "7500" : "6100");
        std::string text = newer ? "; FBX 7.5.0 project file\nFBXHeaderExtension:  {\n"
                                   "\tFBXVersion: 7500\n}\nDefinitions: { ObjectType: \"Model\" "
                                   "{ PropertyTemplate: \"FbxNode\" { Properties70: {\n\tP: "
                                   "\"InheritType\", \"enum\", \"\", \"\",1\n} } } }\n"
                                 : "; FBX 6.1.0 project file\nFBXHeaderExtension:  {\n"
                                   "\tFBXVersion: 6100\n}\n";
        text += "Objects:  {\n" + model("1", "Given", given, newer) +
                model("2", "Odd", odd, newer) + model("3", "Plain", none, newer) +
                "}\nConnections:  {\n";
        const std::string names[] = {"Given", "Odd", "Plain"};
        for (int i = 0; i < 3; ++i) {
            text += newer ? "\tC: \"OO\"," + std::to_string(i + 1) + ",0\n"
                          : "\tConnect: \"OO\", \"Model::" + names[i] + "\", \"Model::Scene\"\n";
        }
        TempFile written(text + "}\n");
        Imported file(written.Path());
        ASSERT_TRUE(file.imported) << file.importer->GetLastErrorString();
        EXPECT_EQ(Read(*file.Find("Given")), Expected(writtenValues));
        EXPECT_EQ(Read(*file.Find("Odd")),
                  Expected({{"PreRotation", {0, 5, 0}}, {"GeometricScaling", {2, 1, 1}}}));
        EXPECT_EQ(Read(*file.Find("Plain")), Expected({{"InheritType", {newer ? 1.0 : 0.0}}}));
        // The summary shows none of this: the node lines print Lcl T/R/S only, as before.
        EXPECT_NE(file.Summary().find(" T (0.0000, 0.0000, 0.0000) R (0.0000, 0.0000, 0.0000) "
                                      "S (1.0000, 1.0000, 1.0000)\nnode \"Odd\""),
                  std::string::npos);
    }
}

}  // namespace
