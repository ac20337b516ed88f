// Host stand-in for <cutils/trace.h>: atrace tags and calls, recorded in-process
// (see <host/trace_recorder.h>) instead of written to the kernel trace buffer.
#pragma once

#include <stdbool.h>
#include <stdint.h>

#define ATRACE_TAG_NEVER 0
#define ATRACE_TAG_ALWAYS (1 << 0)
#define ATRACE_TAG_GRAPHICS (1 << 1)
#define ATRACE_TAG_INPUT (1 << 2)
#define ATRACE_TAG_VIEW (1 << 3)
#define ATRACE_TAG_WEBVIEW (1 << 4)
#define ATRACE_TAG_WINDOW_MANAGER (1 << 5)
#define ATRACE_TAG_ACTIVITY_MANAGER (1 << 6)
#define ATRACE_TAG_SYNC_MANAGER (1 << 7)
#define ATRACE_TAG_AUDIO (1 << 8)
#define ATRACE_TAG_VIDEO (1 << 9)
#define ATRACE_TAG_CAMERA (1 << 10)
#define ATRACE_TAG_HAL (1 << 11)
#define ATRACE_TAG_APP (1 << 12)
#define ATRACE_TAG_RESOURCES (1 << 13)
#define ATRACE_TAG_DALVIK (1 << 14)
#define ATRACE_TAG_RS (1 << 15)
#define ATRACE_TAG_BIONIC (1 << 16)
#define ATRACE_TAG_POWER (1 << 17)
#define ATRACE_TAG_PACKAGE_MANAGER (1 << 18)
#define ATRACE_TAG_SYSTEM_SERVER (1 << 19)
#define ATRACE_TAG_DATABASE (1 << 20)
#define ATRACE_TAG_NETWORK (1 << 21)
#define ATRACE_TAG_ADB (1 << 22)
#define ATRACE_TAG_VIBRATOR (1 << 23)
#define ATRACE_TAG_AIDL (1 << 24)
#define ATRACE_TAG_NNAPI (1 << 25)
#define ATRACE_TAG_RRO (1 << 26)
#define ATRACE_TAG_THERMAL (1 << 27)
#define ATRACE_TAG_LAST ATRACE_TAG_THERMAL
#define ATRACE_TAG_VALID_MASK ((ATRACE_TAG_LAST - 1) | ATRACE_TAG_LAST)

#ifndef ATRACE_TAG
#define ATRACE_TAG ATRACE_TAG_NEVER
#elif ATRACE_TAG > ATRACE_TAG_VALID_MASK
#error ATRACE_TAG must be defined to be one of the tags defined in cutils/trace.h
#endif

#ifdef __cplusplus
extern "C" {
#endif

uint64_t atrace_get_enabled_tags(void);
void atrace_begin_body(const char* name);
void atrace_end_body(void);
void atrace_int_body(const char* name, int32_t value);
void atrace_int64_body(const char* name, int64_t value);

static inline uint64_t atrace_is_tag_enabled(uint64_t tag) {
    return atrace_get_enabled_tags() & tag;
}

static inline void atrace_begin(uint64_t tag, const char* name) {
    if (atrace_is_tag_enabled(tag)) atrace_begin_body(name);
}

static inline void atrace_end(uint64_t tag) {
    if (atrace_is_tag_enabled(tag)) atrace_end_body();
}

static inline void atrace_int(uint64_t tag, const char* name, int32_t value) {
    if (atrace_is_tag_enabled(tag)) atrace_int_body(name, value);
}

static inline void atrace_int64(uint64_t tag, const char* name, int64_t value) {
    if (atrace_is_tag_enabled(tag)) atrace_int64_body(name, value);
}

#ifdef __cplusplus
}
#endif

#define ATRACE_ENABLED() atrace_is_tag_enabled(ATRACE_TAG)
#define ATRACE_BEGIN(name) atrace_begin(ATRACE_TAG, name)
#define ATRACE_END() atrace_end(ATRACE_TAG)
#define ATRACE_INT(name, value) atrace_int(ATRACE_TAG, name, value)
#define ATRACE_INT64(name, value) atrace_int64(ATRACE_TAG, name, value)
