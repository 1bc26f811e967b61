#include "window_picture.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <algorithm>
#include <cstdlib>

namespace {

// Rows with fewer lit pixels than this are stray stars or edge pixels, not the scene.
constexpr int kRowMinimum = 4;
constexpr int kColourTolerance = 32;

}  // namespace

LitMeasure MeasureLit(const WindowPicture& picture, PictureRegion region) {
    LitMeasure measure;
    const int right = std::min(region.m_Right, picture.m_Width);
    const int bottom = std::min(region.m_Bottom, picture.m_Height);
    double sumX = 0, sumY = 0;
    for (int y = std::max(0, region.m_Top); y < bottom; ++y) {
        int inRow = 0;
        for (int x = std::max(0, region.m_Left); x < right; ++x) {
            const unsigned char* p = picture.At(x, y);
            if (std::max({p[0], p[1], p[2]}) >= kLitLevel) {
                ++inRow;
                sumX += x;
                sumY += y;
            }
        }
        measure.m_Count += inRow;
        if (inRow >= kRowMinimum) {
            measure.m_Top = measure.m_Top < 0 ? y : measure.m_Top;
            measure.m_Bottom = y;
        }
    }
    const int count = std::max(measure.m_Count, 1);
    measure.m_X = sumX / count;
    measure.m_Y = sumY / count;
    return measure;
}

int DifferingPixels(const WindowPicture& a, const WindowPicture& b) {
    if (a.m_Width != b.m_Width || a.m_Height != b.m_Height) {
        return std::max(a.m_Width * a.m_Height, b.m_Width * b.m_Height);
    }
    int count = 0;
    for (std::size_t i = 0; i + 2 < a.m_Rgb.size(); i += 3) {
        const auto apart = [&](std::size_t c) {
            return std::abs(int(a.m_Rgb[i + c]) - int(b.m_Rgb[i + c])) > kColourTolerance;
        };
        count += apart(0) || apart(1) || apart(2);
    }
    return count;
}

WindowPicture CaptureWindow(unsigned long window) {
    WindowPicture picture;
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) {
        return picture;
    }
    XWindowAttributes attributes{};
    XImage* image = nullptr;
    if (XGetWindowAttributes(display, window, &attributes) != 0 && attributes.width > 0 &&
        attributes.height > 0) {
        image = XGetImage(display, window, 0, 0, static_cast<unsigned>(attributes.width),
                          static_cast<unsigned>(attributes.height), AllPlanes, ZPixmap);
    }
    if (image != nullptr) {
        picture.m_Width = attributes.width;
        picture.m_Height = attributes.height;
        for (int y = 0; y < picture.m_Height; ++y) {
            for (int x = 0; x < picture.m_Width; ++x) {
                // The display is 24-bit true colour, as the tests' Xvfb gives: 8 bits each.
                const unsigned long pixel = XGetPixel(image, x, y);
                for (int shift : {16, 8, 0}) {
                    picture.m_Rgb.push_back(static_cast<unsigned char>(pixel >> shift));
                }
            }
        }
        XDestroyImage(image);
    }
    XCloseDisplay(display);
    return picture;
}
