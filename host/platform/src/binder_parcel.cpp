// AParcel: 4-byte aligned data, with binders and descriptors kept beside it as objects that the
// data refers to by index, so that a transaction can translate them for the receiving process.
#include <fcntl.h>
#include <unistd.h>

#include <climits>
#include <cstring>

#include "binder_internal.h"

namespace {

enum ObjectKind : int32_t { kNull = 0, kBinder = 0x62696e64, kFd = 0x66642020 };

size_t padded(size_t n) {
    return (n + 3) & ~size_t{3};
}

binder_status_t writeBytes(AParcel* parcel, const void* bytes, size_t size) {
    size_t total = padded(size);
    if (parcel->position + total > INT32_MAX) return STATUS_NO_MEMORY;
    if (parcel->data.size() < parcel->position + total) {
        parcel->data.resize(parcel->position + total);
    }
    if (size != 0) memcpy(parcel->data.data() + parcel->position, bytes, size);
    memset(parcel->data.data() + parcel->position + size, 0, total - size);
    parcel->position += total;
    return STATUS_OK;
}

// Points at size bytes to read and moves past them (padded), or null when the data ends first.
const uint8_t* readBytes(const AParcel* parcel, size_t size) {
    size_t total = padded(size);
    if (parcel->position > parcel->data.size() || parcel->data.size() - parcel->position < total) {
        return nullptr;
    }
    const uint8_t* at = parcel->data.data() + parcel->position;
    parcel->position += total;
    return at;
}

template <typename T>
binder_status_t writeValue(AParcel* parcel, T value) {
    return writeBytes(parcel, &value, sizeof(value));
}

template <typename T>
binder_status_t readValue(const AParcel* parcel, T* value) {
    const uint8_t* at = readBytes(parcel, sizeof(T));
    if (at == nullptr) return STATUS_NOT_ENOUGH_DATA;
    memcpy(value, at, sizeof(T));
    return STATUS_OK;
}

binder_status_t writeObject(AParcel* parcel, AParcel::Object object, ObjectKind kind) {
    binder_status_t status = writeValue<int32_t>(parcel, kind);
    if (status == STATUS_OK) {
        status = writeValue<int32_t>(parcel, static_cast<int32_t>(parcel->objects.size()));
    }
    if (status == STATUS_OK) {
        parcel->objects.push_back(std::move(object));
    } else if (object.fd >= 0) {
        close(object.fd);
    }
    return status;
}

// The object a reference at the read position names, or null (status says why).
const AParcel::Object* readObject(const AParcel* parcel, ObjectKind want, binder_status_t* status) {
    int32_t kind = 0, index = 0;
    *status = readValue(parcel, &kind);
    if (*status != STATUS_OK || kind == kNull) return nullptr;
    *status = readValue(parcel, &index);
    if (*status != STATUS_OK) return nullptr;
    if (kind != want || index < 0 || static_cast<size_t>(index) >= parcel->objects.size()) {
        *status = STATUS_BAD_TYPE;
        return nullptr;
    }
    const AParcel::Object& object = parcel->objects[index];
    if ((want == kBinder) != (object.binder.get() != nullptr)) {
        *status = STATUS_BAD_TYPE;
        return nullptr;
    }
    return &object;
}

binder_status_t writeNull(AParcel* parcel) {
    binder_status_t status = writeValue<int32_t>(parcel, kNull);
    return status != STATUS_OK ? status : writeValue<int32_t>(parcel, 0);
}

template <typename T, typename Allocator>
binder_status_t readArray(const AParcel* parcel, void* arrayData, Allocator allocator) {
    int32_t length = 0;
    binder_status_t status = readValue(parcel, &length);
    if (status != STATUS_OK) return status;
    if (length < -1) return STATUS_BAD_VALUE;
    size_t left = parcel->data.size() - std::min(parcel->position, parcel->data.size());
    if (length > 0 && static_cast<size_t>(length) > left / sizeof(T)) return STATUS_BAD_VALUE;
    T* buffer = nullptr;
    if (!allocator(arrayData, length, &buffer)) {
        return length < 0 ? STATUS_UNEXPECTED_NULL : STATUS_BAD_VALUE;
    }
    if (length <= 0) return STATUS_OK;
    const uint8_t* at = readBytes(parcel, sizeof(T) * length);
    if (at == nullptr) return STATUS_NOT_ENOUGH_DATA;
    memcpy(buffer, at, sizeof(T) * length);
    return STATUS_OK;
}

template <typename T>
binder_status_t writeArray(AParcel* parcel, const T* data, int32_t length) {
    // A null array is a length of -1; an empty one may come without storage.
    if (data == nullptr && length > 0) return STATUS_UNEXPECTED_NULL;
    binder_status_t status = writeValue<int32_t>(parcel, length < 0 ? -1 : length);
    if (status != STATUS_OK || length <= 0) return status;
    return writeBytes(parcel, data, sizeof(T) * length);
}

}  // namespace

