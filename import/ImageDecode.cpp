// PNG through libpng, JPEG through libjpeg-turbo, TGA and BMP through stb_image (Debian's
// libstb), run-length encoded BMPs through gdk-pixbuf's BMP loader (stb_image does not read
// them). libpng and libjpeg report their errors by longjmp; the functions that call setjmp hold
// only plain data, so nothing with a destructor is skipped by the jump.
#include "import/ImageDecode.h"

#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <limits>
#include <new>

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <jerror.h>
#include <jpeglib.h>
#include <png.h>
#include <stb_image.h>

namespace {

// Reads a little- or big-endian unsigned field; the caller has checked the bounds.
std::uint32_t Le16(const std::uint8_t* p) {
    return p[0] | (p[1] << 8);
}
std::uint32_t Le32(const std::uint8_t* p) {
    return p[0] | (p[1] << 8) | (p[2] << 16) | (std::uint32_t(p[3]) << 24);
}
std::uint32_t Be32(const std::uint8_t* p) {
    return (std::uint32_t(p[0]) << 24) | (p[1] << 16) | (p[2] << 8) | p[3];
}

bool Fail(std::string* error, const std::string& reason) {
    if (error != nullptr)
        *error = reason;
    return false;
}

// The size check every format goes through before pixel memory is reserved.
bool CheckSize(std::uint64_t width, std::uint64_t height, const ImageLimits& limits,
               std::string* error) {
    const std::string size = std::to_string(width) + " x " + std::to_string(height);
    if (width == 0 || height == 0)
        return Fail(error, "image is " + size + ", it has no pixels");
    const std::uint64_t side = limits.m_MaxSide > 0 ? std::uint64_t(limits.m_MaxSide) : 0;
    if (width > side || height > side)
        return Fail(error, "image is " + size + ", larger than " + std::to_string(side));
    const std::uint64_t bytes = width * height * 4;
    if (bytes > limits.m_MaxBytes)
        return Fail(error, "image is " + size + ", " + std::to_string(bytes) +
                               " bytes decoded, over the budget of " +
                               std::to_string(limits.m_MaxBytes));
    return true;
}

// Reserves the pixels of a checked size; false when the memory is not there.
bool Allocate(DecodedImage& out, int width, int height, std::string* error) {
    try {
        out.m_Pixels.assign(std::size_t(width) * std::size_t(height) * 4, 0);
    } catch (const std::bad_alloc&) {
        return Fail(error, "out of memory for a " + std::to_string(width) + " x " +
                               std::to_string(height) + " image");
    }
    out.m_Width = width;
    out.m_Height = height;
    return true;
}

// ---- PNG ----

constexpr std::size_t kReasonSize = 200;

// Everything the libpng callbacks and the setjmp frames share; plain data only.
struct PngJob {
    const std::uint8_t* m_Data;
    std::size_t m_Size;
    std::size_t m_Position;
    png_structp m_Png;
    png_infop m_Info;
    char m_Reason[kReasonSize];
    png_uint_32 m_Width;
    png_uint_32 m_Height;
    int m_Passes;
};

void PngRead(png_structp png, png_bytep into, png_size_t count) {
    PngJob* job = static_cast<PngJob*>(png_get_io_ptr(png));
    if (count > job->m_Size - job->m_Position)
        png_error(png, "truncated PNG data");
    std::memcpy(into, job->m_Data + job->m_Position, count);
    job->m_Position += count;
}

void PngError(png_structp png, png_const_charp message) {
    PngJob* job = static_cast<PngJob*>(png_get_error_ptr(png));
    std::snprintf(job->m_Reason, kReasonSize, "%s", message);
    png_longjmp(png, 1);
}

void PngWarning(png_structp, png_const_charp) {}

// Reads the header and sets up the conversion to 8-bit RGBA rows.
bool PngReadHeader(PngJob& job) {
    if (setjmp(png_jmpbuf(job.m_Png)))
        return false;
    png_read_info(job.m_Png, job.m_Info);
    int depth = 0;
    int colour = 0;
    int interlace = 0;
    png_get_IHDR(job.m_Png, job.m_Info, &job.m_Width, &job.m_Height, &depth, &colour, &interlace,
                 nullptr, nullptr);
    const bool transparency = png_get_valid(job.m_Png, job.m_Info, PNG_INFO_tRNS) != 0;
    png_set_expand(job.m_Png);  // palette to RGB, grey to 8 bits, tRNS to alpha
    png_set_scale_16(job.m_Png);
    if ((colour & PNG_COLOR_MASK_COLOR) == 0)
        png_set_gray_to_rgb(job.m_Png);
    if ((colour & PNG_COLOR_MASK_ALPHA) == 0 && !transparency)
        png_set_filler(job.m_Png, 0xff, PNG_FILLER_AFTER);
    job.m_Passes = png_set_interlace_handling(job.m_Png);
    png_read_update_info(job.m_Png, job.m_Info);
    if (png_get_rowbytes(job.m_Png, job.m_Info) != std::size_t(job.m_Width) * 4)
        png_error(job.m_Png, "unexpected PNG row layout");
    return true;
}

// Reads every pass into the rows, bottom row first.
bool PngReadRows(PngJob& job, std::uint8_t* pixels) {
    if (setjmp(png_jmpbuf(job.m_Png)))
        return false;
    const std::size_t stride = std::size_t(job.m_Width) * 4;
    for (int pass = 0; pass < job.m_Passes; ++pass)
        for (png_uint_32 y = 0; y < job.m_Height; ++y)
            png_read_row(job.m_Png, pixels + (job.m_Height - 1 - y) * stride, nullptr);
    return true;
}

bool DecodePng(const std::uint8_t* data, std::size_t size, const ImageLimits& limits,
               DecodedImage& out, std::string* error) {
    // The IHDR chunk follows the signature; its size is checked before libpng allocates.
    if (size < 33 || std::memcmp(data + 12, "IHDR", 4) != 0)
        return Fail(error, "truncated PNG data");
    if (!CheckSize(Be32(data + 16), Be32(data + 20), limits, error))
        return false;

    PngJob job{};
    job.m_Data = data;
    job.m_Size = size;
    job.m_Png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &job, PngError, PngWarning);
    if (job.m_Png == nullptr)
        return Fail(error, "out of memory for the PNG reader");
    job.m_Info = png_create_info_struct(job.m_Png);
    if (job.m_Info == nullptr) {
        png_destroy_read_struct(&job.m_Png, nullptr, nullptr);
        return Fail(error, "out of memory for the PNG reader");
    }
    png_set_read_fn(job.m_Png, &job, PngRead);
    png_set_user_limits(job.m_Png, png_uint_32(limits.m_MaxSide), png_uint_32(limits.m_MaxSide));
    png_set_chunk_malloc_max(job.m_Png, 8u << 20);  // text and profile chunks
    png_set_chunk_cache_max(job.m_Png, 1000);

