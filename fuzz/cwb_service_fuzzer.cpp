// Drives the CWB service's client methods, and the composer events between them, from the input
// bytes against the simulated phone: the feature request, the shared-memory crop export, the
// statistics and the panel readings with arbitrary ids, rectangles, sizes and descriptors.
#include <CwbService.h>
#include <CwbServiceTestPeer.h>
#include <device/Composer.h>
#include <device/Device.h>
#include <host/log_capture.h>
#include <host/properties.h>
#include <sys/mman.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

using aidl::vendor::zarel::hardware::cwb::Error;
using aidl::vendor::zarel::hardware::cwb::Histogram;
using aidl::vendor::zarel::hardware::cwb::Rect;
using aidl::vendor::zarel::hardware::cwb::Rgb;
using aidl::vendor::zarel::hardware::cwb::implementation::CwbService;
using aidl::vendor::zarel::hardware::cwb::implementation::CwbServiceTestPeer;
using host::device::Frame;
using host::device::FrameKind;
using host::device::PanelId;

// Consumes the input front to back; past its end every read gives zeros.
class Bytes {
  public:
    Bytes(const uint8_t* data, size_t size) : mData(data), mSize(size) {}

    bool empty() const { return mPos >= mSize; }
    uint8_t u8() { return mPos < mSize ? mData[mPos++] : 0; }
    int32_t i32() {
        uint32_t v = 0;
        for (int i = 0; i < 4; ++i) v = (v << 8) | u8();
        return static_cast<int32_t>(v);
    }
    // Mostly values near the panel's edges, sometimes any int32.
    int32_t coordinate() {
        static constexpr int32_t kNear[] = {0,    1,    2,    99,   100,  719,  720,  1079,
                                            1080, 1081, 1599, 1600, 2399, 2400, 2401, -1};
        const uint8_t pick = u8();
        if (pick < 200) return kNear[pick % (sizeof(kNear) / sizeof(kNear[0]))];
        if (pick < 230) return static_cast<int32_t>(0x80000000u | (i32() & 0xFFFFFF));  // fraction
        return i32();
    }
    Rect rect() {
        Rect r;
        r.left = coordinate();
        r.top = coordinate();
        r.right = coordinate();
        r.bottom = coordinate();
        return r;
    }
    int32_t size() {
        static constexpr int32_t kSizes[] = {
                0, 1, 7, 8, 12, 15, 4096, 30011, 30012, 65536, 7776012, -1, INT32_MAX, INT32_MIN};
        const uint8_t pick = u8();
        if (pick < 220) return kSizes[pick % (sizeof(kSizes) / sizeof(kSizes[0]))];
        return i32();
    }
    std::string text(size_t max) {
        const size_t n = u8() % (max + 1);
        std::string out;
        for (size_t i = 0; i < n && !empty(); ++i) out.push_back(static_cast<char>(u8()));
        return out;
    }

  private:
    const uint8_t* mData;
    size_t mSize;
    size_t mPos = 0;
};

// One simulated phone for the whole run; members are destroyed in reverse order at exit.
struct Phone {
    static constexpr int32_t kRegionBytes = 8 * 1024 * 1024;

    Phone() {
        host::properties::set("ro.vendor.zarel.display.cwb.display_id", "0");
        host::properties::set("ro.vendor.zarel.display.cwb.display_id_sec", "3");
        host::properties::set("ro.vendor.zarel.display.cwb.roi", "1");
        host::properties::set("ro.vendor.zarel.display.cwb.apl_read_support", "1");
        host::properties::set("ro.vendor.zarel.display.cwb.ct_range", "0,10,245,255");
        device = std::make_unique<host::device::Device>();
        device->setLatency(std::chrono::milliseconds(0));
        device->setFrame(PanelId::Main, FrameKind::Mixer, *Frame::pattern("bars", 1080, 2400));
        device->setFrame(PanelId::Secondary, FrameKind::Mixer,
                         *Frame::pattern("gradient", 720, 1600));
        composer = std::make_unique<host::device::Composer>();
        composer->boot();
        service = composer->proxy().service();
        composer->powerMode(0, 2);
        composer->powerMode(3, 2);
        for (auto& region : regions) {
            region = ndk::ScopedFileDescriptor(memfd_create("cwb_fuzz_region", MFD_CLOEXEC));
            if (ftruncate(region.get(), kRegionBytes) != 0) abort();
        }
    }
    ~Phone() {
        composer.reset();
        service.reset();
        device.reset();
    }

