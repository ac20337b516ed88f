// Host equivalent of the NDK code generated from vendor/zarel/hardware/cwb/Rgb.aidl.
#include <aidl/vendor/zarel/hardware/cwb/Rgb.h>

namespace aidl {
namespace vendor {
namespace zarel {
namespace hardware {
namespace cwb {

const char* Rgb::descriptor = "vendor.zarel.hardware.cwb.Rgb";

}  // namespace cwb
}  // namespace hardware
}  // namespace zarel
}  // namespace vendor
}  // namespace aidl