    bool ok = PngReadHeader(job);
    if (ok)
        ok = CheckSize(job.m_Width, job.m_Height, limits, error) &&
             Allocate(out, int(job.m_Width), int(job.m_Height), error);
    else
        Fail(error, job.m_Reason);
    if (ok) {
        ok = PngReadRows(job, out.m_Pixels.data());
        if (!ok)
            Fail(error, job.m_Reason);
    }
    png_destroy_read_struct(&job.m_Png, &job.m_Info, nullptr);
    return ok;
}

// ---- JPEG ----

// libjpeg's error manager first, so the library's pointer to it is a pointer to this.
struct JpegErrors {
    jpeg_error_mgr m_Manager;
    std::jmp_buf m_Jump;
    char m_Reason[JMSG_LENGTH_MAX];
    bool m_Truncated;  // the data ended before the image did
};

void JpegErrorExit(j_common_ptr cinfo) {
    JpegErrors* errors = reinterpret_cast<JpegErrors*>(cinfo->err);
    (*cinfo->err->format_message)(cinfo, errors->m_Reason);
    std::longjmp(errors->m_Jump, 1);
}

void JpegMessage(j_common_ptr cinfo, int level) {
    JpegErrors* errors = reinterpret_cast<JpegErrors*>(cinfo->err);
    if (level < 0 && cinfo->err->msg_code == JWRN_JPEG_EOF)
        errors->m_Truncated = true;
}

// Stops a progressive file with an endless run of scans (each one re-reads the whole image).
void JpegProgress(j_common_ptr cinfo) {
    if (cinfo->is_decompressor &&
        reinterpret_cast<j_decompress_ptr>(cinfo)->input_scan_number > 500) {
        JpegErrors* errors = reinterpret_cast<JpegErrors*>(cinfo->err);
        std::snprintf(errors->m_Reason, sizeof errors->m_Reason, "JPEG has too many scans");
        std::longjmp(errors->m_Jump, 1);
    }
}

