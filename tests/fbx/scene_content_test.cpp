// Scene content read from corpus files, checked against what their ASCII text states.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "scene_support.h"

using scenetest::Fbx;
using scenetest::Imported;

namespace {

class CubeFiles : public ::testing::TestWithParam<const char*> {};

TEST_P(CubeFiles, CubeHasEightCornersAndSixQuads) {
    Imported file(Fbx(GetParam()));
    ASSERT_TRUE(file.imported) << file.importer->GetLastErrorString();
    KFbxNode* root = file.scene->GetRootNode();
    ASSERT_EQ(root->GetChildCount(), 1);
    KFbxNode* cube = root->GetChild(0);
    EXPECT_STREQ(cube->GetName(), "pCube1");
    ASSERT_NE(cube->GetNodeAttribute(), nullptr);
    EXPECT_EQ(cube->GetNodeAttribute()->GetAttributeType(), KFbxNodeAttribute::eMESH);
    KFbxMesh* mesh = cube->GetMesh();
    ASSERT_NE(mesh, nullptr);
    ASSERT_EQ(mesh->GetControlPointsCount(), 8);
    // Vertices: -0.5,-0.5,0.5, 0.5,-0.5,0.5, ... , 0.5,-0.5,-0.5
    EXPECT_DOUBLE_EQ(mesh->GetControlPoints()[0][0], -0.5);
    EXPECT_DOUBLE_EQ(mesh->GetControlPoints()[0][2], 0.5);
    EXPECT_DOUBLE_EQ(mesh->GetControlPoints()[7][0], 0.5);
    EXPECT_DOUBLE_EQ(mesh->GetControlPoints()[7][2], -0.5);
    EXPECT_DOUBLE_EQ(mesh->GetControlPoints()[7][3], 1.0);
    ASSERT_EQ(mesh->GetPolygonCount(), 6);
    // PolygonVertexIndex: 0,1,3,-3, 2,3,5,-5, ...
    EXPECT_EQ(mesh->GetPolygonSize(0), 4);
    EXPECT_EQ(mesh->GetPolygonVertex(0, 0), 0);
    EXPECT_EQ(mesh->GetPolygonVertex(0, 2), 3);
    EXPECT_EQ(mesh->GetPolygonVertex(0, 3), 2);
    EXPECT_EQ(mesh->GetPolygonVertex(1, 3), 4);
    EXPECT_EQ(mesh->GetPolygonSize(6), -1);
    EXPECT_EQ(mesh->GetPolygonVertex(0, 4), -1);
    EXPECT_EQ(mesh->GetPolygonVertex(-1, 0), -1);
    // UVIndex: 0,1,3,2,...
    EXPECT_EQ(mesh->GetTextureUVIndex(0, 2), 3);
    ASSERT_GE(mesh->GetLayerCount(), 1);
    KFbxLayerElementNormal* normals = mesh->GetLayer(0)->GetNormals();
    ASSERT_NE(normals, nullptr);
    EXPECT_EQ(normals->GetMappingMode(), KFbxLayerElement::eBY_POLYGON_VERTEX);
    EXPECT_EQ(normals->GetReferenceMode(), KFbxLayerElement::eDIRECT);
    EXPECT_EQ(normals->GetDirectArray().GetCount(), 24);
    EXPECT_DOUBLE_EQ(normals->GetDirectArray().GetAt(0)[2], 1.0);
    EXPECT_DOUBLE_EQ(normals->GetDirectArray().GetAt(0)[3], 1.0);
    EXPECT_DOUBLE_EQ(normals->GetDirectArray().GetAt(1000)[0], 0.0);
    EXPECT_EQ(mesh->GetLayer(0)->GetVertexColors(), nullptr);
    EXPECT_EQ(mesh->GetLayer(5), nullptr);
    ASSERT_EQ(cube->GetMaterialCount(), 1);
    EXPECT_STREQ(cube->GetMaterial(0)->GetName(), "lambert1");
    EXPECT_EQ(cube->GetMaterial(1), nullptr);
}

INSTANTIATE_TEST_SUITE_P(AllLayouts, CubeFiles,
                         ::testing::Values("maya_cube_6100_ascii.fbx", "maya_cube_6100_binary.fbx",
                                           "maya_cube_7400_ascii.fbx", "maya_cube_7500_binary.fbx",
                                           "maya_cube_big_endian_7100_binary.fbx"));

TEST(SceneContent, PolygonHolesAreALayerElement) {
    for (const char* name :
         {"maya_polygon_hole_6100_ascii.fbx", "maya_polygon_hole_7700_binary.fbx"}) {
        Imported file(Fbx(name));
        ASSERT_TRUE(file.imported) << name;
        KFbxMesh* mesh = file.Find("pCube1")->GetMesh();
        ASSERT_NE(mesh, nullptr);
        EXPECT_EQ(mesh->GetPolygonCount(), 6) << name;
        KFbxLayerElementHole* holes = mesh->GetLayer(0)->GetHoles();
        ASSERT_NE(holes, nullptr) << name;
        EXPECT_EQ(holes->GetMappingMode(), KFbxLayerElement::eBY_POLYGON);
        // Hole: 0,1,0,1,0,0
        ASSERT_EQ(holes->GetDirectArray().GetCount(), 6);
        EXPECT_FALSE(holes->GetDirectArray().GetAt(0));
        EXPECT_TRUE(holes->GetDirectArray().GetAt(1));
        EXPECT_TRUE(holes->GetDirectArray().GetAt(3));
    }
}

TEST(SceneContent, NgonsKeepAllTheirCorners) {
    Imported file(Fbx("maya_ngon_maze_7700_binary.fbx"));
    ASSERT_TRUE(file.imported);
    KFbxMesh* mesh = nullptr;
    for (int i = 0; i < file.scene->GetNodeCount() && !mesh; ++i)
        mesh = file.scene->GetNode(i)->GetMesh();
    ASSERT_NE(mesh, nullptr);
    int corners = 0;
    int largest = 0;
    for (int p = 0; p < mesh->GetPolygonCount(); ++p) {
        corners += mesh->GetPolygonSize(p);
        largest = std::max(largest, mesh->GetPolygonSize(p));
        for (int k = 0; k < mesh->GetPolygonSize(p); ++k) {
            int v = mesh->GetPolygonVertex(p, k);
            ASSERT_GE(v, 0);
            ASSERT_LT(v, mesh->GetControlPointsCount());
        }
    }
    EXPECT_EQ(corners, mesh->GetPolygonVertexCount());
    EXPECT_GT(largest, 4);
}

TEST(SceneContent, UvSetsSitInSeparateLayers) {
    Imported file(Fbx("maya_uv_sets_7500_ascii.fbx"));
    ASSERT_TRUE(file.imported);
    KFbxMesh* mesh = file.Find("pCube1")->GetMesh();
    ASSERT_EQ(mesh->GetLayerCount(), 3);
    const char* names[3] = {"Default", "PerFace", "Row"};
    for (int l = 0; l < 3; ++l) {
        KFbxLayerElementUV* uvs = mesh->GetLayer(l)->GetUVs();
        ASSERT_NE(uvs, nullptr) << l;
        EXPECT_STREQ(uvs->GetName(), names[l]);
        EXPECT_EQ(uvs->GetMappingMode(), KFbxLayerElement::eBY_POLYGON_VERTEX);
        EXPECT_EQ(uvs->GetReferenceMode(), KFbxLayerElement::eINDEX_TO_DIRECT);
        EXPECT_EQ(uvs->GetIndexArray().GetCount(), 24);
    }
}

TEST(SceneContent, ColourSetsGiveRgbaColours) {
    Imported file(Fbx("maya_color_sets_6100_ascii.fbx"));
    ASSERT_TRUE(file.imported);
    KFbxMesh* mesh = file.Find("pCube1")->GetMesh();
    ASSERT_GE(mesh->GetLayerCount(), 4);
    KFbxLayerElementVertexColor* rgb = mesh->GetLayer(0)->GetVertexColors();
    ASSERT_NE(rgb, nullptr);
    EXPECT_STREQ(rgb->GetName(), "RGBCube");
    EXPECT_EQ(rgb->GetMappingMode(), KFbxLayerElement::eBY_POLYGON_VERTEX);
    EXPECT_EQ(rgb->GetReferenceMode(), KFbxLayerElement::eINDEX_TO_DIRECT);
    ASSERT_EQ(rgb->GetDirectArray().GetCount(), 24);
    // Colors: 0,0,1,1, 1,0,1,1, ...
    KFbxColor second = rgb->GetDirectArray().GetAt(1);
    EXPECT_DOUBLE_EQ(second.mRed, 1.0);
    EXPECT_DOUBLE_EQ(second.mGreen, 0.0);
    EXPECT_DOUBLE_EQ(second.mBlue, 1.0);
    EXPECT_DOUBLE_EQ(second.mAlpha, 1.0);
    EXPECT_STREQ(mesh->GetLayer(1)->GetVertexColors()->GetName(), "White");
    EXPECT_STREQ(mesh->GetLayer(2)->GetVertexColors()->GetName(), "Black");
}

TEST(SceneContent, PhongMaterialColoursAndTemplateDefaults) {
    Imported file(Fbx("maya_textured_cube_7500_ascii.fbx"));
    ASSERT_TRUE(file.imported);
    KFbxNode* cube = file.Find("pCube1");
    ASSERT_EQ(cube->GetMaterialCount(), 1);
    KFbxSurfaceMaterial* material = cube->GetMaterial(0);
    EXPECT_STREQ(material->GetName(), "phong1");
    EXPECT_TRUE(material->GetClassId().Is(KFbxSurfacePhong::ClassId));
    EXPECT_TRUE(material->GetClassId().Is(KFbxSurfaceLambert::ClassId));
    fbxDouble3 ambient = material->FindProperty("AmbientColor").Get<fbxDouble3>();
    EXPECT_DOUBLE_EQ(ambient[0], 0.5);
    EXPECT_DOUBLE_EQ(material->FindProperty("DiffuseColor").Get<fbxDouble3>()[1], 1.0);
    EXPECT_DOUBLE_EQ(material->FindProperty("TransparencyFactor").Get<double>(), 1.0);
    EXPECT_DOUBLE_EQ(material->FindProperty("SpecularColor").Get<fbxDouble3>()[2], 0.5);
    // Not on the object: from the FbxSurfacePhong template (20).
    EXPECT_DOUBLE_EQ(material->FindProperty("ShininessExponent").Get<double>(), 20.0);
    EXPECT_FALSE(material->FindProperty("NoSuchProperty").IsValid());

    KFbxProperty diffuse = material->FindProperty("DiffuseColor");
    ASSERT_EQ(diffuse.GetSrcObjectCount(KFbxTexture::ClassId), 1);
    EXPECT_EQ(diffuse.GetSrcObjectCount(KFbxLayeredTexture::ClassId), 0);
    auto* texture = static_cast<KFbxTexture*>(diffuse.GetSrcObject(KFbxTexture::ClassId, 0));
    EXPECT_STREQ(texture->GetRelativeFileName(), "textures\\checkerboard_diffuse.png");
    EXPECT_NE(std::strstr(texture->GetFileName(), "checkerboard_diffuse.png"), nullptr);
    EXPECT_DOUBLE_EQ(texture->GetScaleU(), 1.0);
    EXPECT_DOUBLE_EQ(texture->GetDefaultAlpha(), 1.0);
    EXPECT_EQ(diffuse.GetSrcObject(KFbxTexture::ClassId, 1), nullptr);
}

TEST(SceneContent, OlderFilesTieTexturesToTheDiffuseColour) {
    Imported file(Fbx("maya_shared_textures_6100_ascii.fbx"));
    ASSERT_TRUE(file.imported);
    KFbxNode* a = file.Find("A");
    KFbxNode* b = file.Find("B");
    ASSERT_TRUE(a && b);
    // Connect: Material::Special then Material::Shared to A; Shared to B.
    ASSERT_EQ(a->GetMaterialCount(), 2);
    EXPECT_STREQ(a->GetMaterial(0)->GetName(), "Special");
    EXPECT_TRUE(a->GetMaterial(0)->Is(KFbxSurfacePhong::ClassId));
    EXPECT_STREQ(a->GetMaterial(1)->GetName(), "Shared");
    EXPECT_FALSE(a->GetMaterial(1)->Is(KFbxSurfacePhong::ClassId));
    ASSERT_EQ(b->GetMaterialCount(), 1);
    EXPECT_EQ(b->GetMaterial(0), a->GetMaterial(1));
    KFbxProperty special = a->GetMaterial(0)->FindProperty("DiffuseColor");
    ASSERT_EQ(special.GetSrcObjectCount(KFbxTexture::ClassId), 1);
    EXPECT_STREQ(special.GetSrcObject(KFbxTexture::ClassId, 0)->GetName(), "file10");
    KFbxProperty shared = b->GetMaterial(0)->FindProperty("DiffuseColor");
    ASSERT_EQ(shared.GetSrcObjectCount(KFbxTexture::ClassId), 1);
    EXPECT_STREQ(shared.GetSrcObject(KFbxTexture::ClassId, 0)->GetName(), "file1");
}

TEST(SceneContent, LayeredTexturesStackOnTheDiffuseColour) {
    for (const char* name :
         {"maya_texture_layers_6100_ascii.fbx", "maya_texture_layers_7500_ascii.fbx"}) {
        Imported file(Fbx(name));
        ASSERT_TRUE(file.imported);
        KFbxProperty diffuse = file.Find("pCube1")->GetMaterial(0)->FindProperty("DiffuseColor");
        ASSERT_EQ(diffuse.GetSrcObjectCount(KFbxLayeredTexture::ClassId), 1) << name;
        auto* layered =
            static_cast<KFbxLayeredTexture*>(diffuse.GetSrcObject(KFbxLayeredTexture::ClassId, 0));
        EXPECT_STREQ(layered->GetName(), "layeredTexture1");
        // Texture::file3, file2, file1 connect to the layered texture in that order.
        ASSERT_EQ(layered->GetSrcObjectCount(KFbxTexture::ClassId), 3) << name;
        EXPECT_STREQ(layered->GetSrcObject(KFbxTexture::ClassId, 0)->GetName(), "file3");
        EXPECT_STREQ(layered->GetSrcObject(KFbxTexture::ClassId, 2)->GetName(), "file1");
        KFbxLayeredTexture::EBlendMode mode = KFbxLayeredTexture::eTRANSLUCENT;
        EXPECT_TRUE(layered->GetTextureBlendMode(1, mode));
        EXPECT_EQ(mode, KFbxLayeredTexture::eOVER);  // BlendModes: x,4,1
        EXPECT_FALSE(layered->GetTextureBlendMode(3, mode));
    }
}

TEST(SceneContent, SkinClustersLinkTheirBones) {
    for (const char* name :
         {"maya_transformed_skin_6100_ascii.fbx", "maya_transformed_skin_7700_binary.fbx"}) {
        Imported file(Fbx(name));
        ASSERT_TRUE(file.imported) << name;
        KFbxMesh* mesh = file.Find("pCube1")->GetMesh();
        ASSERT_EQ(mesh->GetDeformerCount(KFbxDeformer::eSKIN), 1) << name;
        auto* skin = static_cast<KFbxSkin*>(mesh->GetDeformer(0, KFbxDeformer::eSKIN));
        ASSERT_EQ(skin->GetClusterCount(), 3);
        KFbxCluster* first = skin->GetCluster(0);
        ASSERT_NE(first->GetLink(), nullptr);
        EXPECT_STREQ(first->GetLink()->GetName(), "joint1");
        EXPECT_EQ(first->GetControlPointIndicesCount(), 20);
        EXPECT_EQ(first->GetControlPointIndices()[19], 19);
        EXPECT_NEAR(first->GetControlPointWeights()[0], 0.986909676769711, 1e-6);
        KFbxXMatrix link;
        first->GetTransformLinkMatrix(link);
        // TransformLink: ..., 4,-2,0,1
        EXPECT_DOUBLE_EQ(link.Get(3, 0), 4.0);
        EXPECT_DOUBLE_EQ(link.Get(3, 1), -2.0);
        KFbxCluster* third = skin->GetCluster(2);
        EXPECT_STREQ(third->GetLink()->GetName(), "joint3");
        EXPECT_EQ(third->GetControlPointIndicesCount(), 16);
        EXPECT_EQ(third->GetControlPointIndices()[0], 2);
        EXPECT_EQ(skin->GetCluster(3), nullptr);
        EXPECT_EQ(file.Find("joint1")->GetNodeAttribute()->GetAttributeType(),
                  KFbxNodeAttribute::eSKELETON);
        EXPECT_EQ(file.Find("joint2")->GetParent(), file.Find("joint1"));
    }
}

TEST(SceneContent, NodeAttributeTypes) {
    for (const char* name :
         {"maya_node_attribute_zoo_6100_ascii.fbx", "maya_node_attribute_zoo_7500_ascii.fbx"}) {
        Imported file(Fbx(name));
        ASSERT_TRUE(file.imported);
        auto type = [&](const char* node) {
            KFbxNode* n = file.Find(node);
            return n && n->GetNodeAttribute()
                       ? static_cast<int>(n->GetNodeAttribute()->GetAttributeType())
                       : -1;
        };
        EXPECT_EQ(type("Null"), KFbxNodeAttribute::eNULL) << name;
        EXPECT_EQ(type("Mesh"), KFbxNodeAttribute::eMESH);
        EXPECT_EQ(type("Bone"), KFbxNodeAttribute::eSKELETON);
        EXPECT_EQ(type("Camera"), KFbxNodeAttribute::eCAMERA);
        EXPECT_EQ(type("Light"), KFbxNodeAttribute::eLIGHT);
        EXPECT_EQ(type("NurbsCurve"), KFbxNodeAttribute::eNURBS_CURVE);
        EXPECT_EQ(type("NurbsSurface"), KFbxNodeAttribute::eNURBS_SURFACE);
        EXPECT_EQ(type("NurbsTrim"), KFbxNodeAttribute::eTRIM_NURBS_SURFACE);
        EXPECT_EQ(type("LodGroup"), KFbxNodeAttribute::eLODGROUP);
        EXPECT_NE(file.Find("Light")->GetNodeAttribute()->GetClassId(), KFbxMesh::ClassId);
        EXPECT_EQ(file.Find("Light")->GetMesh(), nullptr);
        KFbxNode* lod = file.Find("LodGroup");
        ASSERT_EQ(lod->GetChildCount(), 2);
        EXPECT_STREQ(lod->GetChild(0)->GetName(), "LOD_0");
        EXPECT_STREQ(lod->GetChild(1)->GetName(), "LOD_1");
    }
}

}  // namespace
