// Host stand-in for <utils/Timers.h>: nanosecond time on the real kernel clocks.
#pragma once

#include <stdint.h>

typedef int64_t nsecs_t;  // nanoseconds

static constexpr inline nsecs_t seconds_to_nanoseconds(nsecs_t secs) {
    return secs * 1000000000;
}
static constexpr inline nsecs_t milliseconds_to_nanoseconds(nsecs_t ms) {
    return ms * 1000000;
}
static constexpr inline nsecs_t microseconds_to_nanoseconds(nsecs_t us) {
    return us * 1000;
}
static constexpr inline nsecs_t nanoseconds_to_seconds(nsecs_t ns) {
    return ns / 1000000000;
}
static constexpr inline nsecs_t nanoseconds_to_milliseconds(nsecs_t ns) {
    return ns / 1000000;
}
static constexpr inline nsecs_t nanoseconds_to_microseconds(nsecs_t ns) {
    return ns / 1000;
}

static constexpr inline nsecs_t s2ns(nsecs_t v) {
    return seconds_to_nanoseconds(v);
}
static constexpr inline nsecs_t ms2ns(nsecs_t v) {
    return milliseconds_to_nanoseconds(v);
}
static constexpr inline nsecs_t us2ns(nsecs_t v) {
    return microseconds_to_nanoseconds(v);
}
static constexpr inline nsecs_t ns2s(nsecs_t v) {
    return nanoseconds_to_seconds(v);
}
static constexpr inline nsecs_t ns2ms(nsecs_t v) {
    return nanoseconds_to_milliseconds(v);
}
static constexpr inline nsecs_t ns2us(nsecs_t v) {
    return nanoseconds_to_microseconds(v);
}

enum {
    SYSTEM_TIME_REALTIME = 0,   // CLOCK_REALTIME
    SYSTEM_TIME_MONOTONIC = 1,  // CLOCK_MONOTONIC
    SYSTEM_TIME_PROCESS = 2,    // CLOCK_PROCESS_CPUTIME_ID
    SYSTEM_TIME_THREAD = 3,     // CLOCK_THREAD_CPUTIME_ID
    SYSTEM_TIME_BOOTTIME = 4,   // CLOCK_BOOTTIME
};

// Current time of the given clock; an unknown clock reads CLOCK_MONOTONIC.
nsecs_t systemTime(int clock = SYSTEM_TIME_MONOTONIC);