// Everything the setjmp frame shares with its caller; plain data only.
struct JpegJob {
    jpeg_decompress_struct m_Info;
    JpegErrors m_Errors;
    jpeg_progress_mgr m_Progress;
};

bool JpegReadHeader(JpegJob& job, const std::uint8_t* data, std::size_t size, std::size_t memory) {
    if (setjmp(job.m_Errors.m_Jump))
        return false;
    jpeg_create_decompress(&job.m_Info);
    job.m_Info.mem->max_memory_to_use = long(memory);
    job.m_Progress.progress_monitor = JpegProgress;
    job.m_Info.progress = &job.m_Progress;
    jpeg_mem_src(&job.m_Info, data, static_cast<unsigned long>(size));
    jpeg_read_header(&job.m_Info, TRUE);
    return true;
}

bool JpegReadRows(JpegJob& job, std::uint8_t* pixels) {
    if (setjmp(job.m_Errors.m_Jump))
        return false;
    job.m_Info.out_color_space = JCS_EXT_RGBA;
    jpeg_start_decompress(&job.m_Info);
    if (job.m_Info.output_components != 4) {
        std::snprintf(job.m_Errors.m_Reason, sizeof job.m_Errors.m_Reason,
                      "JPEG colours cannot be turned into RGBA");
        return false;
    }
    const std::size_t stride = std::size_t(job.m_Info.output_width) * 4;
    while (job.m_Info.output_scanline < job.m_Info.output_height) {
        JSAMPROW row =
            pixels + (job.m_Info.output_height - 1 - job.m_Info.output_scanline) * stride;
        jpeg_read_scanlines(&job.m_Info, &row, 1);
    }
    jpeg_finish_decompress(&job.m_Info);
    return true;
}

bool DecodeJpeg(const std::uint8_t* data, std::size_t size, const ImageLimits& limits,
                DecodedImage& out, std::string* error) {
    if (size > std::numeric_limits<unsigned long>::max())
        return Fail(error, "JPEG data too large");
    JpegJob job{};
    job.m_Info.err = jpeg_std_error(&job.m_Errors.m_Manager);
    job.m_Errors.m_Manager.error_exit = JpegErrorExit;
    job.m_Errors.m_Manager.emit_message = JpegMessage;
    // Room for a progressive file's coefficients (two bytes a sample) besides the rows.
    const std::size_t most = std::size_t(std::numeric_limits<long>::max());
    const std::size_t memory =
        limits.m_MaxBytes < most / 4 ? limits.m_MaxBytes * 2 + (16u << 20) : most;
    bool ok = JpegReadHeader(job, data, size, memory);
    if (!ok) {
        Fail(error, job.m_Errors.m_Truncated ? std::string("truncated JPEG data")
                                             : std::string(job.m_Errors.m_Reason));
    } else if (job.m_Info.jpeg_color_space == JCS_CMYK || job.m_Info.jpeg_color_space == JCS_YCCK) {
        ok = Fail(error, "CMYK JPEG is not supported");
    } else {
        ok = CheckSize(job.m_Info.image_width, job.m_Info.image_height, limits, error) &&
             Allocate(out, int(job.m_Info.image_width), int(job.m_Info.image_height), error);
        if (ok) {
            ok = JpegReadRows(job, out.m_Pixels.data());
            if (!ok)
                Fail(error, job.m_Errors.m_Truncated ? std::string("truncated JPEG data")
                                                     : std::string(job.m_Errors.m_Reason));
            else if (job.m_Errors.m_Truncated)
                ok = Fail(error, "truncated JPEG data");
        }
    }
    jpeg_destroy_decompress(&job.m_Info);
    return ok;
}

// ---- TGA and BMP (stb_image) ----

// A TGA header stb_image can read: a known image type and a colour map flag of 0 or 1.
// (No other format stb_image knows starts with such bytes.)
bool LooksLikeTga(const std::uint8_t* data, std::size_t size) {
    if (size < 18 || data[1] > 1)
        return false;
    const int type = data[2];
    return type == 1 || type == 2 || type == 3 || type == 9 || type == 10 || type == 11;
}

