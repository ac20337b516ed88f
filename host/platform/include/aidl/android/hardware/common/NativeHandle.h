// Host stand-in for the NDK parcelable android.hardware.common.NativeHandle.
#pragma once

#include <android/binder_auto_utils.h>

#include <cstdint>
#include <vector>

namespace aidl::android::hardware::common {

// Owns its fds; move-only.
struct NativeHandle {
    std::vector<::ndk::ScopedFileDescriptor> fds;
    std::vector<int32_t> ints;
};

}  // namespace aidl::android::hardware::common
