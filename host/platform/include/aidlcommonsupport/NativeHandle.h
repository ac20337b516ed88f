// Host stand-in for <aidlcommonsupport/NativeHandle.h>: conversions between native_handle_t and
// the AIDL NativeHandle.
#pragma once

#include <aidl/android/hardware/common/NativeHandle.h>
#include <cutils/native_handle.h>

namespace android {

// Duplicates the fds and copies the ints; a null handle gives an empty NativeHandle.
::aidl::android::hardware::common::NativeHandle dupToAidl(const native_handle_t* handle);
// A new native handle with duplicated fds; the caller closes and deletes it. Null on failure.
native_handle_t* dupFromAidl(const ::aidl::android::hardware::common::NativeHandle& handle);
// Takes over the fds of handle, which the caller then deletes without closing.
::aidl::android::hardware::common::NativeHandle makeToAidl(const native_handle_t* handle);
// A new native handle naming the same fds, which handle keeps owning: the caller deletes it
// without closing, before handle goes. Null on failure.
native_handle_t* makeFromAidl(const ::aidl::android::hardware::common::NativeHandle& handle);

}  // namespace android
