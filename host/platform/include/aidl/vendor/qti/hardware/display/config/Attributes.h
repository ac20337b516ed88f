// Host stand-in for the NDK header generated from vendor.qti.hardware.display.config
// Attributes.aidl.
#pragma once

#include <aidl/vendor/qti/hardware/display/config/DisplayPortType.h>

#include <cstdint>
#include <tuple>

namespace aidl {
namespace vendor {
namespace qti {
namespace hardware {
namespace display {
namespace config {

struct Attributes {
    int32_t vsyncPeriod = 0;
    int32_t xRes = 0;
    int32_t yRes = 0;
    float xDpi = 0;
    float yDpi = 0;
    DisplayPortType panelType = DisplayPortType(0);  // INVALID, as generated
    bool isYuv = false;

    inline bool operator==(const Attributes& rhs) const {
        return std::tie(vsyncPeriod, xRes, yRes, xDpi, yDpi, panelType, isYuv) ==
               std::tie(rhs.vsyncPeriod, rhs.xRes, rhs.yRes, rhs.xDpi, rhs.yDpi, rhs.panelType,
                        rhs.isYuv);
    }
    inline bool operator!=(const Attributes& rhs) const { return !(*this == rhs); }
};

}  // namespace config
}  // namespace display
}  // namespace hardware
}  // namespace qti
}  // namespace vendor
}  // namespace aidl
