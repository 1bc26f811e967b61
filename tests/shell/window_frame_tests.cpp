// The window's fixed state, the reshape callback and the frame's projection and drawing, in a
// real OpenGL context.
#include <GL/gl.h>

#include <cmath>
#include <vector>

#include "../render/gl_test_context.h"
#include "model/Model.h"
#include "shell/Frame.h"
#include "shell/Window.h"
#include "shell_test_support.h"

namespace {

TEST(WindowPlacementTest, WindowIsCentredOnTheScreen) {
    EXPECT_EQ(CentredPosition(1920, 640), 640);
    EXPECT_EQ(CentredPosition(1080, 480), 300);
    EXPECT_EQ(CentredPosition(1280, 640), 320);
    EXPECT_EQ(CentredPosition(1024, 480), 272);
    EXPECT_EQ(CentredPosition(501, 640), -69);  // a small screen: negative, rounded to zero
}

// A GL context plus a Game read from a scratch state table.
class WindowFrameTest : public GlTest {
protected:
    void SetUp() override {
        GlTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        m_Game = m_Files.MakeGame("Demo");
        // Start from OpenGL's own defaults so that the fixed state has to set everything.
        glDepthFunc(GL_LESS);
        glDisable(GL_DEPTH_TEST);
        glDisable(GL_LIGHTING);
        glDisable(GL_LIGHT0);
        glShadeModel(GL_FLAT);
        SetFixedGlState();
    }
    void TearDown() override {
        g_Game = nullptr;
        GlTest::TearDown();
    }

    ScratchFiles m_Files;
    std::unique_ptr<Game> m_Game;
};

std::vector<float> Projection() {
    std::vector<float> m(16);
    glGetFloatv(GL_PROJECTION_MATRIX, m.data());
    return m;
}

TEST_F(WindowFrameTest, FixedStateLightsAndDepthTestsButNeverCulls) {
    EXPECT_TRUE(glIsEnabled(GL_LIGHTING));
    EXPECT_TRUE(glIsEnabled(GL_LIGHT0));
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
    GLint value = 0;
    glGetIntegerv(GL_DEPTH_FUNC, &value);
    EXPECT_EQ(value, GL_LEQUAL);
    glGetIntegerv(GL_SHADE_MODEL, &value);
    EXPECT_EQ(value, GL_SMOOTH);
    float clear[4] = {1, 1, 1, 1};
    glGetFloatv(GL_COLOR_CLEAR_VALUE, clear);
    EXPECT_THAT(clear, Near({0, 0, 0, 0}, 0.0f));
}

TEST_F(WindowFrameTest, ReshapeSetsTheViewportAndTheGamesSize) {
    g_Game = m_Game.get();
    glMatrixMode(GL_PROJECTION);
    glScalef(2, 2, 2);
    Reshape(48, 32);
    GLint viewport[4] = {};
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_THAT(viewport, ::testing::ElementsAre(0, 0, 48, 32));
    EXPECT_EQ(m_Game->m_Viewport.m_Width, 48);
    EXPECT_EQ(m_Game->m_Viewport.m_Height, 32);
    EXPECT_EQ(g_WindowWidth, 48);
    EXPECT_EQ(g_WindowHeight, 32);
    EXPECT_THAT(Projection(), Near({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, 0.0f));
    Reshape(kSize, kSize);
}

TEST_F(WindowFrameTest, FrameSetsPerspectiveFromTheGamesViewport) {
    m_Game->m_Viewport.m_Width = 800;
    m_Game->m_Viewport.m_Height = 400;
    glMatrixMode(GL_MODELVIEW);
    glTranslatef(5, 5, 5);
    DrawFrame(*m_Game);
    const float focal = 1.0f / std::tan(22.5f * 3.14159265f / 180.0f);
    const std::vector<float> m = Projection();
    EXPECT_NEAR(m[0], focal / 2.0f, 1e-5f);  // aspect 800 / 400
    EXPECT_NEAR(m[5], focal, 1e-5f);
    EXPECT_NEAR(m[11], -1.0f, 1e-6f);
    // Near 0.1 and far 10000: depth maps -(far + near) / (far - near).
    EXPECT_NEAR(m[10], -10000.1f / 9999.9f, 1e-6f);
    EXPECT_NEAR(m[14], -2.0f * 10000.0f * 0.1f / 9999.9f, 1e-6f);
    EXPECT_THAT(ModelView(), Near({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, 0.0f));
}

TEST_F(WindowFrameTest, FrameDrawsTheDrawListInOrderWithoutResettingBetweenModels) {
    m_Game->m_Viewport.m_Width = kSize;
    m_Game->m_Viewport.m_Height = kSize;
    Model back;
    back.m_Position[2] = -5.0f;
    Model quad;  // placed relative to the model before it: 5 units in front of the camera
    Polygon polygon;
    const float corners[4][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
    for (const auto& corner : corners) {
        Vertex vertex;
        vertex.m_Position[0] = vertex.m_FacePoint[0] = corner[0];
        vertex.m_Position[1] = vertex.m_FacePoint[1] = corner[1];
        polygon.m_Vertices.push_back(vertex);
    }
    Mesh mesh;
    mesh.m_Polygons.push_back(polygon);
    Material red;
    red.m_Valid = true;
    red.m_Ambient[0] = red.m_Diffuse[0] = 1.0f;
    red.m_Alpha = 1.0f;
    mesh.m_Materials.push_back(red);
    quad.m_Meshes["quad"] = mesh;
    m_Game->m_DrawList = {&back, &quad};

    glClearColor(0, 0, 1, 0);  // the frame clears to whatever is set; make that visible
    DrawFrame(*m_Game);
    glFinish();
    EXPECT_THAT(Apply(0, 0, 0), Near({0.0f, 0.0f, -5.0f}));

    unsigned char centre[3] = {};
    unsigned char corner[3] = {};
    glReadBuffer(GL_BACK);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(kSize / 2, kSize / 2, 1, 1, GL_RGB, GL_UNSIGNED_BYTE, centre);
    glReadPixels(1, 1, 1, 1, GL_RGB, GL_UNSIGNED_BYTE, corner);
    EXPECT_GT(centre[0], 200);
    EXPECT_LT(centre[2], 30);
    EXPECT_THAT(corner, ::testing::ElementsAre(0, 0, 255));
}

}  // namespace
