// Host stand-in for the NDK header generated from vendor.qti.hardware.display.config
// DisplayPortType.aidl.
#pragma once

#include <cstdint>

namespace aidl {
namespace vendor {
namespace qti {
namespace hardware {
namespace display {
namespace config {

enum class DisplayPortType : int32_t {
    INVALID = 0,
    DEFAULT = 1,
    DSI = 2,
    DTV = 3,
    WRITEBACK = 4,
    LVDS = 5,
    EDP = 6,
    DP = 7,
};

}  // namespace config
}  // namespace display
}  // namespace hardware
}  // namespace qti
}  // namespace vendor
}  // namespace aidl
