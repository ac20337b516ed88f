// Host stand-in for <ui/GraphicTypes.h>, reduced to ui::PixelFormat: the HIDL enum of
// android.hardware.graphics.common@1.2, as on a device.
#pragma once

#include <android/hardware/graphics/common/1.2/types.h>
#include <system/graphics.h>

namespace android {
namespace ui {

using android::hardware::graphics::common::V1_2::PixelFormat;

}  // namespace ui
}  // namespace android
