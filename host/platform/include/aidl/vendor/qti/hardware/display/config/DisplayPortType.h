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
    DEFAULT = 0,
    DSI = 1,
    DTV = 2,
    WRITEBACK = 3,
    LVDS = 4,
    EDP = 5,
    DP = 6,
};

}  // namespace config
}  // namespace display
}  // namespace hardware
}  // namespace qti
}  // namespace vendor
}  // namespace aidl
