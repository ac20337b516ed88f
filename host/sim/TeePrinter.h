// Sends everything to two printers: what the user reads, and the table kept for a report.
#pragma once

#include "Printer.h"

namespace cwbsim {

class TeePrinter : public Printer {
  public:
    TeePrinter(std::ostream& unused, Printer& first, Printer& second)
        : Printer(unused), mFirst(first), mSecond(second) {}

  protected:
    void printCommand(int line, const std::string& text, const std::string& note) override {
        mFirst.command(line, text, note);
        mSecond.command(line, text, note);
    }
    void printCall(const CallRecord& record) override {
        mFirst.call(record);
        mSecond.call(record);
    }
    void printEvent(const std::string& client, bool status) override {
        mFirst.event(client, status);
        mSecond.event(client, status);
    }
    void printExpect(int line, bool same, const std::string& note) override {
        mFirst.expect(line, same, note);
        mSecond.expect(line, same, note);
    }
    void printLog(char priority, const std::string& tag, const std::string& text) override {
        mFirst.logLine(priority, tag, text);
        mSecond.logLine(priority, tag, text);
    }
    void printNote(const std::string& text) override {
        mFirst.note(text);
        mSecond.note(text);
    }

  private:
    Printer& mFirst;
    Printer& mSecond;
};

}  // namespace cwbsim
