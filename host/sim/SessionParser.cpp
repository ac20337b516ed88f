#include "SessionParser.h"

#include <RectSyntax.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <limits>
#include <sstream>

namespace cwbsim {

namespace {

using cwbtool::parseInt;
using cwbtool::parseRect;
using cwbtool::split;
using host::device::FrameKind;
using host::device::PanelId;
using host::device::PanelMode;
using Outcome = host::device::SimulatedDisplayConfig::Outcome;

constexpr int64_t kInt32Min = std::numeric_limits<int32_t>::min();
constexpr int64_t kInt32Max = std::numeric_limits<int32_t>::max();
constexpr int64_t kMaxSleepMs = 600'000;
constexpr int64_t kMaxRegion = 256 << 20;
constexpr int kMaxPanelSide = 16384;

std::vector<std::string> tokens(const std::string& line) {
    std::vector<std::string> out;
    std::istringstream in(line.substr(0, line.find('#')));
    for (std::string t; in >> t;) out.push_back(t);
    return out;
}

bool parseColour(const std::string& s, host::device::Pixel* out) {
    const std::vector<std::string> parts = split(s, ',');
    if (parts.size() != 3) return false;
    int64_t v[3];
    for (int i = 0; i < 3; ++i) {
        if (!parseInt(parts[i], 0, 255, &v[i])) return false;
    }
    *out = {static_cast<uint8_t>(v[0]), static_cast<uint8_t>(v[1]), static_cast<uint8_t>(v[2])};
    return true;
}

// WxH@HZ; the vsync period is 1e9 / HZ nanoseconds, truncated.
bool parseMode(const std::string& s, PanelMode* out) {
    const size_t x = s.find('x');
    const size_t at = s.find('@');
    if (x == std::string::npos || at == std::string::npos || at < x) return false;
    int64_t w = 0, h = 0;
    if (!parseInt(s.substr(0, x), 1, kMaxPanelSide, &w) ||
        !parseInt(s.substr(x + 1, at - x - 1), 1, kMaxPanelSide, &h)) {
        return false;
    }
    const std::string hzText = s.substr(at + 1);
    if (hzText.empty() || !isdigit(static_cast<unsigned char>(hzText[0]))) return false;
    char* end = nullptr;
    const double hz = strtod(hzText.c_str(), &end);
    if (*end != '\0' || !(hz >= 1.0 && hz <= 1000.0)) return false;
    *out = {static_cast<int32_t>(w), static_cast<int32_t>(h), static_cast<int32_t>(1e9 / hz)};
    return true;
}

bool parsePanel(const std::string& s, PanelId* out) {
    if (s == "main") {
        *out = PanelId::Main;
    } else if (s == "sec") {
        *out = PanelId::Secondary;
    } else {
        return false;
    }
    return true;
}

bool validName(const std::string& s) {
    return !s.empty() && std::all_of(s.begin(), s.end(), [](char c) {
        return isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '-' || c == '.';
    });
}

bool endsWithPng(const std::string& s) {
    if (s.size() < 5) return false;
    std::string tail = s.substr(s.size() - 4);
    std::transform(tail.begin(), tail.end(), tail.begin(), ::tolower);
    return tail == ".png";
}

std::string join(const std::vector<std::string>& t, size_t from) {
    std::string out;
    for (size_t i = from; i < t.size(); ++i) out += (i == from ? "" : " ") + t[i];
    return out;
}

// Checks one line. Holds the tokens and reports the first problem it finds.
struct Line {
    const std::vector<std::string>& t;
    Command& c;
    std::string& error;

