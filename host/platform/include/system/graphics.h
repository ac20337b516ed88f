// Host stand-in for <system/graphics.h>: the HAL pixel formats the library deals with.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

typedef enum android_pixel_format {
    HAL_PIXEL_FORMAT_RGBA_8888 = 1,
    HAL_PIXEL_FORMAT_RGBX_8888 = 2,
    HAL_PIXEL_FORMAT_RGB_888 = 3,
    HAL_PIXEL_FORMAT_RGB_565 = 4,
    HAL_PIXEL_FORMAT_BGRA_8888 = 5,
} android_pixel_format_t;

#ifdef __cplusplus
}
#endif
