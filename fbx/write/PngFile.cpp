#include "fbx/write/PngFile.h"

#include <png.h>

#include <cstddef>

namespace fbx {

namespace {

void Append(png_structp png, png_bytep data, png_size_t size) {
    auto* out = static_cast<std::vector<std::uint8_t>*>(png_get_io_ptr(png));
    out->insert(out->end(), data, data + size);
}

void Flush(png_structp) {}

// libpng reports errors by longjmp: no object with a destructor may live in this frame.
bool Write(std::vector<std::uint8_t>* out, int width, int height, const std::uint8_t* rows,
           std::size_t stride, bool alpha) {
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    if (png == nullptr)
        return false;
    png_infop info = png_create_info_struct(png);
    if (info == nullptr || setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        return false;
    }
    png_set_write_fn(png, out, Append, Flush);
    png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), 8,
                 alpha ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    if (!alpha)
        png_set_filler(png, 0, PNG_FILLER_AFTER);  // rows keep their fourth byte; it is skipped
    for (int y = 0; y < height; ++y)
        png_write_row(png, const_cast<png_bytep>(rows + static_cast<std::size_t>(y) * stride));
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return true;
}

}  // namespace

std::vector<std::uint8_t> EncodePng(int width, int height, const std::vector<std::uint8_t>& rgba,
                                    bool alpha) {
    std::vector<std::uint8_t> out;
    if (width <= 0 || height <= 0 ||
        rgba.size() != static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4)
        return out;
    if (!Write(&out, width, height, rgba.data(), static_cast<std::size_t>(width) * 4, alpha))
        out.clear();
    return out;
}

}  // namespace fbx