bool CheckTga(const std::uint8_t* data, std::size_t size, const ImageLimits& limits,
              std::string* error) {
    const int type = data[2];
    if (Le16(data + 12) != 0 && Le16(data + 14) != 0 &&
        !CheckSize(Le16(data + 12), Le16(data + 14), limits, error))
        return false;
    if (type >= 9)
        return true;  // run-length data has no size to check up front
    const std::uint64_t mapBytes =
        data[1] == 1 ? std::uint64_t(Le16(data + 5)) * ((data[7] + 7) / 8) : 0;
    const std::uint64_t pixelBytes =
        std::uint64_t(Le16(data + 12)) * Le16(data + 14) * ((data[16] + 7) / 8);
    if (18 + data[0] + mapBytes + pixelBytes > size)
        return Fail(error, "truncated TGA data");
    return true;
}

// Refuses what stb_image would read past or make up: embedded compression, pixel rows the
// file does not hold (stb_image reads zeros there) and palette indices past the palette
// (stb_image leaves those colours undefined). Run-length encoded BMPs do not come here.
bool CheckBmp(const std::uint8_t* data, std::size_t size, const ImageLimits& limits,
              std::string* error) {
    if (size < 26)
        return Fail(error, "truncated BMP data");
    const std::uint32_t offset = Le32(data + 10);
    const std::uint32_t header = Le32(data + 14);
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::uint32_t bits = 0;
    std::uint32_t compression = 0;
    if (header == 12) {
        width = Le16(data + 18);
        height = Le16(data + 20);
        bits = Le16(data + 24);
    } else {
        if (size < 34)
            return Fail(error, "truncated BMP data");
        width = std::int32_t(Le32(data + 18));
        height = std::int32_t(Le32(data + 22));
        bits = Le16(data + 28);
        compression = Le32(data + 30);
    }
    if (compression != 0 && compression != 3 && compression != 6)
        return Fail(error,
                    "compressed BMP (type " + std::to_string(compression) + ") is not supported");
    if (width <= 0 || height == 0 || height == std::numeric_limits<std::int32_t>::min())
        return true;  // stb_image refuses these itself
    if (height < 0)
        height = -height;
    if (!CheckSize(std::uint64_t(width), std::uint64_t(height), limits, error))
        return false;
    const std::uint64_t stride = ((std::uint64_t(width) * bits + 31) / 32) * 4;
    if (std::uint64_t(offset) + stride * std::uint64_t(height) > size)
        return Fail(error, "truncated BMP data");
    if (bits > 8)
        return true;
    const std::uint64_t entrySize = header == 12 ? 3 : 4;
    const std::uint64_t paletteStart = 14 + std::uint64_t(header);
    const std::uint64_t entries = offset > paletteStart ? (offset - paletteStart) / entrySize : 0;
    if (bits != 1 && bits != 2 && bits != 4 && bits != 8)
        return true;
    const std::uint32_t mask = (1u << bits) - 1;
    for (std::uint64_t row = 0; row < std::uint64_t(height); ++row) {
        const std::uint8_t* p = data + offset + row * stride;
        for (std::uint64_t x = 0; x < std::uint64_t(width); ++x) {
            const std::uint64_t bit = x * bits;
            const std::uint32_t index = (p[bit / 8] >> (8 - bits - bit % 8)) & mask;
            if (index >= entries)
                return Fail(error, "BMP palette index " + std::to_string(index) +
                                       " past the palette of " + std::to_string(entries));
        }
    }
    return true;
}

bool DecodeWithStb(const std::uint8_t* data, std::size_t size, const char* format,
                   const ImageLimits& limits, DecodedImage& out, std::string* error) {
    if (size > std::size_t(std::numeric_limits<int>::max()))
        return Fail(error, std::string(format) + " data too large");
    int width = 0;
    int height = 0;
    int channels = 0;
    if (!stbi_info_from_memory(data, int(size), &width, &height, &channels))
        return Fail(error, std::string("damaged ") + format + " data");
    // A top-down BMP's height may come back negative.
    const std::int64_t rows = height < 0 ? -std::int64_t(height) : height;
    if (width <= 0 || !CheckSize(std::uint64_t(width), std::uint64_t(rows), limits, error))
        return width <= 0 ? Fail(error, std::string("damaged ") + format + " data") : false;
    stbi_uc* pixels = stbi_load_from_memory(data, int(size), &width, &height, &channels, 4);
    if (pixels == nullptr) {
        const char* reason = stbi_failure_reason();
        return Fail(error, std::string("damaged ") + format + " data" +
                               (reason != nullptr ? std::string(" (") + reason + ")" : ""));
    }
    bool ok = CheckSize(std::uint64_t(std::int64_t(width)), std::uint64_t(std::int64_t(height)),
                        limits, error) &&
              Allocate(out, width, height, error);
    if (ok) {
        // stb_image hands rows top-down.
        const std::size_t stride = std::size_t(width) * 4;
        for (int y = 0; y < height; ++y)
            std::memcpy(out.m_Pixels.data() + std::size_t(height - 1 - y) * stride,
                        pixels + std::size_t(y) * stride, stride);
    }
    stbi_image_free(pixels);
    return ok;
}

