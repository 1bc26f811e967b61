// Texture images for the authored look: PNG, JPEG, TGA and BMP bytes (from a file or embedded
// in a model file) decoded to RGBA pixels ready for glTexImage2D. The classic look keeps its
// own 24-bit bitmap reader (Bitmap.h).
//
// The bytes may come from anywhere, so the decoder treats them as hostile: the size an image
// claims is checked against the caller's limits before any pixel memory is reserved, and
// damaged data ends in a refusal, never a crash.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// One decoded image.
struct DecodedImage {
    int m_Width = 0;   // pixels per row
    int m_Height = 0;  // rows
    // RGBA, 8 bits per channel, m_Width * m_Height * 4 bytes; rows bottom-up as
    // glTexImage2D takes them (the first row is the image's bottom row).
    std::vector<std::uint8_t> m_Pixels;
    bool m_HasAlpha = false;  // some pixel's alpha is below 255
};

// What the caller accepts; larger images are refused.
struct ImageLimits {
    int m_MaxSide = 8192;                 // widest and tallest image, e.g. GL_MAX_TEXTURE_SIZE
    std::size_t m_MaxBytes = 256u << 20;  // budget for the decoded RGBA bytes
};

// Decodes PNG, JPEG, TGA or BMP bytes; the format is told by the content, not by a name.
// Returns false with a one-line reason in *error (when error is not null) and out emptied
// when the bytes are not an image of those formats, are damaged or truncated, or the image
// is larger than the limits. Run-length encoded BMPs (8 and 4 bits a pixel) are decoded too:
// pixels their runs skip are transparent black, palette indices past the palette black, and a
// cut file whose header does not give the encoded size keeps only the rows its data reaches.
bool DecodeImage(const std::uint8_t* data, std::size_t size, const ImageLimits& limits,
                 DecodedImage& out, std::string* error);

// Whether a refusal reason from DecodeImage is the image's size against the limits (as
// opposed to bytes that are not an image, or damaged ones).
bool IsSizeRefusal(const std::string& reason);
