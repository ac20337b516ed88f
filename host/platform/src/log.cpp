// liblog stand-in: every line is kept in memory for the tests and optionally echoed to stderr.
#include <android/log.h>
#include <host/log_capture.h>

#include <cstdio>
#include <deque>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace {

struct LogStore {
    std::mutex mutex;
    std::deque<host::log::Line> lines;
    std::function<void(const host::log::Line&)> listener;
    bool echo = false;
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
    s.lines.push_back(std::move(line));
    if (s.listener) s.listener(s.lines.back());
    if (s.lines.size() > host::log::kWindow) s.lines.pop_front();
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
    return {s.lines.begin(), s.lines.end()};
}

void clear() {
    LogStore& s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.lines.clear();
}

size_t count(int priority, const std::string& text) {
    LogStore& s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    size_t n = 0;
    for (const Line& line : s.lines) {
        if (line.priority == priority && line.text == text) ++n;
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
    for (const Line& line : s.lines) {
        if (line.text.find(fragment) != std::string::npos) ++n;
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
