#pragma once

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace aidl::vendor::zarel::hardware::cwb::implementation {

// A base-10 int32 as strtol reads it: leading white space, optional sign, at least one digit,
// anything after the digits ignored. False when there is no number or it does not fit.
inline bool parseInt32(const std::string& text, int32_t* out) {
    const char* begin = text.c_str();
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(begin, &end, 10);
    if (end == begin || errno == ERANGE || value < INT32_MIN || value > INT32_MAX) return false;
    *out = static_cast<int32_t>(value);
    return true;
}

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
