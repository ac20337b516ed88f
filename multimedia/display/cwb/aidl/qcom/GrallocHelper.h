#pragma once

#include <cutils/native_handle.h>
#include <utils/RefBase.h>

#include <cstdint>

// Obtains, releases and dumps the graphics buffers that the display's writeback fills.
class GrallocHelper : public android::RefBase {
  public:
    GrallocHelper();
    ~GrallocHelper() override;

    // Allocates one RGB_888 buffer into *handle; on failure *handle is left null.
    void Allocate(uint32_t width, uint32_t height, uint32_t layerCount, uint64_t usage,
                  native_handle const** handle);
    // Releases *handle; the caller empties its slot.
    void FreeBuffer(native_handle const** handle);
    // Writes size bytes of data to a new raw file in the frame dump folder.
    int DumpOutputBuffer(int size, void* data, int reserved, int width, int height, long timestamp);
};

// Wall-clock time in milliseconds since the Unix epoch.
long getCurrentTime();
