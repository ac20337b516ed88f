// Host stand-in for <utils/Trace.h>: scoped trace sections over <cutils/trace.h>.
#pragma once

#include <cutils/trace.h>

#define ATRACE_NAME(name) \
    ::android::ScopedTrace ATRACE_UNIQUE_NAME_(___tracer, __LINE__)(ATRACE_TAG, name)
#define ATRACE_CALL() ATRACE_NAME(__FUNCTION__)

#define ATRACE_UNIQUE_NAME_(base, line) ATRACE_UNIQUE_NAME_JOIN_(base, line)
#define ATRACE_UNIQUE_NAME_JOIN_(base, line) base##line

namespace android {

class ScopedTrace {
  public:
    ScopedTrace(uint64_t tag, const char* name) : mTag(tag) { atrace_begin(mTag, name); }
    ~ScopedTrace() { atrace_end(mTag); }
    ScopedTrace(const ScopedTrace&) = delete;
    ScopedTrace& operator=(const ScopedTrace&) = delete;

  private:
    uint64_t mTag;
};

}  // namespace android
