// Model drawing: placement of models and meshes, display lists, materials, normals, pixels.
#include <GL/gl.h>
#include <GL/glu.h>

#include <initializer_list>
#include <vector>

#include "gl_test_context.h"
#include "render/Draw.h"

namespace {

struct Point {
    float x, y, z;
};

Polygon MakePolygon(std::initializer_list<Point> points) {
    Polygon polygon;
    for (const Point& p : points) {
        Vertex vertex;
        const float xyz[3] = {p.x, p.y, p.z};
        for (int k = 0; k < 3; ++k) {
            vertex.m_Point[k] = vertex.m_FacePoint[k] = vertex.m_Position[k] = xyz[k];
        }
        polygon.m_Vertices.push_back(vertex);
    }
    return polygon;
}

// A small triangle around the origin, facing +z.
Mesh TriangleMesh() {
    Mesh mesh;
    mesh.m_Polygons.push_back(
        MakePolygon({{0.0f, 0.0f, 0.0f}, {0.1f, 0.0f, 0.0f}, {0.0f, 0.1f, 0.0f}}));
    return mesh;
}

// Feedback window coordinates back to the normalised [-1, 1] range (identity projection).
float Ndc(float window) {
    return window / (GlTest::kSize / 2.0f) - 1.0f;
}

Material ValidMaterial() {
    Material material;
    material.m_Valid = true;
    const float ambient[3] = {0.1f, 0.2f, 0.3f};
    const float diffuse[3] = {0.4f, 0.5f, 0.6f};
    for (int k = 0; k < 3; ++k) {
        material.m_Ambient[k] = ambient[k];
        material.m_Diffuse[k] = diffuse[k];
    }
    material.m_Specular[0] = 0.25f;
    material.m_Emissive[2] = 0.75f;
    material.m_Shininess = 12.0f;
    material.m_Alpha = 0.5f;
    return material;
}

std::vector<float> GetMaterial(GLenum face, GLenum what) {
    std::vector<float> value(4, -9.0f);
    glGetMaterialfv(face, what, value.data());
    return value;
}

using DrawModelTest = GlTest;

TEST_F(DrawModelTest, ModelPlacementPersistsAndMeshPlacementIsUndone) {
    Model model;
    model.m_Position[0] = 1.0f;
    model.m_Position[1] = 2.0f;
    model.m_Position[2] = 3.0f;
    model.m_Rotation[0] = 90.0f;  // about X: y goes to z
    Mesh mesh = TriangleMesh();
    mesh.m_Translation[0] = 10.0f;
    mesh.m_Rotation[1] = 45.0f;
    model.m_Meshes["body"] = mesh;

    EXPECT_FALSE(DrawModel(model));

    EXPECT_EQ(ModelViewDepth(), 1);
    EXPECT_THAT(Apply(0, 0, 0), Near({1.0f, 2.0f, 3.0f}, 1e-5f));
    EXPECT_THAT(Apply(0, 1, 0), Near({1.0f, 2.0f, 4.0f}, 1e-5f));
}

TEST_F(DrawModelTest, ModelWithoutMeshesOnlyPlacesItself) {
    Model model;
    model.m_Position[2] = -5.0f;
    model.m_Rotation[2] = 90.0f;  // about Z: x goes to y
    EXPECT_TRUE(Feedback([&] { DrawModel(model); }).empty());
    EXPECT_EQ(ModelViewDepth(), 1);
    EXPECT_THAT(Apply(1, 0, 0), Near({0.0f, 1.0f, -5.0f}, 1e-5f));
}

TEST_F(DrawModelTest, SecondModelIsPlacedRelativeToTheFirst) {
    Model first;
    first.m_Rotation[1] = 90.0f;  // about Y: x goes to -z
    first.m_Position[0] = 0.5f;
    Model second;
    second.m_Position[0] = 1.0f;
    DrawModel(first);
    DrawModel(second);
    EXPECT_THAT(Apply(0, 0, 0), Near({0.5f, 0.0f, -1.0f}, 1e-5f));
}

TEST_F(DrawModelTest, ModelTurnsXYZWhileMeshTurnsZYX) {
    // The same two angles on the model and on a mesh take the point (1, 0, 0) to different
    // places: X then Y for the model, Y then X for the mesh.
    Model model;
    model.m_Rotation[0] = 90.0f;
    model.m_Rotation[1] = 90.0f;
    DrawModel(model);
    EXPECT_THAT(Apply(1, 0, 0), Near({0.0f, 1.0f, 0.0f}, 1e-5f));

    glLoadIdentity();
    Model holder;
    Mesh mesh;
    mesh.m_Polygons.push_back(MakePolygon({{0.5f, 0, 0}, {0.5f, 0.1f, 0}, {0.5f, 0, 0.1f}}));
    mesh.m_Rotation[0] = 90.0f;
    mesh.m_Rotation[1] = 90.0f;
    holder.m_Meshes["m"] = mesh;
    // Identity projection: the fed-back vertex is the eye-space point (depth keeps z).
    const std::vector<FedVertex> fed = Feedback([&] { DrawModel(holder); });
    ASSERT_FALSE(fed.empty());
    EXPECT_NEAR(Ndc(fed[0].m_Window[0]), 0.0f, 1e-3f);
    EXPECT_NEAR(Ndc(fed[0].m_Window[1]), 0.0f, 1e-3f);
    // z = -0.5 in eye space maps to depth 0.25 of [0, 1].
    EXPECT_NEAR(fed[0].m_Window[2], 0.25f, 1e-3f);
}

TEST_F(DrawModelTest, MeshesAreCompiledOnceAndReplayed) {
    Model model;
    model.m_Meshes["a"] = TriangleMesh();
    model.m_Meshes["b"] = TriangleMesh();
    EXPECT_EQ(model.m_Meshes["a"].m_DisplayList, -1);

    const std::vector<FedVertex> first = Feedback([&] { DrawModel(model); });
    ASSERT_EQ(first.size(), 6u);
    const int listA = model.m_Meshes["a"].m_DisplayList;
    const int listB = model.m_Meshes["b"].m_DisplayList;
    EXPECT_NE(listA, -1);
    EXPECT_NE(listA, listB);
    EXPECT_TRUE(glIsList(static_cast<GLuint>(listA)));
    EXPECT_TRUE(glIsList(static_cast<GLuint>(listB)));

    // Later changes to the geometry are not seen: the compiled list is replayed as it was.
    for (Vertex& v : model.m_Meshes["a"].m_Polygons[0].m_Vertices) {
        v.m_Position[0] += 0.5f;
    }
    glLoadIdentity();
    const std::vector<FedVertex> second = Feedback([&] { DrawModel(model); });
    ASSERT_EQ(second.size(), 6u);
    EXPECT_EQ(model.m_Meshes["a"].m_DisplayList, listA);
    for (size_t i = 0; i < first.size(); ++i) {
        EXPECT_FLOAT_EQ(second[i].m_Window[0], first[i].m_Window[0]);
    }
}

TEST_F(DrawModelTest, MeshesAreDrawnInNameOrderEachPlacedOnItsOwn) {
    Model model;
    Mesh right = TriangleMesh();
    right.m_Translation[0] = 0.5f;
    Mesh left = TriangleMesh();
    left.m_Translation[0] = -0.5f;
    model.m_Meshes["zeta"] = right;
    model.m_Meshes["alpha"] = left;
    const std::vector<FedVertex> fed = Feedback([&] { DrawModel(model); });
    ASSERT_EQ(fed.size(), 6u);
    EXPECT_NEAR(Ndc(fed[0].m_Window[0]), -0.5f, 1e-3f);  // "alpha" first
    EXPECT_NEAR(Ndc(fed[3].m_Window[0]), 0.5f, 1e-3f);   // not shifted by alpha's -0.5
}

TEST_F(DrawModelTest, MeshWithoutValidMaterialGetsFrontOnlyGrey) {
    // Back faces keep what they had before.
    const float backColour[4] = {0.1f, 0.2f, 0.3f, 1.0f};
    for (GLenum what : {GL_AMBIENT, GL_DIFFUSE, GL_SPECULAR}) {
        glMaterialfv(GL_BACK, what, backColour);
    }
    glMaterialf(GL_BACK, GL_SHININESS, 5.0f);
    Model model;
    model.m_Meshes["none"] = TriangleMesh();
    Mesh invalid = TriangleMesh();
    invalid.m_Materials.push_back(ValidMaterial());
    invalid.m_Materials[0].m_Valid = false;
    model.m_Meshes["invalid"] = invalid;
    DrawModel(model);

    EXPECT_THAT(GetMaterial(GL_FRONT, GL_AMBIENT), Near({0.7f, 0.7f, 0.7f, 1.0f}, 1e-6f));
    EXPECT_THAT(GetMaterial(GL_FRONT, GL_DIFFUSE), Near({0.7f, 0.7f, 0.7f, 1.0f}, 1e-6f));
    EXPECT_THAT(GetMaterial(GL_FRONT, GL_SPECULAR), Near({1.0f, 1.0f, 1.0f, 1.0f}, 1e-6f));
    EXPECT_FLOAT_EQ(GetMaterial(GL_FRONT, GL_SHININESS)[0], 32.0f);
    for (GLenum what : {GL_AMBIENT, GL_DIFFUSE, GL_SPECULAR}) {
        EXPECT_THAT(GetMaterial(GL_BACK, what), Near({0.1f, 0.2f, 0.3f, 1.0f}, 1e-6f));
    }
    EXPECT_FLOAT_EQ(GetMaterial(GL_BACK, GL_SHININESS)[0], 5.0f);
}

TEST_F(DrawModelTest, ValidMaterialSetsBothFacesWithItsAlpha) {
    Model model;
    Mesh mesh = TriangleMesh();
    mesh.m_Materials.push_back(ValidMaterial());
    Material second;  // only the first material counts
    second.m_Valid = true;
    mesh.m_Materials.push_back(second);
    model.m_Meshes["m"] = mesh;
    DrawModel(model);

    for (GLenum face : {GL_FRONT, GL_BACK}) {
        EXPECT_THAT(GetMaterial(face, GL_AMBIENT), Near({0.1f, 0.2f, 0.3f, 0.5f}, 1e-6f));
        EXPECT_THAT(GetMaterial(face, GL_DIFFUSE), Near({0.4f, 0.5f, 0.6f, 0.5f}, 1e-6f));
        EXPECT_THAT(GetMaterial(face, GL_SPECULAR), Near({0.25f, 0.0f, 0.0f, 0.5f}, 1e-6f));
        EXPECT_THAT(GetMaterial(face, GL_EMISSION), Near({0.0f, 0.0f, 0.75f, 0.5f}, 1e-6f));
        EXPECT_FLOAT_EQ(GetMaterial(face, GL_SHININESS)[0], 12.0f);
    }
}

TEST_F(DrawModelTest, TexturedMeshSendsScaledCoordinatesAndUntexturedSendsNone) {
    Model model;
    Mesh textured = TriangleMesh();
    Material material = ValidMaterial();
    material.m_HasTexture = true;
    material.m_TextureScale[0] = 2.0f;
    material.m_TextureScale[1] = 3.0f;
    textured.m_Materials.push_back(material);
    float uv = 0.25f;
    for (Vertex& v : textured.m_Polygons[0].m_Vertices) {
        v.m_UV[0] = uv;
        v.m_UV[1] = uv + 0.5f;
        uv += 0.25f;
    }
    model.m_Meshes["a_textured"] = textured;
    Mesh plain = TriangleMesh();
    plain.m_Materials.push_back(ValidMaterial());
    model.m_Meshes["b_plain"] = plain;

    glTexCoord2f(7.0f, 9.0f);
    const std::vector<FedVertex> fed = Feedback([&] { DrawModel(model); });
    ASSERT_EQ(fed.size(), 6u);
    const float expectedU[3] = {0.5f, 1.0f, 1.5f};
    const float expectedV[3] = {2.25f, 3.0f, 3.75f};
    for (int i = 0; i < 3; ++i) {
        EXPECT_FLOAT_EQ(fed[static_cast<size_t>(i)].m_TexCoord[0], expectedU[i]);
        EXPECT_FLOAT_EQ(fed[static_cast<size_t>(i)].m_TexCoord[1], expectedV[i]);
    }
    // The plain mesh replays no coordinates: the last one sent stays current.
    for (size_t i = 3; i < 6; ++i) {
        EXPECT_FLOAT_EQ(fed[i].m_TexCoord[0], expectedU[2]);
        EXPECT_FLOAT_EQ(fed[i].m_TexCoord[1], expectedV[2]);
    }
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
}

TEST_F(DrawModelTest, FaceNormalsAreComputedOnlyWhenUnknown) {
    Model model;
    Mesh mesh;
    // Counter-clockwise in the XY plane seen from +z: (v0 - v1) x (v1 - v2) points to +z.
    mesh.m_Polygons.push_back(MakePolygon({{0, 0, 0}, {2, 0, 0}, {0, 3, 0}}));
    mesh.m_Polygons.push_back(MakePolygon({{0, 0, 0}, {1, 1, 1}, {2, 2, 2}}));  // collinear
    mesh.m_Polygons.push_back(MakePolygon({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}));
    mesh.m_Polygons.back().m_Normal[0] = 0.0f;  // preset: sent as it stands
    mesh.m_Polygons.back().m_Normal[1] = 0.0f;
    mesh.m_Polygons.back().m_Normal[2] = 0.0f;
    mesh.m_Polygons.push_back(MakePolygon({{0, 0, 0}, {0, 0, 1}, {0, 1, 0}}));
    mesh.m_Polygons.back().m_Normal[0] = 0.25f;
    model.m_Meshes["m"] = mesh;
    DrawModel(model);

    const Mesh& drawn = model.m_Meshes["m"];
    EXPECT_THAT(drawn.m_Polygons[0].m_Normal, Near({0.0f, 0.0f, 1.0f}, 1e-6f));
    EXPECT_THAT(drawn.m_Polygons[1].m_Normal, Near({0.0f, 0.0f, 0.0f}, 0.0f));
    EXPECT_THAT(drawn.m_Polygons[2].m_Normal, Near({0.0f, 0.0f, 0.0f}, 0.0f));
    EXPECT_THAT(drawn.m_Polygons[3].m_Normal, Near({0.25f, -1.0f, -1.0f}, 0.0f));
    // The last normal sent is the one of the last polygon.
    std::vector<float> current(4);
    glGetFloatv(GL_CURRENT_NORMAL, current.data());
    EXPECT_THAT(std::vector<float>(current.begin(), current.begin() + 3),
                Near({0.25f, -1.0f, -1.0f}, 1e-6f));
}

TEST(FaceNormalTest, UsesTheFacePointsNotTheDrawnPositions) {
    Polygon polygon = MakePolygon({{0, 0, 0}, {0, 2, 0}, {0, 0, 2}});
    for (Vertex& v : polygon.m_Vertices) {
        v.m_Position[0] = 5.0f;  // drawn elsewhere; the face points still decide
    }
    ComputeFaceNormal(polygon);
    EXPECT_THAT(polygon.m_Normal, Near({1.0f, 0.0f, 0.0f}, 1e-6f));
}

TEST(FaceNormalTest, TooFewCornersGiveTheZeroNormal) {
    Polygon two = MakePolygon({{0, 0, 0}, {1, 0, 0}});
    ComputeFaceNormal(two);
    EXPECT_THAT(two.m_Normal, Near({0.0f, 0.0f, 0.0f}, 0.0f));
    Polygon none;
    ComputeFaceNormal(none);
    EXPECT_THAT(none.m_Normal, Near({0.0f, 0.0f, 0.0f}, 0.0f));
}

TEST(NormalizeTest, ScalesToUnitLengthAndKeepsZero) {
    float v[3] = {3.0f, 0.0f, -4.0f};
    Normalize(v);
    EXPECT_THAT(v, Near({0.6f, 0.0f, -0.8f}, 1e-6f));
    float zero[3] = {0.0f, 0.0f, 0.0f};
    Normalize(zero);
    EXPECT_THAT(zero, Near({0.0f, 0.0f, 0.0f}, 0.0f));
}

TEST_F(DrawModelTest, RedQuadInFrontOfTheCameraShowsRed) {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluPerspective(45.0, 1.0, 0.1, 10000.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();

    Model model;
    model.m_Position[2] = -5.0f;
    Mesh mesh;
    mesh.m_Polygons.push_back(MakePolygon({{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}}));
    Material red;
    red.m_Valid = true;
    red.m_Ambient[0] = 1.0f;
    red.m_Diffuse[0] = 1.0f;
    red.m_Alpha = 1.0f;
    mesh.m_Materials.push_back(red);
    model.m_Meshes["quad"] = mesh;
    DrawModel(model);
    glFinish();

    unsigned char centre[3] = {};
    unsigned char corner[3] = {9, 9, 9};
    glReadBuffer(GL_BACK);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(kSize / 2, kSize / 2, 1, 1, GL_RGB, GL_UNSIGNED_BYTE, centre);
    glReadPixels(0, 0, 1, 1, GL_RGB, GL_UNSIGNED_BYTE, corner);
    EXPECT_GT(centre[0], 200);
    EXPECT_LT(centre[1], 30);
    EXPECT_LT(centre[2], 30);
    EXPECT_EQ(corner[0], 0);  // the quad covers only the middle of the frame
    EXPECT_EQ(corner[1], 0);
    EXPECT_EQ(corner[2], 0);
}

}  // namespace
