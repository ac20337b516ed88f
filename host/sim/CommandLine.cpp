#include "CommandLine.h"

namespace cwbsim {

const char* CommandLine::usage() {
    return "usage: cwb-sim [--json] [--logs] [--prop NAME=VALUE]... [--frame PNG] [--report DIR]\n"
           "               [SCRIPT | -]\n"
           "  Plays a session against the CWB service on a simulated phone; without SCRIPT, a\n"
           "  built-in demonstration. '-' reads the session from standard input.\n"
           "  --json              one JSON object per line instead of the table\n"
           "  --logs              add the service's log lines\n"
           "  --prop NAME=VALUE   set a system property before boot (repeatable)\n"
           "  --frame PNG         show this image (RGB or RGBA, the panel's size) on the main "
           "panel\n"
           "  --report DIR       also write DIR/index.html: the phone, the session and every\n"
           "                     picture in one self-contained page\n"
           "  Exit status: 0 played, 1 something could not be done, 2 bad argument or session "
           "line.\n";
}

bool CommandLine::parse(const std::vector<std::string>& args, std::string* error) {
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        // "--name value" and "--name=value" both work for the options that take a value.
        auto value = [&](const std::string& name, std::string* out) {
            if (a == name) {
                if (i + 1 >= args.size()) {
                    *error = name + " needs a value";
                    return false;
                }
                *out = args[++i];
                return true;
            }
            *out = a.substr(name.size() + 1);
            return true;
        };
        auto is = [&](const std::string& name) { return a == name || a.rfind(name + "=", 0) == 0; };
        if (a == "-h" || a == "--help") {
            mAction = Action::Help;
        } else if (a == "--json") {
            mOptions.json = true;
        } else if (a == "--logs") {
            mOptions.logs = true;
        } else if (is("--prop")) {
            std::string setting;
            if (!value("--prop", &setting)) return false;
            const size_t eq = setting.find('=');
            if (eq == std::string::npos || eq == 0) {
                *error = "--prop needs NAME=VALUE, got '" + setting + "'";
                return false;
            }
            mOptions.props.emplace_back(setting.substr(0, eq), setting.substr(eq + 1));
        } else if (is("--frame")) {
            if (!value("--frame", &mOptions.frame)) return false;
            if (mOptions.frame.empty()) {
                *error = "--frame needs a PNG file";
                return false;
            }
        } else if (is("--report")) {
            if (!value("--report", &mOptions.report)) return false;
            if (mOptions.report.empty()) {
                *error = "--report needs a folder";
                return false;
            }
        } else if (a.size() > 1 && a[0] == '-') {
            *error = "unknown option '" + a + "'";
            return false;
        } else if (!mScript.empty()) {
            *error = "only one session file can be played, got '" + mScript + "' and '" + a + "'";
            return false;
        } else {
            mScript = a;
        }
    }
    return true;
}

}  // namespace cwbsim
