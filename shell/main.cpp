// The engine's entry point: brings up the XML library and the window, creates the Game
// (which loads every state and model), and hands control to the GLUT main loop.
#include <GL/freeglut.h>

#include <cstdio>

#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "render/TextureImageUpload.h"
#include "render/TextureUpload.h"
#include "shell/Frame.h"
#include "shell/KeyboardInput.h"
#include "shell/Window.h"
#include "states/Game.h"

using xercesc::XMLPlatformUtils;
using xercesc::XMLString;

int main(int argc, char** argv) {
    // Console lines must reach a pipe as soon as they are printed.
    std::setvbuf(stdout, nullptr, _IOLBF, 0);

    try {
        XMLPlatformUtils::Initialize(xercesc::XMLUni::fgXercescDefaultLocale, nullptr, nullptr,
                                     nullptr);
    } catch (const xercesc::XMLException& error) {
        char* message = XMLString::transcode(error.getMessage());
        std::printf("Error during initialization! :\n");
        std::printf("%s", message);
        std::printf("\n");
        XMLString::release(&message);
    }

    // GLUT must be initialised before it can report the screen size.
    glutInit(&argc, argv);
    // Closing the window returns here, so the Game and the XML library are shut down.
    glutSetOption(GLUT_ACTION_ON_WINDOW_CLOSE, GLUT_ACTION_GLUTMAINLOOP_RETURNS);
    g_WindowX = CentredPosition(glutGet(GLUT_SCREEN_WIDTH), g_WindowWidth);
    g_WindowY = CentredPosition(glutGet(GLUT_SCREEN_HEIGHT), g_WindowHeight);
    glutInitWindowSize(g_WindowWidth, g_WindowHeight);
    glutInitWindowPosition(g_WindowX, g_WindowY);
    glutInitDisplayMode(GLUT_RGB | GLUT_DOUBLE | GLUT_DEPTH);
    glutCreateWindow("OpenGL Window");
    if (g_FullScreen) {
        glutFullScreen();
    }

    InstallTextureUpload();
    InstallTextureImageUpload();
    g_Game = new Game();
    g_Game->m_Viewport.m_Width = g_WindowWidth;
    g_Game->m_Viewport.m_Height = g_WindowHeight;

    SetFixedGlState();
    glutDisplayFunc(RunFrame);
    glutReshapeFunc(Reshape);
    glutKeyboardFunc(OnKeyDown);
    glutKeyboardUpFunc(OnKeyUp);
    glutMainLoop();

    if (g_Game != nullptr) {
        delete g_Game;
        g_Game = nullptr;
    }
    XMLPlatformUtils::Terminate();
    return 0;
}
