// Parses a cwb-sim session: the input is the session's text. A refused session names a line
// that exists and says what is wrong with it.
#include <SessionParser.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const int lines = static_cast<int>(std::count(text.begin(), text.end(), '\n')) + 1;
    std::vector<cwbsim::Command> commands;
    cwbsim::SessionError error;
    if (cwbsim::SessionParser::parse(text, &commands, &error)) {
        for (const cwbsim::Command& command : commands) {
            if (command.line < 1 || command.line > lines) abort();
        }
    } else if (error.line < 1 || error.line > lines || error.message.empty()) {
        fprintf(stderr, "refused at line %d of %d: \"%s\"\n", error.line, lines,
                error.message.c_str());
        abort();
    }
    return 0;
}
