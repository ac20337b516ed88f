/*
 * This file is auto-generated.  DO NOT MODIFY.
 * Using: out/host/linux-x86/bin/aidl --lang=ndk --structured --stability vintf --min_sdk_version current --version 2 --hash 66cb995013d438e57677eaddc53511c45fda14dd -I interface/aidl_api/vendor.zarel.hardware.cwb/2 -h host/aidl/include -o host/aidl/src interface/aidl_api/vendor.zarel.hardware.cwb/2/vendor/zarel/hardware/cwb/Histogram.aidl
 */
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>
#include <android/binder_interface_utils.h>
#include <android/binder_parcelable_utils.h>
#include <android/binder_to_string.h>
#ifdef BINDER_STABILITY_SUPPORT
#include <android/binder_stability.h>
#endif  // BINDER_STABILITY_SUPPORT

namespace aidl {
namespace vendor {
namespace zarel {
namespace hardware {
namespace cwb {
class Histogram {
public:
  typedef std::false_type fixed_size;
  static const char* descriptor;

  std::array<int32_t, 768> counts = {{}};

  binder_status_t readFromParcel(const AParcel* parcel);
  binder_status_t writeToParcel(AParcel* parcel) const;

  inline bool operator==(const Histogram& _rhs) const {
    return std::tie(counts) == std::tie(_rhs.counts);
  }
  inline bool operator<(const Histogram& _rhs) const {
    return std::tie(counts) < std::tie(_rhs.counts);
  }
  inline bool operator!=(const Histogram& _rhs) const {
    return !(*this == _rhs);
  }
  inline bool operator>(const Histogram& _rhs) const {
    return _rhs < *this;
  }
  inline bool operator>=(const Histogram& _rhs) const {
    return !(*this < _rhs);
  }
  inline bool operator<=(const Histogram& _rhs) const {
    return !(_rhs < *this);
  }

  static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
  inline std::string toString() const {
    std::ostringstream _aidl_os;
    _aidl_os << "Histogram{";
    _aidl_os << "counts: " << ::android::internal::ToString(counts);
    _aidl_os << "}";
    return _aidl_os.str();
  }
};
}  // namespace cwb
}  // namespace hardware
}  // namespace zarel
}  // namespace vendor
}  // namespace aidl
