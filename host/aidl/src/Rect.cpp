// Host equivalent of the NDK code generated from vendor/zarel/hardware/cwb/Rect.aidl.
#include <aidl/vendor/zarel/hardware/cwb/Rect.h>

namespace aidl {
namespace vendor {
namespace zarel {
namespace hardware {
namespace cwb {

const char* Rect::descriptor = "vendor.zarel.hardware.cwb.Rect";

}  // namespace cwb
}  // namespace hardware
}  // namespace zarel
}  // namespace vendor
}  // namespace aidl
