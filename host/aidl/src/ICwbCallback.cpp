// Host equivalent of the NDK code generated from vendor/zarel/hardware/cwb/ICwbCallback.aidl.
#include <aidl/vendor/zarel/hardware/cwb/BnCwbCallback.h>
#include <aidl/vendor/zarel/hardware/cwb/ICwbCallback.h>

#include <memory>
#include <string>

namespace aidl {
namespace vendor {
namespace zarel {
namespace hardware {
namespace cwb {

const char* ICwbCallback::descriptor = "vendor.zarel.hardware.cwb.ICwbCallback";

ICwbCallback::ICwbCallback() {}
ICwbCallback::~ICwbCallback() {}

std::shared_ptr<ICwbCallback> ICwbCallback::fromBinder(const ::ndk::SpAIBinder& binder) {
    AIBinder* b = binder.get();
    // A binder made for another interface must not be handed out as this one, as
    // AIBinder_associateClass refuses it on the device.
    if (b == nullptr || b->descriptor != descriptor) return nullptr;
    return std::dynamic_pointer_cast<ICwbCallback>(b->local);
}

BnCwbCallback::BnCwbCallback() {}
BnCwbCallback::~BnCwbCallback() {}

::ndk::ScopedAStatus BnCwbCallback::getInterfaceVersion(int32_t* _aidl_return) {
    *_aidl_return = ICwbCallback::version;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus BnCwbCallback::getInterfaceHash(std::string* _aidl_return) {
    *_aidl_return = ICwbCallback::hash;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::SpAIBinder BnCwbCallback::createBinder() {
    AIBinder* binder = new AIBinder(ref<::ndk::ICInterface>(), descriptor);
    AIBinder_incStrong(binder);
    return ::ndk::SpAIBinder(binder);
}

}  // namespace cwb
}  // namespace hardware
}  // namespace zarel
}  // namespace vendor
}  // namespace aidl
