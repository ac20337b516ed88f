// Turns session text into commands. Every line is checked before anything is played, so a
// malformed line never leaves a half-played session behind.
#pragma once

#include <functional>
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
    // The same check, handing each command to sink as it is parsed instead of keeping them all,
    // so that a long session is played in bounded memory. A sink that returns false stops the
    // walk; parse then returns true.
    static bool parse(const std::string& text, const std::function<bool(const Command&)>& sink,
                      SessionError* error);
};

}  // namespace cwbsim
