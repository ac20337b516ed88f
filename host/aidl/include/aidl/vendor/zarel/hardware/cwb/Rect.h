// Host equivalent of the NDK code generated from vendor/zarel/hardware/cwb/Rect.aidl.
#pragma once

#include <cstdint>
#include <sstream>
#include <string>
#include <tuple>

namespace aidl {
namespace vendor {
namespace zarel {
namespace hardware {
namespace cwb {

struct Rect {
    static const char* descriptor;

    int32_t left = 0;
    int32_t top = 0;
    int32_t right = 0;
    int32_t bottom = 0;

    inline bool operator==(const Rect& rhs) const {
        return std::tie(left, top, right, bottom) ==
               std::tie(rhs.left, rhs.top, rhs.right, rhs.bottom);
    }
    inline bool operator<(const Rect& rhs) const {
        return std::tie(left, top, right, bottom) <
               std::tie(rhs.left, rhs.top, rhs.right, rhs.bottom);
    }
    inline bool operator!=(const Rect& rhs) const { return !(*this == rhs); }
    inline bool operator>(const Rect& rhs) const { return rhs < *this; }
    inline bool operator>=(const Rect& rhs) const { return !(*this < rhs); }
    inline bool operator<=(const Rect& rhs) const { return !(rhs < *this); }

    inline std::string toString() const {
        std::ostringstream os;
        os << "Rect{left: " << left << ", top: " << top << ", right: " << right
           << ", bottom: " << bottom << "}";
        return os.str();
    }
};

}  // namespace cwb
}  // namespace hardware
}  // namespace zarel
}  // namespace vendor
}  // namespace aidl
