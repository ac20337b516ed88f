// Manual clock (see <host/clock.h>) and the link-time wraps that route the process's time
// through it.
#include <errno.h>
#include <host/clock.h>
#include <pthread.h>
#include <time.h>

#include <algorithm>
#include <atomic>

namespace {

std::atomic<bool> gManual{false};
std::atomic<int64_t> gMonotonicNs{0};
int64_t gBootOffsetNs = 0;
int64_t gRealtimeOffsetNs = 0;

int64_t kernelNs(clockid_t id) {
    timespec t{};
    clock_gettime(id, &t);
    return static_cast<int64_t>(t.tv_sec) * 1000000000LL + t.tv_nsec;
}

int64_t toNs(const timespec& t) {
    return static_cast<int64_t>(t.tv_sec) * 1000000000LL + t.tv_nsec;
}

int64_t offsetOf(clockid_t id) {
    switch (id) {
        case CLOCK_BOOTTIME:
            return gBootOffsetNs;
        case CLOCK_REALTIME:
            return gRealtimeOffsetNs;
        default:
            return 0;
    }
}

// Moves the manual clock up to an absolute deadline of the given clock, never back.
void advanceTo(clockid_t id, const timespec* deadline) {
    if (deadline == nullptr) return;
    const int64_t target = toNs(*deadline) - offsetOf(id);
    int64_t now = gMonotonicNs.load(std::memory_order_relaxed);
    while (now < target &&
           !gMonotonicNs.compare_exchange_weak(now, target, std::memory_order_relaxed)) {
    }
}

}  // namespace

namespace host::clock {

void setManual(bool manual) {
    if (manual && !gManual.load()) {
        const int64_t monotonic = kernelNs(CLOCK_MONOTONIC);
        gBootOffsetNs = kernelNs(CLOCK_BOOTTIME) - monotonic;
        gRealtimeOffsetNs = kernelNs(CLOCK_REALTIME) - monotonic;
        gMonotonicNs.store(monotonic);
    }
    gManual.store(manual);
}

bool isManual() {
    return gManual.load(std::memory_order_relaxed);
}

void advance(std::chrono::nanoseconds by) {
    if (by.count() > 0) gMonotonicNs.fetch_add(by.count(), std::memory_order_relaxed);
}

int64_t monotonicNs() {
    return gMonotonicNs.load(std::memory_order_relaxed);
}

// Manual time of a kernel clock, for systemTime(); false for clocks that stay the kernel's
// (process and thread CPU time).
bool manualTime(clockid_t id, int64_t* ns) {
    if (!isManual()) return false;
    if (id != CLOCK_MONOTONIC && id != CLOCK_BOOTTIME && id != CLOCK_REALTIME) return false;
    *ns = monotonicNs() + offsetOf(id);
    return true;
}

}  // namespace host::clock

// ---- Link-time wraps ----

using SteadyTimePoint = std::chrono::steady_clock::time_point;

// std::chrono::steady_clock::now() of libstdc++, by its symbol. The real one is read from the
// same clock directly rather than through __real_: a libc++ build has no such symbol to wrap.
SteadyTimePoint wrappedSteadyNow() asm("__wrap__ZNSt6chrono3_V212steady_clock3nowEv");

SteadyTimePoint wrappedSteadyNow() {
    if (!host::clock::isManual()) {
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC, &now);
        return SteadyTimePoint(std::chrono::seconds(now.tv_sec) +
                               std::chrono::nanoseconds(now.tv_nsec));
    }
    return SteadyTimePoint(std::chrono::nanoseconds(host::clock::monotonicNs()));
}

extern "C" {

int __real_pthread_cond_clockwait(pthread_cond_t* cond, pthread_mutex_t* mutex, clockid_t clock,
                                  const timespec* abstime);
int __real_pthread_cond_timedwait(pthread_cond_t* cond, pthread_mutex_t* mutex,
                                  const timespec* abstime);
int __real_nanosleep(const timespec* request, timespec* remaining);

// In manual mode a timed wait returns at once, as though its deadline had passed; the mutex
// stays held throughout, which a caller cannot tell from a wait that timed out.
int __wrap_pthread_cond_clockwait(pthread_cond_t* cond, pthread_mutex_t* mutex, clockid_t clock,
                                  const timespec* abstime) {
    if (!host::clock::isManual()) return __real_pthread_cond_clockwait(cond, mutex, clock, abstime);
    advanceTo(clock, abstime);
    return ETIMEDOUT;
}

int __wrap_pthread_cond_timedwait(pthread_cond_t* cond, pthread_mutex_t* mutex,
                                  const timespec* abstime) {
    if (!host::clock::isManual()) return __real_pthread_cond_timedwait(cond, mutex, abstime);
    advanceTo(CLOCK_REALTIME, abstime);
    return ETIMEDOUT;
}

int __wrap_nanosleep(const timespec* request, timespec* remaining) {
    if (!host::clock::isManual()) return __real_nanosleep(request, remaining);
    if (request == nullptr || request->tv_nsec < 0 || request->tv_nsec >= 1000000000L ||
        request->tv_sec < 0) {
        errno = EINVAL;
        return -1;
    }
    host::clock::advance(std::chrono::nanoseconds(toNs(*request)));
    if (remaining != nullptr) *remaining = timespec{};
    return 0;
}

}  // extern "C"
