// Host stand-in for the display HAL's <IQService.h>: the legacy "display.qservice" binder
// interface. The simulated device implements and registers it.
#pragma once

#include <binder/IBinder.h>
#include <binder/IInterface.h>
#include <binder/Parcel.h>
#include <utils/Errors.h>
#include <utils/String16.h>

#include <cstdint>

namespace qService {

class IQService : public android::IInterface {
  public:
    static const android::String16 descriptor;  // "android.display.IQService"

    // The service behind binder; null for a null binder or one of another interface.
    static android::sp<IQService> asInterface(const android::sp<android::IBinder>& binder);

    virtual android::status_t dispatch(uint32_t command, const android::Parcel* inParcel,
                                       android::Parcel* outParcel) = 0;

  protected:
    ~IQService() override = default;
};

class BnQService : public android::BnInterface<IQService> {
  protected:
    ~BnQService() override = default;
};

}  // namespace qService
