#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>

namespace aidl::vendor::zarel::hardware::cwb::implementation {

// A client's shared-memory file mapped into the service. Keeps the mapping with its length, the
// file's identity (to recognise a repeated initialisation), the descriptor number it came with (for
// the log lines) and a duplicate of the descriptor, so that the file's size can be checked again
// before a copy and a file the client can still shrink is written through the descriptor. A store
// into the mapping of a page the file no longer backs is a SIGBUS in the composer.
class SharedMemoryRegion {
  public:
    SharedMemoryRegion() = default;
    ~SharedMemoryRegion();
    SharedMemoryRegion(const SharedMemoryRegion&) = delete;
    SharedMemoryRegion& operator=(const SharedMemoryRegion&) = delete;

    // Maps `size` bytes of the client's file `fd`. The file is sealed against shrinking where the
    // kernel allows it, and must hold `size` bytes. Returns 0 or an errno value (EINVAL for a
    // file smaller than `size`); on failure nothing is mapped.
    int map(int fd, size_t size);
    // Unmaps and forgets the region; the munmap result (0 when nothing was mapped).
    int unmap();

    bool mapped() const { return mAddress != nullptr; }
    uint8_t* address() const { return static_cast<uint8_t*>(mAddress); }
    size_t length() const { return mLength; }
    // The descriptor number the region was mapped from, -1 when nothing is mapped.
    int fd() const { return mFd; }
    // Whether fd refers to the mapped file (same device and inode), whatever its number.
    bool maps(int fd) const;
    bool sealed() const { return mSealed; }
    // Bytes from the start of the mapping that the file still backs: the whole length when the
    // file is sealed, otherwise what its current size covers (0 when it cannot be told).
    size_t backedLength() const;

    // Write `bytes` at `offset`, or `rows` rows of `rowBytes`, `srcPitch` apart in `src`, packed
    // from `offset`. A file that can still shrink (unsealed, not ashmem) is written with pwrite,
    // which a concurrent shrink cannot turn into a fault; any other through the mapping. False,
    // with errno set, when the range lies outside the mapping or the write failed.
    bool write(size_t offset, const void* data, size_t bytes);
    bool writeRows(size_t offset, const uint8_t* src, size_t srcPitch, size_t rowBytes,
                   size_t rows);

  private:
    void* mAddress = nullptr;
    size_t mLength = 0;
    int mFd = -1;
    int mOwnedFd = -1;
    dev_t mDevice = 0;
    ino_t mInode = 0;
    bool mSealed = false;
    bool mShrinkable = false;  // an unsealed regular file: written through mOwnedFd
};

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
