// Frame time of drawing many imported models with the engine's DrawModel in a real OpenGL
// window (an X display is needed; Xvfb's software renderer will do).
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "model/Model.h"

// Opens the one GLUT window and sets the engine's fixed GL state. False, with nothing done,
// when there is no X display.
bool OpenFrameWindow(int& argc, char** argv);

// Clears the window and sets the engine's projection and an identity model-view matrix, as
// the frame loop does before drawing its models.
void BeginFrame();

// copies models made from one model file, placed in a row in front of the camera.
class FrameScene {
public:
    FrameScene(const std::string& modelPath, int copies);

    // Fresh, never drawn copies of the models (no display lists yet); the lists of the
    // previous copies are deleted.
    void Reset();
    // One frame as the frame loop draws it: clear, projection, every model, swap; waits
    // until the GL has finished it.
    void DrawFrame();

    std::size_t CornersPerModel() const { return m_Corners; }
    int Copies() const { return m_Copies; }

private:
    Model m_Prototype;
    std::vector<Model> m_Models;
    int m_Copies;
    std::size_t m_Corners = 0;
};
