// cwb-sim as a library: the command line, and playing a session from text into streams, so that
// tests run sessions in-process and read what a user would see.
#pragma once

#include <istream>
#include <ostream>
#include <string>
#include <vector>

#include "Options.h"

namespace cwbsim {

class Simulator {
  public:
    enum Exit { kPlayed = 0, kFailed = 1, kMalformed = 2 };

    // args without the program name; `in` is read for the session "-".
    static int main(const std::vector<std::string>& args, std::istream& in, std::ostream& out,
                    std::ostream& err);
    // source names the session in messages; relative input files are looked up in baseDir.
    static int play(const std::string& text, const std::string& source, const std::string& baseDir,
                    const Options& options, std::ostream& out, std::ostream& err);
};

}  // namespace cwbsim
