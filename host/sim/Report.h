// `--report DIR`: one self-contained HTML page (DIR/index.html) with what the phone was, the
// session's table (with the log lines when --logs is given) and every picture, inlined as PNG
// data: URIs, so that it can be sent to a colleague as one file and opened without a network.
#pragma once

#include <device/Frame.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace cwbsim {

class Report {
  public:
    // A line that set up the phone (session or command line).
    void phone(const std::string& line) { mPhone.push_back(line); }
    // A file the phone was given, with its text.
    void file(const std::string& name, const std::string& text) { mFiles.emplace_back(name, text); }
    // Encodes the picture at once; a build without libpng keeps the caption and says why.
    void picture(const std::string& caption, const host::device::Frame& frame);

    std::string html(const std::string& source, const std::string& table) const;
    bool write(const std::string& dir, const std::string& source, const std::string& table,
               std::string* error) const;

    static std::string base64(const std::vector<uint8_t>& bytes);
    static std::string escape(const std::string& text);

  private:
    struct Picture {
        std::string caption;
        std::vector<uint8_t> png;  // empty when it could not be encoded
        std::string error;
        int width = 0;
    };
    std::vector<std::string> mPhone;
    std::vector<std::pair<std::string, std::string>> mFiles;
    std::vector<Picture> mPictures;
};

}  // namespace cwbsim
