// Host-only view of the atrace calls made through <cutils/trace.h> and <utils/Trace.h>.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace host::trace {

// Tags whose calls are recorded (ATRACE_TAG_* bits). The default, 0, records nothing.
void setEnabledTags(uint64_t tags);

struct Event {
    enum class Kind { Begin, End, Counter } kind;
    std::string name;    // empty for End, which names nothing, as in the kernel trace
    int64_t value = 0;   // counters only
    int64_t thread = 0;  // kernel thread id of the caller, to pair Begin and End per thread
};

// Snapshot of every recorded event, oldest first.
std::vector<Event> events();
void clear();
// Values of the counter name, in recording order.
std::vector<int64_t> counterValues(const std::string& name);
// Number of sections begun under name.
size_t sectionCount(const std::string& name);

}  // namespace host::trace
