// One JSON object per line, for scripts:
//   {"call":NAME,"status":S,"error":E,...out-values...,"line":N}
//   {"event":"notifyCwbStatus","client":NAME,"status":true|false}
//   {"log":"D|I|W|E","tag":TAG,"text":TEXT}
//   {"expect":true|false,"note":TEXT,"line":N}   true when the device's answer came again
// Commands that are not client calls print nothing.
#pragma once

#include <string>

#include "Printer.h"

namespace cwbsim {

class JsonPrinter : public Printer {
  public:
    using Printer::Printer;

    static std::string quote(const std::string& text);

  protected:
    void printCommand(int line, const std::string& text, const std::string& note) override;
    void printCall(const CallRecord& record) override;
    void printEvent(const std::string& client, bool status) override;
    void printExpect(int line, bool same, const std::string& note) override;
    void printLog(char priority, const std::string& tag, const std::string& text) override;
    void printNote(const std::string& text) override;
};

}  // namespace cwbsim
