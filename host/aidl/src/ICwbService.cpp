// Host equivalent of the NDK code generated from vendor/zarel/hardware/cwb/ICwbService.aidl.
#include <aidl/vendor/zarel/hardware/cwb/BnCwbService.h>
#include <aidl/vendor/zarel/hardware/cwb/ICwbService.h>

#include <memory>
#include <string>

namespace aidl {
namespace vendor {
namespace zarel {
namespace hardware {
namespace cwb {

const char* ICwbService::descriptor = "vendor.zarel.hardware.cwb.ICwbService";

ICwbService::ICwbService() {}
ICwbService::~ICwbService() {}

std::shared_ptr<ICwbService> ICwbService::fromBinder(const ::ndk::SpAIBinder& binder) {
    AIBinder* b = binder.get();
    // A binder made for another interface must not be handed out as this one, as
    // AIBinder_associateClass refuses it on the device.
    if (b == nullptr || b->descriptor != descriptor) return nullptr;
    return std::dynamic_pointer_cast<ICwbService>(b->local);
}

BnCwbService::BnCwbService() {}
BnCwbService::~BnCwbService() {}

::ndk::ScopedAStatus BnCwbService::getInterfaceVersion(int32_t* _aidl_return) {
    *_aidl_return = ICwbService::version;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus BnCwbService::getInterfaceHash(std::string* _aidl_return) {
    *_aidl_return = ICwbService::hash;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::SpAIBinder BnCwbService::createBinder() {
    AIBinder* binder = new AIBinder(ref<::ndk::ICInterface>(), descriptor);
    AIBinder_incStrong(binder);
    return ::ndk::SpAIBinder(binder);
}

}  // namespace cwb
}  // namespace hardware
}  // namespace zarel
}  // namespace vendor
}  // namespace aidl
