// Material: the colours, alpha and texture that one mesh is drawn with.
#pragma once

#include <string>

#include "model/Texture.h"

struct Material {
    std::string m_Name;
    float m_Ambient[3] = {0.0f, 0.0f, 0.0f};
    float m_Diffuse[3] = {0.0f, 0.0f, 0.0f};
    float m_Specular[3] = {0.0f, 0.0f, 0.0f};
    float m_Emissive[3] = {0.0f, 0.0f, 0.0f};
    float m_Shininess = 0.0f;  // OpenGL specular exponent
    float m_Reflection = 1.0f;
    float m_Alpha = 0.0f;  // fourth component of all four colours
    bool m_Valid = false;  // colours or texture were read; otherwise the default material
    bool m_HasTexture = false;
    unsigned int m_TextureId = 0;  // OpenGL texture name (the texture's serial id)
    float m_TextureScale[2] = {1.0f, 1.0f};
    Texture m_Texture;  // the diffuse texture; takes the next texture id on construction
};
