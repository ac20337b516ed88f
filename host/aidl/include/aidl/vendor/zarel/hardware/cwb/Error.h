/*
 * This file is auto-generated.  DO NOT MODIFY.
 * Using: out/host/linux-x86/bin/aidl --lang=ndk --structured --stability vintf --min_sdk_version current --version 2 --hash 66cb995013d438e57677eaddc53511c45fda14dd -I interface/aidl_api/vendor.zarel.hardware.cwb/2 -h host/aidl/include -o host/aidl/src interface/aidl_api/vendor.zarel.hardware.cwb/2/vendor/zarel/hardware/cwb/Error.aidl
 */
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>
#include <android/binder_enums.h>
#ifdef BINDER_STABILITY_SUPPORT
#include <android/binder_stability.h>
#endif  // BINDER_STABILITY_SUPPORT

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

}  // namespace cwb
}  // namespace hardware
}  // namespace zarel
}  // namespace vendor
}  // namespace aidl
namespace aidl {
namespace vendor {
namespace zarel {
namespace hardware {
namespace cwb {
[[nodiscard]] static inline std::string toString(Error val) {
  switch(val) {
  case Error::NONE:
    return "NONE";
  case Error::FAILED:
    return "FAILED";
  case Error::INVALID_ARGUMENT:
    return "INVALID_ARGUMENT";
  case Error::SCREEN_OFF:
    return "SCREEN_OFF";
  default:
    return std::to_string(static_cast<int32_t>(val));
  }
}
}  // namespace cwb
}  // namespace hardware
}  // namespace zarel
}  // namespace vendor
}  // namespace aidl
namespace ndk {
namespace internal {
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wc++17-extensions"
template <>
constexpr inline std::array<aidl::vendor::zarel::hardware::cwb::Error, 4> enum_values<aidl::vendor::zarel::hardware::cwb::Error> = {
  aidl::vendor::zarel::hardware::cwb::Error::NONE,
  aidl::vendor::zarel::hardware::cwb::Error::FAILED,
  aidl::vendor::zarel::hardware::cwb::Error::INVALID_ARGUMENT,
  aidl::vendor::zarel::hardware::cwb::Error::SCREEN_OFF,
};
#pragma clang diagnostic pop
}  // namespace internal
}  // namespace ndk
