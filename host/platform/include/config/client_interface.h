// Host stand-in for the chip vendor's legacy display-config client header, reduced to the
// callback type the library implements.
#pragma once

#include <cutils/native_handle.h>

#include <cstdint>

namespace DisplayConfig {

class ConfigCallback {
  public:
    virtual void NotifyCWBBufferDone(int32_t error, const native_handle_t* buffer) {}
    virtual void NotifyQsyncChange(bool qsync_enabled, int32_t refresh_rate,
                                   int32_t qsync_refresh_rate) {}
    virtual void NotifyIdleStatus(bool is_idle) {}
    virtual void NotifyCameraSmoothInfo(int32_t op, int32_t fps) {}

  protected:
    virtual ~ConfigCallback() {}
};

}  // namespace DisplayConfig
