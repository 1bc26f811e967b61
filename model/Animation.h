// Animation: the key frames of one scene node, all takes (but "Default") in one sequence.
#pragma once

#include <string>
#include <vector>

struct KeyFrame {
    bool m_HasTranslation = false;
    bool m_HasRotation = false;
    bool m_HasScale = false;
    float m_Translation[3] = {0.0f, 0.0f, 0.0f};
    float m_RotationAngle = 0.0f;  // never written by the loader; 0 makes the key rotation a no-op
    float m_Rotation[3] = {0.0f, 0.0f, 0.0f};  // X, Y, Z rotation curve values, degrees
    float m_Scale[3] = {1.0f, 1.0f, 1.0f};
};

struct Animation {
    std::string m_Name;            // the scene node's name
    std::vector<KeyFrame> m_Keys;  // frame f shows m_Keys[f]
};
