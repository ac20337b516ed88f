// A client's shared-memory file as the service maps it: sealed against shrinking where the
// kernel allows, sized before mapping and again before every copy otherwise, and then written
// through its descriptor.
#include "SharedMemoryRegion.h"

#include <cutils/ashmem.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "PixelKernels.h"

namespace aidl::vendor::zarel::hardware::cwb::implementation {

namespace {

// Size of the client's file: a memory file (memfd) by its length, an ashmem region by its
// declared size; -1 with ENODEV, as mmap reports, for anything else.
int64_t fileSize(int fd) {
    struct stat st {};
    if (fstat(fd, &st) != 0) return -1;
    if (S_ISREG(st.st_mode)) return static_cast<int64_t>(st.st_size);
    const int size = ashmem_get_size_region(fd);
    if (size < 0) {
        errno = ENODEV;
        return -1;
    }
    return size;
}

bool isRegularFile(int fd) {
    struct stat st {};
    return fstat(fd, &st) == 0 && S_ISREG(st.st_mode);
}

bool pwriteAll(int fd, const uint8_t* data, size_t bytes, size_t offset) {
    while (bytes > 0) {
        const ssize_t n = pwrite(fd, data, bytes, static_cast<off_t>(offset));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            if (n == 0) errno = EIO;
            return false;
        }
        data += n;
        bytes -= static_cast<size_t>(n);
        offset += static_cast<size_t>(n);
    }
    return true;
}

}  // namespace

SharedMemoryRegion::~SharedMemoryRegion() {
    unmap();
}

int SharedMemoryRegion::map(int fd, size_t size) {
    unmap();
    if (size == 0) return EINVAL;
    const int owned = fcntl(fd, F_DUPFD_CLOEXEC, 0);
    if (owned < 0) return errno;
    // Only shrinking is sealed: the client keeps writing and may still grow its file. A file
    // made without MFD_ALLOW_SEALING refuses the seal; it is then sized before every copy.
    bool sealed = fcntl(owned, F_ADD_SEALS, F_SEAL_SHRINK) == 0;
    if (!sealed) {
        const int seals = fcntl(owned, F_GET_SEALS);
        sealed = seals >= 0 && (seals & F_SEAL_SHRINK) != 0;
    }
    const int64_t available = fileSize(owned);
    if (available < 0 || static_cast<uint64_t>(available) < size) {
        const int error = available < 0 ? errno : EINVAL;
        close(owned);
        return error;
    }
    void* address = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, owned, 0);
    if (address == MAP_FAILED) {
        const int error = errno;
        close(owned);
        return error;
    }
    struct stat st {};
    if (fstat(owned, &st) != 0) {
        const int error = errno;
        munmap(address, size);
        close(owned);
        return error;
    }
    mAddress = address;
    mLength = size;
    mFd = fd;
    mDevice = st.st_dev;
    mInode = st.st_ino;
    mOwnedFd = owned;
    mSealed = sealed;
    // An ashmem region cannot be resized once mapped; a sealed file cannot shrink.
    mShrinkable = !sealed && isRegularFile(owned);
    return 0;
}

int SharedMemoryRegion::unmap() {
    int result = 0;
    if (mAddress != nullptr) result = munmap(mAddress, mLength);
    if (mOwnedFd >= 0) close(mOwnedFd);
    mAddress = nullptr;
    mLength = 0;
    mFd = -1;
    mOwnedFd = -1;
    mSealed = false;
    mShrinkable = false;
    return result;
}

bool SharedMemoryRegion::maps(int fd) const {
    struct stat st {};
    return mAddress != nullptr && fstat(fd, &st) == 0 && st.st_dev == mDevice &&
           st.st_ino == mInode;
}

size_t SharedMemoryRegion::backedLength() const {
    if (mAddress == nullptr) return 0;
    if (mSealed) return mLength;
    const int64_t available = fileSize(mOwnedFd);
    if (available < 0) return 0;
    return static_cast<uint64_t>(available) < mLength ? static_cast<size_t>(available) : mLength;
}

bool SharedMemoryRegion::write(size_t offset, const void* data, size_t bytes) {
    return writeRows(offset, static_cast<const uint8_t*>(data), bytes, bytes, 1);
}

bool SharedMemoryRegion::writeRows(size_t offset, const uint8_t* src, size_t srcPitch,
                                   size_t rowBytes, size_t rows) {
    if (mAddress == nullptr || offset > mLength ||
        (rowBytes != 0 && rows > (mLength - offset) / rowBytes)) {
        errno = EINVAL;
        return false;
    }
    if (!mShrinkable) {
        copyRows(address() + offset, rowBytes, src, srcPitch, rowBytes, rows);
        return true;
    }
    if (srcPitch == rowBytes) return pwriteAll(mOwnedFd, src, rows * rowBytes, offset);
    for (size_t y = 0; y < rows; ++y) {
        if (!pwriteAll(mOwnedFd, src + y * srcPitch, rowBytes, offset + y * rowBytes)) return false;
    }
    return true;
}

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
