#include "model/Texture.h"

#include <cstdlib>
#include <cstring>

namespace {
unsigned int g_NextTextureId = 0;
}

Texture::Texture() : m_Id(g_NextTextureId++) {}

Texture::Texture(const Texture& other) {
    CopyFrom(other);
}

Texture& Texture::operator=(const Texture& other) {
    if (m_Id != other.m_Id) {
        CopyFrom(other);
    }
    return *this;
}

void Texture::CopyFrom(const Texture& other) {
    m_Name = other.m_Name;
    m_Id = other.m_Id;
    m_Loaded = other.m_Loaded;
    m_ScaleU = other.m_ScaleU;
    m_ScaleV = other.m_ScaleV;
    m_TranslationU = other.m_TranslationU;
    m_TranslationV = other.m_TranslationV;
    m_RotationU = other.m_RotationU;
    m_RotationV = other.m_RotationV;
    m_RotationW = other.m_RotationW;
    m_Alpha = other.m_Alpha;
    m_ImageSize = other.m_ImageSize;
    m_Width = other.m_Width;
    m_Height = other.m_Height;
    std::free(m_Pixels);
    m_Pixels = nullptr;
    // The source's size is used even when it holds no pixels; never copy more than it has.
    if (m_ImageSize > 0) {
        m_Pixels = static_cast<unsigned char*>(std::malloc(m_ImageSize));
        if (m_Pixels && other.m_Pixels) {
            std::memcpy(m_Pixels, other.m_Pixels, m_ImageSize);
        } else if (m_Pixels) {
            std::memset(m_Pixels, 0, m_ImageSize);
        }
    }
}

Texture::~Texture() {
    if (m_Pixels) {
        std::free(m_Pixels);
        m_Pixels = nullptr;
    }
}

unsigned int Texture::NextId() {
    return g_NextTextureId;
}
