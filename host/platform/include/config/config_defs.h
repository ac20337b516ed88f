// Host stand-in for the chip vendor's legacy display-config definitions, reduced to the callback
// type the library implements and the types its methods take.
#pragma once

#include <cutils/native_handle.h>

#include <cstdint>

namespace DisplayConfig {

enum class CameraSmoothOp : int {
    kOff,
    kOn,
};

class ConfigCallback {
  public:
    virtual void NotifyCWBBufferDone(int /* error */, const native_handle_t* /* buffer */) {}
    virtual void NotifyQsyncChange(bool /* qsync_enabled */, int /* refresh_rate */,
                                   int /* qsync_refresh_rate */) {}
    virtual void NotifyIdleStatus(bool /* is_idle */) {}
    virtual void NotifyCameraSmoothInfo(CameraSmoothOp /* op */, uint32_t /* fps */) {}

  protected:
    virtual ~ConfigCallback() {}
};

}  // namespace DisplayConfig
