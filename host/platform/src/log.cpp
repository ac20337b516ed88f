// liblog stand-in: every line is kept in memory for the tests and optionally echoed to stderr.
#include <android/log.h>
#include <host/log_capture.h>

#include <cstdio>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace {

// The last kWindow lines in a ring allocated once: recording a line allocates only its text, as
// many times on every call whatever the ring's position, so tests can count a request's heap use.
struct LogStore {
    std::mutex mutex;
    std::vector<host::log::Line> ring = std::vector<host::log::Line>(host::log::kWindow);
    size_t first = 0;  // the oldest line
    size_t size = 0;
    std::function<void(const host::log::Line&)> listener;
    bool echo = false;

    const host::log::Line& at(size_t i) const { return ring[(first + i) % ring.size()]; }
};

LogStore& store() {
    // Never destroyed: threads may still log while static objects are torn down.
    static LogStore* s = new LogStore();
    return *s;
}

void writeStderr(const host::log::Line& line) {
    bool newline = line.text.empty() || line.text.back() != '\n';
    fprintf(stderr, "%c %s: %s%s", host::log::priorityLetter(line.priority), line.tag.c_str(),
            line.text.c_str(), newline ? "\n" : "");
}

void record(int priority, const char* tag, std::string text) {
    host::log::Line line{priority, tag != nullptr ? tag : "", std::move(text)};
    LogStore& s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    // A fatal line is usually followed by abort(): always say why.
    if (s.echo || priority == ANDROID_LOG_FATAL) writeStderr(line);
    host::log::Line& slot = s.ring[(s.first + s.size) % s.ring.size()];
    if (s.size == s.ring.size()) {
        s.first = (s.first + 1) % s.ring.size();
    } else {
        ++s.size;
    }
    slot = std::move(line);
    if (s.listener) s.listener(slot);
}

std::string format(const char* fmt, va_list ap) {
    if (fmt == nullptr) return "";
    va_list copy;
    va_copy(copy, ap);
    char buffer[512];
    int n = vsnprintf(buffer, sizeof(buffer), fmt, copy);
    va_end(copy);
    if (n < 0) return "";
    if (static_cast<size_t>(n) < sizeof(buffer)) return std::string(buffer, n);
    std::string text(static_cast<size_t>(n) + 1, '\0');
    vsnprintf(text.data(), text.size(), fmt, ap);
    text.resize(n);
    return text;
}

}  // namespace

extern "C" int __android_log_write(int prio, const char* tag, const char* text) {
    std::string message = text != nullptr ? text : "";
    int length = static_cast<int>(message.size());
    record(prio, tag, std::move(message));
    return length;
}

extern "C" int __android_log_vprint(int prio, const char* tag, const char* fmt, va_list ap) {
    std::string message = format(fmt, ap);
    int length = static_cast<int>(message.size());
    record(prio, tag, std::move(message));
    return length;
}

extern "C" int __android_log_print(int prio, const char* tag, const char* fmt, ...) {
    va_list ap;
    va_start(ap, fmt);
    int length = __android_log_vprint(prio, tag, fmt, ap);
    va_end(ap);
    return length;
}

namespace host::log {

char priorityLetter(int priority) {
    switch (priority) {
        case ANDROID_LOG_VERBOSE:
            return 'V';
        case ANDROID_LOG_DEBUG:
            return 'D';
        case ANDROID_LOG_INFO:
            return 'I';
        case ANDROID_LOG_WARN:
            return 'W';
        case ANDROID_LOG_ERROR:
            return 'E';
        case ANDROID_LOG_FATAL:
            return 'F';
        case ANDROID_LOG_SILENT:
            return 'S';
        default:
            return '?';
    }
}

std::vector<Line> lines() {
    LogStore& s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    std::vector<Line> out;
    out.reserve(s.size);
    for (size_t i = 0; i < s.size; ++i) out.push_back(s.at(i));
    return out;
}

void clear() {
    LogStore& s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.first = 0;
    s.size = 0;
}

size_t count(int priority, const std::string& text) {
    LogStore& s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    size_t n = 0;
    for (size_t i = 0; i < s.size; ++i) {
        if (s.at(i).priority == priority && s.at(i).text == text) ++n;
    }
    return n;
}

bool contains(int priority, const std::string& text) {
    return count(priority, text) > 0;
}

size_t countContaining(const std::string& fragment) {
    LogStore& s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    size_t n = 0;
    for (size_t i = 0; i < s.size; ++i) {
        if (s.at(i).text.find(fragment) != std::string::npos) ++n;
    }
    return n;
}

void setEcho(bool echo) {
    LogStore& s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.echo = echo;
}

void setListener(std::function<void(const Line&)> listener) {
    std::function<void(const Line&)> previous;
    LogStore& s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    previous.swap(s.listener);
    s.listener = std::move(listener);
}

}  // namespace host::log