AParcel::~AParcel() {
    clear();
}

void AParcel::clear() {
    for (Object& object : objects) {
        if (object.fd >= 0) close(object.fd);
    }
    objects.clear();
    data.clear();
    position = 0;
}

AParcel* AParcel_create() {
    AParcel* parcel = new AParcel();
    parcel->process = host::binder::current();
    return parcel;
}

void AParcel_delete(AParcel* parcel) {
    delete parcel;
}

binder_status_t AParcel_reset(AParcel* parcel) {
    parcel->clear();
    return STATUS_OK;
}

int32_t AParcel_getDataSize(const AParcel* parcel) {
    return static_cast<int32_t>(parcel->data.size());
}

int32_t AParcel_getDataPosition(const AParcel* parcel) {
    return static_cast<int32_t>(parcel->position);
}

binder_status_t AParcel_setDataPosition(const AParcel* parcel, int32_t position) {
    if (position < 0) return STATUS_BAD_VALUE;
    parcel->position = static_cast<size_t>(position);
    return STATUS_OK;
}

binder_status_t AParcel_marshal(const AParcel* parcel, uint8_t* buffer, size_t start, size_t len) {
    if (!parcel->objects.empty()) return STATUS_INVALID_OPERATION;
    if (start > parcel->data.size() || parcel->data.size() - start < len) return STATUS_BAD_VALUE;
    if (len != 0) memcpy(buffer, parcel->data.data() + start, len);
    return STATUS_OK;
}

binder_status_t AParcel_unmarshal(AParcel* parcel, const uint8_t* buffer, size_t len) {
    if (len > INT32_MAX) return STATUS_BAD_VALUE;
    parcel->clear();
    parcel->data.assign(buffer, buffer + len);
    return STATUS_OK;
}

binder_status_t AParcel_writeStrongBinder(AParcel* parcel, AIBinder* binder) {
    if (binder == nullptr) return writeNull(parcel);
    AParcel::Object object;
    object.binder = ndk::SpAIBinder(binder->target());
    AIBinder_incStrong(object.binder.get());
    return writeObject(parcel, std::move(object), kBinder);
}

binder_status_t AParcel_readStrongBinder(const AParcel* parcel, AIBinder** binder) {
    binder_status_t status = STATUS_OK;
    const AParcel::Object* object = readObject(parcel, kBinder, &status);
    if (status != STATUS_OK) return status;
    *binder = object == nullptr ? nullptr
                                : host::binder::translate(object->binder.get(), parcel->process);
    if (object == nullptr) readBytes(parcel, sizeof(int32_t));  // a null binder's index
    return STATUS_OK;
}

binder_status_t AParcel_writeParcelFileDescriptor(AParcel* parcel, int fd) {
    if (fd < 0) return writeNull(parcel);
    AParcel::Object object;
    object.fd = fcntl(fd, F_DUPFD_CLOEXEC, 0);
    if (object.fd < 0) return STATUS_BAD_VALUE;
    return writeObject(parcel, std::move(object), kFd);
}

binder_status_t AParcel_readParcelFileDescriptor(const AParcel* parcel, int* fd) {
    binder_status_t status = STATUS_OK;
    const AParcel::Object* object = readObject(parcel, kFd, &status);
    if (status != STATUS_OK) return status;
    if (object == nullptr) {
        readBytes(parcel, sizeof(int32_t));
        *fd = -1;
        return STATUS_OK;
    }
    // The reader owns a duplicate; the parcel closes its own when it goes.
    *fd = fcntl(object->fd, F_DUPFD_CLOEXEC, 0);
    return *fd < 0 ? STATUS_NO_MEMORY : STATUS_OK;
}

binder_status_t AParcel_writeStatusHeader(AParcel* parcel, const AStatus* status) {
    binder_exception_t exception = AStatus_getExceptionCode(status);
    // A transport failure is not sent as a header: it is the transaction's own result.
    if (exception == EX_TRANSACTION_FAILED) {
        binder_status_t failed = AStatus_getStatus(status);
        return failed != STATUS_OK ? failed : STATUS_FAILED_TRANSACTION;
    }
    binder_status_t result = writeValue<int32_t>(parcel, exception);
    if (result != STATUS_OK || exception == EX_NONE) return result;
    const char* message = AStatus_getMessage(status);
    result = AParcel_writeString(parcel, message, static_cast<int32_t>(strlen(message)));
    if (result != STATUS_OK) return result;
    return writeValue<int32_t>(parcel, AStatus_getServiceSpecificError(status));
}