    bool fail(const std::string& message) {
        error = message;
        return false;
    }
    // Exactly n arguments after the command word(s) at index first.
    bool count(size_t first, size_t n, const std::string& usage) {
        if (t.size() - first == n) return true;
        return fail(t[0] + (first > 1 ? " " + t[1] : "") + ": expected " + usage + ", got " +
                    std::to_string(t.size() - first) + " argument" +
                    (t.size() - first == 1 ? "" : "s"));
    }
    bool integer(size_t i, int64_t min, int64_t max, const std::string& what) {
        int64_t v = 0;
        if (!parseInt(t[i], min, max, &v)) {
            return fail(what + " '" + t[i] + "' is not an integer from " + std::to_string(min) +
                        " to " + std::to_string(max));
        }
        c.nums.push_back(v);
        return true;
    }
    bool flag(size_t i, const std::string& what) {
        if (t[i] != "0" && t[i] != "1") return fail(what + " must be 0 or 1, not '" + t[i] + "'");
        c.nums.push_back(t[i] == "1");
        return true;
    }
    bool rect(size_t i) {
        if (!parseRect(t[i], &c.rect)) {
            return fail("bad rectangle '" + t[i] + "': expected " + cwbtool::kRectSyntax);
        }
        c.hasRect = true;
        return true;
    }
    bool panel(size_t i) {
        if (!parsePanel(t[i], &c.panel)) {
            return fail("unknown display '" + t[i] + "': expected main or sec");
        }
        return true;
    }
    bool name(size_t i) {
        if (!validName(t[i])) {
            return fail("bad client name '" + t[i] + "': use letters, digits, '_', '-', '.'");
        }
        c.str = t[i];
        return true;
    }

    bool prop() {
        if (!count(1, 2, "NAME VALUE")) return false;
        c.op = Op::Prop;
        c.str = t[1];
        c.str2 = t[2];
        return true;
    }

    bool panelModes() {
        if (t.size() < 3) return fail("panel: expected main|sec WxH@HZ [WxH@HZ ...] or none");
        if (!panel(1)) return false;
        c.op = Op::Panel;
        if (t.size() == 3 && t[2] == "none") return true;
        for (size_t i = 2; i < t.size(); ++i) {
            PanelMode mode{};
            if (!parseMode(t[i], &mode)) {
                return fail("bad panel mode '" + t[i] +
                            "': expected WxH@HZ, for example 1080x2400@60");
            }
            c.modes.push_back(mode);
        }
        return true;
    }

    bool file() {
        if (t.size() < 2) return fail("file: expected weights main|sec PATH or apl TEXT|none");
        if (t[1] == "weights") {
            // "json TEXT" carries the file's text itself (a text without blanks), as a session
            // dump writes it.
            if (t.size() == 5 && t[3] == "json") {
                if (!panel(2)) return false;
                c.op = Op::FileWeights;
                c.str = t[4];
                c.present = false;  // not a path
                return true;
            }
            if (!count(2, 2, "main|sec PATH or main|sec json TEXT") || !panel(2)) return false;
            c.op = Op::FileWeights;
            c.str = t[3];
            return true;
        }
        if (t[1] == "apl") {
            if (t.size() < 3) return fail("file apl: expected the file's text, or none");
            c.op = Op::FileApl;
            c.present = !(t.size() == 3 && t[2] == "none");
            if (c.present) c.str = join(t, 2) + "\n";
            return true;
        }
        return fail("file: unknown file '" + t[1] + "': expected weights or apl");
    }

    bool frame() {
        if (t.size() < 3)
            return fail("frame: expected main|sec [mixer|post] fill|png|pattern|paint");
        if (!panel(1)) return false;
        c.op = Op::Frame;
        size_t i = 2;
        if (t[i] == "mixer" || t[i] == "post") {
            c.kind = t[i] == "post" ? FrameKind::PostProcessed : FrameKind::Mixer;
            ++i;
        }
        if (i >= t.size()) return fail("frame: expected fill, png, pattern or paint");
        const std::string& source = t[i];
        if (source == "fill") {
            if (!count(i + 1, 1, "R,G,B")) return false;
            c.frame = FrameSource::Fill;
            if (!parseColour(t[i + 1], &c.colour)) {
                return fail("bad colour '" + t[i + 1] + "': expected R,G,B from 0 to 255");
            }
            return true;
        }
        if (source == "png") {
            if (!count(i + 1, 1, "PATH")) return false;
            c.frame = FrameSource::Png;
            c.str = t[i + 1];
            return true;
        }
        if (source == "pattern") {
            if (!count(i + 1, 1, "NAME")) return false;
            c.frame = FrameSource::Pattern;
            c.str = t[i + 1];
            const std::vector<std::string> names = host::device::Frame::patternNames();
            if (std::find(names.begin(), names.end(), c.str) == names.end()) {
                std::string known;
                for (const std::string& n : names) known += (known.empty() ? "" : ", ") + n;
                return fail("unknown pattern '" + c.str + "': expected one of " + known);
            }
            return true;
        }
        if (source == "paint") {
            if (!count(i + 1, 2, "L,T,R,B R,G,B")) return false;
            c.frame = FrameSource::Paint;
            if (!rect(i + 1)) return false;
            if (!parseColour(t[i + 2], &c.colour)) {
                return fail("bad colour '" + t[i + 2] + "': expected R,G,B from 0 to 255");
            }
            return true;
        }
        return fail("frame: unknown source '" + source + "': expected fill, png, pattern or paint");
    }

