// What the process holds, from /proc/self: descriptors, threads, and mappings of files and shared
// memory (what the service maps; the allocator's and sanitizers' anonymous regions come and go).
// The service runs in the test's process, so whatever it forgets shows here.
#pragma once

#include <dirent.h>

#include <chrono>
#include <fstream>
#include <string>
#include <thread>
#include <tuple>

namespace cwbtest {

struct ProcessResources {
    long descriptors = 0, threads = 0, mappings = 0;

    static ProcessResources now() {
        ProcessResources out{entries("/proc/self/fd"), entries("/proc/self/task"), 0};
        std::ifstream maps("/proc/self/maps");  // "start-end perms offset dev inode path"
        for (std::string l; std::getline(maps, l);) {
            out.mappings += l[l.find(' ') + 4] == 's' || l.find(" /") != std::string::npos;
        }
        return out;
    }
    // Counts until no more threads run than in `before`, for at most 2 s: a joined thread may
    // still be leaving the kernel's list.
    static ProcessResources settled(const ProcessResources& before) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
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
