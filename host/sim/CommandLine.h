// cwb-sim [--json] [--logs] [--prop NAME=VALUE]... [--frame PNG] [--report DIR] [SCRIPT | -]
#pragma once

#include <string>
#include <vector>

#include "Options.h"

namespace cwbsim {

class CommandLine {
  public:
    enum class Action { Run, Help };

    // False with a message for an argument that makes no sense.
    bool parse(const std::vector<std::string>& args, std::string* error);

    Action action() const { return mAction; }
    const Options& options() const { return mOptions; }
    // Empty for the built-in session, "-" for standard input.
    const std::string& script() const { return mScript; }

    static const char* usage();

  private:
    Action mAction = Action::Run;
    Options mOptions;
    std::string mScript;
};

}  // namespace cwbsim
