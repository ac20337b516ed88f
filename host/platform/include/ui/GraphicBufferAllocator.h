// Host stand-in for <ui/GraphicBufferAllocator.h>: CPU-visible buffers backed by memfds.
// Buffer layout and fault injection: <host/gralloc_control.h>. Thread-safe: allocator and
// mapper share one locked buffer table.
#pragma once

#include <cutils/native_handle.h>
#include <ui/PixelFormat.h>
#include <utils/Errors.h>

#include <cstdint>
#include <string>

namespace android {

class GraphicBufferAllocator {
  public:
    static GraphicBufferAllocator& get();

    // On success writes the new handle to *handle and the row pitch in pixels to *stride (may be
    // null). On failure returns the error and leaves *handle as it was, unless a fault injection
    // says otherwise. A width or height of 0 gives a 1x1 buffer, as libui does.
    status_t allocate(uint32_t w, uint32_t h, PixelFormat format, uint32_t layerCount,
                      uint64_t usage, buffer_handle_t* handle, uint32_t* stride,
                      std::string requestorName);
    // Unmaps (even if still locked), closes and deletes; BAD_VALUE for an unknown handle.
    status_t free(buffer_handle_t handle);

  private:
    GraphicBufferAllocator() = default;
};

}  // namespace android
