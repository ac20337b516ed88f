// Runs a libFuzzer target as an ordinary program: every file named on the command line (the files
// inside a named folder included) is fed once to LLVMFuzzerTestOneInput. With no arguments the
// empty input is fed, so that a plain build still exercises the target.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int* argc, char*** argv);

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    if (LLVMFuzzerInitialize != nullptr) LLVMFuzzerInitialize(&argc, &argv);
    if (argc < 2) {
        LLVMFuzzerTestOneInput(nullptr, 0);
        printf("replayed the empty input\n");
        return 0;
    }
    // A folder's files in name order, so that a replay is repeatable.
    std::vector<fs::path> files;
    for (int i = 1; i < argc; ++i) {
        std::error_code ec;
        const size_t first = files.size();
        if (!fs::is_directory(argv[i], ec)) files.emplace_back(argv[i]);
        for (const auto& entry : fs::directory_iterator(argv[i], ec)) {
            if (entry.is_regular_file()) files.push_back(entry.path());
        }
        std::sort(files.begin() + static_cast<std::ptrdiff_t>(first), files.end());
    }
    bool ok = true;
    for (const fs::path& file : files) {
        std::ifstream in(file, std::ios::binary);
        if (!in) {
            fprintf(stderr, "cannot read %s\n", file.c_str());
            ok = false;
            continue;
        }
        const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)),
                                         std::istreambuf_iterator<char>());
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    printf("replayed %zu input(s)\n", files.size());
    return ok ? 0 : 1;
}
