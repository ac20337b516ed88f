// Host stand-in for <android/binder_auto_utils.h>: SpAIBinder, ScopedAStatus, ScopedFileDescriptor.
#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_status.h>
#include <unistd.h>

#include <string>
#include <utility>

namespace ndk {

class SpAIBinder {
  public:
    SpAIBinder() = default;
    // Adopts one strong reference, as the NDK class does.
    explicit SpAIBinder(AIBinder* binder) : mBinder(binder) {}
    SpAIBinder(std::nullptr_t) {}
    SpAIBinder(const SpAIBinder& other) : mBinder(other.mBinder) {
        if (mBinder != nullptr) AIBinder_incStrong(mBinder);
    }
    SpAIBinder(SpAIBinder&& other) noexcept : mBinder(std::exchange(other.mBinder, nullptr)) {}
    SpAIBinder& operator=(const SpAIBinder& other) {
        if (this != &other) {
            SpAIBinder copy(other);
            std::swap(mBinder, copy.mBinder);
        }
        return *this;
    }
    SpAIBinder& operator=(SpAIBinder&& other) noexcept {
        if (this != &other) {
            reset();
            mBinder = std::exchange(other.mBinder, nullptr);
        }
        return *this;
    }
    ~SpAIBinder() { reset(); }

    AIBinder* get() const { return mBinder; }
    void reset(AIBinder* binder = nullptr) {
        if (mBinder != nullptr) AIBinder_decStrong(mBinder);
        mBinder = binder;
    }
    bool operator==(const SpAIBinder& other) const { return mBinder == other.mBinder; }
    bool operator!=(const SpAIBinder& other) const { return mBinder != other.mBinder; }

  private:
    AIBinder* mBinder = nullptr;
};

class ScopedAStatus {
  public:
    ScopedAStatus() = default;

    static ScopedAStatus ok() { return ScopedAStatus(); }
    static ScopedAStatus fromExceptionCode(binder_exception_t exception) {
        return ScopedAStatus(exception, STATUS_OK, 0, "");
    }
    static ScopedAStatus fromExceptionCodeWithMessage(binder_exception_t exception,
                                                      const char* message) {
        return ScopedAStatus(exception, STATUS_OK, 0, message != nullptr ? message : "");
    }
    static ScopedAStatus fromServiceSpecificError(int32_t serviceSpecific) {
        return ScopedAStatus(EX_SERVICE_SPECIFIC, STATUS_OK, serviceSpecific, "");
    }
    static ScopedAStatus fromServiceSpecificErrorWithMessage(int32_t serviceSpecific,
                                                             const char* message) {
        return ScopedAStatus(EX_SERVICE_SPECIFIC, STATUS_OK, serviceSpecific,
                             message != nullptr ? message : "");
    }
    static ScopedAStatus fromStatus(binder_status_t status) {
        if (status == STATUS_OK) return ok();
        return ScopedAStatus(EX_TRANSACTION_FAILED, status, 0, "");
    }

    bool isOk() const { return mException == EX_NONE; }
    binder_exception_t getExceptionCode() const { return mException; }
    binder_status_t getStatus() const { return mStatus; }
    int32_t getServiceSpecificError() const { return mServiceSpecific; }
    const char* getMessage() const { return mMessage.c_str(); }
    std::string getDescription() const {
        return "Status(" + std::to_string(mException) + ", " + std::to_string(mStatus) + ", " +
               std::to_string(mServiceSpecific) + "): '" + mMessage + "'";
    }

  private:
    ScopedAStatus(binder_exception_t exception, binder_status_t status, int32_t serviceSpecific,
                  std::string message)
        : mException(exception),
          mStatus(status),
          mServiceSpecific(serviceSpecific),
          mMessage(std::move(message)) {}

    binder_exception_t mException = EX_NONE;
    binder_status_t mStatus = STATUS_OK;
    int32_t mServiceSpecific = 0;
    std::string mMessage;
};

class ScopedFileDescriptor {
  public:
    ScopedFileDescriptor() = default;
    explicit ScopedFileDescriptor(int fd) : mFd(fd) {}
    ScopedFileDescriptor(ScopedFileDescriptor&& other) noexcept
        : mFd(std::exchange(other.mFd, -1)) {}
    ScopedFileDescriptor& operator=(ScopedFileDescriptor&& other) noexcept {
        if (this != &other) reset(std::exchange(other.mFd, -1));
        return *this;
    }
    ScopedFileDescriptor(const ScopedFileDescriptor&) = delete;
    ScopedFileDescriptor& operator=(const ScopedFileDescriptor&) = delete;
    ~ScopedFileDescriptor() { reset(); }

    int get() const { return mFd; }
    [[nodiscard]] int release() { return std::exchange(mFd, -1); }
    void reset(int fd = -1) {
        if (mFd >= 0) ::close(mFd);
        mFd = fd;
    }
    ScopedFileDescriptor dup() const { return ScopedFileDescriptor(mFd >= 0 ? ::dup(mFd) : -1); }

  private:
    int mFd = -1;
};

}  // namespace ndk
