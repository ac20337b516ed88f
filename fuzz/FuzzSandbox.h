// The folder that stands for the device's file system in a fuzzer. Device files are rewritten
// for every input, so it lives in memory when the host allows it: truncating and rewriting a
// file on a disk file system costs a writeback per input.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace cwbfuzz {

inline std::string makeSandbox() {
    std::string base = "/dev/shm";
    std::error_code ec;
    if (!std::filesystem::is_directory(base, ec) || access(base.c_str(), W_OK) != 0) {
        const char* tmp = getenv("TMPDIR");
        base = tmp != nullptr && *tmp != '\0' ? tmp : "/tmp";
    }
    std::string pattern = base + "/cwb-fuzz-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) abort();
    return pattern;
}

}  // namespace cwbfuzz
