// Host stand-in for <android/binder_status.h>: the status and exception codes the library uses.
#pragma once

#include <cstdint>

typedef int32_t binder_status_t;
typedef int32_t binder_exception_t;

enum {
    STATUS_OK = 0,
    STATUS_UNKNOWN_ERROR = INT32_MIN,
    STATUS_NO_MEMORY = -12,
    STATUS_INVALID_OPERATION = -38,
    STATUS_BAD_VALUE = -22,
    STATUS_NAME_NOT_FOUND = -2,
    STATUS_DEAD_OBJECT = -32,
    STATUS_FAILED_TRANSACTION = INT32_MIN + 2,
    STATUS_UNEXPECTED_NULL = INT32_MIN + 8,
};

enum {
    EX_NONE = 0,
    EX_SECURITY = -1,
    EX_BAD_PARCELABLE = -2,
    EX_ILLEGAL_ARGUMENT = -3,
    EX_NULL_POINTER = -4,
    EX_ILLEGAL_STATE = -5,
    EX_NETWORK_MAIN_THREAD = -6,
    EX_UNSUPPORTED_OPERATION = -7,
    EX_SERVICE_SPECIFIC = -8,
    EX_TRANSACTION_FAILED = -129,
};
