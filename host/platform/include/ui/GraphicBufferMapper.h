// Host stand-in for <ui/GraphicBufferMapper.h>: CPU access to buffers from GraphicBufferAllocator.
#pragma once

#include <android-base/unique_fd.h>
#include <cutils/native_handle.h>
#include <ui/GraphicTypes.h>
#include <ui/PixelFormat.h>
#include <ui/Rect.h>
#include <utils/Errors.h>

#include <cstdint>

namespace android {

class GraphicBufferMapper {
  public:
    static GraphicBufferMapper& get();

    // Maps the buffer read/write (once; later locks return the same address). BAD_VALUE for an
    // unknown handle, a null vaddr, usage without CPU read or write bits, or bounds outside the
    // buffer. On failure *vaddr is null.
    status_t lock(buffer_handle_t handle, uint32_t usage, const Rect& bounds, void** vaddr);
    // BAD_VALUE for an unknown or unlocked handle. The mapping stays until the buffer is freed.
    // There is no release fence on the host: *outFence, when given, is reset to none.
    status_t unlock(buffer_handle_t handle, base::unique_fd* outFence = nullptr);

    status_t getPixelFormatRequested(buffer_handle_t handle, ui::PixelFormat* outFormat);
    status_t getAllocationSize(buffer_handle_t handle, uint64_t* outSize);
    // The requested width, not the row pitch.
    status_t getWidth(buffer_handle_t handle, uint64_t* outWidth);
    status_t getHeight(buffer_handle_t handle, uint64_t* outHeight);

  private:
    GraphicBufferMapper() = default;
};

}  // namespace android
