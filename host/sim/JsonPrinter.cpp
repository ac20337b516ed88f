#include "JsonPrinter.h"

#include <cmath>
#include <cstdio>

namespace cwbsim {

namespace {

template <typename Container>
std::string array(const Container& values) {
    std::string out = "[";
    for (const auto& v : values) {
        if (out.size() > 1) out += ',';
        out += std::to_string(v);
    }
    return out + "]";
}

std::string floats(const std::vector<float>& values) {
    std::string out = "[";
    for (float v : values) {
        if (out.size() > 1) out += ',';
        if (!std::isfinite(v)) {
            out += "null";
            continue;
        }
        char text[32];
        snprintf(text, sizeof(text), "%.9g", static_cast<double>(v));
        out += text;
    }
    return out + "]";
}

}  // namespace

std::string JsonPrinter::quote(const std::string& text) {
    std::string out = "\"";
    for (unsigned char c : text) {
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                if (c < 0x20) {
                    char escaped[8];
                    snprintf(escaped, sizeof(escaped), "\\u%04x", c);
                    out += escaped;
                } else {
                    out += static_cast<char>(c);
                }
        }
    }
    return out + "\"";
}

void JsonPrinter::printCommand(int, const std::string&, const std::string&) {}

void JsonPrinter::printNote(const std::string&) {}

void JsonPrinter::printCall(const CallRecord& r) {
    std::string out = "{\"call\":" + quote(r.name) + ",\"status\":" + std::to_string(r.status);
    if (r.error) out += ",\"error\":" + std::to_string(*r.error);
    if (r.rgb) out += ",\"rgb\":" + array(*r.rgb);
    if (r.lumas) out += ",\"lumas\":" + floats(*r.lumas);
    if (r.histogram) out += ",\"histogram\":" + array(*r.histogram);
    if (r.values) out += ",\"values\":" + array(*r.values);
    if (r.result) out += std::string(",\"result\":") + (*r.result ? "true" : "false");
    if (r.bytes) {
        static constexpr char kHex[] = "0123456789abcdef";
        std::string hex;
        hex.reserve(r.bytes->size() * 2);
        for (uint8_t b : *r.bytes) {
            hex += kHex[b >> 4];
            hex += kHex[b & 0xF];
        }
        out += ",\"bytes\":\"" + hex + "\"";
    }
    if (r.client) out += ",\"client\":" + quote(*r.client);
    out += ",\"line\":" + std::to_string(r.line) + "}";
    mOut << out << '\n';
}

void JsonPrinter::printEvent(const std::string& client, bool status) {
    mOut << "{\"event\":\"notifyCwbStatus\",\"client\":" << quote(client)
         << ",\"status\":" << (status ? "true" : "false") << "}\n";
}

void JsonPrinter::printExpect(int line, bool same, const std::string& note) {
    mOut << "{\"expect\":" << (same ? "true" : "false") << ",\"note\":" << quote(note)
         << ",\"line\":" << line << "}\n";
}

void JsonPrinter::printLog(char priority, const std::string& tag, const std::string& text) {
    mOut << "{\"log\":\"" << priority << "\",\"tag\":" << quote(tag) << ",\"text\":" << quote(text)
         << "}\n";
}

}  // namespace cwbsim
