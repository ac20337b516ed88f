// Parses a weights file as the service does at boot: the input is the file's text. Whatever it
// holds, the parsed count never exceeds the weights the weighted pass will read.
#include <CwbService.h>
#include <CwbServiceTestPeer.h>
#include <host/log_capture.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

using aidl::vendor::zarel::hardware::cwb::implementation::CwbService;
using aidl::vendor::zarel::hardware::cwb::implementation::CwbServiceTestPeer;

struct Parser {
    Parser() : service(CwbService::initialize()), file(memfd_create("cwb_weights", MFD_CLOEXEC)) {
        if (file < 0) abort();
        path = "/proc/self/fd/" + std::to_string(file);
    }
    std::shared_ptr<CwbService> service;  // no vendor: it only parses here
    int file;
    std::string path;
};

Parser& parser() {
    static Parser p;
    return p;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Parser& p = parser();
    host::log::clear();
    if (ftruncate(p.file, 0) != 0) abort();
    if (size > 0 && pwrite(p.file, data, size, 0) != static_cast<ssize_t>(size)) abort();
    int count = 0;
    std::vector<int> weights;
    CwbServiceTestPeer(*p.service).GetCwbWeightsPos(p.path.data(), &count, weights);
    if (count > 0 && weights.size() < static_cast<size_t>(count)) {
        fprintf(stderr, "count %d with %zu weights\n", count, weights.size());
        abort();
    }
    return 0;
}
