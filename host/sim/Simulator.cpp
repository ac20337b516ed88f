#include "Simulator.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>

#include "CommandLine.h"
#include "DefaultSession.h"
#include "JsonPrinter.h"
#include "MessageText.h"
#include "Report.h"
#include "SessionParser.h"
#include "SessionRunner.h"
#include "TablePrinter.h"
#include "TeePrinter.h"

namespace cwbsim {

int Simulator::main(const std::vector<std::string>& args, std::istream& in, std::ostream& out,
                    std::ostream& err) {
    CommandLine commandLine;
    std::string error;
    if (!commandLine.parse(args, &error)) {
        err << "cwb-sim: " << error << "\n" << CommandLine::usage();
        return kMalformed;
    }
    if (commandLine.action() == CommandLine::Action::Help) {
        out << CommandLine::usage();
        return kPlayed;
    }
    const std::string& script = commandLine.script();
    if (script.empty()) {
        if (!commandLine.options().json) out << DefaultSession::description() << "\n";
        return play(DefaultSession::text(), "built-in session", "", commandLine.options(), out,
                    err);
    }
    if (script == "-") {
        const std::string text{std::istreambuf_iterator<char>(in),
                               std::istreambuf_iterator<char>()};
        return play(text, "<stdin>", "", commandLine.options(), out, err);
    }
    std::ifstream file(script, std::ios::binary);
    if (!file) {
        err << "cwb-sim: cannot open " << printableMessage(script) << ": " << strerror(errno)
            << "\n";
        return kFailed;
    }
    std::error_code ignored;
    if (std::filesystem::is_directory(script, ignored)) {
        err << "cwb-sim: cannot read " << printableMessage(script) << ": " << strerror(EISDIR)
            << "\n";
        return kFailed;
    }
    // Read straight into one string: a long session is held once, not twice.
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (file.bad()) {
        err << "cwb-sim: cannot read " << printableMessage(script) << "\n";
        return kFailed;
    }
    const std::string baseDir = std::filesystem::path(script).parent_path().string();
    return play(text, script, baseDir, commandLine.options(), out, err);
}

int Simulator::play(const std::string& text, const std::string& source, const std::string& baseDir,
                    const Options& options, std::ostream& out, std::ostream& err) {
    // Every line is checked before anything plays; the commands are then parsed again one at a
    // time as they play, so a long session never holds all of them.
    SessionError malformed;
    if (!SessionParser::parse(
                text, [](const Command&) { return true; }, &malformed)) {
        err << "cwb-sim: " << printableMessage(source) << " line " << malformed.line << ": "
            << printableMessage(malformed.message) << "\n";
        return kMalformed;
    }
    std::unique_ptr<Printer> printer;
    if (options.json) {
        printer = std::make_unique<JsonPrinter>(out);
    } else {
        printer = std::make_unique<TablePrinter>(out);
    }
    // A report keeps its own table beside what the user reads.
    std::ostringstream tableText;
    TablePrinter table(tableText);
    TeePrinter tee(tableText, *printer, table);
    Report report;
    const bool reporting = !options.report.empty();
    std::string error;
    int line = 0;
    {
        SessionRunner runner(options, baseDir, reporting ? tee : *printer);
        if (reporting) runner.setReport(&report);
        bool played = true;
        SessionError ignored;
        SessionParser::parse(
                text, [&](const Command& c) { return played = runner.step(c); }, &ignored);
        if (played && runner.finish()) {
            if (!reporting) return kPlayed;
            if (report.write(options.report, source, tableText.str(), &error)) return kPlayed;
        } else {
            error = runner.error();
            line = runner.errorLine();
        }
    }
    err << "cwb-sim: " << printableMessage(source);
    if (line > 0) err << " line " << line;
    err << ": " << printableMessage(error) << "\n";
    return kFailed;
}

}  // namespace cwbsim
