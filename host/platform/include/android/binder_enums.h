// Host stand-in for <android/binder_enums.h>: the values of a generated enum, for iteration.
#pragma once

#include <array>

namespace ndk {
namespace internal {
template <typename EnumType>
extern std::array<EnumType, 0> enum_values;
}  // namespace internal
}  // namespace ndk
