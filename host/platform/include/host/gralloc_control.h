// Host-only controls of the gralloc stand-in (GraphicBufferAllocator / GraphicBufferMapper).
//
// A buffer is a memfd of pitch * height * bytesPerPixel bytes, rows pitch pixels apart. Its
// native handle carries that fd and the ints below, so that whoever gets only a duplicate of the
// fd and the ints (a simulated vendor receiving an AIDL NativeHandle) can map and fill it.
#pragma once

#include <utils/Errors.h>

#include <cstddef>
#include <cstdint>

namespace host::gralloc {

constexpr int kNumFds = 1;
constexpr int kIntWidth = 0;     // requested width in pixels
constexpr int kIntHeight = 1;    // height in rows
constexpr int kIntPitch = 2;     // row pitch in pixels (width rounded up to the row alignment)
constexpr int kIntFormat = 3;    // HAL_PIXEL_FORMAT_* of the pixel data
constexpr int kIntSizeLow = 4;   // allocation size in bytes, low 32 bits
constexpr int kIntSizeHigh = 5;  // allocation size in bytes, high 32 bits
constexpr int kNumInts = 6;

constexpr uint32_t kDefaultRowAlignment = 64;  // pixels

// Back to defaults: counters to 0, injections off, default row alignment. Live buffers stay.
void reset();
// Rows of later allocations are padded to a multiple of this many pixels (0 counts as 1).
void setRowAlignment(uint32_t pixels);
// The next count allocations fail with status and write nothing.
void failAllocations(int count, android::status_t status = android::NO_MEMORY);
// The next count allocations return NO_MEMORY but still write a live handle into the slot, as
// some gralloc versions do; the caller has to free it.
void failAllocationsLeavingHandle(int count);
// The next count locks fail with status and give no address.
void failLocks(int count, android::status_t status = android::NO_MEMORY);
// Later allocations report this format from getPixelFormatRequested() instead of the requested
// one (the pixel data keeps the requested layout); -1 turns it off.
void reportFormat(int32_t format);

// Buffers created (including ones left behind by a failing allocation) and freed since reset().
size_t allocationCount();
size_t freeCount();
// Buffers allocated and not yet freed, regardless of reset().
size_t liveBuffers();

}  // namespace host::gralloc
