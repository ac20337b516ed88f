#include "SharedRegion.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace cwbsim {

SharedRegion::~SharedRegion() {
    reset();
}

bool SharedRegion::create(size_t size, std::string* error) {
    reset();
    mFd = memfd_create("cwb-sim-client-region", MFD_CLOEXEC);
    if (mFd < 0) {
        *error = std::string("memfd_create: ") + strerror(errno);
        return false;
    }
    if (ftruncate(mFd, static_cast<off_t>(size)) != 0) {
        *error = std::string("ftruncate: ") + strerror(errno);
        reset();
        return false;
    }
    mSize = size;
    if (size > 0) {
        void* base = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, mFd, 0);
        if (base == MAP_FAILED) {
            *error = std::string("mmap: ") + strerror(errno);
            reset();
            return false;
        }
        mBase = static_cast<uint8_t*>(base);
    }
    return true;
}

void SharedRegion::reset() {
    if (mBase != nullptr) munmap(mBase, mSize);
    if (mFd >= 0) close(mFd);
    mBase = nullptr;
    mFd = -1;
    mSize = 0;
}

bool SharedRegion::read(size_t offset, size_t length, std::vector<uint8_t>* out) const {
    if (mBase == nullptr || offset > mSize || length > mSize - offset) return false;
    out->assign(mBase + offset, mBase + offset + length);
    return true;
}

}  // namespace cwbsim
