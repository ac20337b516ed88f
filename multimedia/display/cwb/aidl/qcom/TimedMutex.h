#pragma once

#include <android-base/thread_annotations.h>

#include <chrono>
#include <mutex>

namespace aidl::vendor::zarel::hardware::cwb::implementation {

// std::timed_mutex carries no capability annotation in libc++, so the request lock is wrapped to
// let -Wthread-safety check what it guards.
class CAPABILITY("mutex") TimedMutex {
  public:
    void lock() ACQUIRE() { mMutex.lock(); }
    void unlock() RELEASE() { mMutex.unlock(); }
    template <class Rep, class Period>
    bool try_lock_for(const std::chrono::duration<Rep, Period>& timeout) TRY_ACQUIRE(true) {
        return mMutex.try_lock_for(timeout);
    }

  private:
    std::timed_mutex mMutex;
};

// Scoped holder for a TimedMutex that was already acquired with try_lock_for().
class SCOPED_CAPABILITY AdoptedLock {
  public:
    explicit AdoptedLock(TimedMutex& mutex) REQUIRES(mutex) : mMutex(mutex) {}
    ~AdoptedLock() RELEASE() { mMutex.unlock(); }
    AdoptedLock(const AdoptedLock&) = delete;
    AdoptedLock& operator=(const AdoptedLock&) = delete;

  private:
    TimedMutex& mMutex;
};

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
