// Host equivalent of the NDK code generated from vendor/zarel/hardware/cwb/Histogram.aidl.
#include <aidl/vendor/zarel/hardware/cwb/Histogram.h>

namespace aidl {
namespace vendor {
namespace zarel {
namespace hardware {
namespace cwb {

const char* Histogram::descriptor = "vendor.zarel.hardware.cwb.Histogram";

}  // namespace cwb
}  // namespace hardware
}  // namespace zarel
}  // namespace vendor
}  // namespace aidl
