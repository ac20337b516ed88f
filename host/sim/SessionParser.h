// Turns session text into commands. Every line is checked before anything is played, so a
// malformed line never leaves a half-played session behind.
#pragma once

#include <string>
#include <vector>

#include "Command.h"

namespace cwbsim {

struct SessionError {
    int line = 0;
    std::string message;
};

class SessionParser {
  public:
    // False at the first malformed line, with its number and what is wrong with it.
    static bool parse(const std::string& text, std::vector<Command>* commands, SessionError* error);
};

}  // namespace cwbsim
