// Host equivalent of the NDK code generated from vendor/zarel/hardware/cwb/Histogram.aidl.
#pragma once

#include <array>
#include <cstdint>
#include <sstream>
#include <string>

namespace aidl {
namespace vendor {
namespace zarel {
namespace hardware {
namespace cwb {

struct Histogram {
    static const char* descriptor;

    // Level-major: counts[3 * level + channel], channel 0 red, 1 green, 2 blue.
    std::array<int32_t, 768> counts = {};

    inline bool operator==(const Histogram& rhs) const { return counts == rhs.counts; }
    inline bool operator<(const Histogram& rhs) const { return counts < rhs.counts; }
    inline bool operator!=(const Histogram& rhs) const { return !(*this == rhs); }
    inline bool operator>(const Histogram& rhs) const { return rhs < *this; }
    inline bool operator>=(const Histogram& rhs) const { return !(*this < rhs); }
    inline bool operator<=(const Histogram& rhs) const { return !(rhs < *this); }

    inline std::string toString() const {
        std::ostringstream os;
        os << "Histogram{counts: [";
        for (size_t i = 0; i < counts.size(); ++i) {
            os << (i == 0 ? "" : ", ") << counts[i];
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
