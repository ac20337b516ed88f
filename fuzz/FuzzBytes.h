// Reads a fuzzer input front to back; past its end every read gives zeros, so the first entry
// of every choice table is the usual case.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace cwbfuzz {

class FuzzBytes {
  public:
    FuzzBytes(const uint8_t* data, size_t size) : mData(data), mSize(size) {}

    bool empty() const { return mPos >= mSize; }
    uint8_t u8() { return mPos < mSize ? mData[mPos++] : 0; }
    bool flag() { return (u8() & 1) != 0; }
    int32_t i32() {
        uint32_t v = 0;
        for (int i = 0; i < 4; ++i) v = (v << 8) | u8();
        return static_cast<int32_t>(v);
    }
    // One entry of a table.
    template <typename T, size_t N>
    const T& pick(const T (&table)[N]) {
        return table[u8() % N];
    }
    // Up to max bytes, its length first.
    std::string text(size_t max) {
        const size_t n = u8() % (max + 1);
        std::string out;
        for (size_t i = 0; i < n && !empty(); ++i) out.push_back(static_cast<char>(u8()));
        return out;
    }
    // Everything left.
    std::string rest() {
        std::string out(reinterpret_cast<const char*>(mData) + mPos, empty() ? 0 : mSize - mPos);
        mPos = mSize;
        return out;
    }

  private:
    const uint8_t* mData;
    size_t mSize;
    size_t mPos = 0;
};

}  // namespace cwbfuzz
