// Host stand-in for <cutils/properties.h>: system properties from one in-process store
// (set them with <host/properties.h>).
#pragma once

#include <stdint.h>

#define PROPERTY_KEY_MAX 32
#define PROPERTY_VALUE_MAX 92

#ifdef __cplusplus
extern "C" {
#endif

// Copies the value of key, or default_value when key is unset or empty, into value, truncated
// to PROPERTY_VALUE_MAX - 1 characters and NUL-terminated. Returns the length copied.
int property_get(const char* key, char* value, const char* default_value);
// Fails (-1) for a missing key, a value of PROPERTY_VALUE_MAX or more characters, or a "ro."
// property that is already set.
int property_set(const char* key, const char* value);
// "1", "y", "yes", "on", "true" give 1; "0", "n", "no", "off", "false" give 0; else the default.
int8_t property_get_bool(const char* key, int8_t default_value);
// Whole-string integers (decimal, 0x hex or 0 octal) in range; else the default.
int64_t property_get_int64(const char* key, int64_t default_value);
int32_t property_get_int32(const char* key, int32_t default_value);

#ifdef __cplusplus
}
#endif
