// A captured picture of the engine's window and the measures of it that a player would
// notice: where the lit things are, how much of the picture they fill, how much two differ.
#pragma once

#include <cstddef>
#include <vector>

// One capture of a window: 8-bit RGB, rows from the top.
struct WindowPicture {
    int m_Width = 0;
    int m_Height = 0;
    std::vector<unsigned char> m_Rgb;

    const unsigned char* At(int x, int y) const {
        return &m_Rgb[(std::size_t(y) * std::size_t(m_Width) + std::size_t(x)) * 3];
    }
};

// The window's picture as the X display shows it (24-bit true colour, as the tests' Xvfb
// gives); empty when there is no display or no such window.
WindowPicture CaptureWindow(unsigned long window);

// A pixel counts as lit when one of its channels reaches this; the demo's night-sky backdrops
// stay below it and its models, facing the light, rise above it.
constexpr int kLitLevel = 128;

// A rectangle of the picture, in pixels; the default covers everything.
struct PictureRegion {
    int m_Left = 0;
    int m_Top = 0;
    int m_Right = 1 << 20;  // exclusive
    int m_Bottom = 1 << 20;
};

struct LitMeasure {
    int m_Count = 0;  // lit pixels
    double m_X = 0;   // their centroid (meaningless when m_Count is 0)
    double m_Y = 0;
    int m_Top = -1;     // first row with at least a few lit pixels, -1 if none
    int m_Bottom = -1;  // last such row
};

LitMeasure MeasureLit(const WindowPicture& picture, PictureRegion region = {});

// Pixels whose colour differs by more than a small tolerance in any channel; all of them when
// the sizes differ.
int DifferingPixels(const WindowPicture& a, const WindowPicture& b);
