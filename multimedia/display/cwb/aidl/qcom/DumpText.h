// Appends one printf-formatted piece to a dump text, cut to Size - 1 bytes.
#pragma once

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <string>

namespace aidl::vendor::zarel::hardware::cwb::implementation {

template <size_t Size>
void appendf(std::string* out, const char* format, ...) __attribute__((format(printf, 2, 3)));

template <size_t Size>
void appendf(std::string* out, const char* format, ...) {
    char line[Size];
    va_list args;
    va_start(args, format);
    const int n = vsnprintf(line, sizeof(line), format, args);
    va_end(args);
    if (n > 0) out->append(line, std::min(static_cast<size_t>(n), sizeof(line) - 1));
}

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
