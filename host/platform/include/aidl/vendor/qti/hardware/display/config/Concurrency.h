// Host stand-in for the NDK header generated from vendor.qti.hardware.display.config
// Concurrency.aidl.
#pragma once

#include <cstdint>

namespace aidl {
namespace vendor {
namespace qti {
namespace hardware {
namespace display {
namespace config {

enum class Concurrency : int32_t {
    NONE = 0,
    WFD = 1,
    DP = 2,
    DUAL = 3,
    CWB = 4,
    CAMERA = 5,
};

}  // namespace config
}  // namespace display
}  // namespace hardware
}  // namespace qti
}  // namespace vendor
}  // namespace aidl
