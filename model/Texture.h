// Texture: one material's diffuse image, as read from a 24-bit bitmap, plus its UV placement.
//
// Every new Texture takes a serial id from a process-wide counter; the id is used directly as
// the OpenGL texture name. A copy is the same texture: it carries the source's id (and its own
// copy of the pixels) and takes no id from the counter. Assignment copies the pixels and the
// id of the source unless both already have the same id.
#pragma once

#include <cstdint>
#include <string>

struct Texture {
    std::string m_Name;
    bool m_Loaded = false;
    unsigned char* m_Pixels = nullptr;  // malloc'd RGB bytes, owned; null when not loaded
    unsigned int m_Id = 0;
    float m_ScaleU = 1.0f;
    float m_ScaleV = 1.0f;
    float m_TranslationU = 0.0f;
    float m_TranslationV = 0.0f;
    float m_RotationU = 0.0f;
    float m_RotationV = 0.0f;
    float m_RotationW = 0.0f;
    float m_Alpha = 0.0f;
    std::int32_t m_Width = 0;
    std::int32_t m_Height = 0;
    std::uint32_t m_ImageSize = 0;  // bytes in m_Pixels

    Texture();
    Texture(const Texture& other);
    Texture& operator=(const Texture& other);
    ~Texture();

    // The id the next constructed Texture will take.
    static unsigned int NextId();

private:
    // Takes every field, the id and a copy of the pixels from other.
    void CopyFrom(const Texture& other);
};