// ---- run-length encoded BMP (gdk-pixbuf) ----

// Whether a BMP's pixels are run-length encoded (8 or 4 bits a pixel); the core header of
// 12 bytes has no compression field.
bool IsRunLengthBmp(const std::uint8_t* data, std::size_t size) {
    if (size < 34 || Le32(data + 14) == 12)
        return false;
    const std::uint32_t compression = Le32(data + 30);
    return compression == 1 || compression == 2;
}

// Takes a GError's message as a one-line reason and frees the error.
std::string TakeMessage(GError*& failure) {
    std::string message =
        failure != nullptr && failure->message != nullptr ? failure->message : "no reason given";
    for (char& c : message)
        if (c == '\n' || c == '\r')
            c = ' ';
    g_clear_error(&failure);
    return message;
}

// The loader's pixbuf as soon as it exists: cleared, so pixels the runs skip (delta and
// end-of-line escapes) and rows cut data never reaches are transparent black whatever the
// loader leaves there.
void ClearPixbuf(GdkPixbufLoader* loader, gpointer) {
    GdkPixbuf* pixbuf = gdk_pixbuf_loader_get_pixbuf(loader);
    if (pixbuf != nullptr)
        gdk_pixbuf_fill(pixbuf, 0);
}

// Copies the loader's top-down RGB or RGBA rows into bottom-up RGBA after checking that the
// pixbuf is the image the header described.
bool TakePixbuf(const GdkPixbuf* pixbuf, std::int64_t width, std::int64_t height,
                const ImageLimits& limits, DecodedImage& out, std::string* error) {
    if (pixbuf == nullptr)
        return Fail(error, "damaged BMP data (no pixels decoded)");
    const int w = gdk_pixbuf_get_width(pixbuf);
    const int h = gdk_pixbuf_get_height(pixbuf);
    const int channels = gdk_pixbuf_get_n_channels(pixbuf);
    const bool alpha = gdk_pixbuf_get_has_alpha(pixbuf) != FALSE;
    const int rowstride = gdk_pixbuf_get_rowstride(pixbuf);
    if (w != width || h != height)
        return Fail(error, "damaged BMP data (decoded " + std::to_string(w) + " x " +
                               std::to_string(h) + ", the header says " + std::to_string(width) +
                               " x " + std::to_string(height) + ")");
    if (!CheckSize(std::uint64_t(w), std::uint64_t(h), limits, error))
        return false;
    const std::size_t rowBytes = std::size_t(w) * std::size_t(channels);
    if (gdk_pixbuf_get_colorspace(pixbuf) != GDK_COLORSPACE_RGB ||
        gdk_pixbuf_get_bits_per_sample(pixbuf) != 8 || channels != (alpha ? 4 : 3) ||
        rowstride <= 0 || std::size_t(rowstride) < rowBytes ||
        gdk_pixbuf_get_byte_length(pixbuf) < std::size_t(h - 1) * std::size_t(rowstride) + rowBytes)
        return Fail(error, "damaged BMP data (unexpected pixel layout)");
    if (!Allocate(out, w, h, error))
        return false;
    const guint8* pixels = gdk_pixbuf_read_pixels(pixbuf);
    for (int y = 0; y < h; ++y) {
        const guint8* from = pixels + std::size_t(y) * std::size_t(rowstride);
        std::uint8_t* to = out.m_Pixels.data() + std::size_t(h - 1 - y) * std::size_t(w) * 4;
        for (int x = 0; x < w; ++x, from += channels, to += 4) {
            to[0] = from[0], to[1] = from[1], to[2] = from[2];
            to[3] = alpha ? from[3] : 0xff;
        }
    }
    return true;
}

