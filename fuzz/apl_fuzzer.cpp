// Reads the panel APL file and turns it into the panel-loading estimate: the input's first three
// bytes pick the qservice answers and the render intent, the rest is the file's text.
#include <CwbService.h>
#include <CwbServiceTestPeer.h>
#include <device/Device.h>
#include <fcntl.h>
#include <host/clock.h>
#include <host/log_capture.h>
#include <unistd.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "FuzzBytes.h"
#include "FuzzSandbox.h"

namespace {

using aidl::vendor::zarel::hardware::cwb::Error;
using aidl::vendor::zarel::hardware::cwb::implementation::CwbService;
using aidl::vendor::zarel::hardware::cwb::implementation::CwbServiceTestPeer;

struct Panel {
    Panel() : root(cwbfuzz::makeSandbox()), device(root) {
        host::clock::setManual(true);  // a failed read retries after a sleep
        device.setAplFile(std::string());
        file = open(device.hostPath(host::device::Device::kAplFile).c_str(), O_RDWR | O_CLOEXEC);
        if (file < 0) abort();
        service = CwbService::initialize();
    }
    ~Panel() {
        std::error_code ec;
        std::filesystem::remove_all(root, ec);
    }
    std::string root;
    host::device::Device device;
    int file = -1;
    std::shared_ptr<CwbService> service;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const int32_t kUirStates[] = {1, 0, -1, INT_MAX};
    static const int32_t kNits[] = {2000, 1250, 1249, 800, 799, 0, 1, INT_MAX, -1, INT_MIN};
    static const int kIntents[] = {0, 303, 304, 307, 308, 300};
    static Panel p;
    host::log::clear();
    cwbfuzz::FuzzBytes in(data, size);
    p.device.qservice()->setAnswer(303, in.pick(kUirStates));
    p.device.qservice()->setAnswer(304, in.pick(kNits));
    const uint8_t setting = in.u8();
    p.service->notifyColorModeChange(0, 7, kIntents[setting % 6]);
    Error error = Error::NONE;
    p.service->setDebug({setting >= 128 ? 1 : 0}, &error);

    const std::string text = in.rest();
    if (ftruncate(p.file, 0) != 0) abort();
    if (!text.empty() && pwrite(p.file, text.data(), text.size(), 0) < 0) abort();
    CwbServiceTestPeer peer(*p.service);
    std::vector<unsigned int> values;
    peer.getDisplayPanelAplValue(values);
    int loading = 0;
    p.service->getDisplayPanelLoading(&loading);
    p.device.qservice()->clearCommands();
    return 0;
}
