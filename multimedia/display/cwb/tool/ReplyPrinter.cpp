#include "ReplyPrinter.h"

namespace cwbtool {

namespace {

constexpr int kRequestWidth = 36;
constexpr int kStatusWidth = 6;
constexpr int kErrorWidth = 16;
constexpr int kTimeWidth = 9;

std::string pad(const std::string& s, size_t width) {
    return s.size() >= width ? s : s + std::string(width - s.size(), ' ');
}

std::string seconds(double value) {
    char text[32];
    snprintf(text, sizeof(text), "%*.3f", kTimeWidth, value);
    return text;
}

}  // namespace

std::string ReplyPrinter::errorName(int32_t error) {
    static constexpr const char* kNames[] = {"NONE", "FAILED", "INVALID_ARGUMENT", "SCREEN_OFF"};
    return error >= 0 && error < 4 ? kNames[error] : std::to_string(error);
}

std::string ReplyPrinter::quote(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            char escaped[8];
            snprintf(escaped, sizeof(escaped), "\\u%04x", c);
            out += escaped;
        } else {
            out += c;
        }
    }
    return out + "\"";
}

void ReplyPrinter::header() {
    if (mHeaderDone || mJson) return;
    mHeaderDone = true;
    std::string line = mTimed ? pad("time (s)", kTimeWidth) + "  " : "";
    line += pad("request", kRequestWidth) + "  " + pad("status", kStatusWidth) + "  " +
            pad("error", kErrorWidth) + "  answer";
    std::string rule = mTimed ? std::string(kTimeWidth, '-') + "  " : "";
    rule += std::string(kRequestWidth, '-') + "  " + std::string(kStatusWidth, '-') + "  " +
            std::string(kErrorWidth, '-') + "  " + std::string(30, '-');
    fprintf(mOut, "%s\n%s\n", line.c_str(), rule.c_str());
}

void ReplyPrinter::print(const Reply& r, double time) {
    std::string error = "-";
    if (r.error) {
        // getRGBValue carries its colour state above the outcome; the answer decodes it.
        error = errorName(*r.error & 0xFFFF);
    }
    if (mJson) {
        std::string line = "{";
        if (mTimed) {
            char stamp[32];
            snprintf(stamp, sizeof(stamp), "%.3f", time);
            line += "\"time\":" + std::string(stamp) + ",";
        }
        line += "\"request\":" + quote(r.request) + ",\"status\":" + std::to_string(r.status);
        if (r.error)
            line += ",\"error\":" + quote(error) + ",\"errorWord\":" + std::to_string(*r.error);
        if (!r.json.empty()) line += "," + r.json;
        fprintf(mOut, "%s}\n", line.c_str());
        fflush(mOut);
        return;
    }
    header();
    std::string line = mTimed ? seconds(time) + "  " : "";
    const size_t indent = line.size() + kRequestWidth + 2 + kStatusWidth + 2 + kErrorWidth;
    line += pad(r.request, kRequestWidth) + "  " +
            pad(r.status == 0 ? "ok" : std::to_string(r.status), kStatusWidth) + "  " +
            pad(r.status == 0 ? error : "", kErrorWidth);
    for (size_t i = 0; i < r.answer.size(); ++i) {
        line += (i == 0 ? "  " : "\n" + std::string(indent, ' ') + "  ") + r.answer[i];
    }
    while (!line.empty() && line.back() == ' ') line.pop_back();
    fprintf(mOut, "%s\n", line.c_str());
    fflush(mOut);
}

void ReplyPrinter::event(bool status, double time) {
    if (mJson) {
        fprintf(mOut, "{\"event\":\"notifyCwbStatus\",\"value\":%s}\n", status ? "true" : "false");
    } else {
        header();
        fprintf(mOut, "%sevent notifyCwbStatus(%s)\n", mTimed ? (seconds(time) + "  ").c_str() : "",
                status ? "true" : "false");
    }
    fflush(mOut);
}

}  // namespace cwbtool
