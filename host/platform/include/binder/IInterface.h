// Host stand-in for <binder/IInterface.h>: IInterface, BnInterface<I> and interface_cast<I>.
#pragma once

#include <binder/Binder.h>
#include <binder/IBinder.h>

namespace android {

class IInterface : public virtual RefBase {
  public:
    IInterface() = default;
    static sp<IBinder> asBinder(const IInterface* iface);
    static sp<IBinder> asBinder(const sp<IInterface>& iface);

  protected:
    ~IInterface() override = default;
    virtual IBinder* onAsBinder() = 0;
};

// Turns a binder into an interface pointer; null when the binder is null or implements another
// interface.
template <typename INTERFACE>
inline sp<INTERFACE> interface_cast(const sp<IBinder>& obj) {
    return INTERFACE::asInterface(obj);
}

template <typename INTERFACE>
class BnInterface : public INTERFACE, public BBinder {
  public:
    sp<IInterface> queryLocalInterface(const String16& descriptor) override {
        if (descriptor == INTERFACE::descriptor)
            return sp<IInterface>(static_cast<INTERFACE*>(this));
        return nullptr;
    }
    const String16& getInterfaceDescriptor() const override { return INTERFACE::descriptor; }

  protected:
    ~BnInterface() override = default;
    IBinder* onAsBinder() override { return this; }
};

}  // namespace android
