#include "PngFile.h"

#include <png.h>

#include <cstring>
#include <vector>

namespace cwbsim {

namespace {

// Decoding is refused past this size, long before memory runs out.
constexpr png_uint_32 kMaxSide = 16384;

bool begin(const std::string& path, png_image* image, std::string* error) {
    memset(image, 0, sizeof(*image));
    image->version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(image, path.c_str()) == 0) {
        *error = "cannot read PNG " + path + ": " + image->message;
        png_image_free(image);
        return false;
    }
    if (image->width == 0 || image->height == 0 || image->width > kMaxSide ||
        image->height > kMaxSide) {
        *error = "PNG " + path + " is " + std::to_string(image->width) + "x" +
                 std::to_string(image->height) + ", larger than the simulator takes";
        png_image_free(image);
        return false;
    }
    return true;
}

// The libpng image header of an RGB frame; false for a frame with no pixels or a wrong size.
bool describe(const host::device::Frame& frame, png_image* image) {
    if (frame.width <= 0 || frame.height <= 0 ||
        frame.rgb.size() != static_cast<size_t>(frame.width) * frame.height * 3) {
        return false;
    }
    memset(image, 0, sizeof(*image));
    image->version = PNG_IMAGE_VERSION;
    image->width = static_cast<png_uint_32>(frame.width);
    image->height = static_cast<png_uint_32>(frame.height);
    image->format = PNG_FORMAT_RGB;
    return true;
}

}  // namespace

bool PngFile::size(const std::string& path, int* width, int* height, std::string* error) {
    png_image image;
    if (!begin(path, &image, error)) return false;
    *width = static_cast<int>(image.width);
    *height = static_cast<int>(image.height);
    png_image_free(&image);
    return true;
}

bool PngFile::read(const std::string& path, host::device::Frame* out, std::string* error) {
    png_image image;
    if (!begin(path, &image, error)) return false;
    // Read with alpha and drop it ourselves: without an alpha channel in the output format libpng
    // would composite onto a background instead.
    image.format = PNG_FORMAT_RGBA;
    std::vector<uint8_t> rgba(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, rgba.data(), 0, nullptr) == 0) {
        *error = "cannot decode PNG " + path + ": " + image.message;
        png_image_free(&image);
        return false;
    }
    host::device::Frame frame;
    frame.width = static_cast<int>(image.width);
    frame.height = static_cast<int>(image.height);
    frame.rgb.resize(static_cast<size_t>(frame.width) * frame.height * 3);
    for (size_t src = 0, dst = 0; dst < frame.rgb.size(); src += 4, dst += 3) {
        frame.rgb[dst] = rgba[src];
        frame.rgb[dst + 1] = rgba[src + 1];
        frame.rgb[dst + 2] = rgba[src + 2];
    }
    png_image_free(&image);
    *out = std::move(frame);
    return true;
}

bool PngFile::write(const std::string& path, const host::device::Frame& frame, std::string* error) {
    png_image image;
    if (!describe(frame, &image)) {
        *error = "nothing to write to " + path;
        return false;
    }
    if (png_image_write_to_file(&image, path.c_str(), 0, frame.rgb.data(), 0, nullptr) == 0) {
        *error = "cannot write PNG " + path + ": " + image.message;
        png_image_free(&image);
        return false;
    }
    png_image_free(&image);
    return true;
}

bool PngFile::encode(const host::device::Frame& frame, std::vector<uint8_t>* out,
                     std::string* error) {
    png_image image;
    if (!describe(frame, &image)) {
        *error = "nothing to encode";
        return false;
    }
    // The first call measures, the second writes.
    png_alloc_size_t size = 0;
    if (png_image_write_to_memory(&image, nullptr, &size, 0, frame.rgb.data(), 0, nullptr) == 0) {
        *error = std::string("cannot encode PNG: ") + image.message;
        png_image_free(&image);
        return false;
    }
    out->resize(size);
    if (png_image_write_to_memory(&image, out->data(), &size, 0, frame.rgb.data(), 0, nullptr) ==
        0) {
        *error = std::string("cannot encode PNG: ") + image.message;
        png_image_free(&image);
        return false;
    }
    out->resize(size);
    png_image_free(&image);
    return true;
}

}  // namespace cwbsim
