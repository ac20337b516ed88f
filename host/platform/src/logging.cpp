// libbase LOG/CHECK stand-in over the liblog stand-in.
#include <android-base/logging.h>
#include <android/log.h>

#include <cstdlib>

namespace android::base {
namespace {

int toPriority(LogSeverity severity) {
    switch (severity) {
        case VERBOSE:
            return ANDROID_LOG_VERBOSE;
        case DEBUG:
            return ANDROID_LOG_DEBUG;
        case INFO:
            return ANDROID_LOG_INFO;
        case WARNING:
            return ANDROID_LOG_WARN;
        case ERROR:
            return ANDROID_LOG_ERROR;
        case FATAL_WITHOUT_ABORT:
        case FATAL:
            return ANDROID_LOG_FATAL;
    }
    return ANDROID_LOG_FATAL;
}

}  // namespace

LogMessage::LogMessage(const char* /*file*/, unsigned int /*line*/, LogSeverity severity,
                       const char* tag)
    : mSeverity(severity), mTag(tag) {}

LogMessage::~LogMessage() {
    const std::string text = mStream.str();
    // Fatal lines also go to stderr, so a failed CHECK explains the abort.
    __android_log_write(toPriority(mSeverity), mTag, text.c_str());
    if (mSeverity == FATAL) abort();
}

}  // namespace android::base
