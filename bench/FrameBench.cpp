#include "bench/FrameBench.h"

#include <GL/freeglut.h>
#include <GL/gl.h>
#include <GL/glu.h>

#include <cstdlib>

#include "bench/Importers.h"
#include "import/SceneImport.h"
#include "render/Draw.h"

namespace {
constexpr int kWidth = 640;
constexpr int kHeight = 480;
}  // namespace

bool OpenFrameWindow(int& argc, char** argv) {
    const char* display = std::getenv("DISPLAY");
    if (!display || !*display)
        return false;
    glutInit(&argc, argv);
    glutInitDisplayMode(GLUT_RGB | GLUT_DOUBLE | GLUT_DEPTH);
    glutInitWindowSize(kWidth, kHeight);
    glutCreateWindow("bench_import frames");
    // The state the engine sets once at start-up.
    glShadeModel(GL_SMOOTH);
    glClearColor(0.0f, 0.0f, 0.0f, 0.5f);
    glClearDepth(1.0);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glEnable(GL_LIGHTING);
    glEnable(GL_LIGHT0);
    glViewport(0, 0, kWidth, kHeight);
    return true;
}

FrameScene::FrameScene(const std::string& modelPath, int copies) : m_Copies(copies) {
    {
        QuietStdout quiet;
        ImportModelFile(modelPath, &m_Prototype);
    }
    for (const auto& entry : m_Prototype.m_Meshes) {
        for (const Polygon& polygon : entry.second.m_Polygons) {
            m_Corners += polygon.m_Count;
        }
    }
    Reset();
}

void FrameScene::Reset() {
    for (Model& model : m_Models) {
        for (auto& entry : model.m_Meshes) {
            if (entry.second.m_DisplayList != -1) {
                glDeleteLists(static_cast<GLuint>(entry.second.m_DisplayList), 1);
            }
        }
    }
    m_Models.assign(static_cast<std::size_t>(m_Copies), m_Prototype);
    // Models are placed relative to the one drawn before: the first moves the row back and
    // to the left, each further one a step to the right.
    for (std::size_t i = 0; i < m_Models.size(); ++i) {
        Model& model = m_Models[i];
        if (i == 0) {
            model.m_Position[0] = -60.0f;
            model.m_Position[1] = -20.0f;
            model.m_Position[2] = -250.0f;
        } else {
            model.m_Position[0] = 120.0f / static_cast<float>(m_Models.size());
            model.m_Rotation[1] = 1.0f;
        }
        model.m_Frame = 1;
    }
}

void BeginFrame() {
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluPerspective(45.0, static_cast<double>(kWidth) / kHeight, 0.1, 10000.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}

void FrameScene::DrawFrame() {
    BeginFrame();
    for (Model& model : m_Models)
        DrawModel(model);
    glutSwapBuffers();
    glFinish();
}
