// Drawing in the authored look, checked by the pixels it leaves: node transforms with their
// pivots, pre-rotation, rotation order and geometric offset; skinning; every material; cubic
// curves between frames; models placed on their own; blended materials over what is behind.

#include <GL/glu.h>

#include <cmath>
#include <functional>
#include <memory>
#include <set>

#include "gl_test_context.h"
#include "render/AuthoredDraw.h"
#include "render/Draw.h"
#include "test_meshes.h"

namespace {

using Point = std::array<float, 3>;
using Pixel = std::array<unsigned char, 3>;

void Set3(double (&target)[3], std::array<double, 3> values) {
    std::copy(values.begin(), values.end(), target);
}

// A material that shows exactly its own colour, whatever the light.
AuthoredMaterial Glowing(float r, float g, float b, float alpha = 1.0f) {
    AuthoredMaterial material;
    const float glow[4] = {r, g, b, alpha};
    const float none[4] = {0.0f, 0.0f, 0.0f, alpha};
    std::copy(glow, glow + 4, material.m_Emissive);
    std::copy(none, none + 4, material.m_Ambient);
    std::copy(none, none + 4, material.m_Diffuse);
    material.m_Blended = alpha < 1.0f;
    return material;
}

// Appends a quad as two triangles in a range of its own, each corner with the face normal.
void AddQuad(AuthoredMesh& mesh, const std::array<Point, 4>& points, int material) {
    const auto firstPoint = static_cast<std::uint32_t>(mesh.m_Points.size() / 3);
    const auto firstCorner = static_cast<std::uint32_t>(mesh.m_CornerPoints.size());
    const Point& a = points[0];
    const Point& b = points[1];
    const Point& c = points[2];
    float normal[3] = {(b[1] - a[1]) * (c[2] - a[2]) - (b[2] - a[2]) * (c[1] - a[1]),
                       (b[2] - a[2]) * (c[0] - a[0]) - (b[0] - a[0]) * (c[2] - a[2]),
                       (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0])};
    Normalize(normal);
    for (std::uint32_t k = 0; k < 4; ++k) {
        mesh.m_Points.insert(mesh.m_Points.end(), points[k].begin(), points[k].end());
        mesh.m_CornerPoints.push_back(firstPoint + k);
        mesh.m_CornerNormals.insert(mesh.m_CornerNormals.end(), normal, normal + 3);
        mesh.m_CornerUVs.insert(mesh.m_CornerUVs.end(), {0.0f, 0.0f});
    }
    mesh.m_Ranges.push_back({material, static_cast<std::uint32_t>(mesh.m_Triangles.size()), 6});
    for (std::uint32_t k : {0, 1, 2, 0, 2, 3}) {
        mesh.m_Triangles.push_back(firstCorner + k);
    }
}

// A square of half-width `half` around (x, y) at depth z, facing +z.
void AddSquare(AuthoredMesh& mesh, float x, float y, float z, float half, int material) {
    AddQuad(mesh,
            {Point{x - half, y - half, z}, Point{x + half, y - half, z},
             Point{x + half, y + half, z}, Point{x - half, y + half, z}},
            material);
}

// One node at the origin carrying one glowing square.
std::shared_ptr<AuthoredScene> SquareScene(const AuthoredMaterial& material, float half,
                                           float z = 0.0f) {
    auto scene = std::make_shared<AuthoredScene>();
    scene->m_Nodes.resize(1);
    AuthoredMesh& mesh = scene->m_Meshes.emplace_back();
    mesh.m_Materials = {material};
    AddSquare(mesh, 0, 0, z, half, 0);
    return scene;
}

Model ModelOf(std::shared_ptr<AuthoredScene> scene, Point position = {0, 0, 0}) {
    Model model;
    model.m_Authored = std::move(scene);
    Set(model.m_Position, {position[0], position[1], position[2]});
    return model;
}

void DrawOne(Model& model) {
    DrawAuthoredModels({&model});
}

class AuthoredDrawTest : public GlTest {
protected:
    // A camera six units back looking down -z, a unit about 13 pixels wide at depth 0.
    void SetUp() override {
        GlTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        glMatrixMode(GL_PROJECTION);
        gluPerspective(45.0, 1.0, 0.1, 100.0);
        glMatrixMode(GL_MODELVIEW);
        glTranslated(0.0, 0.0, -6.0);
    }

