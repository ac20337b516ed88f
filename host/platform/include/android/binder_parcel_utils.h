// Host stand-in for <android/binder_parcel_utils.h>: the typed reads and writes generated code
// makes, for the types this project's interfaces use.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_parcel.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace ndk {
namespace internal {

template <typename T>
struct is_vector : std::false_type {};
template <typename T>
struct is_vector<std::vector<T>> : std::true_type {};
template <typename T>
struct is_array : std::false_type {};
template <typename T, size_t N>
struct is_array<std::array<T, N>> : std::true_type {};
template <typename T>
struct is_shared_ptr : std::false_type {};
template <typename T>
struct is_shared_ptr<std::shared_ptr<T>> : std::true_type {};

template <typename T>
bool vectorAllocator(void* data, int32_t length, T** buffer) {
    if (length < 0) return false;
    auto* v = static_cast<std::vector<T>*>(data);
    v->resize(static_cast<size_t>(length));
    *buffer = v->data();
    return true;
}

template <typename T, size_t N>
bool arrayAllocator(void* data, int32_t length, T** buffer) {
    if (length != static_cast<int32_t>(N)) return false;
    *buffer = static_cast<std::array<T, N>*>(data)->data();
    return true;
}

inline bool stringAllocator(void* data, int32_t length, char** buffer) {
    if (length <= 0) return false;
    auto* s = static_cast<std::string*>(data);
    s->resize(static_cast<size_t>(length) - 1);
    *buffer = &(*s)[0];
    return true;
}

}  // namespace internal

template <typename T>
binder_status_t AParcel_writeData(AParcel* parcel, const T& value) {
    if constexpr (std::is_same_v<T, int32_t>) {
        return AParcel_writeInt32(parcel, value);
    } else if constexpr (std::is_same_v<T, bool>) {
        return AParcel_writeBool(parcel, value);
    } else if constexpr (std::is_same_v<T, float>) {
        return AParcel_writeFloat(parcel, value);
    } else if constexpr (std::is_enum_v<T>) {
        return AParcel_writeInt32(parcel, static_cast<int32_t>(value));
    } else if constexpr (std::is_same_v<T, std::string>) {
        return AParcel_writeString(parcel, value.c_str(), static_cast<int32_t>(value.size()));
    } else if constexpr (std::is_same_v<T, std::vector<int32_t>> ||
                         std::is_same_v<T, std::vector<float>> || internal::is_array<T>::value) {
        if (value.size() > INT32_MAX) return STATUS_BAD_VALUE;
        if constexpr (std::is_same_v<typename T::value_type, float>) {
            return AParcel_writeFloatArray(parcel, value.data(),
                                           static_cast<int32_t>(value.size()));
        } else {
            return AParcel_writeInt32Array(parcel, value.data(),
                                           static_cast<int32_t>(value.size()));
        }
    } else if constexpr (std::is_same_v<T, ScopedFileDescriptor>) {
        if (value.get() < 0) return STATUS_UNEXPECTED_NULL;
        return AParcel_writeParcelFileDescriptor(parcel, value.get());
    } else if constexpr (std::is_same_v<T, SpAIBinder>) {
        if (value.get() == nullptr) return STATUS_UNEXPECTED_NULL;
        return AParcel_writeStrongBinder(parcel, value.get());
    } else if constexpr (internal::is_shared_ptr<T>::value) {
        if (value == nullptr) return STATUS_UNEXPECTED_NULL;
        return T::element_type::writeToParcel(parcel, value);
    } else {
        binder_status_t status = AParcel_writeInt32(parcel, 1);  // present
        if (status != STATUS_OK) return status;
        return value.writeToParcel(parcel);
    }
}

template <typename T>
binder_status_t AParcel_readData(const AParcel* parcel, T* value) {
    if constexpr (std::is_same_v<T, int32_t>) {
        return AParcel_readInt32(parcel, value);
    } else if constexpr (std::is_same_v<T, bool>) {
        return AParcel_readBool(parcel, value);
    } else if constexpr (std::is_same_v<T, float>) {
        return AParcel_readFloat(parcel, value);
    } else if constexpr (std::is_enum_v<T>) {
        int32_t raw = 0;
        binder_status_t status = AParcel_readInt32(parcel, &raw);
        if (status == STATUS_OK) *value = static_cast<T>(raw);
        return status;
    } else if constexpr (std::is_same_v<T, std::string>) {
        return AParcel_readString(parcel, value, internal::stringAllocator);
    } else if constexpr (std::is_same_v<T, std::vector<int32_t>>) {
        return AParcel_readInt32Array(parcel, value, internal::vectorAllocator<int32_t>);
    } else if constexpr (std::is_same_v<T, std::vector<float>>) {
        return AParcel_readFloatArray(parcel, value, internal::vectorAllocator<float>);
    } else if constexpr (internal::is_array<T>::value) {
        using E = typename T::value_type;
        constexpr size_t N = std::tuple_size<T>::value;
        if constexpr (std::is_same_v<E, float>) {
            return AParcel_readFloatArray(parcel, value, internal::arrayAllocator<float, N>);
        } else {
            return AParcel_readInt32Array(parcel, value, internal::arrayAllocator<int32_t, N>);
        }
    } else if constexpr (std::is_same_v<T, ScopedFileDescriptor>) {
        int fd = -1;
        binder_status_t status = AParcel_readParcelFileDescriptor(parcel, &fd);
        if (status != STATUS_OK) return status;
        value->set(fd);
        return fd < 0 ? STATUS_UNEXPECTED_NULL : STATUS_OK;
    } else if constexpr (std::is_same_v<T, SpAIBinder>) {
        binder_status_t status = AParcel_readStrongBinder(parcel, value->getR());
        if (status != STATUS_OK) return status;
        return value->get() == nullptr ? STATUS_UNEXPECTED_NULL : STATUS_OK;
    } else if constexpr (internal::is_shared_ptr<T>::value) {
        binder_status_t status = T::element_type::readFromParcel(parcel, value);
        if (status != STATUS_OK) return status;
        return *value == nullptr ? STATUS_UNEXPECTED_NULL : STATUS_OK;
    } else {
        int32_t present = 0;
        binder_status_t status = AParcel_readInt32(parcel, &present);
        if (status != STATUS_OK) return status;
        if (present == 0) return STATUS_UNEXPECTED_NULL;
        return value->readFromParcel(parcel);
    }
}

// The length of an out-array, sent so that the stub can make room for it.
template <typename T>
binder_status_t AParcel_writeVectorSize(AParcel* parcel, const std::vector<T>& vec) {
    if (vec.size() > INT32_MAX) return STATUS_BAD_VALUE;
    return AParcel_writeInt32(parcel, static_cast<int32_t>(vec.size()));
}

// The stub's out-array: the client's length, every element value-initialised.
template <typename T>
binder_status_t AParcel_resizeVector(const AParcel* parcel, std::vector<T>* vec) {
    int32_t size = 0;
    binder_status_t status = AParcel_readInt32(parcel, &size);
    if (status != STATUS_OK) return status;
    if (size < 0) return STATUS_UNEXPECTED_NULL;
    // A length the parcel could never have carried is refused before anything is allocated.
    if (size > AParcel_getDataSize(parcel)) return STATUS_BAD_VALUE;
    vec->resize(static_cast<size_t>(size));
    return STATUS_OK;
}

}  // namespace ndk
