// libaidlcommonsupport stand-in: native_handle_t <-> AIDL NativeHandle.
#include <aidlcommonsupport/NativeHandle.h>
#include <fcntl.h>

#include <algorithm>
#include <utility>

namespace android {

using ::aidl::android::hardware::common::NativeHandle;

namespace {

NativeHandle toAidl(const native_handle_t* handle, bool duplicate) {
    NativeHandle out;
    if (handle == nullptr) return out;
    for (int i = 0; i < handle->numFds; ++i) {
        int fd = duplicate ? fcntl(handle->data[i], F_DUPFD_CLOEXEC, 0) : handle->data[i];
        out.fds.emplace_back(fd);
    }
    out.ints.assign(&handle->data[handle->numFds], &handle->data[handle->numFds] + handle->numInts);
    return out;
}

}  // namespace

NativeHandle dupToAidl(const native_handle_t* handle) {
    return toAidl(handle, true);
}

NativeHandle makeToAidl(const native_handle_t* handle) {
    return toAidl(handle, false);
}

native_handle_t* dupFromAidl(const NativeHandle& handle) {
    native_handle_t* out = native_handle_create(static_cast<int>(handle.fds.size()),
                                                static_cast<int>(handle.ints.size()));
    if (out == nullptr) return nullptr;
    for (size_t i = 0; i < handle.fds.size(); ++i) {
        out->data[i] = fcntl(handle.fds[i].get(), F_DUPFD_CLOEXEC, 0);
        if (out->data[i] < 0) {
            out->numFds = static_cast<int>(i);
            native_handle_close(out);
            native_handle_delete(out);
            return nullptr;
        }
    }
    std::copy(handle.ints.begin(), handle.ints.end(), &out->data[out->numFds]);
    return out;
}

native_handle_t* makeFromAidl(const NativeHandle& handle) {
    native_handle_t* out = native_handle_create(static_cast<int>(handle.fds.size()),
                                                static_cast<int>(handle.ints.size()));
    if (out == nullptr) return nullptr;
    for (size_t i = 0; i < handle.fds.size(); ++i) out->data[i] = handle.fds[i].get();
    std::copy(handle.ints.begin(), handle.ints.end(), &out->data[out->numFds]);
    return out;
}

}  // namespace android
