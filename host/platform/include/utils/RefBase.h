// Host stand-in for <utils/RefBase.h>: intrusive strong reference counting for libbinder objects.
// Weak references are not provided; nothing here uses them.
#pragma once

#include <utils/StrongPointer.h>

#include <atomic>
#include <cstdint>

namespace android {

class RefBase {
  public:
    void incStrong(const void* id) const;
    // Drops one reference; the last one calls onLastStrongRef() and deletes the object.
    void decStrong(const void* id) const;
    // Keeps the object alive without calling onFirstRef(), as libutils does.
    void forceIncStrong(const void* id) const;
    // Before the first incStrong() this is the large initial value libutils uses, not 0.
    int32_t getStrongCount() const;

  protected:
    RefBase() = default;
    // Aborts if strong references are still held: the object is being destroyed under them.
    virtual ~RefBase();

    virtual void onFirstRef() {}
    virtual void onLastStrongRef(const void* /*id*/) {}

  private:
    RefBase(const RefBase&) = delete;
    RefBase& operator=(const RefBase&) = delete;

    mutable std::atomic<int32_t> mStrong{kInitialStrongValue};

    static constexpr int32_t kInitialStrongValue = 1 << 28;
};

}  // namespace android
