#include "gl_test_context.h"

#include <GL/freeglut.h>

#include <cstdlib>
#include <cstring>

#include "render/TextureImageUpload.h"
#include "render/TextureUpload.h"

void GlTest::SetUp() {
    const char* display = std::getenv("DISPLAY");
    if (display == nullptr || *display == '\0') {
        GTEST_SKIP() << "no X display";
    }
    // One window for the whole program, with the fixed state the engine sets at start-up
    // (drawing relies on it) and, as there, texture upload for every inserted mesh.
    static const bool opened = [] {
        int argc = 1;
        char name[] = "render_tests";
        char* argv[] = {name, nullptr};
        glutInit(&argc, argv);
        glutInitWindowSize(kSize, kSize);
        glutInitDisplayMode(GLUT_RGB | GLUT_DOUBLE | GLUT_DEPTH);
        glutCreateWindow("render tests");
        glShadeModel(GL_SMOOTH);
        glEnable(GL_DEPTH_TEST);
        glDepthFunc(GL_LEQUAL);
        glEnable(GL_LIGHTING);
        glEnable(GL_LIGHT0);
        InstallTextureUpload();
        InstallTextureImageUpload();
        return true;
    }();
    (void)opened;
    glViewport(0, 0, kSize, kSize);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

std::array<float, 16> GlTest::ModelView() {
    std::array<float, 16> m{};
    glGetFloatv(GL_MODELVIEW_MATRIX, m.data());
    return m;
}

std::array<float, 3> GlTest::Apply(float x, float y, float z) {
    const std::array<float, 16> m = ModelView();
    return {m[0] * x + m[4] * y + m[8] * z + m[12], m[1] * x + m[5] * y + m[9] * z + m[13],
            m[2] * x + m[6] * y + m[10] * z + m[14]};
}

std::array<unsigned char, 3> GlTest::PixelAt(int x, int y) {
    glFinish();
    glReadBuffer(GL_BACK);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    std::array<unsigned char, 3> rgb{};
    glReadPixels(x, y, 1, 1, GL_RGB, GL_UNSIGNED_BYTE, rgb.data());
    return rgb;
}

int GlTest::ModelViewDepth() {
    GLint depth = 0;
    glGetIntegerv(GL_MODELVIEW_STACK_DEPTH, &depth);
    return depth;
}

static_assert(sizeof(FedVertex) == 11 * sizeof(float), "read straight from the buffer");

std::vector<FedVertex> GlTest::Feedback(const std::function<void()>& draw) {
    std::vector<GLfloat> buffer(1 << 16);
    glFeedbackBuffer(static_cast<GLsizei>(buffer.size()), GL_3D_COLOR_TEXTURE, buffer.data());
    glRenderMode(GL_FEEDBACK);
    draw();
    const GLint count = glRenderMode(GL_RENDER);
    std::vector<FedVertex> vertices;
    // Each polygon is GL_POLYGON_TOKEN, its vertex count, then 3 + 4 + 4 floats a vertex.
    for (GLint i = 0; i + 1 < count;) {
        const auto token = static_cast<GLint>(buffer[static_cast<size_t>(i)]);
        if (token != GL_POLYGON_TOKEN) {
            ADD_FAILURE() << "unexpected feedback token " << token;
            break;
        }
        const auto n = static_cast<GLint>(buffer[static_cast<size_t>(i) + 1]);
        i += 2;
        for (GLint v = 0; v < n && i + 11 <= count; ++v, i += 11) {
            FedVertex& out = vertices.emplace_back();
            std::memcpy(&out, &buffer[static_cast<size_t>(i)], sizeof out);
        }
    }
    return vertices;
}
