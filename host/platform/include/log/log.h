// Host stand-in for <log/log.h>: the ALOG macros over __android_log_print.
#pragma once

#include <android/log.h>
#include <stdlib.h>

#ifndef LOG_TAG
#define LOG_TAG ""
#endif

// Android builds define NDEBUG, so verbose logging is compiled out unless a file opts in with
// "#define LOG_NDEBUG 0" before including this header.
#ifndef LOG_NDEBUG
#define LOG_NDEBUG 1
#endif

#define ALOG(priority, tag, ...) ((void)__android_log_print(ANDROID_##priority, tag, __VA_ARGS__))

#if LOG_NDEBUG
// Still type-checks the arguments, but never formats or records anything.
#define ALOGV(...)                                   \
    do {                                             \
        if (0) {                                     \
            ALOG(LOG_VERBOSE, LOG_TAG, __VA_ARGS__); \
        }                                            \
    } while (0)
#else
#define ALOGV(...) ALOG(LOG_VERBOSE, LOG_TAG, __VA_ARGS__)
#endif

#define ALOGD(...) ALOG(LOG_DEBUG, LOG_TAG, __VA_ARGS__)
#define ALOGI(...) ALOG(LOG_INFO, LOG_TAG, __VA_ARGS__)
#define ALOGW(...) ALOG(LOG_WARN, LOG_TAG, __VA_ARGS__)
#define ALOGE(...) ALOG(LOG_ERROR, LOG_TAG, __VA_ARGS__)

#define ALOGD_IF(cond, ...) ((cond) ? ALOGD(__VA_ARGS__) : (void)0)
#define ALOGI_IF(cond, ...) ((cond) ? ALOGI(__VA_ARGS__) : (void)0)
#define ALOGW_IF(cond, ...) ((cond) ? ALOGW(__VA_ARGS__) : (void)0)
#define ALOGE_IF(cond, ...) ((cond) ? ALOGE(__VA_ARGS__) : (void)0)

// Records the message at fatal priority, then aborts, as liblog does.
#define LOG_ALWAYS_FATAL(...) \
    ((void)__android_log_print(ANDROID_LOG_FATAL, LOG_TAG, __VA_ARGS__), abort())
#define LOG_ALWAYS_FATAL_IF(cond, ...) ((cond) ? LOG_ALWAYS_FATAL(__VA_ARGS__) : (void)0)
