// Host stand-in for <android/binder_auto_utils.h>: owners of the NDK's C objects.
#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_parcel.h>
#include <android/binder_status.h>
#include <unistd.h>

#include <cstddef>
#include <string>
#include <utility>

namespace ndk {

// A strong reference to a binder; adopts the reference it is given, as the NDK class does.
class SpAIBinder {
  public:
    SpAIBinder() = default;
    SpAIBinder(std::nullptr_t) {}
    explicit SpAIBinder(AIBinder* binder) : mBinder(binder) {}
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
        if (this != &other) set(std::exchange(other.mBinder, nullptr));
        return *this;
    }
    ~SpAIBinder() { set(nullptr); }

    AIBinder* get() const { return mBinder; }
    AIBinder** getR() { return &mBinder; }
    void set(AIBinder* binder) {
        AIBinder* old = std::exchange(mBinder, binder);
        if (old != nullptr) AIBinder_decStrong(old);
    }
    bool operator==(const SpAIBinder& rhs) const { return mBinder == rhs.mBinder; }
    bool operator!=(const SpAIBinder& rhs) const { return mBinder != rhs.mBinder; }
    bool operator<(const SpAIBinder& rhs) const { return mBinder < rhs.mBinder; }

  private:
    AIBinder* mBinder = nullptr;
};

namespace impl {

// Owns one C object and deletes it with Destroy.
template <typename T, void (*Destroy)(T)>
class ScopedAResource {
  public:
    explicit ScopedAResource(T t = nullptr) : mT(t) {}
    ~ScopedAResource() { set(nullptr); }
    ScopedAResource(ScopedAResource&& other) noexcept : mT(std::exchange(other.mT, nullptr)) {}
    ScopedAResource& operator=(ScopedAResource&& other) noexcept {
        if (this != &other) set(std::exchange(other.mT, nullptr));
        return *this;
    }
    ScopedAResource(const ScopedAResource&) = delete;
    ScopedAResource& operator=(const ScopedAResource&) = delete;

    T get() const { return mT; }
    T* getR() { return &mT; }
    void set(T t) {
        T old = std::exchange(mT, t);
        if (old != nullptr) Destroy(old);
    }
    T release() { return std::exchange(mT, nullptr); }

  private:
    T mT;
};

}  // namespace impl

class ScopedAParcel : public impl::ScopedAResource<AParcel*, AParcel_delete> {
  public:
    explicit ScopedAParcel(AParcel* p = nullptr) : ScopedAResource(p) {}
};

class ScopedAStatus : public impl::ScopedAResource<AStatus*, AStatus_delete> {
  public:
    explicit ScopedAStatus(AStatus* a = nullptr) : ScopedAResource(a) {}

    static ScopedAStatus ok() { return ScopedAStatus(AStatus_newOk()); }
    static ScopedAStatus fromExceptionCode(binder_exception_t exception) {
        return ScopedAStatus(AStatus_fromExceptionCode(exception));
    }
    static ScopedAStatus fromExceptionCodeWithMessage(binder_exception_t exception,
                                                      const char* message) {
        return ScopedAStatus(AStatus_fromExceptionCodeWithMessage(exception, message));
    }
    static ScopedAStatus fromServiceSpecificError(int32_t serviceSpecific) {
        return ScopedAStatus(AStatus_fromServiceSpecificError(serviceSpecific));
    }
    static ScopedAStatus fromServiceSpecificErrorWithMessage(int32_t serviceSpecific,
                                                             const char* message) {
        return ScopedAStatus(AStatus_fromServiceSpecificErrorWithMessage(serviceSpecific, message));
    }
    static ScopedAStatus fromStatus(binder_status_t status) {
        return ScopedAStatus(AStatus_fromStatus(status));
    }

    bool isOk() const { return get() != nullptr && AStatus_isOk(get()); }
    binder_exception_t getExceptionCode() const { return AStatus_getExceptionCode(get()); }
    int32_t getServiceSpecificError() const { return AStatus_getServiceSpecificError(get()); }
    binder_status_t getStatus() const { return AStatus_getStatus(get()); }
    const char* getMessage() const { return AStatus_getMessage(get()); }
    std::string getDescription() const {
        if (get() == nullptr) return "(not available)";
        const char* description = AStatus_getDescription(get());
        std::string out(description);
        AStatus_deleteDescription(description);
        return out;
    }
};

class ScopedAIBinder_DeathRecipient
    : public impl::ScopedAResource<AIBinder_DeathRecipient*, AIBinder_DeathRecipient_delete> {
  public:
    explicit ScopedAIBinder_DeathRecipient(AIBinder_DeathRecipient* a = nullptr)
        : ScopedAResource(a) {}
};

class ScopedAIBinder_Weak : public impl::ScopedAResource<AIBinder_Weak*, AIBinder_Weak_delete> {
  public:
    explicit ScopedAIBinder_Weak(AIBinder_Weak* a = nullptr) : ScopedAResource(a) {}
    SpAIBinder promote() const { return SpAIBinder(AIBinder_Weak_promote(get())); }
};

class ScopedFileDescriptor {
  public:
    ScopedFileDescriptor() = default;
    explicit ScopedFileDescriptor(int fd) : mFd(fd) {}
    ScopedFileDescriptor(ScopedFileDescriptor&& other) noexcept
        : mFd(std::exchange(other.mFd, -1)) {}
    ScopedFileDescriptor& operator=(ScopedFileDescriptor&& other) noexcept {
        if (this != &other) set(std::exchange(other.mFd, -1));
        return *this;
    }
    ScopedFileDescriptor(const ScopedFileDescriptor&) = delete;
    ScopedFileDescriptor& operator=(const ScopedFileDescriptor&) = delete;
    ~ScopedFileDescriptor() { set(-1); }

    int get() const { return mFd; }
    int* getR() { return &mFd; }
    [[nodiscard]] int release() { return std::exchange(mFd, -1); }
    void set(int fd) {
        int old = std::exchange(mFd, fd);
        if (old >= 0) ::close(old);
    }
    void reset(int fd = -1) { set(fd); }
    ScopedFileDescriptor dup() const { return ScopedFileDescriptor(mFd >= 0 ? ::dup(mFd) : -1); }
    bool operator==(const ScopedFileDescriptor& rhs) const { return mFd == rhs.mFd; }
    bool operator!=(const ScopedFileDescriptor& rhs) const { return mFd != rhs.mFd; }
    bool operator<(const ScopedFileDescriptor& rhs) const { return mFd < rhs.mFd; }

  private:
    int mFd = -1;
};

}  // namespace ndk
