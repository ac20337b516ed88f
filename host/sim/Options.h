// What the command line asks of a run, besides the session itself.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace cwbsim {

struct Options {
    bool json = false;  // one JSON object per line instead of the table
    bool logs = false;  // also print the service's log lines
    // Set before boot, after the session's own prop lines, so they win.
    std::vector<std::pair<std::string, std::string>> props;
    std::string frame;   // PNG shown on the main panel; empty for none
    std::string report;  // folder for the HTML report; empty for none
};

}  // namespace cwbsim
