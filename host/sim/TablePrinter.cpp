#include "TablePrinter.h"

#include <algorithm>
#include <cstdio>

namespace cwbsim {

namespace {

constexpr int kLineWidth = 4;
constexpr int kRequestWidth = 40;
constexpr int kStatusWidth = 6;
constexpr int kErrorWidth = 16;

std::string pad(const std::string& s, size_t width) {
    return s.size() >= width ? s : s + std::string(width - s.size(), ' ');
}

std::string padLeft(const std::string& s, size_t width) {
    return s.size() >= width ? s : std::string(width - s.size(), ' ') + s;
}

std::string format(const char* fmt, double value) {
    char text[64];
    snprintf(text, sizeof(text), fmt, value);
    return text;
}

std::string verdict(uint32_t state) {
    std::string out;
    if (state & 0x1) out += "pure colour";
    if (state & 0x2) out += std::string(out.empty() ? "" : ", ") + "black/white";
    return out;
}

std::string withVerdict(const std::string& text, uint32_t state) {
    const std::string words = verdict(state);
    return words.empty() ? text : text + ", " + words;
}

std::string rgbText(int32_t r, int32_t g, int32_t b) {
    return "rgb " + std::to_string(r) + "," + std::to_string(g) + "," + std::to_string(b);
}

int64_t joinTime(int32_t high, int32_t low) {
    return static_cast<int64_t>((static_cast<uint64_t>(static_cast<uint32_t>(high)) << 32) |
                                static_cast<uint32_t>(low));
}

// The interval and loading that getCwbValue appends after its analysis values.
std::string timing(const std::vector<int32_t>& v, size_t at) {
    const int64_t start = joinTime(v[at], v[at + 1]);
    const int64_t end = joinTime(v[at + 2], v[at + 3]);
    return "shown " + format("%.3f", (end - start) / 1e6) + " ms (" + format("%.6f", start / 1e9) +
           " s to " + format("%.6f", end / 1e9) + " s), loading " + format("%.6f", v[at + 4] / 1e8);
}

std::vector<std::string> histogramSummary(const std::array<int32_t, 768>& counts) {
    static constexpr const char* kChannels[] = {"R", "G", "B"};
    std::vector<std::string> lines;
    for (int ch = 0; ch < 3; ++ch) {
        int64_t total = 0;
        double weighted = 0;
        int lowest = -1, highest = -1, peak = 0;
        for (int level = 0; level < 256; ++level) {
            const int64_t n = static_cast<uint32_t>(counts[level * 3 + ch]);
            if (n == 0) continue;
            total += n;
            weighted += static_cast<double>(n) * level;
            if (lowest < 0) lowest = level;
            highest = level;
            if (n > static_cast<uint32_t>(counts[peak * 3 + ch])) peak = level;
        }
        if (total == 0) {
            lines.push_back(std::string(kChannels[ch]) + ": no pixels counted");
            continue;
        }
        lines.push_back(std::string(kChannels[ch]) + ": mean " + format("%.2f", weighted / total) +
                        ", levels " + std::to_string(lowest) + ".." + std::to_string(highest) +
                        ", peak at " + std::to_string(peak) + " (" +
                        std::to_string(static_cast<uint32_t>(counts[peak * 3 + ch])) + " of " +
                        std::to_string(total) + " px)");
    }
    return lines;
}

std::vector<std::string> hexDump(const std::vector<uint8_t>& bytes, int64_t offset) {
    std::vector<std::string> lines;
    for (size_t i = 0; i < bytes.size(); i += 16) {
        char prefix[24];
        snprintf(prefix, sizeof(prefix), "@%lld:", static_cast<long long>(offset + i));
        std::string line = prefix;
        for (size_t j = i; j < std::min(bytes.size(), i + 16); ++j) {
            char byte[4];
            snprintf(byte, sizeof(byte), " %02x", bytes[j]);
            line += byte;
        }
        lines.push_back(line);
    }
    return lines;
}

}  // namespace

std::string TablePrinter::errorName(int32_t error) {
    switch (error) {
        case 0:
            return "NONE";
        case 1:
            return "FAILED";
        case 2:
            return "INVALID_ARGUMENT";
        case 3:
            return "SCREEN_OFF";
        default:
            return std::to_string(error);
    }
}

std::vector<std::string> TablePrinter::answer(const CallRecord& r) {
    if (r.rgb) {
        const uint32_t state = r.error ? static_cast<uint32_t>(*r.error) >> 16 : 0;
        return {withVerdict(rgbText((*r.rgb)[0], (*r.rgb)[1], (*r.rgb)[2]), state)};
    }
    if (r.lumas) {
        std::string out = "luma";
        for (float v : *r.lumas) out += " " + format("%.4f", v);
        return {out};
    }
    if (r.histogram) return histogramSummary(*r.histogram);
    if (r.bytes) return hexDump(*r.bytes, r.offset);
    if (r.result) return {*r.result ? "true" : "false"};
    if (r.client) return {"client " + *r.client};
    if (!r.values) return {};
    const std::vector<int32_t>& v = *r.values;
    if (r.name == "getCwbValue" && v.size() == 9) {
        return {withVerdict(rgbText(v[0], v[1], v[2]), static_cast<uint32_t>(v[3])), timing(v, 4)};
    }
    if (r.name == "getCwbValue" && v.size() == 6) {
        return {"luma " + format("%.4f", v[0] / 10000.0) + " (" + std::to_string(v[0]) + ")",
                timing(v, 1)};
    }
    if (r.name == "getSharedData" && v.size() == 5) {
        return {std::string(v[0] != 0 ? "copies paused" : "copying") + ", crop area " +
                std::to_string(v[1]) + "x" + std::to_string(v[2]) + ", display " +
                std::to_string(v[3]) + "x" + std::to_string(v[4])};
    }
    if (r.name == "getScreenResolution" && v.size() == 2) {
        return {"height " + std::to_string(v[0]) + ", row pitch " + std::to_string(v[1])};
    }
    if (v.empty()) return {"no values"};
    std::string out = "values";
    for (int32_t x : v) out += " " + std::to_string(x);
    return {out};
}

void TablePrinter::header() {
    if (mHeaderDone) return;
    mHeaderDone = true;
    row("line", "request", "status", "error", {"answer"});
    row(std::string(kLineWidth, '-'), std::string(kRequestWidth, '-'),
        std::string(kStatusWidth, '-'), std::string(kErrorWidth, '-'), {std::string(30, '-')});
}

void TablePrinter::row(const std::string& line, const std::string& request,
                       const std::string& status, const std::string& error,
                       const std::vector<std::string>& answer) {
    std::string out = padLeft(line, kLineWidth) + "  ";
    if (request.size() > static_cast<size_t>(kRequestWidth) &&
        !(status.empty() && error.empty() && answer.empty())) {
        // A long request gets a row of its own; the answer follows in its columns below.
        out += request + "\n" + std::string(kLineWidth + 2, ' ');
        out += pad("", kRequestWidth);
    } else {
        out += pad(request, kRequestWidth);
    }
    out += "  " + pad(status, kStatusWidth) + "  " + pad(error, kErrorWidth);
    const std::string indent(kLineWidth + 2 + kRequestWidth + 2 + kStatusWidth + 2 + kErrorWidth,
                             ' ');
    for (size_t i = 0; i < answer.size(); ++i) {
        out += (i == 0 ? "  " : "\n" + indent + "  ") + answer[i];
    }
    while (!out.empty() && out.back() == ' ') out.pop_back();
    mOut << out << '\n';
}

void TablePrinter::printCommand(int line, const std::string& text, const std::string& note) {
    header();
    row(std::to_string(line), text, "", "",
        note.empty() ? std::vector<std::string>{} : std::vector<std::string>{note});
}

void TablePrinter::printCall(const CallRecord& r) {
    header();
    std::string error = "-";
    if (r.error) {
        const int32_t word = *r.error;
        // getRGBValue carries its verdict bits above the outcome; the answer column decodes them.
        error = r.rgb || (word >> 16) == 0 ? errorName(word & 0xFFFF) : std::to_string(word);
    }
    row(std::to_string(r.line), r.request, r.status == 0 ? "ok" : std::to_string(r.status),
        r.status == 0 ? error : "", answer(r));
}

void TablePrinter::printEvent(const std::string& client, bool status) {
    header();
    mOut << std::string(kLineWidth + 2, ' ') << "event notifyCwbStatus("
         << (status ? "true" : "false") << ") to " << client << '\n';
}

void TablePrinter::printLog(char priority, const std::string& tag, const std::string& text) {
    header();
    mOut << std::string(kLineWidth + 2, ' ') << "log " << priority << ' ' << tag << ": " << text
         << '\n';
}

void TablePrinter::printExpect(int line, bool same, const std::string& note) {
    header();
    row(std::to_string(line), same ? "expect: as on the device" : "expect: DIFFERS from the device",
        "", "", {note});
}

void TablePrinter::printNote(const std::string& text) {
    mOut << text << '\n';
}

}  // namespace cwbsim
