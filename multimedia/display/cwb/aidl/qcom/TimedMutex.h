#pragma once

#include <android-base/thread_annotations.h>

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace aidl::vendor::zarel::hardware::cwb::implementation {

// A timed mutex that -Wthread-safety can check (std::timed_mutex carries no capability
// annotation in libc++). It is built on a mutex and a condition variable rather than on
// std::timed_mutex so that every sanitizer sees its acquisitions (pthread_mutex_clocklock, used
// by try_lock_for, is not intercepted everywhere).
class CAPABILITY("mutex") TimedMutex {
  public:
    void lock() ACQUIRE() {
        std::unique_lock<std::mutex> guard(mState);
        mFree.wait(guard, [this] { return !mLocked; });
        mLocked = true;
    }

    void unlock() RELEASE() {
        {
            std::lock_guard<std::mutex> guard(mState);
            mLocked = false;
        }
        mFree.notify_one();
    }

    template <class Rep, class Period>
    bool try_lock_for(const std::chrono::duration<Rep, Period>& timeout) TRY_ACQUIRE(true) {
        std::unique_lock<std::mutex> guard(mState);
        if (!mFree.wait_for(guard, timeout, [this] { return !mLocked; })) return false;
        mLocked = true;
        return true;
    }

  private:
    std::mutex mState;
    std::condition_variable mFree;
    bool mLocked = false;
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
