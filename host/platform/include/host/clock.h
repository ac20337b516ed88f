// Host-only control of the time every clock of the process reports.
//
// By default systemTime(), std::chrono::steady_clock, timed condition-variable waits and
// nanosleep are the kernel's. In manual mode they read one clock that only advance() (or a wait)
// moves: a timed wait or a sleep never blocks, it moves the clock to its deadline and times out,
// as if nothing else happened meanwhile. That suits one driving thread whose vendor completes on
// the caller's thread (the fuzzers); a wait then costs nothing whatever its timeout.
//
// The product keeps calling the real APIs: every executable linked with host_platform wraps
// std::chrono::steady_clock::now, pthread_cond_clockwait, pthread_cond_timedwait and nanosleep
// (-Wl,--wrap), the way the sandbox wraps open and fopen.
#pragma once

#include <time.h>

#include <chrono>
#include <cstdint>

namespace host::clock {

// Turning manual mode on starts the manual clock where the kernel's monotonic clock is now.
void setManual(bool manual);
bool isManual();
// Moves the manual clock forward (negative amounts are ignored).
void advance(std::chrono::nanoseconds by);
// The manual clock's monotonic time in nanoseconds; CLOCK_BOOTTIME and CLOCK_REALTIME keep a
// fixed offset from it.
int64_t monotonicNs();
// For the stand-ins: the manual time of a kernel clock; false when it reads the kernel (manual
// mode off, or a CPU-time clock).
bool manualTime(clockid_t id, int64_t* ns);

}  // namespace host::clock
