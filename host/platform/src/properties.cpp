// System property stand-in: one process-wide map.
#include <cutils/properties.h>
#include <host/properties.h>

#include <cerrno>
#include <cinttypes>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace {

struct PropertyStore {
    std::mutex mutex;
    std::map<std::string, std::string> values;
};

PropertyStore& store() {
    static PropertyStore* s = new PropertyStore();  // never destroyed: read from any thread
    return *s;
}

std::optional<std::string> lookup(const char* key) {
    if (key == nullptr) return std::nullopt;
    PropertyStore& s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    auto it = s.values.find(key);
    // An empty property reads as unset, as on device.
    if (it == s.values.end() || it->second.empty()) return std::nullopt;
    return it->second;
}

}  // namespace

extern "C" int property_get(const char* key, char* value, const char* default_value) {
    std::optional<std::string> found = lookup(key);
    const char* source = found ? found->c_str() : (default_value != nullptr ? default_value : "");
    size_t length = strnlen(source, PROPERTY_VALUE_MAX - 1);
    memcpy(value, source, length);
    value[length] = '\0';
    return static_cast<int>(length);
}

extern "C" int property_set(const char* key, const char* value) {
    if (key == nullptr || *key == '\0') return -1;
    if (value == nullptr) value = "";
    bool readOnly = strncmp(key, "ro.", 3) == 0;
    if (!readOnly && strlen(value) >= PROPERTY_VALUE_MAX) return -1;
    PropertyStore& s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (readOnly && s.values.count(key) != 0) return -1;
    s.values[key] = value;
    return 0;
}

extern "C" int8_t property_get_bool(const char* key, int8_t default_value) {
    std::optional<std::string> found = lookup(key);
    if (!found) return default_value;
    const std::string& v = *found;
    if (v == "1" || v == "y" || v == "yes" || v == "on" || v == "true") return 1;
    if (v == "0" || v == "n" || v == "no" || v == "off" || v == "false") return 0;
    return default_value;
}

namespace {

int64_t getInt(const char* key, int64_t default_value, int64_t min, int64_t max) {
    std::optional<std::string> found = lookup(key);
    if (!found) return default_value;
    errno = 0;
    char* end = nullptr;
    long long v = strtoll(found->c_str(), &end, 0);
    if (errno != 0 || end == found->c_str() || *end != '\0' || v < min || v > max) {
        return default_value;
    }
    return v;
}

}  // namespace

extern "C" int64_t property_get_int64(const char* key, int64_t default_value) {
    return getInt(key, default_value, INT64_MIN, INT64_MAX);
}

extern "C" int32_t property_get_int32(const char* key, int32_t default_value) {
    return static_cast<int32_t>(getInt(key, default_value, INT32_MIN, INT32_MAX));
}

namespace host::properties {

void set(const std::string& key, const std::string& value) {
    PropertyStore& s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.values[key] = value;
}

void clear() {
    PropertyStore& s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.values.clear();
}

}  // namespace host::properties
