// Reading what the engine's window shows (kept apart from the tests: Xlib's macros clash with
// GoogleTest's names).
#pragma once

#include <string>
#include <vector>

// One capture of a window: 8-bit RGB, rows from the top.
struct WindowPicture {
    int m_Width = 0;
    int m_Height = 0;
    std::vector<unsigned char> m_Rgb;

    bool Empty() const { return m_Rgb.empty(); }
    const unsigned char* At(int x, int y) const {
        return &m_Rgb[(static_cast<std::size_t>(y) * static_cast<std::size_t>(m_Width) +
                       static_cast<std::size_t>(x)) *
                      3];
    }
};

// The window's current contents on $DISPLAY; empty if the window cannot be read.
WindowPicture CaptureWindow(unsigned long window);

// Writes the picture as a binary PPM file; false on failure.
bool SavePpm(const WindowPicture& picture, const std::string& path);
