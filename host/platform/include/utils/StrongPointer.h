// Host stand-in for <utils/StrongPointer.h>: sp<T>, the strong pointer of RefBase objects.
#pragma once

#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

namespace android {

template <typename T>
class sp {
  public:
    sp() = default;
    sp(std::nullptr_t) {}
    sp(T* other) : m_ptr(other) {
        if (m_ptr != nullptr) m_ptr->incStrong(this);
    }
    sp(const sp<T>& other) : m_ptr(other.m_ptr) {
        if (m_ptr != nullptr) m_ptr->incStrong(this);
    }
    sp(sp<T>&& other) noexcept : m_ptr(std::exchange(other.m_ptr, nullptr)) {}
    template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    sp(const sp<U>& other) : m_ptr(other.get()) {
        if (m_ptr != nullptr) m_ptr->incStrong(this);
    }
    template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    sp(sp<U>&& other) noexcept : m_ptr(std::exchange(other.m_ptr, nullptr)) {}

    ~sp() { clear(); }

    // Allocates a T and takes the first strong reference to it.
    template <typename... Args>
    static sp<T> make(Args&&... args) {
        return sp<T>(new T(std::forward<Args>(args)...));
    }

    sp& operator=(const sp<T>& other) {
        // Take the new reference before dropping the old one: other may be owned by *m_ptr.
        T* next = other.m_ptr;
        if (next != nullptr) next->incStrong(this);
        T* previous = std::exchange(m_ptr, next);
        if (previous != nullptr) previous->decStrong(this);
        return *this;
    }
    sp& operator=(sp<T>&& other) noexcept {
        if (this != &other) {
            T* previous = std::exchange(m_ptr, std::exchange(other.m_ptr, nullptr));
            if (previous != nullptr) previous->decStrong(this);
        }
        return *this;
    }
    sp& operator=(T* other) { return *this = sp<T>(other); }
    sp& operator=(std::nullptr_t) {
        clear();
        return *this;
    }
    template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    sp& operator=(const sp<U>& other) {
        return *this = sp<T>(other);
    }
    template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    sp& operator=(sp<U>&& other) {
        return *this = sp<T>(std::move(other));
    }

    void clear() {
        T* previous = std::exchange(m_ptr, nullptr);
        if (previous != nullptr) previous->decStrong(this);
    }

    T* get() const { return m_ptr; }
    T& operator*() const { return *m_ptr; }
    T* operator->() const { return m_ptr; }
    explicit operator bool() const { return m_ptr != nullptr; }

  private:
    template <typename U>
    friend class sp;

    T* m_ptr = nullptr;
};

template <typename T, typename U>
bool operator==(const sp<T>& a, const sp<U>& b) {
    return a.get() == b.get();
}
template <typename T, typename U>
bool operator!=(const sp<T>& a, const sp<U>& b) {
    return a.get() != b.get();
}
template <typename T, typename U>
bool operator==(const sp<T>& a, const U* b) {
    return a.get() == b;
}
template <typename T, typename U>
bool operator!=(const sp<T>& a, const U* b) {
    return a.get() != b;
}
template <typename T, typename U>
bool operator==(const T* a, const sp<U>& b) {
    return a == b.get();
}
template <typename T, typename U>
bool operator!=(const T* a, const sp<U>& b) {
    return a != b.get();
}
template <typename T>
bool operator==(const sp<T>& a, std::nullptr_t) {
    return a.get() == nullptr;
}
template <typename T>
bool operator!=(const sp<T>& a, std::nullptr_t) {
    return a.get() != nullptr;
}
template <typename T>
bool operator==(std::nullptr_t, const sp<T>& b) {
    return b.get() == nullptr;
}
template <typename T>
bool operator!=(std::nullptr_t, const sp<T>& b) {
    return b.get() != nullptr;
}
// Ordering by address, so sp can key ordered containers.
template <typename T, typename U>
bool operator<(const sp<T>& a, const sp<U>& b) {
    return std::less<const void*>()(a.get(), b.get());
}

}  // namespace android
