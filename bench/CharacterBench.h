// Frame time of a crowd of skinned, animated characters, drawn as the engine draws a state's
// models: in the authored look (skinned and posed every frame) and in the classic look (the
// same file, compiled once). An X display is needed (OpenFrameWindow).
#pragma once

#include <string>
#include <vector>

#include "model/Model.h"
#include "model/ModelLook.h"

class CharacterCrowd {
public:
    // Imports the model file once in the look and makes `count` copies of it in a grid in
    // front of the camera, each placed on its own.
    CharacterCrowd(const std::string& modelPath, ModelLook look, int count);

    // Draws one frame (clear, projection, every model, swap, glFinish) and moves every
    // character on by `elapsedMs` of game time through its first take, as a running action
    // steps frames on ticks and moves smoothly between them.
    void DrawFrame(int elapsedMs);

    std::size_t Corners() const { return m_Corners; }
    std::size_t Bones() const { return m_Bones; }
    int Count() const { return static_cast<int>(m_Models.size()); }

private:
    ModelLook m_Look;
    std::vector<Model> m_Models;
    std::size_t m_Corners = 0;
    std::size_t m_Bones = 0;
    int m_FirstFrame = 0;
    int m_LastFrame = 0;
    int m_GameTimeMs = 0;
};
