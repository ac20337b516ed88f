// Host stand-in for <android/binder_parcel.h>: the parcel C API the generated code and the
// fuzzer use.
#pragma once

#include <android/binder_status.h>

#include <cstddef>
#include <cstdint>

struct AIBinder;
struct AParcel;
typedef struct AParcel AParcel;

typedef bool (*AParcel_stringAllocator)(void* stringData, int32_t length, char** buffer);
typedef bool (*AParcel_int32ArrayAllocator)(void* arrayData, int32_t length, int32_t** outBuffer);
typedef bool (*AParcel_floatArrayAllocator)(void* arrayData, int32_t length, float** outBuffer);

AParcel* AParcel_create();
void AParcel_delete(AParcel* parcel);
binder_status_t AParcel_reset(AParcel* parcel);
int32_t AParcel_getDataSize(const AParcel* parcel);
int32_t AParcel_getDataPosition(const AParcel* parcel);
binder_status_t AParcel_setDataPosition(const AParcel* parcel, int32_t position);
binder_status_t AParcel_marshal(const AParcel* parcel, uint8_t* buffer, size_t start, size_t len);
binder_status_t AParcel_unmarshal(AParcel* parcel, const uint8_t* buffer, size_t len);

binder_status_t AParcel_writeStrongBinder(AParcel* parcel, AIBinder* binder);
binder_status_t AParcel_readStrongBinder(const AParcel* parcel, AIBinder** binder);
binder_status_t AParcel_writeParcelFileDescriptor(AParcel* parcel, int fd);
binder_status_t AParcel_readParcelFileDescriptor(const AParcel* parcel, int* fd);
binder_status_t AParcel_writeStatusHeader(AParcel* parcel, const AStatus* status);
binder_status_t AParcel_readStatusHeader(const AParcel* parcel, AStatus** status);
binder_status_t AParcel_writeString(AParcel* parcel, const char* string, int32_t length);
binder_status_t AParcel_readString(const AParcel* parcel, void* stringData,
                                   AParcel_stringAllocator allocator);
binder_status_t AParcel_writeInt32(AParcel* parcel, int32_t value);
binder_status_t AParcel_writeFloat(AParcel* parcel, float value);
binder_status_t AParcel_writeBool(AParcel* parcel, bool value);
binder_status_t AParcel_readInt32(const AParcel* parcel, int32_t* value);
binder_status_t AParcel_readFloat(const AParcel* parcel, float* value);
binder_status_t AParcel_readBool(const AParcel* parcel, bool* value);
binder_status_t AParcel_writeInt32Array(AParcel* parcel, const int32_t* arrayData, int32_t length);
binder_status_t AParcel_writeFloatArray(AParcel* parcel, const float* arrayData, int32_t length);
binder_status_t AParcel_readInt32Array(const AParcel* parcel, void* arrayData,
                                       AParcel_int32ArrayAllocator allocator);
binder_status_t AParcel_readFloatArray(const AParcel* parcel, void* arrayData,
                                       AParcel_floatArrayAllocator allocator);
