// Measures of a captured picture that a player would notice: where the lit things are, how
// much of the picture they fill, and how much two pictures differ.
#pragma once

#include "window_picture.h"

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

// Pixels whose colour differs by more than a small tolerance in any channel.
int DifferingPixels(const WindowPicture& a, const WindowPicture& b);
