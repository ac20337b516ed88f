// Host stand-in for <binder/Binder.h>: BBinder, the local side of a binder.
#pragma once

#include <binder/IBinder.h>

namespace android {

class BBinder : public IBinder {
  public:
    BBinder() = default;

    const String16& getInterfaceDescriptor() const override;
    bool isBinderAlive() const override { return true; }
    status_t pingBinder() override { return OK; }
    BBinder* localBinder() override { return this; }

  protected:
    ~BBinder() override = default;
};

}  // namespace android
