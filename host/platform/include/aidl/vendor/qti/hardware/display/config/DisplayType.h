// Host stand-in for the NDK header generated from vendor.qti.hardware.display.config
// DisplayType.aidl.
#pragma once

#include <cstdint>

namespace aidl {
namespace vendor {
namespace qti {
namespace hardware {
namespace display {
namespace config {

enum class DisplayType : int32_t {
    INVALID = 0,
    PRIMARY = 1,
    EXTERNAL = 2,
    VIRTUAL = 3,
    BUILTIN2 = 4,
};

}  // namespace config
}  // namespace display
}  // namespace hardware
}  // namespace qti
}  // namespace vendor
}  // namespace aidl
