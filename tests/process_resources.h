// What the process holds of the kernel: open descriptors, threads and memory mappings, counted
// from /proc/self. The service runs in the test's process, so whatever it forgets shows here.
#pragma once

#include <dirent.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>
#include <tuple>

namespace cwbtest {

struct ProcessResources {
    long descriptors = 0, threads = 0, mappings = 0;

    static ProcessResources now() {
        std::ifstream maps("/proc/self/maps");
        return {entries("/proc/self/fd"), entries("/proc/self/task"),
                std::count(std::istreambuf_iterator<char>(maps), {}, '\n')};
    }
    // Counts until no more threads run than in `before`, for at most `timeout`: a joined thread
    // may still be leaving the kernel's list.
    static ProcessResources settled(const ProcessResources& before,
                                    std::chrono::milliseconds timeout = std::chrono::seconds(2)) {
        const auto deadline = std::chrono::steady_clock::now() + timeout;
        ProcessResources out = now();
        while (out.threads > before.threads && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            out = now();
        }
        return out;
    }
    auto counts() const { return std::make_tuple(descriptors, threads, mappings); }

  private:
    // Entries but "." and ".."; reading /proc/self/fd holds one descriptor, counted every time.
    static long entries(const char* path) {
        DIR* dir = opendir(path);
        long n = 0;
        while (dir != nullptr && readdir(dir) != nullptr) ++n;
        if (dir != nullptr) closedir(dir);
        return n - 2;
    }
};

}  // namespace cwbtest
