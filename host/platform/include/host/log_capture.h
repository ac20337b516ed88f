// Host-only view of everything logged through liblog (ALOG*, CHECK, LOG(...)).
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace host::log {

struct Line {
    int priority;  // ANDROID_LOG_*
    std::string tag;
    std::string text;  // the formatted message exactly as logged, trailing "\n" included
};

// Lines kept: the most recent ones, so that a long session or soak logs in bounded memory. The
// listener still sees every line.
constexpr size_t kWindow = 4096;

// Snapshot of the recorded lines (at most kWindow), oldest first.
std::vector<Line> lines();
// Logcat's letter for a priority: V, D, I, W, E, F, S, or ? for anything else.
char priorityLetter(int priority);
void clear();
// Lines whose priority and whole text match exactly.
size_t count(int priority, const std::string& text);
bool contains(int priority, const std::string& text);
// Lines of any priority whose text contains fragment.
size_t countContaining(const std::string& fragment);
// Also writes each line to stderr, logcat style: "D CwbService: text". Fatal lines are always
// written there.
void setEcho(bool echo);
// Called for every line, in recording order, with the log lock held: the listener must not log.
// nullptr removes it.
void setListener(std::function<void(const Line&)> listener);

}  // namespace host::log
