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

using aidl::vendor::zarel::hardware::cwb::implementation::CwbService;
using aidl::vendor::zarel::hardware::cwb::implementation::CwbServiceTestPeer;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::shared_ptr<CwbService> service = CwbService::initialize();  // no vendor
    static const int file = memfd_create("cwb_weights", MFD_CLOEXEC);
    static std::string path = "/proc/self/fd/" + std::to_string(file);
    host::log::clear();
    if (ftruncate(file, 0) != 0) abort();
    if (size > 0 && pwrite(file, data, size, 0) != static_cast<ssize_t>(size)) abort();
    int count = 0;
    std::vector<int> weights;
    CwbServiceTestPeer(*service).GetCwbWeightsPos(path.data(), &count, weights);
    if (count > 0 && weights.size() < static_cast<size_t>(count)) {
        fprintf(stderr, "count %d with %zu weights\n", count, weights.size());
        abort();
    }
    return 0;
}
