// Host stand-in for the NDK header generated from vendor.qti.hardware.display.config
// CameraSmoothOp.aidl.
#pragma once

#include <cstdint>

namespace aidl {
namespace vendor {
namespace qti {
namespace hardware {
namespace display {
namespace config {

enum class CameraSmoothOp : int32_t {
    OFF = 0,
    ON = 1,
};

}  // namespace config
}  // namespace display
}  // namespace hardware
}  // namespace qti
}  // namespace vendor
}  // namespace aidl
