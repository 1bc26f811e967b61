// Model drawing: placement of models and meshes, display lists, materials, normals (what the
// drawn pixels show is checked through the frame, in the shell tests).

#include "gl_test_context.h"
#include "render/Draw.h"
#include "test_meshes.h"

namespace {

// Feedback window coordinates back to the normalised [-1, 1] range (identity projection).
float Ndc(float window) {
    return window / (GlTest::kSize / 2.0f) - 1.0f;
}

Material ValidMaterial() {
    Material material;
    material.m_Valid = true;
    Set(material.m_Ambient, {0.1f, 0.2f, 0.3f});
    Set(material.m_Diffuse, {0.4f, 0.5f, 0.6f});
    material.m_Specular[0] = 0.25f;
    material.m_Emissive[2] = 0.75f;
    material.m_Shininess = 12.0f;
    material.m_Alpha = 0.5f;
    return material;
}

// Ambient, diffuse, specular and emission colours and the shininess of one side's material.
std::vector<float> GetMaterial(GLenum face) {
    std::vector<float> value;
    for (GLenum what : {GL_AMBIENT, GL_DIFFUSE, GL_SPECULAR, GL_EMISSION, GL_SHININESS}) {
        float part[4] = {-9, -9, -9, -9};
        glGetMaterialfv(face, what, part);
        value.insert(value.end(), part, part + (what == GL_SHININESS ? 1 : 4));
    }
    return value;
}

using DrawModelTest = GlTest;

TEST_F(DrawModelTest, ModelPlacementStaysForTheNextModelTurningXYZWhileMeshesTurnZYXAndAreUndone) {
    Model first;
    Set(first.m_Position, {1, 2, 3});
    first.m_Rotation[0] = 90.0f;  // about X: y goes to z
    Mesh mesh = TriangleMesh();
    mesh.m_Translation[0] = 10.0f;
    mesh.m_Rotation[1] = 45.0f;
    first.m_Meshes["body"] = mesh;
    EXPECT_FALSE(DrawModel(first));
    EXPECT_EQ(ModelViewDepth(), 1);
    EXPECT_THAT(Apply(0, 0, 0), Near({1.0f, 2.0f, 3.0f}));
    EXPECT_THAT(Apply(0, 1, 0), Near({1.0f, 2.0f, 4.0f}));

    // A model without meshes draws nothing and is placed relative to the one before.
    Model second;
    second.m_Position[0] = 1.0f;
    second.m_Rotation[2] = 90.0f;  // about Z: x goes to y
    EXPECT_TRUE(Feedback([&] { DrawModel(second); }).empty());
    EXPECT_EQ(ModelViewDepth(), 1);
    EXPECT_THAT(Apply(1, 0, 0), Near({2.0f, 2.0f, 4.0f}));

    // The same two angles on the model and on a mesh take the point (1, 0, 0) to different
    // places: X then Y for the model, Y then X for the mesh.
    glLoadIdentity();
    Model model;
    Set(model.m_Rotation, {90, 90, 0});
    DrawModel(model);
    EXPECT_THAT(Apply(1, 0, 0), Near({0.0f, 1.0f, 0.0f}));

    glLoadIdentity();
    Model holder;
    Mesh& turned = holder.m_Meshes["m"];
    AddPolygon(turned, {{0.5f, 0, 0}, {0.5f, 0.1f, 0}, {0.5f, 0, 0.1f}});
    Set(turned.m_Rotation, {90, 90, 0});
    // Identity projection: the fed-back vertex is the eye-space point; z = -0.5 maps to
    // depth 0.25 of [0, 1].
    const std::vector<FedVertex> fed = Feedback([&] { DrawModel(holder); });
    ASSERT_FALSE(fed.empty());
    EXPECT_THAT(fed[0].m_Window, Near({kSize / 2.0f, kSize / 2.0f, 0.25f}, 0.03f));
}

TEST_F(DrawModelTest, MeshesAreCompiledOnceDrawnInNameOrderAndEachPlacedOnItsOwn) {
    Model model;
    model.m_Meshes["zeta"] = model.m_Meshes["alpha"] = TriangleMesh();
    model.m_Meshes["zeta"].m_Translation[0] = 0.5f;
    model.m_Meshes["alpha"].m_Translation[0] = -0.5f;
    EXPECT_EQ(model.m_Meshes["alpha"].m_DisplayList, -1);

    const std::vector<FedVertex> first = Feedback([&] { DrawModel(model); });
    ASSERT_EQ(first.size(), 6u);
    EXPECT_NEAR(Ndc(first[0].m_Window[0]), -0.5f, 1e-3f);  // "alpha" first
    EXPECT_NEAR(Ndc(first[3].m_Window[0]), 0.5f, 1e-3f);   // not shifted by alpha's -0.5
    const int listA = model.m_Meshes["alpha"].m_DisplayList;
    const int listZ = model.m_Meshes["zeta"].m_DisplayList;
    EXPECT_NE(listA, -1);
    EXPECT_NE(listA, listZ);
    EXPECT_TRUE(glIsList(static_cast<GLuint>(listA)));
    EXPECT_TRUE(glIsList(static_cast<GLuint>(listZ)));

    // Later changes to the geometry are not seen: the compiled list is replayed as it was.
    for (Vertex& v : model.m_Meshes["alpha"].m_Vertices) {
        v.m_Position[0] += 0.5f;
    }
    glLoadIdentity();
    const std::vector<FedVertex> second = Feedback([&] { DrawModel(model); });
    ASSERT_EQ(second.size(), 6u);
    EXPECT_EQ(model.m_Meshes["alpha"].m_DisplayList, listA);
    for (size_t i = 0; i < first.size(); ++i) {
        EXPECT_FLOAT_EQ(second[i].m_Window[0], first[i].m_Window[0]);
    }
}

TEST_F(DrawModelTest, MeshWithoutValidMaterialGetsFrontOnlyGreyAndAValidOneSetsBothFaces) {
    const float before[4] = {0.1f, 0.2f, 0.3f, 1.0f};
    for (GLenum what : {GL_AMBIENT, GL_DIFFUSE, GL_SPECULAR, GL_EMISSION}) {
        glMaterialfv(GL_FRONT_AND_BACK, what, before);
    }
    glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, 5.0f);
    Model model;
    model.m_Meshes["none"] = model.m_Meshes["invalid"] = TriangleMesh();
    model.m_Meshes["invalid"].m_Materials.push_back(ValidMaterial());
    model.m_Meshes["invalid"].m_Materials[0].m_Valid = false;
    DrawModel(model);
    // Grey in front, with no emission of its own; back faces keep what they had.
    EXPECT_THAT(GetMaterial(GL_FRONT), Near({0.7f, 0.7f, 0.7f, 1, 0.7f, 0.7f, 0.7f, 1, 1, 1, 1, 1,
                                             0.1f, 0.2f, 0.3f, 1, 32}));
    EXPECT_THAT(GetMaterial(GL_BACK), Near({0.1f, 0.2f, 0.3f, 1, 0.1f, 0.2f, 0.3f, 1, 0.1f, 0.2f,
                                            0.3f, 1, 0.1f, 0.2f, 0.3f, 1, 5}));

