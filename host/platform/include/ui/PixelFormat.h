// Host stand-in for <ui/PixelFormat.h>.
#pragma once

#include <system/graphics.h>

#include <cstdint>

namespace android {

enum {
    PIXEL_FORMAT_UNKNOWN = 0,
    PIXEL_FORMAT_NONE = 0,
    PIXEL_FORMAT_RGBA_8888 = HAL_PIXEL_FORMAT_RGBA_8888,
    PIXEL_FORMAT_RGBX_8888 = HAL_PIXEL_FORMAT_RGBX_8888,
    PIXEL_FORMAT_RGB_888 = HAL_PIXEL_FORMAT_RGB_888,
    PIXEL_FORMAT_RGB_565 = HAL_PIXEL_FORMAT_RGB_565,
    PIXEL_FORMAT_BGRA_8888 = HAL_PIXEL_FORMAT_BGRA_8888,
};

typedef int32_t PixelFormat;

// Bytes of one pixel; 0 for a format this stand-in does not know.
uint32_t bytesPerPixel(PixelFormat format);

}  // namespace android
