#include "Printer.h"

#include <android/log.h>

namespace cwbsim {

void Printer::command(int line, const std::string& text, const std::string& note) {
    std::lock_guard<std::mutex> lock(mMutex);
    printCommand(line, text, note);
    mOut.flush();
}

void Printer::call(const CallRecord& record) {
    std::lock_guard<std::mutex> lock(mMutex);
    printCall(record);
    mOut.flush();
}

void Printer::event(const std::string& client, bool status) {
    std::lock_guard<std::mutex> lock(mMutex);
    printEvent(client, status);
    mOut.flush();
}

void Printer::log(int priority, const std::string& tag, const std::string& text) {
    // liblog keeps the caller's trailing newline; a printed line ends once.
    std::string trimmed = text;
    while (!trimmed.empty() && (trimmed.back() == '\n' || trimmed.back() == '\r')) {
        trimmed.pop_back();
    }
    std::lock_guard<std::mutex> lock(mMutex);
    printLog(priorityLetter(priority), tag, trimmed);
    mOut.flush();
}

void Printer::note(const std::string& text) {
    std::lock_guard<std::mutex> lock(mMutex);
    printNote(text);
    mOut.flush();
}

char Printer::priorityLetter(int priority) {
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
        default:
            return '?';
    }
}

}  // namespace cwbsim
