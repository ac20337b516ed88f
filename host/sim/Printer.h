// Where a session's results go. Log lines and client callbacks may arrive on other threads, so
// every entry point serialises on one lock and the implementations never see concurrent calls.
#pragma once

#include <mutex>
#include <ostream>
#include <string>

#include "CallRecord.h"

namespace cwbsim {

class Printer {
  public:
    explicit Printer(std::ostream& out) : mOut(out) {}
    virtual ~Printer() = default;
    Printer(const Printer&) = delete;
    Printer& operator=(const Printer&) = delete;

    // A session command that is not a client call; note says what it did, when worth saying.
    void command(int line, const std::string& text, const std::string& note);
    void call(const CallRecord& record);
    void event(const std::string& client, bool status);
    // An expect line: whether the replayed answer is the one the device recorded, and how.
    void expect(int line, bool same, const std::string& note);
    void log(int priority, const std::string& tag, const std::string& text);
    // A log line already trimmed, with its priority letter.
    void logLine(char priority, const std::string& tag, const std::string& text);
    // Free text for people (a title, a description); scripts do not see it.
    void note(const std::string& text);

    // D, I, W, E (and V, F) for the Android priorities.

  protected:
    virtual void printCommand(int line, const std::string& text, const std::string& note) = 0;
    virtual void printCall(const CallRecord& record) = 0;
    virtual void printEvent(const std::string& client, bool status) = 0;
    virtual void printExpect(int line, bool same, const std::string& note) = 0;
    virtual void printLog(char priority, const std::string& tag, const std::string& text) = 0;
    virtual void printNote(const std::string& text) = 0;

    std::ostream& mOut;

  private:
    std::mutex mMutex;
};

}  // namespace cwbsim
