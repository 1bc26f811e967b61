#include "render/NodeTransform.h"

#include <GL/gl.h>

#include <cstddef>

void ApplyNodeTransform(int frame, Model& model, std::string nodeName) {
    if (model.m_Animations.empty()) {
        return;
    }
    const auto animation = model.m_Animations.find(nodeName);
    if (animation == model.m_Animations.end()) {
        return;
    }
    const auto& keys = animation->second.m_Keys;
    if (frame < 0 || static_cast<std::size_t>(frame) >= keys.size()) {
        return;
    }
    // The frame number indexes the key frames directly: no interpolation, no wrap-around.
    const KeyFrame& key = keys[static_cast<std::size_t>(frame)];
    if (key.m_HasTranslation) {
        glTranslatef(key.m_Translation[0], key.m_Translation[1], key.m_Translation[2]);
    }
    const auto node = model.m_Nodes.find(nodeName);
    if (node != model.m_Nodes.end()) {
        const float* rotation = node->second.m_Rotation;
        glRotatef(rotation[2], 0.0f, 0.0f, 1.0f);
        glRotatef(rotation[1], 0.0f, 1.0f, 0.0f);
        glRotatef(rotation[0], 1.0f, 0.0f, 0.0f);
    }
    if (key.m_HasRotation) {
        // The stored Euler values serve as an axis, turned by the (normally zero) key angle.
        glRotatef(key.m_RotationAngle, key.m_Rotation[0], key.m_Rotation[1], key.m_Rotation[2]);
    }
    if (key.m_HasScale) {
        glScalef(key.m_Scale[0], key.m_Scale[1], key.m_Scale[2]);
    }
}
