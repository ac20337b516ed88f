#include "Printer.h"

#include <host/log_capture.h>

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

void Printer::expect(int line, bool same, const std::string& note) {
    std::lock_guard<std::mutex> lock(mMutex);
    printExpect(line, same, note);
    mOut.flush();
}

void Printer::log(int priority, const std::string& tag, const std::string& text) {
    // liblog keeps the caller's trailing newline; a printed line ends once.
    std::string trimmed = text;
    while (!trimmed.empty() && (trimmed.back() == '\n' || trimmed.back() == '\r')) {
        trimmed.pop_back();
    }
    logLine(host::log::priorityLetter(priority), tag, trimmed);
}

void Printer::logLine(char priority, const std::string& tag, const std::string& text) {
    std::lock_guard<std::mutex> lock(mMutex);
    printLog(priority, tag, text);
    mOut.flush();
}

void Printer::note(const std::string& text) {
    std::lock_guard<std::mutex> lock(mMutex);
    printNote(text);
    mOut.flush();
}

}  // namespace cwbsim
