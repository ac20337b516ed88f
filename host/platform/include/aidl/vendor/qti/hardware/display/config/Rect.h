// Host stand-in for the NDK header generated from vendor.qti.hardware.display.config Rect.aidl.
#pragma once

#include <cstdint>
#include <tuple>

namespace aidl {
namespace vendor {
namespace qti {
namespace hardware {
namespace display {
namespace config {

struct Rect {
    int32_t left = 0;
    int32_t top = 0;
    int32_t right = 0;
    int32_t bottom = 0;

    inline bool operator==(const Rect& rhs) const {
        return std::tie(left, top, right, bottom) ==
               std::tie(rhs.left, rhs.top, rhs.right, rhs.bottom);
    }
    inline bool operator!=(const Rect& rhs) const { return !(*this == rhs); }
};

}  // namespace config
}  // namespace display
}  // namespace hardware
}  // namespace qti
}  // namespace vendor
}  // namespace aidl
