#include "tools/fbxview/ViewerInput.h"

#include <GL/freeglut.h>

namespace {

constexpr double kOrbitKeyDegrees = 10.0;
constexpr double kOrbitPixelDegrees = 0.4;
constexpr double kZoomStep = 1.25;
constexpr int kWheelUp = 3;
constexpr int kWheelDown = 4;
constexpr unsigned char kEscape = 27;

}  // namespace

InputResult HandleKey(Viewer& viewer, unsigned char key) {
    switch (key) {
        case '+':
        case '=':
            Zoom(viewer.m_Camera, kZoomStep);
            break;
        case '-':
        case '_':
            Zoom(viewer.m_Camera, 1.0 / kZoomStep);
            break;
        case 'c':
            ToggleClassicLook(viewer);
            break;
        case 'n':
            SelectTake(viewer.m_Playback, Takes(viewer), 1);
            break;
        case 'p':
            SelectTake(viewer.m_Playback, Takes(viewer), -1);
            break;
        case ' ':
            TogglePlaying(viewer.m_Playback);
            // The first tick comes a whole tick from now, however long the pause was.
            viewer.m_LastClock = glutGet(GLUT_ELAPSED_TIME);
            break;
        case ',':
            StepFrame(viewer.m_Playback, Takes(viewer), -1);
            break;
        case '.':
            StepFrame(viewer.m_Playback, Takes(viewer), 1);
            break;
        case 'f':
            FrameModel(viewer);
            break;
        case 's':
            viewer.m_ScreenshotWanted = true;
            break;
        case 'q':
        case kEscape:
            return InputResult::Quit;
        default:
            return InputResult::Nothing;
    }
    return InputResult::Redraw;
}

InputResult HandleSpecialKey(Viewer& viewer, int key) {
    switch (key) {
        case GLUT_KEY_LEFT:
            Orbit(viewer.m_Camera, -kOrbitKeyDegrees, 0.0);
            break;
        case GLUT_KEY_RIGHT:
            Orbit(viewer.m_Camera, kOrbitKeyDegrees, 0.0);
            break;
        case GLUT_KEY_UP:
            Orbit(viewer.m_Camera, 0.0, kOrbitKeyDegrees);
            break;
        case GLUT_KEY_DOWN:
            Orbit(viewer.m_Camera, 0.0, -kOrbitKeyDegrees);
            break;
        default:
            return InputResult::Nothing;
    }
    return InputResult::Redraw;
}

InputResult HandleMouseButton(Viewer& viewer, int button, int state, int x, int y) {
    if (state != GLUT_DOWN) {
        viewer.m_Drag = MouseDrag::None;
        return InputResult::Nothing;
    }
    switch (button) {
        case kWheelUp:
            Zoom(viewer.m_Camera, kZoomStep);
            return InputResult::Redraw;
        case kWheelDown:
            Zoom(viewer.m_Camera, 1.0 / kZoomStep);
            return InputResult::Redraw;
        case GLUT_LEFT_BUTTON:
            viewer.m_Drag = MouseDrag::Orbit;
            break;
        case GLUT_RIGHT_BUTTON:
        case GLUT_MIDDLE_BUTTON:
            viewer.m_Drag = MouseDrag::Pan;
            break;
        default:
            return InputResult::Nothing;
    }
    viewer.m_DragX = x;
    viewer.m_DragY = y;
    return InputResult::Nothing;
}

InputResult HandleMouseMotion(Viewer& viewer, int x, int y) {
    const double dx = static_cast<double>(x) - viewer.m_DragX;
    const double dy = static_cast<double>(y) - viewer.m_DragY;
    viewer.m_DragX = x;
    viewer.m_DragY = y;
    const double height = viewer.m_Height > 0 ? viewer.m_Height : 1.0;
    switch (viewer.m_Drag) {
        case MouseDrag::Orbit:
            // The model follows the pointer: dragging right turns the eye to the left.
            Orbit(viewer.m_Camera, -dx * kOrbitPixelDegrees, dy * kOrbitPixelDegrees);
            return InputResult::Redraw;
        case MouseDrag::Pan:
            // The model follows the pointer: the target moves the other way.
            Pan(viewer.m_Camera, -dx / height, dy / height);
            return InputResult::Redraw;
        case MouseDrag::None:
        default:
            return InputResult::Nothing;
    }
}
