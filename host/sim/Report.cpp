#include "Report.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "PngFile.h"

namespace cwbsim {

namespace {

constexpr const char* kStyle =
        "body{font-family:sans-serif;margin:16px;background:#f4f4f6;color:#111}"
        "h1{font-size:20px}h2{font-size:16px;margin-top:24px}"
        "pre{background:#fff;border:1px solid #ccc;padding:8px;font-size:12px;overflow-x:auto}"
        "figure{display:inline-block;vertical-align:top;margin:8px;background:#fff;"
        "border:1px solid #ccc;padding:6px}"
        "figcaption{font-size:12px;max-width:540px}img{display:block}";

}  // namespace

void Report::picture(const std::string& caption, const host::device::Frame& frame) {
    Picture p;
    p.caption = caption;
    p.width = frame.width;
    if (!PngFile::encode(frame, &p.png, &p.error)) p.png.clear();
    mPictures.push_back(std::move(p));
}

std::string Report::base64(const std::vector<uint8_t>& bytes) {
    static constexpr char kDigits[] =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    for (size_t i = 0; i < bytes.size(); i += 3) {
        const size_t n = std::min<size_t>(3, bytes.size() - i);
        uint32_t v = uint32_t{bytes[i]} << 16;
        if (n > 1) v |= uint32_t{bytes[i + 1]} << 8;
        if (n > 2) v |= bytes[i + 2];
        for (size_t k = 0; k < 4; ++k) out += k <= n ? kDigits[(v >> (18 - 6 * k)) & 63] : '=';
    }
    return out;
}

std::string Report::escape(const std::string& text) {
    std::string out;
    for (char c : text) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

std::string Report::html(const std::string& source, const std::string& table) const {
    std::string out =
            "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\">"
            "<title>cwb-sim: " +
            escape(source) + "</title><style>" + kStyle +
            "</style></head><body>\n<h1>cwb-sim report: " + escape(source) + "</h1>\n";
    out += "<h2>The phone</h2>\n<pre>";
    for (const std::string& line : mPhone) out += escape(line) + "\n";
    if (mPhone.empty()) out += "(the simulator's default phone)\n";
    out += "</pre>\n";
    for (const auto& [name, text] : mFiles) {
        out += "<h2>File " + escape(name) + "</h2>\n<pre>" + escape(text) + "</pre>\n";
    }
    out += "<h2>Session</h2>\n<pre>" + escape(table) + "</pre>\n<h2>Pictures</h2>\n";
    for (const Picture& p : mPictures) {
        out += "<figure>";
        if (p.png.empty()) {
            out += "<p>" + escape(p.error) + "</p>";
        } else {
            // Snapshots are shown at half size; plots at their own.
            const int shown = p.width > 900 ? p.width / 2 : p.width;
            out += "<img width=\"" + std::to_string(shown) + "\" alt=\"" + escape(p.caption) +
                   "\" src=\"data:image/png;base64," + base64(p.png) + "\">";
        }
        out += "<figcaption>" + escape(p.caption) + "</figcaption></figure>\n";
    }
    if (mPictures.empty()) out += "<p>No pictures: nothing was captured or plotted.</p>\n";
    return out + "</body></html>\n";
}

bool Report::write(const std::string& dir, const std::string& source, const std::string& table,
                   std::string* error) const {
    std::error_code ec;
    std::filesystem::create_directories(dir, ec);
    if (ec) {
        *error = "--report: cannot create " + dir + ": " + ec.message();
        return false;
    }
    const std::string path = dir + "/index.html";
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << html(source, table);
    out.close();
    if (!out) {
        *error = "--report: cannot write " + path + ": " + strerror(errno);
        return false;
    }
    return true;
}

}  // namespace cwbsim
