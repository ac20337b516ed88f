// Host stand-in for <android-base/logging.h>: CHECK, CHECK_xx and the LOG(severity) stream.
// Messages go through liblog under the file's LOG_TAG; FATAL ones are also written to stderr
// and abort the process.
#pragma once

#include <android/log.h>

#include <cstddef>
#include <ostream>
#include <sstream>
#include <type_traits>

// As in libbase, the tag is the LOG_TAG known where this header is first included.
#ifndef _LOG_TAG_INTERNAL
#ifdef LOG_TAG
#define _LOG_TAG_INTERNAL LOG_TAG
#else
#define _LOG_TAG_INTERNAL nullptr
#endif
#endif

namespace android::base {

enum LogSeverity {
    VERBOSE,
    DEBUG,
    INFO,
    WARNING,
    ERROR,
    FATAL_WITHOUT_ABORT,
    FATAL,
};

class LogMessage {
  public:
    LogMessage(const char* file, unsigned int line, LogSeverity severity, const char* tag);
    LogMessage(const LogMessage&) = delete;
    LogMessage& operator=(const LogMessage&) = delete;
    // Emits the message; for FATAL it does not return.
    ~LogMessage();

    std::ostream& stream() { return mStream; }

  private:
    LogSeverity mSeverity;
    const char* mTag;
    std::ostringstream mStream;
};

// Lets a CHECK expand to a single void expression: "cond ? (void)0 : Voidify() & stream << x".
struct LogMessageVoidify {
    void operator&(std::ostream&) {}
};

// Prints enums as their value and null pointers readably, so CHECK_EQ works on any scalar.
template <typename T>
decltype(auto) printable(const T& value) {
    if constexpr (std::is_enum_v<T>) {
        return static_cast<std::underlying_type_t<T>>(value);
    } else if constexpr (std::is_same_v<T, std::nullptr_t>) {
        return "nullptr";
    } else {
        return (value);
    }
}

template <typename L, typename R>
struct EagerEvaluator {
    EagerEvaluator(L l, R r) : lhs(l), rhs(r) {}
    L lhs;
    R rhs;
};

template <typename L, typename R>
EagerEvaluator<L, R> MakeEagerEvaluator(L lhs, R rhs) {
    return EagerEvaluator<L, R>(lhs, rhs);
}

}  // namespace android::base

#define LOG(severity)                                                                             \
    ::android::base::LogMessage(__FILE__, __LINE__, ::android::base::severity, _LOG_TAG_INTERNAL) \
            .stream()

#define CHECK(x)                                                                              \
    (__builtin_expect(!!(x), 1))                                                              \
            ? (void)0                                                                         \
            : ::android::base::LogMessageVoidify() &                                          \
                      ::android::base::LogMessage(__FILE__, __LINE__, ::android::base::FATAL, \
                                                  _LOG_TAG_INTERNAL)                          \
                                      .stream()                                               \
                              << "Check failed: " #x << " "

// Both sides are evaluated exactly once; the message shows the expressions and their values.
#define CHECK_OP(LHS, RHS, OP)                                                                 \
    for (auto _values = ::android::base::MakeEagerEvaluator(LHS, RHS);                         \
         __builtin_expect(!(_values.lhs OP _values.rhs), 0);)                                  \
    ::android::base::LogMessage(__FILE__, __LINE__, ::android::base::FATAL, _LOG_TAG_INTERNAL) \
                    .stream()                                                                  \
            << "Check failed: " #LHS " " #OP " " #RHS " (" #LHS "="                            \
            << ::android::base::printable(_values.lhs) << ", " #RHS "="                        \
            << ::android::base::printable(_values.rhs) << ") "

#define CHECK_EQ(x, y) CHECK_OP(x, y, ==)
#define CHECK_NE(x, y) CHECK_OP(x, y, !=)
#define CHECK_LE(x, y) CHECK_OP(x, y, <=)
#define CHECK_LT(x, y) CHECK_OP(x, y, <)
#define CHECK_GE(x, y) CHECK_OP(x, y, >=)
#define CHECK_GT(x, y) CHECK_OP(x, y, >)
