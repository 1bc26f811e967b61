#include "window_picture.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <fstream>

namespace {

// The position of a colour mask's lowest bit and its width, to scale the channel to 8 bits.
unsigned char Component(unsigned long pixel, unsigned long mask) {
    if (mask == 0) {
        return 0;
    }
    int shift = 0;
    while (((mask >> shift) & 1UL) == 0) {
        ++shift;
    }
    const unsigned long maximum = mask >> shift;
    const unsigned long value = (pixel & mask) >> shift;
    return static_cast<unsigned char>(value * 255UL / maximum);
}

}  // namespace

WindowPicture CaptureWindow(unsigned long window) {
    WindowPicture picture;
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) {
        return picture;
    }
    XWindowAttributes attributes{};
    if (XGetWindowAttributes(display, window, &attributes) != 0 && attributes.width > 0 &&
        attributes.height > 0) {
        XImage* image = XGetImage(display, window, 0, 0, static_cast<unsigned>(attributes.width),
                                  static_cast<unsigned>(attributes.height), AllPlanes, ZPixmap);
        if (image != nullptr) {
            picture.m_Width = attributes.width;
            picture.m_Height = attributes.height;
            picture.m_Rgb.reserve(static_cast<std::size_t>(picture.m_Width) *
                                  static_cast<std::size_t>(picture.m_Height) * 3);
            for (int y = 0; y < picture.m_Height; ++y) {
                for (int x = 0; x < picture.m_Width; ++x) {
                    const unsigned long pixel = XGetPixel(image, x, y);
                    picture.m_Rgb.push_back(Component(pixel, image->red_mask));
                    picture.m_Rgb.push_back(Component(pixel, image->green_mask));
                    picture.m_Rgb.push_back(Component(pixel, image->blue_mask));
                }
            }
            XDestroyImage(image);
        }
    }
    XCloseDisplay(display);
    return picture;
}

bool SavePpm(const WindowPicture& picture, const std::string& path) {
    std::ofstream file(path, std::ios::binary);
    file << "P6\n" << picture.m_Width << ' ' << picture.m_Height << "\n255\n";
    file.write(reinterpret_cast<const char*>(picture.m_Rgb.data()),
               static_cast<std::streamsize>(picture.m_Rgb.size()));
    return static_cast<bool>(file);
}