// Run-length encoded BMPs through gdk-pixbuf's BMP loader. The header's image size goes
// through the limits, and its other sizes through the format's bounds, before the loader sees
// a byte; pixels the runs skip are transparent black, palette indices past the palette black.
bool DecodeRunLengthBmp(const std::uint8_t* data, std::size_t size, const ImageLimits& limits,
                        DecodedImage& out, std::string* error) {
    if (size < 54)
        return Fail(error, "truncated BMP data");
    // The loader reserves the header as it gives its own size; the fields read here are
    // those of the 40-byte header and its longer versions.
    const std::uint32_t header = Le32(data + 14);
    if (header < 40 || header > 124)
        return Fail(error, "damaged BMP data (header of " + std::to_string(header) + " bytes)");
    const std::uint32_t compression = Le32(data + 30);
    const std::uint32_t bits = Le16(data + 28);
    if (bits != (compression == 1 ? 8u : 4u))
        return Fail(error, "damaged BMP data (run-length type " + std::to_string(compression) +
                               " with " + std::to_string(bits) + " bits a pixel)");
    const std::int64_t width = std::int32_t(Le32(data + 18));
    const std::int64_t height = std::int32_t(Le32(data + 22));
    if (width < 0 || height < 0)
        return Fail(error, height < 0
                               ? "damaged BMP data (run-length encoded with a negative height)"
                               : "damaged BMP data (negative width)");
    if (!CheckSize(std::uint64_t(width), std::uint64_t(height), limits, error))
        return false;
    // The encoded size, where the writer filled it in, tells a cut file; without it a cut
    // file decodes to the rows its data reaches.
    const std::uint64_t offset = Le32(data + 10);
    const std::uint64_t encoded = Le32(data + 34);
    if (offset >= size || offset + encoded > size)
        return Fail(error, "truncated BMP data");
    // The loader reserves the palette as the header gives its size.
    const std::uint32_t colours = Le32(data + 46);
    if (colours > (1u << bits))
        return Fail(error, "damaged BMP data (palette of " + std::to_string(colours) +
                               " colours at " + std::to_string(bits) + " bits a pixel)");

    // Nothing to set up first: GLib starts its type system itself, and gdk-pixbuf reads its
    // list of loaders when the first loader is made.
    GError* failure = nullptr;
    GdkPixbufLoader* loader = gdk_pixbuf_loader_new_with_type("bmp", &failure);
    if (loader == nullptr)
        return Fail(error, "no BMP loader in gdk-pixbuf (" + TakeMessage(failure) + ")");
    g_signal_connect(loader, "area-prepared", G_CALLBACK(ClearPixbuf), nullptr);
    // A failed write closes the loader itself; a finished one is closed here.
    bool ok = gdk_pixbuf_loader_write(loader, data, size, &failure) != FALSE &&
              gdk_pixbuf_loader_close(loader, &failure) != FALSE;
    if (!ok)
        Fail(error, "damaged BMP data (" + TakeMessage(failure) + ")");
    else
        ok = TakePixbuf(gdk_pixbuf_loader_get_pixbuf(loader), width, height, limits, out, error);
    g_object_unref(loader);
    return ok;
}

}  // namespace

bool DecodeImage(const std::uint8_t* data, std::size_t size, const ImageLimits& limits,
                 DecodedImage& out, std::string* error) {
    out = DecodedImage();
    static const std::uint8_t kPng[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    bool ok = false;
    if (data == nullptr || size < 4) {
        ok = Fail(error, "not an image");
    } else if (size >= 8 && std::memcmp(data, kPng, 8) == 0) {
        ok = DecodePng(data, size, limits, out, error);
    } else if (data[0] == 0xff && data[1] == 0xd8 && data[2] == 0xff) {
        ok = DecodeJpeg(data, size, limits, out, error);
    } else if (data[0] == 'B' && data[1] == 'M' && IsRunLengthBmp(data, size)) {
        ok = DecodeRunLengthBmp(data, size, limits, out, error);
    } else if (data[0] == 'B' && data[1] == 'M') {
        ok = CheckBmp(data, size, limits, error) &&
             DecodeWithStb(data, size, "BMP", limits, out, error);
    } else if (LooksLikeTga(data, size)) {
        ok = CheckTga(data, size, limits, error) &&
             DecodeWithStb(data, size, "TGA", limits, out, error);
    } else {
        ok = Fail(error, "not an image");
    }
    if (!ok) {
        out = DecodedImage();
        return false;
    }
    for (std::size_t i = 3; i < out.m_Pixels.size(); i += 4)
        if (out.m_Pixels[i] != 0xff) {
            out.m_HasAlpha = true;
            break;
        }
    return true;
}

bool IsSizeRefusal(const std::string& reason) {
    return reason.find(", larger than ") != std::string::npos ||
           reason.find(" over the budget of ") != std::string::npos;
}
