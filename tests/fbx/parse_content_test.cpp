// Known content of corpus files, as read from the ASCII files by eye, found by both parsers.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fbx/format/Parse.h"
#include "support_corpus.h"

namespace {

fbx::ParseResult Load(const std::string& name) {
    fbx::ParseResult result = fbx::ParseFile(fbxtest::CorpusPath("fbx/" + name));
    EXPECT_TRUE(result.ok) << name << ": " << result.error;
    return result;
}

const std::vector<double> kCubeVertices = {-0.5, -0.5, 0.5,  0.5,  -0.5, 0.5, -0.5, 0.5,
                                           0.5,  0.5,  0.5,  0.5,  -0.5, 0.5, -0.5, 0.5,
                                           0.5,  -0.5, -0.5, -0.5, -0.5, 0.5, -0.5, -0.5};
const std::vector<std::int64_t> kCubePolygons = {0, 1, 3, -3, 2, 3, 5, -5, 4, 5, 7, -7,
                                                 6, 7, 1, -1, 1, 7, 5, -4, 6, 0, 2, -5};

TEST(ParseContent, MayaCube7400GeometryAndConnections) {
    for (const char* name : {"maya_cube_7400_ascii.fbx", "maya_cube_7400_binary.fbx"}) {
        SCOPED_TRACE(name);
        const fbx::ParseResult r = Load(name);
        EXPECT_EQ(r.document.version, 7400u);
        const fbx::Record* header = r.document.root.Child("FBXHeaderExtension");
        ASSERT_NE(header, nullptr);
        EXPECT_EQ(header->ChildInt("FBXVersion"), 7400);
        EXPECT_EQ(header->ChildText("Creator"), "FBX SDK/FBX Plugins version 2019.2");

        const fbx::Record* objects = r.document.root.Child("Objects");
        ASSERT_NE(objects, nullptr);
        const fbx::Record* geometry = objects->Child("Geometry");
        ASSERT_NE(geometry, nullptr);
        EXPECT_EQ(geometry->TextAt(2), "Mesh");
        const fbx::Record* vertices = geometry->Child("Vertices");
        ASSERT_NE(vertices, nullptr);
        // `Vertices: *24 { a: ... }` is one array value on the record itself.
        ASSERT_EQ(vertices->values.size(), 1u);
        EXPECT_TRUE(vertices->values[0].IsArray());
        EXPECT_EQ(vertices->Doubles(), kCubeVertices);
        EXPECT_EQ(geometry->Child("PolygonVertexIndex")->Ints(), kCubePolygons);
        EXPECT_EQ(geometry->Child("Edges")->NumberCount(), 12u);
        EXPECT_EQ(geometry->ChildInt("GeometryVersion"), 124);
        const fbx::Record* normals = geometry->Child("LayerElementNormal");
        ASSERT_NE(normals, nullptr);
        EXPECT_EQ(normals->IntAt(0, -1), 0);

        // The first connection ties the cube's model to the root: C: "OO",<model id>,0.
        const fbx::Record* connections = r.document.root.Child("Connections");
        ASSERT_NE(connections, nullptr);
        const auto links = connections->Children("C");
        ASSERT_FALSE(links.empty());
        EXPECT_EQ(links[0]->TextAt(0), "OO");
        EXPECT_EQ(links[0]->IntAt(1), objects->Child("Model")->IntAt(0));
        EXPECT_EQ(links[0]->IntAt(2, -1), 0);
    }
    EXPECT_EQ(Load("maya_cube_7400_ascii.fbx")
                  .document.root.Child("Connections")
                  ->Children("C")[0]
                  ->IntAt(1),
              1907292236800);
}

TEST(ParseContent, MayaCube6100ListsAndNames) {
    const fbx::ParseResult ascii = Load("maya_cube_6100_ascii.fbx");
    const fbx::ParseResult binary = Load("maya_cube_6100_binary.fbx");
    EXPECT_EQ(ascii.document.version, 6100u);
    for (const fbx::ParseResult* r : {&ascii, &binary}) {
        const fbx::Record* model = r->document.root.Child("Objects")->Child("Model");
        ASSERT_NE(model, nullptr);
        // Plain scalar lists longer than the packing threshold become one array value.
        const fbx::Record* vertices = model->Child("Vertices");
        ASSERT_NE(vertices, nullptr);
        ASSERT_EQ(vertices->values.size(), 1u);
        EXPECT_EQ(vertices->values[0].Type(), fbx::ValueType::Float64Array);
        EXPECT_EQ(vertices->Doubles(), kCubeVertices);
        const fbx::Record* polygons = model->Child("PolygonVertexIndex");
        ASSERT_EQ(polygons->values.size(), 1u);
        EXPECT_EQ(polygons->values[0].Type(), fbx::ValueType::Int32Array);
        EXPECT_EQ(polygons->Ints(), kCubePolygons);
        // `Shading: T` is a bare letter in the text and a 'C' byte in the binary file.
        ASSERT_NE(model->Child("Shading"), nullptr);
        EXPECT_EQ(model->Child("Shading")->values[0].Type(), fbx::ValueType::Word);
        EXPECT_EQ(model->ChildText("Shading"), "T");
        EXPECT_EQ(model->ChildText("Culling"), "CullingOff");
    }
    EXPECT_EQ(ascii.document.root.Child("Objects")->Child("Model")->TextAt(0), "Model::pCube1");
    EXPECT_EQ(binary.document.root.Child("Objects")->Child("Model")->TextAt(0),
              std::string("pCube1\0\1Model", 13));

    const auto connects = ascii.document.root.Child("Connections")->Children("Connect");
    ASSERT_EQ(connects.size(), 2u);
    EXPECT_EQ(connects[0]->TextAt(1), "Model::pCube1");
    EXPECT_EQ(connects[0]->TextAt(2), "Model::Scene");
    EXPECT_EQ(connects[1]->TextAt(1), "Material::lambert1");
}

TEST(ParseContent, PreSevenThousandKeysMixNumbersAndLetters) {
    // Key: 0,0,U,s,0,0,a,0.333233326673508,0.333233326673508,46186158000,-70,U,s,0,-0,a,...
    for (const char* name :
         {"max2009_cube_anim_6100_ascii.fbx", "max2009_cube_anim_6100_binary.fbx"}) {
        SCOPED_TRACE(name);
        const fbx::ParseResult r = Load(name);
        const fbx::Record* takes = r.document.root.Child("Takes");
        ASSERT_NE(takes, nullptr);
        const fbx::Record* take = takes->Child("Take");
        ASSERT_NE(take, nullptr);
        // Take / Model / Channel "Transform" / Channel "T" / Channel "X"
        const fbx::Record* channel = take->Child("Model");
        for (int level = 0; level < 3 && channel; ++level)
            channel = channel->Child("Channel");
        ASSERT_NE(channel, nullptr);
        EXPECT_EQ(channel->TextAt(0), "X");
        EXPECT_EQ(channel->ChildInt("KeyVer"), 4005);
        EXPECT_EQ(channel->ChildInt("KeyCount"), 3);
        const fbx::Record* key = channel->Child("Key");
        ASSERT_NE(key, nullptr);
        ASSERT_EQ(key->values.size(), 26u);
        EXPECT_EQ(key->IntAt(0, -1), 0);
        EXPECT_EQ(key->TextAt(2), "U");
        EXPECT_EQ(key->TextAt(3), "s");
        EXPECT_EQ(key->TextAt(6), "a");
        EXPECT_NEAR(key->DoubleAt(7), 0.333233326673508, 1e-12);
        EXPECT_EQ(key->IntAt(9), 46186158000);
        EXPECT_EQ(key->DoubleAt(10), -70.0);
    }
}

TEST(ParseContent, KeyAttributeFloatsAreFloatsInBothEncodings) {
    // The ASCII file's own comment spells the first slope out: "RightSlope:-44.2699".
    for (const char* name :
         {"maya_anim_interpolation_7700_ascii.fbx", "maya_anim_interpolation_7700_binary.fbx"}) {
        SCOPED_TRACE(name);
        const fbx::ParseResult r = Load(name);
        const fbx::Record* curve = r.document.root.Child("Objects")->Child("AnimationCurve");
        ASSERT_NE(curve, nullptr);
        const fbx::Record* data = curve->Child("KeyAttrDataFloat");
        ASSERT_NE(data, nullptr);
        ASSERT_EQ(data->NumberCount(), 40u);
        EXPECT_NEAR(data->values[0].DoubleAt(0), -44.2699, 1e-4);
        EXPECT_NEAR(data->values[0].DoubleAt(1), -43.9211, 1e-4);
        EXPECT_NEAR(data->values[0].DoubleAt(3), 0.0, 0.0);
    }
}

}  // namespace
