// fbxview FILE.fbx: a model viewer for game authors. Prints fbxinfo's report of the file,
// then shows the model in a window as the engine draws it (the authored look, the classic one
// on request) over a ground grid, framed to fit whatever its size, with its takes played at
// the game's frame rate. The keys are listed in tools/fbxview/ViewerInput.h and by --help.
// Exits 0 when the window is closed, 1 when the file cannot be read (no window opens), 2 on
// wrong arguments.
#include <GL/freeglut.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <utility>

#include "render/TextureImageUpload.h"
#include "render/TextureUpload.h"
#include "shell/Window.h"
#include "tools/common/SceneReport.h"
#include "tools/fbxview/Viewer.h"
#include "tools/fbxview/ViewerInput.h"

namespace {

constexpr const char* kUsage =
    "usage: fbxview FILE.fbx\n"
    "       fbxview --help | --version\n"
    "Prints the file's report (as fbxinfo does) and shows the model as the engine draws it.\n"
    "  arrow keys        orbit (left and right about the vertical axis, up and down tilt)\n"
    "  + - mouse wheel   zoom in and out\n"
    "  left drag         orbit\n"
    "  right/middle drag pan\n"
    "  c                 classic look on and off\n"
    "  n p               next and previous take\n"
    "  space             play and pause (15 game frames a second)\n"
    "  , .               one frame back and forward\n"
    "  f                 frame the model again\n"
    "  s                 screenshot beside the file (FILE-N.png), its path printed\n"
    "  q Escape          quit\n";

// The viewer the GLUT callbacks work on.
Viewer* g_Viewer = nullptr;

void Apply(InputResult result) {
    if (result == InputResult::Quit) {
        glutLeaveMainLoop();
    } else if (result == InputResult::Redraw) {
        glutPostRedisplay();
    }
}

void OnDisplay() {
    DrawViewerFrame(*g_Viewer, glutGet(GLUT_ELAPSED_TIME));
    glutSwapBuffers();
    // Set only when it changes: while a take plays, this runs every frame.
    static std::string shown;
    if (std::string title = ViewerTitle(*g_Viewer); title != shown) {
        shown = std::move(title);
        glutSetWindowTitle(shown.c_str());
    }
    if (g_Viewer->m_Playback.m_Playing) {
        glutPostRedisplay();
    }
}

void OnReshape(int width, int height) {
    g_Viewer->m_Width = width;
    g_Viewer->m_Height = height;
    glViewport(0, 0, width, height);
}

void OnKey(unsigned char key, int, int) {
    Apply(HandleKey(*g_Viewer, key));
}

void OnSpecialKey(int key, int, int) {
    Apply(HandleSpecialKey(*g_Viewer, key));
}

void OnMouseButton(int button, int state, int x, int y) {
    Apply(HandleMouseButton(*g_Viewer, button, state, x, y));
}

void OnMouseMotion(int x, int y) {
    Apply(HandleMouseMotion(*g_Viewer, x, y));
}

// The model file named by the arguments; null after printing what to do instead, with the
// exit status in status.
const char* ModelArgument(int argc, char** argv, int& status) {
    const char* file = nullptr;
    int files = 0;
    bool optionsEnd = false;
    for (int i = 1; i < argc; ++i) {
        const char* argument = argv[i];
        if (!optionsEnd && std::strcmp(argument, "--help") == 0) {
            std::fputs(kUsage, stdout);
            status = 0;
            return nullptr;
        }
        if (!optionsEnd && std::strcmp(argument, "--version") == 0) {
            std::printf("fbxview %s\n", TOOL_VERSION);
            status = 0;
            return nullptr;
        }
        if (!optionsEnd && std::strcmp(argument, "--") == 0) {
            optionsEnd = true;
        } else if (!optionsEnd && argument[0] == '-' && argument[1] != '\0') {
            std::fprintf(stderr, "fbxview: unknown option %s\n", argument);
            files = -1;
            break;
        } else {
            file = argument;
            ++files;
        }
    }
    if (files != 1) {
        std::fputs(kUsage, stderr);
        status = 2;
        return nullptr;
    }
    return file;
}

}  // namespace

int main(int argc, char** argv) {
    // The screenshot paths must reach a pipe as soon as they are printed.
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    int status = 0;
    const char* file = ModelArgument(argc, argv, status);
    if (file == nullptr) {
        return status;
    }
    // The file is read before any window opens: one that cannot be read opens none.
    if (!PrintSceneReport("fbxview", file)) {
        return 1;
    }

    // GLUT sees no arguments of ours.
    int glutArgc = 1;
    char* glutArgv[] = {argv[0], nullptr};
    glutInit(&glutArgc, glutArgv);
    glutSetOption(GLUT_ACTION_ON_WINDOW_CLOSE, GLUT_ACTION_GLUTMAINLOOP_RETURNS);
    glutInitWindowSize(g_WindowWidth, g_WindowHeight);
    glutInitWindowPosition(CentredPosition(glutGet(GLUT_SCREEN_WIDTH), g_WindowWidth),
                           CentredPosition(glutGet(GLUT_SCREEN_HEIGHT), g_WindowHeight));
    glutInitDisplayMode(GLUT_RGB | GLUT_DOUBLE | GLUT_DEPTH);
    glutCreateWindow("fbxview");

    // As the engine starts: texture uploads installed, then the fixed OpenGL state, then the
    // model.
    InstallTextureUpload();
    InstallTextureImageUpload();
    SetFixedGlState();
    g_Viewer = new Viewer();
    OpenModel(*g_Viewer, file, g_WindowWidth, g_WindowHeight);
    g_Viewer->m_LastClock = glutGet(GLUT_ELAPSED_TIME);
    glutSetWindowTitle(ViewerTitle(*g_Viewer).c_str());

    glutDisplayFunc(OnDisplay);
    glutReshapeFunc(OnReshape);
    glutKeyboardFunc(OnKey);
    glutSpecialFunc(OnSpecialKey);
    glutMouseFunc(OnMouseButton);
    glutMotionFunc(OnMouseMotion);
    glutMainLoop();

    delete g_Viewer;
    g_Viewer = nullptr;
    return 0;
}
