// Host stand-in for the hidl-gen header of android.hardware.graphics.common@1.2, reduced to the
// PixelFormat values the host allocator knows. The HIDL enum has no "unspecified" value.
#pragma once

#include <cstdint>

namespace android::hardware::graphics::common::V1_2 {

enum class PixelFormat : int32_t {
    RGBA_8888 = 0x1,
    RGBX_8888 = 0x2,
    RGB_888 = 0x3,
    RGB_565 = 0x4,
    BGRA_8888 = 0x5,
};

}  // namespace android::hardware::graphics::common::V1_2
