// Host equivalent of the NDK code generated from vendor/zarel/hardware/cwb/Rgb.aidl.
#pragma once

#include <cstdint>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

namespace aidl {
namespace vendor {
namespace zarel {
namespace hardware {
namespace cwb {

struct Rgb {
    static const char* descriptor;

    int32_t r = 0;
    int32_t g = 0;
    int32_t b = 0;
    std::vector<int32_t> extra;

    inline bool operator==(const Rgb& rhs) const {
        return std::tie(r, g, b, extra) == std::tie(rhs.r, rhs.g, rhs.b, rhs.extra);
    }
    inline bool operator<(const Rgb& rhs) const {
        return std::tie(r, g, b, extra) < std::tie(rhs.r, rhs.g, rhs.b, rhs.extra);
    }
    inline bool operator!=(const Rgb& rhs) const { return !(*this == rhs); }
    inline bool operator>(const Rgb& rhs) const { return rhs < *this; }
    inline bool operator>=(const Rgb& rhs) const { return !(*this < rhs); }
    inline bool operator<=(const Rgb& rhs) const { return !(rhs < *this); }

    inline std::string toString() const {
        std::ostringstream os;
        os << "Rgb{r: " << r << ", g: " << g << ", b: " << b << ", extra: [";
        for (size_t i = 0; i < extra.size(); ++i) {
            os << (i == 0 ? "" : ", ") << extra[i];
        }
        os << "]}";
        return os.str();
    }
};

}  // namespace cwb
}  // namespace hardware
}  // namespace zarel
}  // namespace vendor
}  // namespace aidl
