// Host stand-in for <android/binder_parcelable_utils.h>: the stability of a parcelable.
#pragma once

namespace ndk {
enum parcelable_stability_t {
    STABILITY_LOCAL,
    STABILITY_VINTF,
};
}  // namespace ndk