binder_status_t AParcel_readStatusHeader(const AParcel* parcel, AStatus** status) {
    int32_t exception = 0;
    binder_status_t result = readValue(parcel, &exception);
    if (result != STATUS_OK) return result;
    if (exception == EX_NONE) {
        *status = AStatus_newOk();
        return STATUS_OK;
    }
    std::string message;
    result = AParcel_readString(parcel, &message, [](void* data, int32_t length, char** buffer) {
        if (length <= 0) return false;
        auto* s = static_cast<std::string*>(data);
        s->resize(static_cast<size_t>(length) - 1);
        *buffer = &(*s)[0];
        return true;
    });
    int32_t serviceSpecific = 0;
    if (result == STATUS_OK) result = readValue(parcel, &serviceSpecific);
    if (result != STATUS_OK) return result;
    *status =
            exception == EX_SERVICE_SPECIFIC
                    ? AStatus_fromServiceSpecificErrorWithMessage(serviceSpecific, message.c_str())
                    : AStatus_fromExceptionCodeWithMessage(exception, message.c_str());
    return STATUS_OK;
}

binder_status_t AParcel_writeString(AParcel* parcel, const char* string, int32_t length) {
    if (string == nullptr) return writeValue<int32_t>(parcel, -1);
    if (length < 0) return STATUS_BAD_VALUE;
    binder_status_t status = writeValue<int32_t>(parcel, length);
    if (status != STATUS_OK) return status;
    std::string copy(string, static_cast<size_t>(length));
    return writeBytes(parcel, copy.c_str(), copy.size() + 1);
}

binder_status_t AParcel_readString(const AParcel* parcel, void* stringData,
                                   AParcel_stringAllocator allocator) {
    int32_t length = 0;
    binder_status_t status = readValue(parcel, &length);
    if (status != STATUS_OK) return status;
    char* buffer = nullptr;
    if (length < 0) return allocator(stringData, -1, &buffer) ? STATUS_OK : STATUS_UNEXPECTED_NULL;
    if (length == INT32_MAX) return STATUS_BAD_VALUE;
    const uint8_t* at = readBytes(parcel, static_cast<size_t>(length) + 1);
    if (at == nullptr) return STATUS_NOT_ENOUGH_DATA;
    if (at[length] != 0) return STATUS_BAD_VALUE;
    if (!allocator(stringData, length + 1, &buffer)) return STATUS_NO_MEMORY;
    memcpy(buffer, at, static_cast<size_t>(length) + 1);
    return STATUS_OK;
}

binder_status_t AParcel_writeInt32(AParcel* parcel, int32_t value) {
    return writeValue(parcel, value);
}
binder_status_t AParcel_writeFloat(AParcel* parcel, float value) {
    return writeValue(parcel, value);
}
binder_status_t AParcel_writeBool(AParcel* parcel, bool value) {
    return writeValue<int32_t>(parcel, value ? 1 : 0);
}
binder_status_t AParcel_readInt32(const AParcel* parcel, int32_t* value) {
    return readValue(parcel, value);
}
binder_status_t AParcel_readFloat(const AParcel* parcel, float* value) {
    return readValue(parcel, value);
}
binder_status_t AParcel_readBool(const AParcel* parcel, bool* value) {
    int32_t raw = 0;
    binder_status_t status = readValue(parcel, &raw);
    if (status == STATUS_OK) *value = raw != 0;
    return status;
}
binder_status_t AParcel_writeInt32Array(AParcel* parcel, const int32_t* arrayData, int32_t length) {
    return writeArray(parcel, arrayData, length);
}
binder_status_t AParcel_writeFloatArray(AParcel* parcel, const float* arrayData, int32_t length) {
    return writeArray(parcel, arrayData, length);
}
binder_status_t AParcel_readInt32Array(const AParcel* parcel, void* arrayData,
                                       AParcel_int32ArrayAllocator allocator) {
    return readArray<int32_t>(parcel, arrayData, allocator);
}
binder_status_t AParcel_readFloatArray(const AParcel* parcel, void* arrayData,
                                       AParcel_floatArrayAllocator allocator) {
    return readArray<float>(parcel, arrayData, allocator);
}