    bool vendor() {
        if (t.size() < 2) return fail("vendor: expected latency, next, absent or present");
        if (t[1] == "absent" || t[1] == "present") {
            if (!count(2, 0, "no argument")) return false;
            c.op = Op::VendorPresence;
            c.present = t[1] == "present";
            return true;
        }
        if (t[1] == "latency") {
            if (!count(2, 1, "MS or vsync")) return false;
            c.op = Op::VendorLatency;
            c.present = t[2] != "vsync";
            return !c.present || integer(2, 0, 60'000, "latency");
        }
        if (t[1] == "next") {
            if (t.size() < 3) return fail("vendor next: expected ok, error N, drop or refuse");
            c.op = Op::VendorNext;
            if (t[2] == "error") {
                c.outcome = Outcome::Error;
                return count(3, 1, "an error code") && integer(3, kInt32Min, kInt32Max, "error");
            }
            if (!count(3, 0, "no argument after " + t[2])) return false;
            if (t[2] == "ok") {
                c.outcome = Outcome::Ok;
            } else if (t[2] == "drop") {
                c.outcome = Outcome::Drop;
            } else if (t[2] == "refuse") {
                c.outcome = Outcome::Refuse;
            } else {
                return fail("vendor next: unknown outcome '" + t[2] +
                            "': expected ok, error N, drop or refuse");
            }
            return true;
        }
        return fail("vendor: unknown setting '" + t[1] +
                    "': expected latency, next, absent or present");
    }

    bool qservice() {
        if (t.size() < 2) return fail("qservice: expected 303 N, 304 N, absent or present");
        if (t[1] == "absent" || t[1] == "present") {
            if (!count(2, 0, "no argument")) return false;
            c.op = Op::QServicePresence;
            c.present = t[1] == "present";
            return true;
        }
        if (t[1] == "303" || t[1] == "304") {
            c.op = Op::QServiceAnswer;
            c.nums.push_back(std::stoi(t[1]));
            return count(2, 1, "the answer N") && integer(2, kInt32Min, kInt32Max, "answer");
        }
        return fail("qservice: unknown command '" + t[1] +
                    "': expected 303 N, 304 N, absent or present");
    }

    bool host() {
        if (t.size() < 2) return fail("host: expected an operation, for example setPowerMode 0 2");
        c.op = Op::Host;
        c.verb = t[1];
        const std::string& op = t[1];
        if (op == "updateCwbStatus" || op == "aodLayerExist" || op == "fodLayerExist") {
            return count(2, 1, "0|1") && flag(2, op);
        }
        if (op == "invalidCache" || op == "updateAvailableConfigs") {
            return count(2, 0, "no argument");
        }
        constexpr int64_t kDisplayMin = std::numeric_limits<int64_t>::min();
        constexpr int64_t kDisplayMax = std::numeric_limits<int64_t>::max();
        if (op == "setPowerMode") {
            return count(2, 2, "DISPLAY MODE") && integer(2, kDisplayMin, kDisplayMax, "display") &&
                   integer(3, kInt32Min, kInt32Max, "mode");
        }
        if (op == "notifyConfigChange") {
            return count(2, 2, "DISPLAY CONFIG") &&
                   integer(2, kDisplayMin, kDisplayMax, "display") &&
                   integer(3, 0, std::numeric_limits<uint32_t>::max(), "config");
        }
        if (op == "notifyColorModeChange") {
            return count(2, 3, "DISPLAY MODE INTENT") &&
                   integer(2, kDisplayMin, kDisplayMax, "display") &&
                   integer(3, kInt32Min, kInt32Max, "mode") &&
                   integer(4, kInt32Min, kInt32Max, "intent");
        }
        return fail("host: unknown operation '" + op + "'");
    }

    bool client() {
        if (!count(1, 2, "NAME dead|alive") || !name(1)) return false;
        if (t[2] != "dead" && t[2] != "alive") {
            return fail("client: expected dead or alive, not '" + t[2] + "'");
        }
        c.op = Op::ClientState;
        c.present = t[2] == "alive";
        return true;
    }

    bool call() {
        c.op = Op::Call;
        c.verb = t[0];
        const std::string& m = t[0];
        if (m == "getRGBValue" || m == "getLumasValue" || m == "getHistogramValue") {
            return count(1, 1, "RECT") && rect(1);
        }
        if (m == "getCwbValue") {
            return count(1, 2, "ID RECT") && integer(1, kInt32Min, kInt32Max, "feature id") &&
                   rect(2);
        }
        if (m == "getSharedData") {
            return count(1, 3, "ID RECT BUFSIZE") &&
                   integer(1, kInt32Min, kInt32Max, "feature id") && rect(2) &&
                   integer(3, kInt32Min, kInt32Max, "buffer size");
        }
        if (m == "setDebug") {
            if (!count(1, 1, "V,V,V (any count) or - for none")) return false;
            if (t[1] == "-") return true;
            for (const std::string& v : split(t[1], ',')) {
                int64_t value = 0;
                if (!parseInt(v, kInt32Min, kInt32Max, &value)) {
                    return fail("setDebug: bad value '" + v +
                                "': expected integers separated by commas, or -");
                }
                c.list.push_back(static_cast<int32_t>(value));
            }
            return true;
        }
        if (m == "enable" || m == "disable" || m == "getCwbPostProcessStatus" ||
            m == "getScreenResolution" || m == "releaseSharedMemory") {
            return count(1, 0, "no argument");
        }
        if (m == "setCwbPostProcessStatus") return count(1, 1, "0|1") && flag(1, m);
        if (m == "registerCallback" || m == "unregisterCallback") {
            return count(1, 1, "NAME") && name(1);
        }
        if (m == "initializeSharedMemory") {
            // An optional FILE size makes the client's file differ from the size it declares.
            if (t.size() != 3 && !count(1, 1, "SIZE [FILE] or none")) return false;
            c.present = t[1] != "none";
            if (!c.present) return t.size() == 2 || fail("initializeSharedMemory none: no FILE");
            return integer(1, 0, kMaxRegion, "size") &&
                   (t.size() == 2 || integer(2, 0, kMaxRegion, "file size"));
        }
        if (m == "readShared") {
            return count(1, 2, "OFFSET LENGTH") && integer(1, 0, kMaxRegion, "offset") &&
                   integer(2, 1, 1 << 20, "length");
        }
        return fail("unknown command '" + m + "'");
    }

    // KEY=VALUE words, each key once; the values are compared as text with the replayed answer.
    bool expect() {
        c.op = Op::Expect;
        if (t.size() < 2) return fail("expect: expected KEY=VALUE ..., for example error=NONE");
        static const char* const kKeys[] = {"error",    "state",  "rgb",   "luma",  "means",
                                            "checksum", "values", "count", "result"};
        for (size_t i = 1; i < t.size(); ++i) {
            const size_t eq = t[i].find('=');
            const std::string key = t[i].substr(0, eq);
            if (eq == std::string::npos || eq + 1 == t[i].size() ||
                std::find(std::begin(kKeys), std::end(kKeys), key) == std::end(kKeys)) {
                return fail("expect: '" + t[i] +
                            "' is not KEY=VALUE with KEY one of error, state, rgb, luma, means, "
                            "checksum, values, count, result");
            }
            for (const auto& [seen, value] : c.expects) {
                if (seen == key) return fail("expect: " + key + " given twice");
            }
            c.expects.emplace_back(key, t[i].substr(eq + 1));
        }
        return true;
    }

    bool picture() {
        if (t[0] == "snapshot") {
            if (!count(1, 2, "main|sec PATH.png") || !panel(1)) return false;
            c.op = Op::Snapshot;
        } else {
            if (!count(1, 2, "histogram|answers PATH.png")) return false;
            if (t[1] != "histogram" && t[1] != "answers") {
                return fail("plot: expected 'plot histogram PATH.png' or 'plot answers PATH.png'");
            }
            c.op = Op::Plot;
            c.verb = t[1];
        }
        c.str = t[2];
        if (!endsWithPng(c.str)) return fail(t[0] + ": the output file must end in .png");
        return true;
    }

    bool parse() {
        const std::string& w = t[0];
        if (w == "prop") return prop();
        if (w == "panel") return panelModes();
        if (w == "file") return file();
        if (w == "frame") return frame();
        if (w == "vendor") return vendor();
        if (w == "qservice") return qservice();
        if (w == "sleep") {
            c.op = Op::Sleep;
            return count(1, 1, "MS") && integer(1, 0, kMaxSleepMs, "sleep");
        }
        if (w == "boot") {
            c.op = Op::Boot;
            return count(1, 0, "no argument");
        }
        if (w == "host") return host();
        if (w == "client") return client();
        if (w == "snapshot" || w == "plot") return picture();
        if (w == "expect") return expect();
        return call();
    }
};

bool beforeBootOnly(const Command& c) {
    return c.op == Op::Prop || c.op == Op::Panel || c.op == Op::FileWeights;
}

}  // namespace

bool SessionParser::parse(const std::string& text, std::vector<Command>* commands,
                          SessionError* error) {
    std::vector<Command> out;
    if (!parse(
                text, [&out](const Command& c) { return out.push_back(c), true; }, error)) {
        return false;
    }
    *commands = std::move(out);
    return true;
}

bool SessionParser::parse(const std::string& text, const std::function<bool(const Command&)>& sink,
                          SessionError* error) {
    int number = 0;
    int bootLine = 0;
    bool afterCall = false;
    // Line by line in place: a long session is not copied whole once more.
    for (size_t start = 0; start < text.size();) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        const std::string raw = text.substr(start, end - start);
        start = end + 1;
        ++number;
        const std::vector<std::string> t = tokens(raw);
        if (t.empty()) continue;
        Command c;
        c.line = number;
        c.text = join(t, 0);
        std::string message;
        Line line{t, c, message};
        if (!line.parse()) {
            // Name the command, unless the message already starts with it.
            if (message.rfind(t[0], 0) != 0 && message.rfind("unknown command", 0) != 0) {
                message = t[0] + ": " + message;
            }
            *error = {number, message};
            return false;
        }
        if (c.op == Op::Boot && bootLine != 0) {
            *error = {number, "boot given twice (first at line " + std::to_string(bootLine) + ")"};
            return false;
        }
        if (bootLine != 0 && beforeBootOnly(c)) {
            *error = {number, t[0] + " sets up the phone and must come before boot (line " +
                                      std::to_string(bootLine) + ")"};
            return false;
        }
        if (bootLine == 0 && c.op == Op::Call) {
            *error = {number, c.verb + " is a client call: the service exists only after boot"};
            return false;
        }
        if (c.op == Op::Expect && !afterCall) {
            *error = {number, "expect follows the client call whose answer it gives"};
            return false;
        }
        afterCall = c.op == Op::Call;
        if (c.op == Op::Boot) bootLine = number;
        if (!sink(c)) return true;
    }
    return true;
}

}  // namespace cwbsim
