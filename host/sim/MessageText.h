// Error messages that quote what the user typed, made safe for a terminal.
#pragma once

#include <string>

namespace cwbsim {

// The message with every byte outside printable ASCII written as \xNN, and every word (a run
// without blanks) longer than 64 characters cut there and marked "...", so that a 10 MB token
// or raw control bytes in a session never reach the terminal whole.
std::string printableMessage(const std::string& message);

}  // namespace cwbsim