    // The window position (x, y) of the point once `place` is composed onto the camera.
    static std::array<double, 2> WindowOf(const std::function<void()>& place, Point point = {}) {
        glPushMatrix();
        place();
        GLdouble modelView[16];
        GLdouble projection[16];
        GLint viewport[4];
        glGetDoublev(GL_MODELVIEW_MATRIX, modelView);
        glGetDoublev(GL_PROJECTION_MATRIX, projection);
        glGetIntegerv(GL_VIEWPORT, viewport);
        glPopMatrix();
        GLdouble window[3] = {};
        gluProject(point[0], point[1], point[2], modelView, projection, viewport, &window[0],
                   &window[1], &window[2]);
        return {window[0], window[1]};
    }
    static std::array<double, 2> WindowOf(Point point) {
        return WindowOf([] {}, point);
    }
    static Pixel PixelOf(std::array<double, 2> window) {
        return PixelAt(static_cast<int>(window[0]), static_cast<int>(window[1]));
    }
    static bool Lit(std::array<double, 2> window) {
        const Pixel pixel = PixelOf(window);
        return pixel[0] + pixel[1] + pixel[2] > 60;
    }
    static void Clear() { glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT); }
};

TEST_F(AuthoredDrawTest, ChildLandsWhereItsPivotPreRotationOrderAndGeometricOffsetPutIt) {
    // Lit, not glowing: the child is turned over, so only two-sided light shows it.
    AuthoredMaterial yellow = Glowing(0, 0, 0);
    yellow.m_Diffuse[0] = yellow.m_Diffuse[1] = 1.0f;
    auto scene = SquareScene(yellow, 0.2f);
    scene->m_Nodes.resize(2);
    TransformNode& parent = scene->m_Nodes[0];
    Set3(parent.m_Translation, {-1, 0, 0});
    Set3(parent.m_Rotation, {0, 0, 30});
    TransformNode& child = scene->m_Nodes[1];
    child.m_Parent = 0;
    Set3(child.m_Translation, {1, 0.5, 0});
    Set3(child.m_Rotation, {180, 0, 90});
    child.m_RotationOrder = RotationOrder::ZXY;
    Set3(child.m_RotationPivot, {0.5, 0, 0});
    Set3(child.m_PreRotation, {0, 0, -45});
    Set3(child.m_GeometricTranslation, {1.5, 0, 0});
    scene->m_Meshes[0].m_Node = 1;
    Model model = ModelOf(scene);
    DrawOne(model);

    // Parent T * R, then the child's T * Rp * Rpre * R * Rp^-1 with R = Ry * Rx * Rz (Z turns
    // first), then its geometric translation.
    const auto parentPlace = [] {
        glTranslated(-1, 0, 0);
        glRotated(30, 0, 0, 1);
    };
    const auto expected = WindowOf([&] {
        parentPlace();
        glTranslated(1, 0.5, 0);
        glTranslated(0.5, 0, 0);
        glRotated(-45, 0, 0, 1);
        glRotated(180, 1, 0, 0);
        glRotated(90, 0, 0, 1);
        glTranslated(-0.5, 0, 0);
        glTranslated(1.5, 0, 0);
    });
    // Without those properties: T * R in XYZ order, nothing else.
    const auto plain = WindowOf([&] {
        parentPlace();
        glTranslated(1, 0.5, 0);
        glRotated(90, 0, 0, 1);
        glRotated(180, 1, 0, 0);
    });
    ASSERT_GT(std::hypot(expected[0] - plain[0], expected[1] - plain[1]), 8.0);
    const Pixel shown = PixelOf(expected);
    EXPECT_GT(shown[0], 200);
    EXPECT_GT(shown[1], 200);
    EXPECT_EQ(shown[2], 0);
    EXPECT_FALSE(Lit(plain));
}

