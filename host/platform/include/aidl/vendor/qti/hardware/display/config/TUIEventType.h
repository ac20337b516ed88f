// Host stand-in for the NDK header generated from vendor.qti.hardware.display.config
// TUIEventType.aidl.
#pragma once

#include <cstdint>

namespace aidl {
namespace vendor {
namespace qti {
namespace hardware {
namespace display {
namespace config {

enum class TUIEventType : int32_t {
    NONE = 0,
    PREPARE_TUI_TRANSITION = 1,
    START_TUI_TRANSITION = 2,
    END_TUI_TRANSITION = 3,
};

}  // namespace config
}  // namespace display
}  // namespace hardware
}  // namespace qti
}  // namespace vendor
}  // namespace aidl
