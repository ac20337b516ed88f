#include "RectSyntax.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <limits>

namespace cwbtool {

namespace {

constexpr int64_t kInt32Min = std::numeric_limits<int32_t>::min();
constexpr int64_t kInt32Max = std::numeric_limits<int32_t>::max();

}  // namespace

std::vector<std::string> split(const std::string& s, char sep) {
    std::vector<std::string> parts;
    size_t start = 0;
    for (size_t pos; (pos = s.find(sep, start)) != std::string::npos; start = pos + 1) {
        parts.push_back(s.substr(start, pos - start));
    }
    parts.push_back(s.substr(start));
    return parts;
}

bool parseInt(const std::string& s, int64_t min, int64_t max, int64_t* out) {
    if (s.empty()) return false;
    errno = 0;
    char* end = nullptr;
    int64_t value = 0;
    if (s.size() > 2 && s[0] == '0' && (s[1] == 'x' || s[1] == 'X')) {
        if (!isxdigit(static_cast<unsigned char>(s[2]))) return false;
        const unsigned long long u = strtoull(s.c_str() + 2, &end, 16);
        if (errno != 0 || *end != '\0' || u > static_cast<unsigned long long>(kInt32Max) * 2 + 1) {
            return false;
        }
        // Hexadecimal gives the bit pattern of a 32-bit field, so 0x80000000 is INT32_MIN.
        value = max <= kInt32Max && u > static_cast<unsigned long long>(kInt32Max)
                        ? static_cast<int32_t>(static_cast<uint32_t>(u))
                        : static_cast<int64_t>(u);
    } else {
        const char first = s[0] == '-' || s[0] == '+' ? (s.size() > 1 ? s[1] : '\0') : s[0];
        if (!isdigit(static_cast<unsigned char>(first))) return false;
        value = strtoll(s.c_str(), &end, 10);
        if (errno != 0 || *end != '\0') return false;
    }
    if (value < min || value > max) return false;
    *out = value;
    return true;
}

bool parseRect(const std::string& s, ::aidl::vendor::zarel::hardware::cwb::Rect* out) {
    const std::vector<std::string> parts = split(s, ',');
    if (parts.size() != 4) return false;
    int64_t v[4];
    for (int i = 0; i < 4; ++i) {
        if (!parseInt(parts[i], kInt32Min, kInt32Max, &v[i])) return false;
    }
    out->left = static_cast<int32_t>(v[0]);
    out->top = static_cast<int32_t>(v[1]);
    out->right = static_cast<int32_t>(v[2]);
    out->bottom = static_cast<int32_t>(v[3]);
    return true;
}

}  // namespace cwbtool
