#pragma once

#include <aidl/vendor/zarel/hardware/cwb/Rect.h>

#include <cstddef>
#include <memory>

namespace aidl::vendor::zarel::hardware::cwb::implementation {

// Results computed from the current frame, by checked rectangle. Holds at most Capacity entries
// in storage allocated once with the cache; past the cap the oldest entry gives way, so a client
// walking new rectangles over a static screen cannot grow the composer. Lookups and inserts
// allocate nothing. Not thread-safe: the owner's request lock guards it.
template <typename Value, size_t Capacity>
class ResultCache {
    static_assert(Capacity > 0, "a cache holds at least one entry");

  public:
    static constexpr size_t kCapacity = Capacity;

    ResultCache() : mEntries(new Entry[Capacity]) {}

    // The value stored for rect, or null.
    const Value* find(const Rect& rect) const {
        for (size_t i = 0; i < mSize; ++i) {
            if (mEntries[i].rect == rect) return &mEntries[i].value;
        }
        return nullptr;
    }

    // Stores value for rect, replacing the one it had; a new rectangle in a full cache takes the
    // slot of the oldest.
    void put(const Rect& rect, const Value& value) {
        for (size_t i = 0; i < mSize; ++i) {
            if (mEntries[i].rect == rect) {
                mEntries[i].value = value;
                return;
            }
        }
        Entry& slot = mEntries[mNext];
        slot.rect = rect;
        slot.value = value;
        mNext = (mNext + 1) % Capacity;
        if (mSize < Capacity) ++mSize;
    }

    void clear() {
        mSize = 0;
        mNext = 0;
    }

    size_t size() const { return mSize; }

  private:
    struct Entry {
        Rect rect;
        Value value;
    };
    std::unique_ptr<Entry[]> mEntries;
    size_t mSize = 0;
    // Insertion slot: after the cache first fills, always the oldest entry.
    size_t mNext = 0;
};

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