TEST_F(AuthoredDrawTest, SkinnedBarBendsWhenItsSecondBoneTurns) {
    // Nodes: the bar's own, the upper bone at the origin and the lower bone one unit along x.
    auto scene = std::make_shared<AuthoredScene>();
    scene->m_Nodes.resize(3);
    scene->m_Nodes[2].m_Parent = 1;
    Set3(scene->m_Nodes[2].m_Translation, {1, 0, 0});
    AuthoredMesh& bar = scene->m_Meshes.emplace_back();
    bar.m_Materials = {Glowing(0, 1, 1)};
    AddQuad(bar, {Point{0, -0.15f, 0}, Point{1, -0.15f, 0}, Point{1, 0.15f, 0}, Point{0, 0.15f, 0}},
            0);
    AddQuad(bar, {Point{1, -0.15f, 0}, Point{2, -0.15f, 0}, Point{2, 0.15f, 0}, Point{1, 0.15f, 0}},
            0);
    bar.m_Clusters.resize(2);
    bar.m_Clusters[0].m_Bone = 1;
    bar.m_Clusters[1].m_Bone = 2;
    bar.m_Clusters[1].m_BindMatrix.m[12] = -1.0;  // the lower bone sat at x = 1 when bound
    // Points 0 to 3 (x up to 1) follow the upper bone, points 5 and 6 (x = 2) the lower one.
    for (std::uint32_t point = 0; point < 8; ++point) {
        bar.m_WeightStart.push_back(static_cast<std::uint32_t>(bar.m_Weights.size()));
        const bool lower = point == 5 || point == 6;
        bar.m_Weights.push_back({lower ? 1u : 0u, 1.0f});
    }
    bar.m_WeightStart.push_back(static_cast<std::uint32_t>(bar.m_Weights.size()));
    ASSERT_TRUE(bar.IsSkinned());
    Model model = ModelOf(scene, {-1, 0, 0});

    const auto alongTheBar = WindowOf({0.8f, 0, 0});
    const auto upFromTheJoint = WindowOf({0, 0.8f, 0});
    for (const double angle : {0.0, 90.0, 0.0}) {
        Clear();
        scene->m_Nodes[2].m_Rotation[2] = angle;
        DrawOne(model);
        EXPECT_EQ(Lit(alongTheBar), angle == 0.0) << angle;
        EXPECT_EQ(Lit(upFromTheJoint), angle == 90.0) << angle;
    }
    EXPECT_EQ(bar.m_OpaqueList, 0u);  // skinned meshes are never compiled
}

