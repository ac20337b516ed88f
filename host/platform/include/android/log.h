// Host stand-in for <android/log.h>: priorities and the logging entry points of liblog.
// Every line is recorded in-process (see <host/log_capture.h>) instead of going to logd.
#pragma once

#include <stdarg.h>

typedef enum android_LogPriority {
    ANDROID_LOG_UNKNOWN = 0,
    ANDROID_LOG_DEFAULT,
    ANDROID_LOG_VERBOSE,
    ANDROID_LOG_DEBUG,
    ANDROID_LOG_INFO,
    ANDROID_LOG_WARN,
    ANDROID_LOG_ERROR,
    ANDROID_LOG_FATAL,
    ANDROID_LOG_SILENT,
} android_LogPriority;

#ifdef __cplusplus
extern "C" {
#endif

int __android_log_write(int prio, const char* tag, const char* text);
int __android_log_print(int prio, const char* tag, const char* fmt, ...)
        __attribute__((__format__(__printf__, 3, 4)));
int __android_log_vprint(int prio, const char* tag, const char* fmt, va_list ap)
        __attribute__((__format__(__printf__, 3, 0)));

#ifdef __cplusplus
}
#endif
