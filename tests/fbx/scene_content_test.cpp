// Scene content read from corpus files, checked against what their ASCII text states: texts
// their summaries must hold (node tree and attribute types, mesh counts and bounds, layer
// elements, skin clusters, materials and textures), and values the summary does not show.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "scene_support.h"

using scenetest::Fbx;
using scenetest::Imported;

namespace {

using Names = std::vector<std::string>;
using Ints = std::vector<int>;
using Doubles = std::vector<double>;

// Names of the UV (or colour) sets of pCube1's layers, in layer order.
template <class Get>
Names SetNames(const Imported& file, Get get) {
    Names names;
    KFbxMesh* mesh = file.Find("pCube1")->GetMesh();
    for (int l = 0; l < mesh->GetLayerCount(); ++l)
        names.push_back(get(mesh->GetLayer(l))->GetName());
    return names;
}

struct Case {
    std::vector<const char*> files;
    std::vector<const char*> texts;
    std::function<void(const Imported&)> check;
};

void CheckCube(const Imported& file) {
    ASSERT_EQ(file.scene->GetRootNode()->GetChildCount(), 1);
    KFbxNode* cube = file.scene->GetRootNode()->GetChild(0);
    KFbxMesh* mesh = cube->GetMesh();
    ASSERT_TRUE(mesh && mesh->GetControlPointsCount() == 8 && mesh->GetPolygonCount() == 6);
    // Vertices: -0.5,-0.5,0.5, 0.5,-0.5,0.5, ... , 0.5,-0.5,-0.5
    const KFbxVector4* points = mesh->GetControlPoints();
    EXPECT_EQ((Doubles{points[0][0], points[0][2], points[7][0], points[7][2], points[7][3]}),
              (Doubles{-0.5, 0.5, 0.5, -0.5, 1.0}));
    // PolygonVertexIndex: 0,1,3,-3, 2,3,5,-5, ...; UVIndex: 0,1,3,2,...; out of range: -1.
    EXPECT_EQ(
        (Ints{mesh->GetPolygonSize(0), mesh->GetPolygonVertex(0, 0), mesh->GetPolygonVertex(0, 2),
              mesh->GetPolygonVertex(0, 3), mesh->GetPolygonVertex(1, 3),
              mesh->GetTextureUVIndex(0, 2), mesh->GetPolygonSize(6), mesh->GetPolygonVertex(0, 4),
              mesh->GetPolygonVertex(-1, 0)}),
        (Ints{4, 0, 3, 2, 4, 3, -1, -1, -1}));
    const auto& normals = mesh->GetLayer(0)->GetNormals()->GetDirectArray();
    EXPECT_EQ((Doubles{normals.GetAt(0)[2], normals.GetAt(0)[3], normals.GetAt(1000)[0]}),
              (Doubles{1, 1, 0}));
    EXPECT_TRUE(!mesh->GetLayer(0)->GetVertexColors() && !mesh->GetLayer(5) &&
                !cube->GetMaterial(1));
}

TEST(SceneContent, CorpusFilesHoldWhatTheirTextStates) {
    const Case cases[] = {
        {{"maya_cube_6100_ascii.fbx", "maya_cube_6100_binary.fbx", "maya_cube_7400_ascii.fbx",
          "maya_cube_7500_binary.fbx", "maya_cube_big_endian_7100_binary.fbx"},
         {"\nnode \"pCube1\" mesh T (0.0000, 0.0000, 0.0000)",
          "S (1.0000, 1.0000, 1.0000) material \"lambert1\"\nmesh \"pCube1\" polygons 6 corners "
          "24 points 8 layers 1\n  bounds (-0.5000, -0.5000, -0.5000) (0.5000, 0.5000, 0.5000)\n"
          "  sizes 4:6\n",
          "\n    normals by-polygon-vertex direct direct 24 index 0\n",
          "\nmaterial \"lambert1\" KFbxSurfaceLambert ambient (0.0000, 0.0000, 0.0000) diffuse "
          "(0.5000, 0.5000, 0.5000)"},
         CheckCube},
        // Hole: 0,1,0,1,0,0
        {{"maya_polygon_hole_6100_ascii.fbx", "maya_polygon_hole_7700_binary.fbx"},
         {"\n    holes by-polygon direct direct 6 index 0\n    hole polygons 2\n"},
         [](const Imported& file) {
             const auto& holes = file.Find("pCube1")->GetMesh()->GetLayer(0)->GetHoles();
             EXPECT_EQ((Ints{holes->GetDirectArray().GetAt(0), holes->GetDirectArray().GetAt(1),
                             holes->GetDirectArray().GetAt(3)}),
                       (Ints{0, 1, 1}));
         }},
        // Colors: 0,0,1,1, 1,0,1,1, ...
        {{"maya_color_sets_6100_ascii.fbx"},
         {"layers 4\n",
          "\n  layer 3\n    colors by-polygon-vertex index-to-direct direct 24 index 24"},
         [](const Imported& file) {
             KFbxLayer* layer = file.Find("pCube1")->GetMesh()->GetLayer(0);
             const KFbxColor c = layer->GetVertexColors()->GetDirectArray().GetAt(1);
             EXPECT_EQ((Doubles{c.mRed, c.mGreen, c.mBlue, c.mAlpha}), (Doubles{1, 0, 1, 1}));
             EXPECT_EQ(SetNames(file, [](KFbxLayer* l) { return l->GetVertexColors(); }),
                       (Names{"RGBCube", "White", "Black", "Alpha"}));
         }},
        {{"maya_uv_sets_7500_ascii.fbx"},
         {"layers 3\n", "\n    uvs by-polygon-vertex index-to-direct direct 24 index 24\n"},
         [](const Imported& file) {
             EXPECT_EQ(SetNames(file, [](KFbxLayer* l) { return l->GetUVs(); }),
                       (Names{"Default", "PerFace", "Row"}));
         }},
        {{"maya_ngon_maze_7700_binary.fbx"},
         {"\nmesh \"Grid\" polygons 789 corners 42714 points 39204 layers 1\n",
          "\n  sizes 4:505 6:254 10:8 14:1 ", " 25122:1\n",
          "\n    materials by-polygon index-to-direct direct 4 index 789\n"},
         nullptr},
        {{"maya_transformed_skin_6100_ascii.fbx", "maya_transformed_skin_7700_binary.fbx"},
         {"\nnode \"joint1\" skeleton T (4.0000, 0.0000, 0.0000)",
          "\n  node \"joint2\" skeleton T (2.0000, 0.0000, 0.0000) R (0.0000, 0.0000, 45.0000)",
          "\n    node \"joint3\" skeleton", "\n  skin 0 clusters 3\n",
          "\n    cluster 0 link \"joint1\" indices 20 weight-sum 9.9146 link-translation (4.0000, "
          "-2.0000, 0.0000)\n",
          "\n    cluster 2 link \"joint3\" indices 16 "},
         [](const Imported& file) {
             KFbxMesh* mesh = file.Find("pCube1")->GetMesh();
             auto* skin = static_cast<KFbxSkin*>(mesh->GetDeformer(0, KFbxDeformer::eSKIN));
             ASSERT_TRUE(skin && skin->GetClusterCount() == 3 && !skin->GetCluster(3));
             EXPECT_EQ(mesh->GetDeformer(1, KFbxDeformer::eSKIN), nullptr);
             KFbxCluster* first = skin->GetCluster(0);
             EXPECT_EQ(
                 (Doubles{static_cast<double>(first->GetControlPointIndices()[19]),
                          static_cast<double>(skin->GetCluster(2)->GetControlPointIndices()[0]),
                          std::round(first->GetControlPointWeights()[0] * 1e6)}),
                 (Doubles{19, 2, 986910}));
         }},
        // Shininess is not on the object: it comes from the FbxSurfacePhong template (20).
        {{"maya_textured_cube_7500_ascii.fbx"},
         {"material \"phong1\"\n",
          "\nmaterial \"phong1\" KFbxSurfacePhong ambient (0.5000, 0.5000, 0.5000) diffuse "
          "(1.0000, 1.0000, 1.0000) emissive (0.5000, 0.5000, 0.5000) transparency 1.0000 "
          "specular (0.5000, 0.5000, 0.5000) shininess 20.0000 ",
          "\n  texture DiffuseColor \"file1\" file \"",
          "checkerboard_diffuse.png\" relative \"textures\\checkerboard_diffuse.png\" scale 1.0000 "
          "1.0000 translation 0.0000 0.0000 rotation (0.0000, 0.0000, 0.0000) alpha 1.0000 "
          "image embedded (1589 bytes)\n"},
         [](const Imported& file) {
             KFbxSurfaceMaterial* material = file.Find("pCube1")->GetMaterial(0);
             EXPECT_TRUE(material->GetClassId().Is(KFbxSurfaceLambert::ClassId));
             EXPECT_FALSE(material->FindProperty("NoSuchProperty").IsValid());
             EXPECT_EQ(material->FindProperty("NoSuchProperty").GetSrcObject(KFbxTexture::ClassId),
                       nullptr);
             KFbxProperty diffuse = material->FindProperty("DiffuseColor");
             ASSERT_EQ(diffuse.GetSrcObjectCount(KFbxTexture::ClassId), 1);
             EXPECT_STREQ(diffuse.GetSrcObject(KFbxTexture::ClassId, 0)->GetName(), "file1");
         }},
        // Connect: Material::Special then Material::Shared to A; Shared to B.
        {{"maya_shared_textures_6100_ascii.fbx"},
         {"S (1.0000, 1.0000, 1.0000) material \"Special\" material \"Shared\"\n",
          "\nmaterial \"Special\" KFbxSurfacePhong ", "\n  texture DiffuseColor \"file10\" file ",
          "\nmaterial \"Shared\" KFbxSurfaceLambert ", "\n  texture DiffuseColor \"file1\" file "},
         [](const Imported& file) {
             ASSERT_TRUE(file.Find("A") && file.Find("B"));
             EXPECT_EQ(file.Find("B")->GetMaterial(0), file.Find("A")->GetMaterial(1));
         }},
        // Texture::file3, file2, file1 connect to the layered texture in that order, with
        // BlendModes: x,4,1.
        {{"maya_texture_layers_6100_ascii.fbx", "maya_texture_layers_7500_ascii.fbx"},
         {"\n  layered DiffuseColor \"layeredTexture1\" blend ",
          " 4 1\n    texture \"file3\" file ",
          "weight.png\" image missing\n    texture \"file2\" file ",
          "diffuse.png\" image missing\n    texture \"file1\" file "},
         nullptr},
        {{"maya_node_attribute_zoo_6100_ascii.fbx", "maya_node_attribute_zoo_7500_ascii.fbx"},
         {"\nnode \"Null\" null ", "\nnode \"Mesh\" mesh ", "\nnode \"Bone\" skeleton ",
          "\nnode \"Camera\" camera ", "\nnode \"Light\" light ",
          "\nnode \"NurbsCurve\" nurbs-curve ", "\nnode \"NurbsSurface\" nurbs-surface ",
          "\nnode \"NurbsTrim\" trim-nurbs-surface ", "\nnode \"LodGroup\" lodgroup ",
          "\n  node \"LOD_0\" null ", "\n  node \"LOD_1\" null "},
         [](const Imported& file) {
             EXPECT_NE(file.Find("Light")->GetNodeAttribute()->GetClassId(), KFbxMesh::ClassId);
             EXPECT_EQ(file.Find("Light")->GetMesh(), nullptr);
             EXPECT_EQ(file.Find("LOD_1")->GetParent(), file.Find("LodGroup"));
         }},
    };
    for (const Case& c : cases) {
        for (const char* name : c.files) {
            SCOPED_TRACE(name);
            Imported file(Fbx(name));
            ASSERT_TRUE(file.imported) << file.importer->GetLastErrorString();
            const std::string summary = file.Summary();
            // The first line names the version and encoding that the file's name states,
            // "maya_cube_7400_ascii.fbx" -> "fbx 7.4.0 ascii".
            const std::string stem = std::string(name).substr(0, std::strlen(name) - 4);
            const std::size_t encodingAt = stem.rfind('_');
            const std::string digits = stem.substr(stem.rfind('_', encodingAt - 1) + 1, 4);
            EXPECT_EQ(summary.substr(0, summary.find('\n')), "fbx " + digits.substr(0, 1) + "." +
                                                                 digits.substr(1, 1) + ".0 " +
                                                                 stem.substr(encodingAt + 1));
            for (const char* text : c.texts)
                EXPECT_NE(summary.find(text), std::string::npos) << text;
            if (c.check)
                c.check(file);
        }
    }
}

}  // namespace
