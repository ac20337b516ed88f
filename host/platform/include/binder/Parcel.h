// Host stand-in for <binder/Parcel.h>: a flat little-endian buffer of 32/64-bit values with one
// read/write position, as in libbinder (writes go at the position and grow the data).
#pragma once

#include <utils/Errors.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace android {

class Parcel {
  public:
    Parcel() = default;
    Parcel(const Parcel&) = delete;
    Parcel& operator=(const Parcel&) = delete;

    const uint8_t* data() const { return mData.data(); }
    size_t dataSize() const { return mData.size(); }
    size_t dataAvail() const { return mPosition < mData.size() ? mData.size() - mPosition : 0; }
    size_t dataPosition() const { return mPosition; }
    // Reads and writes continue from pos; a position past the end makes reads fail.
    void setDataPosition(size_t pos) const { mPosition = pos; }
    void freeData();

    status_t writeInt32(int32_t value);
    status_t writeUint32(uint32_t value);
    status_t writeInt64(int64_t value);
    status_t writeUint64(uint64_t value);
    status_t writeFloat(float value);
    status_t writeBool(bool value);

    // NOT_ENOUGH_DATA, leaving *out and the position alone, when the value runs past the end.
    status_t readInt32(int32_t* out) const;
    status_t readUint32(uint32_t* out) const;
    status_t readInt64(int64_t* out) const;
    status_t readUint64(uint64_t* out) const;
    status_t readFloat(float* out) const;
    status_t readBool(bool* out) const;
    // 0 past the end.
    int32_t readInt32() const;
    uint32_t readUint32() const;
    int64_t readInt64() const;
    uint64_t readUint64() const;
    float readFloat() const;
    bool readBool() const;

    // Host convenience: the whole data as 32-bit words, ignoring the position.
    std::vector<int32_t> host_ints() const;

  private:
    status_t write(const void* value, size_t size);
    status_t read(void* out, size_t size) const;

    std::vector<uint8_t> mData;
    mutable size_t mPosition = 0;
};

}  // namespace android
