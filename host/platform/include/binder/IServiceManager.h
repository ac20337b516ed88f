// Host stand-in for <binder/IServiceManager.h>: the libbinder service manager, backed by one
// in-process map (separate from the NDK registry, like the two manager APIs on device).
#pragma once

#include <binder/IBinder.h>
#include <binder/IInterface.h>
#include <utils/Errors.h>
#include <utils/String16.h>

#include <vector>

namespace android {

class IServiceManager : public virtual RefBase {
  public:
    enum {
        DUMP_FLAG_PRIORITY_CRITICAL = 1 << 0,
        DUMP_FLAG_PRIORITY_HIGH = 1 << 1,
        DUMP_FLAG_PRIORITY_NORMAL = 1 << 2,
        DUMP_FLAG_PRIORITY_DEFAULT = 1 << 3,
        DUMP_FLAG_PRIORITY_ALL = DUMP_FLAG_PRIORITY_CRITICAL | DUMP_FLAG_PRIORITY_HIGH |
                                 DUMP_FLAG_PRIORITY_NORMAL | DUMP_FLAG_PRIORITY_DEFAULT,
        DUMP_FLAG_PROTO = 1 << 4,
    };

    IServiceManager() = default;

    // Never waits: the registered binder or null.
    virtual sp<IBinder> checkService(const String16& name) const;
    // On device this waits a few seconds for a missing service; every service of the simulated
    // device is registered before the library starts, so here it answers at once like
    // checkService().
    virtual sp<IBinder> getService(const String16& name) const;
    // BAD_VALUE for a null binder or an empty name; a second add under a name replaces the first.
    virtual status_t addService(const String16& name, const sp<IBinder>& service,
                                bool allowIsolated = false,
                                int dumpsysPriority = DUMP_FLAG_PRIORITY_DEFAULT);
    virtual std::vector<String16> listServices(int dumpsysPriority = DUMP_FLAG_PRIORITY_ALL);

  protected:
    ~IServiceManager() override = default;
};

sp<IServiceManager> defaultServiceManager();

}  // namespace android
