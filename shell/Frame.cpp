#include "shell/Frame.h"

#include <GL/freeglut.h>
#include <GL/gl.h>
#include <GL/glu.h>

#include <cstdio>

#include "render/AuthoredDraw.h"
#include "render/Draw.h"
#include "shell/FrameTimer.h"
#include "shell/KeyboardInput.h"
#include "shell/Window.h"
#include "states/Clock.h"
#include "states/Game.h"

void DrawFrame(Game& game) {
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    const double aspect = static_cast<double>(game.m_Viewport.m_Width) /
                          static_cast<double>(game.m_Viewport.m_Height);
    // The near plane is the single-precision 0.1, widened.
    gluPerspective(45.0, aspect, static_cast<double>(0.1f), 10000.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    if (game.m_ModelLook == ModelLook::Authored) {
        DrawAuthoredModels(game.m_DrawList);
        return;
    }
    // No push between models: each is placed relative to the ones drawn before it.
    for (Model* model : game.m_DrawList) {
        if (model != nullptr) {
            DrawModel(*model);
        }
    }
}

void RunFrame() {
    Game& game = *g_Game;
    game.m_FrameStartClock = ClockMilliseconds();
    StepKeyboard(game.m_Keyboard);
    game.m_DrawList.clear();
    game.HandleGlobalKeys();
    const int elapsed = StepTimer(game, ClockMilliseconds());
    game.UpdateStates(elapsed);
    DrawFrame(game);
    glutSwapBuffers();

    const int before = ClockMilliseconds();
    const int after = ClockMilliseconds();
    game.m_FrameEndClock = after;
    // The later reading is subtracted, so this comes to the floor of 5 in practice.
    game.m_FrameDuration = before - after + 5;
    if (game.m_FrameDuration < 5) {
        game.m_FrameDuration = 5;
    }
    glutPostRedisplay();

    char title[256];
    std::snprintf(title, sizeof title, "%s : %d", game.m_Title.c_str(), game.m_FramesPerSecond);
    glutSetWindowTitle(title);
}
