// A readable table: one row per session line (sleeps and comments left out), with the service's
// answers decoded, client callbacks and log lines in between as they happen.
#pragma once

#include <string>
#include <vector>

#include "Printer.h"

namespace cwbsim {

class TablePrinter : public Printer {
  public:
    using Printer::Printer;

    // The answer column of a call, one string per output line.
    static std::vector<std::string> answer(const CallRecord& record);
    static std::string errorName(int32_t error);

  protected:
    void printCommand(int line, const std::string& text, const std::string& note) override;
    void printCall(const CallRecord& record) override;
    void printEvent(const std::string& client, bool status) override;
    void printExpect(int line, bool same, const std::string& note) override;
    void printLog(char priority, const std::string& tag, const std::string& text) override;
    void printNote(const std::string& text) override;

  private:
    void header();
    void row(const std::string& line, const std::string& request, const std::string& status,
             const std::string& error, const std::vector<std::string>& answer);

    bool mHeaderDone = false;
};

}  // namespace cwbsim