TEST_F(AuthoredDrawTest, CubeShowsEachOfItsSixMaterialsOnItsOwnFace) {
    auto scene = std::make_shared<AuthoredScene>();
    scene->m_Nodes.resize(1);
    AuthoredMesh& cube = scene->m_Meshes.emplace_back();
    cube.m_Materials = {Glowing(1, 0, 0), Glowing(0, 1, 0), Glowing(0, 0, 1),
                        Glowing(1, 1, 0), Glowing(0, 1, 1), Glowing(1, 0, 1)};
    for (int face = 0; face < 6; ++face) {
        const int axis = face % 3;
        const float side = face < 3 ? 1.0f : -1.0f;
        std::array<Point, 4> corners{};
        const float square[4][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
        for (int k = 0; k < 4; ++k) {
            corners[k][axis] = side;
            corners[k][(axis + 1) % 3] = square[k][0];
            corners[k][(axis + 2) % 3] = square[k][1];
        }
        AddQuad(cube, corners, face);
    }
    Model model = ModelOf(scene);
    // Each turn brings another face to the front.
    const Point turns[] = {{0, 0, 0},   {0, 90, 0}, {0, 180, 0},
                           {0, 270, 0}, {90, 0, 0}, {270, 0, 0}};
    std::set<Pixel> seen;
    for (const Point& turn : turns) {
        Clear();
        Set(model.m_Rotation, {turn[0], turn[1], turn[2]});
        DrawOne(model);
        seen.insert(PixelAt(kSize / 2, kSize / 2));
    }
    EXPECT_EQ(
        seen,
        (std::set<Pixel>{
            {255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 0}, {0, 255, 255}, {255, 0, 255}}));
}

TEST_F(AuthoredDrawTest, CubicCurveCarriesTheNodeBetweenItsKeysAndBetweenTicks) {
    auto scene = SquareScene(Glowing(1, 1, 1), 0.08f);
    // x eases from -2 to 2 over half a second, flat at both keys: frames 0 to 8 of the take.
    CurveKey from;
    from.m_Value = -2.0f;
    from.m_Interpolation = KeyInterpolation::Cubic;
    CurveKey to = from;
    to.m_Time = 0.5;
    to.m_Value = 2.0f;
    scene->m_Curves.push_back({{from, to}});
    scene->m_Takes.push_back({"Slide", 0.0, 0.5, 0, 8});
    NodeTakeCurves curves;
    curves.fill(-1);
    curves[kTranslationX] = 0;
    scene->m_Nodes[0].m_TakeCurves = {curves};
    Model model = ModelOf(scene);

    // At (fractional) frame f, u = f / 7.5 of the way through: a Hermite curve with flat ends
    // is 3u^2 - 2u^3 of the way along, a straight line u.
    const auto eased = [](double f) {
        const double u = f / 7.5;
        return static_cast<float>(-2.0 + 4.0 * (3 * u * u - 2 * u * u * u));
    };
    const float straight = static_cast<float>(-2.0 + 4.0 * 2.0 / 7.5);
    struct Case {
        int m_Frame;
        int m_Next;
        float m_Fraction;
        float m_At;
        std::vector<float> m_NotAt;
    };
    // Frame 2 itself (not on the straight line), and half a tick from frame 3 toward frame 4.
    const Case cases[] = {{2, 2, 0.0f, eased(2.0), {-2.0f, straight, 2.0f}},
                          {3, 4, 0.5f, eased(3.5), {eased(3.0), eased(4.0)}}};
    for (const Case& c : cases) {
        Clear();
        model.m_Frame = c.m_Frame;
        model.m_NextFrame = c.m_Next;
        model.m_FrameFraction = c.m_Fraction;
        DrawOne(model);
        EXPECT_TRUE(Lit(WindowOf({c.m_At, 0, 0}))) << c.m_Frame;
        for (const float elsewhere : c.m_NotAt) {
            EXPECT_FALSE(Lit(WindowOf({elsewhere, 0, 0}))) << c.m_Frame << " " << elsewhere;
        }
    }
}

// Enable flags, depth writes, two-sided light, matrix depth and the back material's diffuse.
std::vector<float> StateProbe() {
    std::vector<float> state;
    for (GLenum flag : {GL_NORMALIZE, GL_BLEND, GL_TEXTURE_2D, GL_LIGHTING, GL_DEPTH_TEST}) {
        state.push_back(glIsEnabled(flag));
    }
    GLboolean depthWrites = GL_FALSE;
    glGetBooleanv(GL_DEPTH_WRITEMASK, &depthWrites);
    GLint twoSided = 0;
    glGetIntegerv(GL_LIGHT_MODEL_TWO_SIDE, &twoSided);
    state.insert(state.end(), {static_cast<float>(depthWrites), static_cast<float>(twoSided),
                               static_cast<float>(GlTest::ModelViewDepth())});
    float diffuse[4] = {};
    glGetMaterialfv(GL_BACK, GL_DIFFUSE, diffuse);
    state.insert(state.end(), diffuse, diffuse + 4);
    return state;
}

TEST_F(AuthoredDrawTest, ModelsArePlacedOnTheirOwnCompiledOnceAndTheStateIsPutBack) {
    auto scene = SquareScene(Glowing(1, 1, 1), 0.3f);
    Model first = ModelOf(scene, {-1.5f, 0, 0});
    first.m_Rotation[2] = 90.0f;
    Model second = ModelOf(scene, {1.5f, 0.8f, 0});
    Model empty;  // no authored records: nothing to draw
    Model lost = ModelOf(scene, {NAN, 0, 0});
    const std::vector<float> before = StateProbe();

    DrawAuthoredModels({&first, nullptr, &empty, &second, &lost});
    EXPECT_TRUE(Lit(WindowOf({-1.5f, 0, 0})));
    EXPECT_TRUE(Lit(WindowOf({1.5f, 0.8f, 0})));
    // Where the second would be placed relative to the first, as the classic look does it.
    EXPECT_FALSE(Lit(WindowOf({-2.3f, 1.5f, 0})));
    EXPECT_EQ(StateProbe(), before);

    const unsigned int list = scene->m_Meshes[0].m_OpaqueList;
    EXPECT_TRUE(glIsList(list));
    EXPECT_EQ(scene->m_Meshes[0].m_BlendedList, 0u);
    DrawAuthoredModels({&second});
    EXPECT_EQ(scene->m_Meshes[0].m_OpaqueList, list);

    // A mesh whose placement overflows is left out: nothing non-finite is sent.
    Model huge = ModelOf(SquareScene(Glowing(1, 1, 1), 0.3f));
    Set3(huge.m_Authored->m_Nodes[0].m_Scaling, {1e200, 1e200, 1e200});
    Set3(huge.m_Authored->m_Nodes[0].m_GeometricScaling, {1e200, 1e200, 1e200});
    EXPECT_TRUE(Feedback([&] { DrawAuthoredModels({&empty, &lost, &huge}); }).empty());
    EXPECT_EQ(StateProbe(), before);
}

TEST_F(AuthoredDrawTest, HalfTransparentMaterialShowsWhatIsBehindItWhicheverModelComesFirst) {
    Model glass = ModelOf(SquareScene(Glowing(0, 0, 1, 0.5f), 0.5f));
    Model wall = ModelOf(SquareScene(Glowing(1, 0, 0), 1.5f, -1.0f));
    DrawAuthoredModels({&glass, &wall});
    const Pixel through = PixelAt(kSize / 2, kSize / 2);
    EXPECT_NEAR(through[0], 128, 3);
    EXPECT_EQ(through[1], 0);
    EXPECT_NEAR(through[2], 128, 3);
    EXPECT_EQ(PixelOf(WindowOf({1.1f, 0, -1})), (Pixel{255, 0, 0}));
    EXPECT_NE(glass.m_Authored->m_Meshes[0].m_BlendedList, 0u);
}

}  // namespace
