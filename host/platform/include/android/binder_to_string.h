// Host stand-in for <android/binder_to_string.h>: the text generated toString() methods build.
#pragma once

#include <array>
#include <sstream>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

namespace android {
namespace internal {

template <typename T>
std::string ToString(const T& t);

template <typename T>
std::string ToStringRange(const T& range) {
    std::string out = "[";
    bool first = true;
    for (const auto& item : range) {
        if (!first) out += ", ";
        first = false;
        out += ToString(item);
    }
    return out + "]";
}

template <typename T>
std::string ToString(const T& t) {
    if constexpr (std::is_same_v<T, bool>) {
        return t ? "true" : "false";
    } else if constexpr (std::is_arithmetic_v<T>) {
        std::ostringstream os;
        os << t;
        return os.str();
    } else if constexpr (std::is_same_v<T, std::string>) {
        return t;
    } else if constexpr (std::is_enum_v<T>) {
        return toString(t);
    } else {
        return t.toString();
    }
}

template <typename T>
std::string ToString(const std::vector<T>& v) {
    return ToStringRange(v);
}

template <typename T, size_t N>
std::string ToString(const std::array<T, N>& a) {
    return ToStringRange(a);
}

}  // namespace internal
}  // namespace android
