#include "shell/Window.h"

#include <GL/gl.h>

#include "states/Game.h"

int g_WindowWidth = 640;
int g_WindowHeight = 480;
int g_WindowX = 0;
int g_WindowY = 0;
int g_FullScreen = 0;
Game* g_Game = nullptr;

int CentredPosition(int screenExtent, int windowExtent) {
    return (screenExtent - windowExtent) / 2;
}

void SetFixedGlState() {
    glShadeModel(GL_SMOOTH);
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    glClearDepth(1.0);
    glEnable(GL_DEPTH_TEST);
    // Only names the face: culling itself stays off.
    glCullFace(GL_BACK);
    glDepthFunc(GL_LEQUAL);
    glEnable(GL_LIGHTING);
    glEnable(GL_LIGHT0);
    glHint(GL_PERSPECTIVE_CORRECTION_HINT, GL_NICEST);
}

void Reshape(int width, int height) {
    g_WindowWidth = width;
    g_WindowHeight = height;
    glViewport(0, 0, width, height);
    // The perspective itself is set afresh every frame from the Game's viewport.
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    g_Game->m_Viewport.m_Width = g_WindowWidth;
    g_Game->m_Viewport.m_Height = g_WindowHeight;
}
