// What the process holds of the kernel: open descriptors, threads and memory mappings, counted
// from /proc/self. The service runs in the test's process, so a descriptor, thread or mapping it
// forgets shows here.
#pragma once

#include <dirent.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

namespace cwbtest {

struct ProcessResources {
    long descriptors = 0;
    long threads = 0;
    long mappings = 0;

    static ProcessResources now() {
        return {entries("/proc/self/fd"), entries("/proc/self/task"), lines("/proc/self/maps")};
    }

    // Counts again until no more threads run than in `before`, for at most `timeout`: a joined
    // thread may still be leaving the kernel's list.
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

    std::string text() const {
        return std::to_string(descriptors) + " descriptors, " + std::to_string(threads) +
               " threads, " + std::to_string(mappings) + " mappings";
    }

  private:
    // Directory entries but "." and ".."; reading /proc/self/fd opens one descriptor, counted
    // each time alike.
    static long entries(const char* path) {
        DIR* dir = opendir(path);
        if (dir == nullptr) return -1;
        long n = 0;
        while (const dirent* e = readdir(dir)) n += e->d_name[0] != '.';
        closedir(dir);
        return n;
    }

    static long lines(const char* path) {
        FILE* f = fopen(path, "re");
        if (f == nullptr) return -1;
        long n = 0;
        for (int c; (c = fgetc(f)) != EOF;) n += c == '\n';
        fclose(f);
        return n;
    }
};

}  // namespace cwbtest
