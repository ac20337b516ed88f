// The qservice interface identity; the simulated device provides the implementation.
#include <IQService.h>

namespace qService {

const android::String16 IQService::descriptor("android.display.IQService");

android::sp<IQService> IQService::asInterface(const android::sp<android::IBinder>& binder) {
    if (binder == nullptr) return nullptr;
    android::sp<android::IInterface> iface = binder->queryLocalInterface(descriptor);
    return static_cast<IQService*>(iface.get());
}

}  // namespace qService
