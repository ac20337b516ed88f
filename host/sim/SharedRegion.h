// The client's shared-memory region: a memfd that the simulated client owns and maps itself, so
// that it can read back what the service copied into it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace cwbsim {

class SharedRegion {
  public:
    SharedRegion() = default;
    ~SharedRegion();
    SharedRegion(const SharedRegion&) = delete;
    SharedRegion& operator=(const SharedRegion&) = delete;

    // A fresh region of size bytes (0 is allowed: nothing to map). False with a reason.
    bool create(size_t size, std::string* error);
    void reset();

    int fd() const { return mFd; }
    size_t size() const { return mSize; }
    // False when [offset, offset + length) is not inside the region.
    bool read(size_t offset, size_t length, std::vector<uint8_t>* out) const;

  private:
    int mFd = -1;
    size_t mSize = 0;
    uint8_t* mBase = nullptr;
};

}  // namespace cwbsim