    std::unique_ptr<host::device::Device> device;
    std::unique_ptr<host::device::Composer> composer;
    std::shared_ptr<CwbService> service;
    ndk::ScopedFileDescriptor regions[2];
    ndk::ScopedFileDescriptor none;
};

Phone& phone() {
    static Phone p;
    return p;
}

// getCwbValue may wait 50 ms for a layer change; a few per input keep the run fast.
constexpr int kMaxFeatureRequests = 2;
constexpr int kMaxOperations = 64;

void runOne(Phone& p, Bytes& in, int& featureRequests) {
    CwbService& s = *p.service;
    Error error = Error::NONE;
    switch (in.u8() % 16) {
        case 0: {
            if (featureRequests++ >= kMaxFeatureRequests) break;
            std::vector<int32_t> values;
            const int32_t id = static_cast<int8_t>(in.u8()) % 17;
            const Rect r = in.rect();
            s.getCwbValue(id, r, &values, &error);
            break;
        }
        case 1:
        case 2: {
            static constexpr int32_t kIds[] = {2, 3, 5, 5, 5, 0};
            const uint8_t pick = in.u8();
            const int32_t id = pick < 250 ? kIds[pick % 6] : in.i32();
            // Arguments are read one by one: their evaluation order in a call is unspecified.
            const Rect r = in.rect();
            const ndk::ScopedFileDescriptor& fd = p.regions[in.u8() % 2];
            const int32_t bufferSize = in.size();
            std::vector<int32_t> values;
            s.getSharedData(id, r, fd, bufferSize, &values, &error);
            break;
        }
        case 3: {
            const uint8_t pick = in.u8() % 3;
            const ndk::ScopedFileDescriptor& fd = pick == 2 ? p.none : p.regions[pick];
            const int32_t size = in.size();
            s.initializeSharedMemory(0, size, fd, &error);
            break;
        }
        case 4:
            s.releaseSharedMemory(0, 0, &error);
            break;
        case 5:
            p.composer->layerChange();
            break;
        case 6: {
            const uint64_t display = in.u8() % 2 ? 3 : 0;
            p.composer->powerMode(display, in.u8() % 4);
            break;
        }
        case 7: {
            std::vector<int32_t> values;
            s.getScreenResolution(in.i32(), &values, &error);
            break;
        }
        case 8: {
            Rgb rgb;
            s.getRGBValue(in.rect(), &rgb, &error);
            break;
        }
        case 9: {
            std::vector<float> lumas;
            s.getLumasValue(in.rect(), &lumas, &error);
            break;
        }
        case 10: {
            Histogram histogram;
            s.getHistogramValue(in.rect(), &histogram, &error);
            break;
        }
        case 11:
            if (in.u8() % 4 == 0) {
                p.device->setAplFile(std::nullopt);
            } else {
                p.device->setAplFile(in.text(200));
            }
            break;
        case 12: {
            p.device->qservice()->setAnswer(303, in.i32());
            p.device->qservice()->setAnswer(304, in.i32());
            const uint64_t display = in.u8() % 2 ? 3 : 0;
            p.composer->colorMode(display, 7, 300 + in.u8() % 10);
            break;
        }
        case 13: {
            int loading = 0;
            CwbServiceTestPeer(s).getDisplayPanelLoading(&loading);
            break;
        }
        case 14: {
            const uint64_t display = in.u8() % 2 ? 3 : 0;
            p.composer->configChange(display, in.u8());
            break;
        }
        case 15:
            s.setDebug({in.u8() % 2, 0, -1}, &error);
            break;
    }
}

}  // namespace

// CWB_FUZZ_ECHO=1 prints every log line of the service, to see what an input reaches.
extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    const char* echo = getenv("CWB_FUZZ_ECHO");
    host::log::setEcho(echo != nullptr && echo[0] == '1');
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Phone& p = phone();
    host::log::clear();
    Bytes in(data, size);
    int featureRequests = 0;
    for (int i = 0; i < kMaxOperations && !in.empty(); ++i) runOne(p, in, featureRequests);
    // Each input starts from the same service state as far as a client can restore it.
    Error error = Error::NONE;
    p.service->releaseSharedMemory(0, 0, &error);
    p.service->setDebug({0, 0, -1}, &error);
    p.composer->layerChange();
    aidl::vendor::zarel::hardware::cwb::implementation::mLightModeID = 2;
    return 0;
}
