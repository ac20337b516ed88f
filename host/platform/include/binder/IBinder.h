// Host stand-in for <binder/IBinder.h>. Every binder lives in this process, so a binder is always
// local and a call is a direct virtual call on the object behind it.
#pragma once

#include <utils/Errors.h>
#include <utils/RefBase.h>
#include <utils/String16.h>

namespace android {

class BBinder;
class IInterface;

class IBinder : public virtual RefBase {
  public:
    // The interface object behind this binder if it implements descriptor, else null.
    virtual sp<IInterface> queryLocalInterface(const String16& descriptor);
    virtual const String16& getInterfaceDescriptor() const = 0;
    virtual bool isBinderAlive() const = 0;
    virtual status_t pingBinder() = 0;
    virtual BBinder* localBinder() { return nullptr; }

  protected:
    IBinder() = default;
    ~IBinder() override = default;
};

}  // namespace android
