// atrace stand-in: events kept in memory instead of written to trace_marker.
#include <cutils/trace.h>
#include <host/trace_recorder.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <mutex>

namespace {

std::atomic<uint64_t> gEnabledTags{0};

struct TraceStore {
    std::mutex mutex;
    std::vector<host::trace::Event> events;
};

TraceStore& store() {
    static TraceStore* s = new TraceStore();  // never destroyed: traced from any thread
    return *s;
}

int64_t currentThread() {
    thread_local const int64_t tid = static_cast<int64_t>(syscall(SYS_gettid));
    return tid;
}

void add(host::trace::Event::Kind kind, const char* name, int64_t value) {
    host::trace::Event event{kind, name != nullptr ? name : "", value, currentThread()};
    TraceStore& s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.events.push_back(std::move(event));
}

}  // namespace

extern "C" uint64_t atrace_get_enabled_tags(void) {
    return gEnabledTags.load(std::memory_order_relaxed);
}

extern "C" void atrace_begin_body(const char* name) {
    add(host::trace::Event::Kind::Begin, name, 0);
}

extern "C" void atrace_end_body(void) {
    add(host::trace::Event::Kind::End, nullptr, 0);
}

extern "C" void atrace_int_body(const char* name, int32_t value) {
    add(host::trace::Event::Kind::Counter, name, value);
}

extern "C" void atrace_int64_body(const char* name, int64_t value) {
    add(host::trace::Event::Kind::Counter, name, value);
}

namespace host::trace {

void setEnabledTags(uint64_t tags) {
    gEnabledTags.store(tags, std::memory_order_relaxed);
}

std::vector<Event> events() {
    TraceStore& s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    return s.events;
}

void clear() {
    TraceStore& s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.events.clear();
}

std::vector<int64_t> counterValues(const std::string& name) {
    TraceStore& s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    std::vector<int64_t> values;
    for (const Event& e : s.events) {
        if (e.kind == Event::Kind::Counter && e.name == name) values.push_back(e.value);
    }
    return values;
}

size_t sectionCount(const std::string& name) {
    TraceStore& s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    size_t n = 0;
    for (const Event& e : s.events) {
        if (e.kind == Event::Kind::Begin && e.name == name) ++n;
    }
    return n;
}

}  // namespace host::trace
