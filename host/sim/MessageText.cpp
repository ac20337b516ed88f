#include "MessageText.h"

#include <cstdio>

namespace cwbsim {

namespace {

constexpr size_t kMaxWord = 64;

}  // namespace

std::string printableMessage(const std::string& message) {
    std::string out;
    out.reserve(message.size() < 4096 ? message.size() : 4096);
    size_t word = 0;  // characters of the current word written so far
    bool cut = false;
    for (const char c : message) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte == ' ' || byte == '\n') {
            out += c;
            word = 0;
            cut = false;
            continue;
        }
        if (cut) continue;
        char piece[5] = {c, 0};
        if (byte < 0x20 || byte >= 0x7F) snprintf(piece, sizeof(piece), "\\x%02x", byte);
        const std::string text(piece);
        if (word + text.size() > kMaxWord) {
            out += "...";
            cut = true;
            continue;
        }
        out += text;
        word += text.size();
    }
    return out;
}

}  // namespace cwbsim
