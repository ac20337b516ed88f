// libcutils native_handle stand-in.
#include <cutils/native_handle.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

extern "C" native_handle_t* native_handle_create(int numFds, int numInts) {
    if (numFds < 0 || numInts < 0 || numFds > NATIVE_HANDLE_MAX_FDS ||
        numInts > NATIVE_HANDLE_MAX_INTS) {
        errno = EINVAL;
        return nullptr;
    }
    size_t size = sizeof(native_handle_t) + sizeof(int) * (numFds + numInts);
    auto* h = static_cast<native_handle_t*>(calloc(1, size));
    if (h == nullptr) return nullptr;
    h->version = sizeof(native_handle_t);
    h->numFds = numFds;
    h->numInts = numInts;
    return h;
}

extern "C" int native_handle_close(const native_handle_t* h) {
    if (h == nullptr) return 0;
    if (h->version != sizeof(native_handle_t)) return -EINVAL;
    int savedErrno = errno;
    for (int i = 0; i < h->numFds; ++i) close(h->data[i]);
    errno = savedErrno;
    return 0;
}

extern "C" int native_handle_delete(native_handle_t* h) {
    if (h == nullptr) return 0;
    if (h->version != sizeof(native_handle_t)) return -EINVAL;
    free(h);
    return 0;
}

extern "C" native_handle_t* native_handle_clone(const native_handle_t* handle) {
    if (handle == nullptr) return nullptr;
    native_handle_t* clone = native_handle_create(handle->numFds, handle->numInts);
    if (clone == nullptr) return nullptr;
    for (int i = 0; i < handle->numFds; ++i) {
        clone->data[i] = fcntl(handle->data[i], F_DUPFD_CLOEXEC, 0);
        if (clone->data[i] < 0) {
            clone->numFds = i;
            native_handle_close(clone);
            native_handle_delete(clone);
            return nullptr;
        }
    }
    memcpy(&clone->data[handle->numFds], &handle->data[handle->numFds],
           sizeof(int) * handle->numInts);
    return clone;
}
