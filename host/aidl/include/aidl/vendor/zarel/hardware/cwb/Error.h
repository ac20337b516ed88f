// Host equivalent of the NDK code generated from vendor/zarel/hardware/cwb/Error.aidl.
#pragma once

#include <cstdint>
#include <string>

namespace aidl {
namespace vendor {
namespace zarel {
namespace hardware {
namespace cwb {

enum class Error : int32_t {
    NONE = 0,
    FAILED = 1,
    INVALID_ARGUMENT = 2,
    SCREEN_OFF = 3,
};

[[nodiscard]] static inline std::string toString(Error val) {
    switch (val) {
        case Error::NONE:
            return "NONE";
        case Error::FAILED:
            return "FAILED";
        case Error::INVALID_ARGUMENT:
            return "INVALID_ARGUMENT";
        case Error::SCREEN_OFF:
            return "SCREEN_OFF";
        default:
            // Values outside the enum travel too (getRGBValue packs state into the high bits).
            return std::to_string(static_cast<int32_t>(val));
    }
}

}  // namespace cwb
}  // namespace hardware
}  // namespace zarel
}  // namespace vendor
}  // namespace aidl
