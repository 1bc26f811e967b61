// The window's fixed state, the reshape callback and the frame's projection and drawing, in a
// real OpenGL context.

#include <cmath>

#include "../render/gl_test_context.h"
#include "../render/test_meshes.h"
#include "scratch_dir.h"
#include "shell/Frame.h"
#include "shell/Window.h"
#include "states/Game.h"

namespace {

std::vector<float> Projection() {
    std::vector<float> m(16);
    glGetFloatv(GL_PROJECTION_MATRIX, m.data());
    return m;
}

class WindowFrameTest : public GlTest {
protected:
    void SetUp() override {
        GlTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        // Start from OpenGL's own defaults so that the fixed state has to set everything.
        glDepthFunc(GL_LESS);
        glDisable(GL_DEPTH_TEST);
        glDisable(GL_LIGHTING);
        glDisable(GL_LIGHT0);
        glShadeModel(GL_FLAT);
        glClearColor(1, 1, 1, 1);
        SetFixedGlState();
    }
    void TearDown() override { g_Game = nullptr; }

    ScratchDir m_Dir;
    Game m_Game{m_Dir.Write("states.xml", "<game><Title>Demo</Title></game>")};
};

TEST_F(WindowFrameTest, FixedStateReshapeAndTheFramesPerspective) {
    EXPECT_TRUE(glIsEnabled(GL_LIGHTING) && glIsEnabled(GL_LIGHT0) && glIsEnabled(GL_DEPTH_TEST));
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
    GLint value = 0;
    glGetIntegerv(GL_DEPTH_FUNC, &value);
    EXPECT_EQ(value, GL_LEQUAL);
    glGetIntegerv(GL_SHADE_MODEL, &value);
    EXPECT_EQ(value, GL_SMOOTH);
    float clear[4] = {1, 1, 1, 1};
    glGetFloatv(GL_COLOR_CLEAR_VALUE, clear);
    EXPECT_THAT(clear, Near({0, 0, 0, 0}, 0.0f));

    // Reshape sets the viewport and the Game's size, which the frame's perspective follows.
    g_Game = &m_Game;
    glMatrixMode(GL_PROJECTION);
    glScalef(2, 2, 2);
    Reshape(48, 32);
    GLint viewport[4] = {};
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_THAT(viewport, ::testing::ElementsAre(0, 0, 48, 32));
    const int sizes[] = {m_Game.m_Viewport.m_Width, m_Game.m_Viewport.m_Height, g_WindowWidth,
                         g_WindowHeight};
    EXPECT_THAT(sizes, ::testing::ElementsAre(48, 32, 48, 32));
    EXPECT_THAT(Projection(), Near(kIdentity, 0.0f));
    Reshape(kSize, kSize);

    // The frame sets the perspective from the Game's viewport.
    m_Game.m_Viewport.m_Width = 800;
    m_Game.m_Viewport.m_Height = 400;
    glMatrixMode(GL_MODELVIEW);
    glTranslatef(5, 5, 5);
    DrawFrame(m_Game);
    const float focal = 1.0f / std::tan(22.5f * 3.14159265f / 180.0f);
    // Aspect 800 / 400; near 0.1 and far 10000: depth maps -(far + near) / (far - near).
    EXPECT_THAT(Projection(),
                Near({focal / 2.0f, 0, 0, 0, 0, focal, 0, 0, 0, 0, -10000.1f / 9999.9f, -1, 0, 0,
                      -2.0f * 10000.0f * 0.1f / 9999.9f, 0},
                     1e-5f));
    EXPECT_THAT(ModelView(), Near(kIdentity, 0.0f));
}

TEST_F(WindowFrameTest, FrameDrawsTheDrawListInOrderWithoutResettingBetweenModels) {
    m_Game.m_Viewport.m_Width = kSize;
    m_Game.m_Viewport.m_Height = kSize;
    Model back;
    back.m_Position[2] = -5.0f;
    Model square;  // placed relative to the model before it: 5 units in front of the camera
    square.m_Meshes["square"] = RedSquare();
    m_Game.m_DrawList = {&back, nullptr, &square};
    glClearColor(0, 0, 1, 0);  // the frame clears to whatever is set; make that visible
    DrawFrame(m_Game);
    EXPECT_THAT(Apply(0, 0, 0), Near({0.0f, 0.0f, -5.0f}));
    const auto centre = PixelAt(kSize / 2, kSize / 2);
    EXPECT_GT(centre[0], 200);
    EXPECT_LT(centre[2], 30);
    EXPECT_THAT(PixelAt(1, 1), ::testing::ElementsAre(0, 0, 255));
}

}  // namespace
