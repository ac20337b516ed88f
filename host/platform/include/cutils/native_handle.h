// Host stand-in for <cutils/native_handle.h>: a header followed by numFds fds then numInts ints.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

#define NATIVE_HANDLE_MAX_FDS 1024
#define NATIVE_HANDLE_MAX_INTS 1024

typedef struct native_handle {
    int version;  // sizeof(native_handle_t)
    int numFds;
    int numInts;
    int data[0];  // numFds fds, then numInts ints
} native_handle_t;

typedef const native_handle_t* buffer_handle_t;

// A zeroed handle with room for the given counts; null when a count is negative or too large.
native_handle_t* native_handle_create(int numFds, int numInts);
// Closes the fds (errors from close are ignored); -EINVAL for a handle of the wrong version.
int native_handle_close(const native_handle_t* h);
// Frees the handle without closing its fds; null is fine. -EINVAL for a handle of the wrong
// version.
int native_handle_delete(native_handle_t* h);
// A new handle with duplicated fds and the same ints; null on failure.
native_handle_t* native_handle_clone(const native_handle_t* handle);

#ifdef __cplusplus
}
#endif