    Model valid;
    valid.m_Meshes["m"] = TriangleMesh();
    valid.m_Meshes["m"].m_Materials = {ValidMaterial(), Material()};  // only the first counts
    valid.m_Meshes["m"].m_Materials[1].m_Valid = true;
    DrawModel(valid);
    for (GLenum face : {GL_FRONT, GL_BACK}) {
        EXPECT_THAT(GetMaterial(face), Near({0.1f, 0.2f, 0.3f, 0.5f, 0.4f, 0.5f, 0.6f, 0.5f, 0.25f,
                                             0, 0, 0.5f, 0, 0, 0.75f, 0.5f, 12}));
    }
}

TEST_F(DrawModelTest, TexturedMeshSendsScaledCoordinatesAndUntexturedSendsNone) {
    Model model;
    Mesh textured = TriangleMesh();
    Material material = ValidMaterial();
    material.m_HasTexture = true;
    Set(material.m_TextureScale, {2, 3});
    textured.m_Materials.push_back(material);
    float uv = 0.25f;
    for (Vertex& v : textured.m_Vertices) {
        Set(v.m_UV, {uv, uv + 0.5f});
        uv += 0.25f;
    }
    model.m_Meshes["a_textured"] = textured;
    model.m_Meshes["b_plain"] = TriangleMesh();
    model.m_Meshes["b_plain"].m_Materials.push_back(ValidMaterial());

    glTexCoord2f(7.0f, 9.0f);
    const std::vector<FedVertex> fed = Feedback([&] { DrawModel(model); });
    std::vector<float> coordinates;
    for (const FedVertex& vertex : fed) {
        coordinates.insert(coordinates.end(), vertex.m_TexCoord, vertex.m_TexCoord + 2);
    }
    // The plain mesh replays no coordinates: the last one sent stays current.
    EXPECT_THAT(coordinates,
                Near({0.5f, 2.25f, 1, 3, 1.5f, 3.75f, 1.5f, 3.75f, 1.5f, 3.75f, 1.5f, 3.75f}));
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
}

TEST_F(DrawModelTest, FaceNormalsComeFromTheFacePointsAndAreComputedOnlyWhenUnknown) {
    Model model;
    Mesh& mesh = model.m_Meshes["m"];
    // Counter-clockwise in the XY plane seen from +z: (v0 - v1) x (v1 - v2) points to +z.
    AddPolygon(mesh, {{0, 0, 0}, {2, 0, 0}, {0, 3, 0}});
    mesh.m_Vertices.back().m_Position[2] = 3.0f;          // the face points decide
    AddPolygon(mesh, {{0, 0, 0}, {1, 1, 1}, {2, 2, 2}});  // collinear
    AddPolygon(mesh, {{0, 0, 0}, {1, 0, 0}});             // two corners
    AddPolygon(mesh, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    Set(mesh.m_Polygons.back().m_Normal, {0, 0, 0});  // preset: sent as it stands
    AddPolygon(mesh, {{0, 0, 0}, {0, 0, 1}, {0, 1, 0}});
    mesh.m_Polygons.back().m_Normal[0] = 0.25f;
    DrawModel(model);

    EXPECT_THAT(mesh.m_Polygons[0].m_Normal, Near({0.0f, 0.0f, 1.0f}, 1e-6f));
    for (size_t i = 1; i < 4; ++i) {
        EXPECT_THAT(mesh.m_Polygons[i].m_Normal, Near({0.0f, 0.0f, 0.0f}, 0.0f)) << i;
    }
    EXPECT_THAT(mesh.m_Polygons[4].m_Normal, Near({0.25f, -1.0f, -1.0f}, 0.0f));
    // The last normal sent is the one of the last polygon.
    std::vector<float> current(4);
    glGetFloatv(GL_CURRENT_NORMAL, current.data());
    EXPECT_THAT(std::vector<float>(current.begin(), current.begin() + 3),
                Near({0.25f, -1.0f, -1.0f}, 1e-6f));
}

}  // namespace
