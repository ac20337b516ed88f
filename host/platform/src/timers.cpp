// libutils timer stand-in on the host's kernel clocks, or on the manual clock of <host/clock.h>.
#include <host/clock.h>
#include <time.h>
#include <utils/Timers.h>

nsecs_t systemTime(int clock) {
    clockid_t id;
    switch (clock) {
        case SYSTEM_TIME_REALTIME:
            id = CLOCK_REALTIME;
            break;
        case SYSTEM_TIME_PROCESS:
            id = CLOCK_PROCESS_CPUTIME_ID;
            break;
        case SYSTEM_TIME_THREAD:
            id = CLOCK_THREAD_CPUTIME_ID;
            break;
        case SYSTEM_TIME_BOOTTIME:
            id = CLOCK_BOOTTIME;
            break;
        case SYSTEM_TIME_MONOTONIC:
        default:
            id = CLOCK_MONOTONIC;
            break;
    }
    int64_t manual = 0;
    if (host::clock::manualTime(id, &manual)) return manual;
    timespec t{};
    clock_gettime(id, &t);
    return static_cast<nsecs_t>(t.tv_sec) * 1000000000LL + t.tv_nsec;
}
