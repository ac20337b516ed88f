// Drives the CWB service from the input bytes: every client method and composer event, several
// clients' callbacks, shared-memory regions and the phone's faults, on a phone whose properties,
// device files and panel modes the input picks. The phone is made once and reset per input; the
// clock is manual and the vendor completes on the calling thread, so no input waits on real time.
// Regions may be smaller than declared and shrink while mapped (CWB_FUZZ_UNDERSIZED_REGIONS=0
// keeps them whole); CWB_FUZZ_ECHO=1 prints the service's log lines.
#include <CwbService.h>
#include <CwbServiceTestPeer.h>
#include <aidl/vendor/zarel/hardware/cwb/BnCwbCallback.h>
#include <device/Composer.h>
#include <device/Device.h>
#include <fcntl.h>
#include <host/binder_registry.h>
#include <host/clock.h>
#include <host/gralloc_control.h>
#include <host/log_capture.h>
#include <host/properties.h>
#include <host/sandbox.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "FuzzBytes.h"
#include "FuzzEcho.h"
#include "FuzzSandbox.h"

namespace {

using aidl::vendor::zarel::hardware::cwb::BnCwbCallback;
using aidl::vendor::zarel::hardware::cwb::Error;
using aidl::vendor::zarel::hardware::cwb::Histogram;
using aidl::vendor::zarel::hardware::cwb::ICwbCallback;
using aidl::vendor::zarel::hardware::cwb::Rect;
using aidl::vendor::zarel::hardware::cwb::Rgb;
using aidl::vendor::zarel::hardware::cwb::implementation::CwbService;
using aidl::vendor::zarel::hardware::cwb::implementation::CwbServiceTestPeer;
using cwbfuzz::FuzzBytes;
using host::device::Frame;
using host::device::FrameKind;
using host::device::PanelId;
using host::device::PanelMode;
using Outcome = host::device::SimulatedDisplayConfig::Outcome;

constexpr int kMaxOperations = 96;
constexpr int kClientCount = 4;
constexpr int kRegionCount = 3;
// Every crop record of the largest panel below fits: 1080 x 2400 x 3 + 12 bytes.
constexpr int64_t kMaxRegionBytes = 8 * 1024 * 1024;
constexpr const char* kServiceInstance = "vendor.zarel.hardware.cwb.ICwbService/default";

// ---- Choice tables (the first entry is the usual case) ----

struct PropertyChoice {
    const char* key;
    std::vector<const char*> values;  // nullptr leaves the property unset
};

const PropertyChoice kPropertyChoices[] = {
        {"ro.vendor.zarel.display.cwb.display_id", {"0", "3", "-1", nullptr, "1", "0x3"}},
        {"ro.vendor.zarel.display.cwb.display_id_sec", {"3", nullptr, "-1", "0", "4"}},
        {"ro.vendor.zarel.display.cwb.roi", {"1", "0", nullptr}},
        {"ro.vendor.zarel.display.cwb.rotate", {nullptr, "0", "1", "2", "3", "4", "-1"}},
        {"ro.vendor.zarel.display.cwb.rotate_main", {"0", "1", "2", "3", "4", "-1"}},
        {"ro.vendor.zarel.display.cwb.rotate_sec", {"0", "1", "2", "3", "5"}},
        {"ro.vendor.zarel.display.cwb.postprocess", {"0", "1", nullptr}},
        {"ro.vendor.zarel.display.cwb.aod_forbidden", {"0", "1"}},
        {"ro.vendor.zarel.display.cwb.fod_forbidden", {"0", "1"}},
        {"ro.vendor.zarel.display.cwb.apl_read_support", {"1", "0"}},
};

constexpr const char* kCtRangeKey = "ro.vendor.zarel.display.cwb.ct_range";
const char* const kCtRanges[] = {
        "0,10,245,255",      "0,0,255,255",       nullptr,     "1,2,3", "a,b,c,d",
        ",,0,,10,245,255,,", "99999999999,1,2,3", "-5,300,7,7"};

const std::vector<PanelMode> kMainModes[] = {
        {{64, 48, 16'666'666}, {64, 48, 8'333'333}},
        {{32, 32, 16'666'666}, {48, 64, 8'333'333}, {16, 8, 11'111'111}},
        {},
        {{1, 1, 16'666'666}},
        {{0, 0, 16'666'666}, {8, 8, 0}},
        {{-1, 5, 0}},
        {{200, 100, INT_MAX}, {3, 2, -1}},
        {{1080, 2400, 16'666'666}, {1080, 2400, 8'333'333}},  // the real panel: rare, slow
};
const std::vector<PanelMode> kSecondaryModes[] = {
        {{40, 72, 16'666'666}},
        {{72, 40, 16'666'666}, {16, 16, 8'333'333}},
        {},
        {{1, 1, 1}},
};

const int32_t kCoordinates[] = {0,  1,  2,  3,  8,   16,  31,  32,   47,   48,   63, 64,
                                65, 71, 72, 99, 100, 199, 200, 1079, 1080, 2400, -1, INT_MAX};
const int32_t kFractions[] = {0, 50000, 100000, 25000, 99999, 0xFFFFFF};
const int32_t kSizes[] = {0,     1,     7,       8,       12, 15,        20,       4096,
                          30012, 65536, 7776012, 8388608, -1, INT32_MAX, INT32_MIN};
const int64_t kRegionSizes[] = {65536, 0, 7, 12, 20, 4096, 30012, kMaxRegionBytes};
const int64_t kClockSteps[] = {51'000'000, 0,           1'000'000,     16'666'666,       49'999'999,
                               50'000'000, 100'000'000, 1'000'000'000, 1'099'511'627'776};
const uint64_t kDisplays[] = {0, 3, 1, 4, UINT64_MAX};
const int kPowerModes[] = {2, 0, 1, 3, 4, -1};
const char* const kPatterns[] = {"bars", "ramp", "checker", "gradient"};
const uint32_t kRowAlignments[] = {64, 1, 3, 0};
constexpr int kFillCount = 6;
const uint8_t kFills[kFillCount][3] = {{0, 0, 0}, {255, 255, 255}, {255, 0, 0},
                                       {5, 5, 5}, {250, 250, 250}, {40, 128, 200}};

// ---- Clients ----

std::shared_ptr<CwbService> gService;  // the service of the input being played
thread_local int gReentryDepth = 0;
// Calls back into the service per input: a client that registers itself again from every
// notification multiplies the registrations (duplicates are kept), so the budget bounds the
// time an input takes.
int gReentryBudget = 0;

// A client's callback. It can die (its calls fail as a dead binder's do) and it can call back
// into the service from its notification, as a client on another binder thread may.
class FuzzClient : public BnCwbCallback {
  public:
    enum class Reentry { None, UnregisterSelf, RegisterSelf, Disable, Enable, Request, Debug };

    ndk::ScopedAStatus notifyCwbStatus(bool /*status*/) override {
        if (dead) return ndk::ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT);
        if (reentry == Reentry::None || gService == nullptr || gReentryDepth >= 2 ||
            gReentryBudget <= 0) {
            return ndk::ScopedAStatus::ok();
        }
        --gReentryBudget;
        ++gReentryDepth;
        std::shared_ptr<CwbService> service = gService;
        Error error = Error::NONE;
        bool done = false;
        switch (reentry) {
            case Reentry::UnregisterSelf:
                service->unregisterCallback(ref<ICwbCallback>(), &error);
                break;
            case Reentry::RegisterSelf:
                service->registerCallback(ref<ICwbCallback>(), &error);
                break;
            case Reentry::Disable:
                service->disable(&done);
                break;
            case Reentry::Enable:
                service->enable(&done);
                break;
            case Reentry::Request: {
                Rgb rgb;
                service->getRGBValue(Rect{0, 0, 4, 4}, &rgb, &error);
                break;
            }
            case Reentry::Debug:
                service->setDebug({1, 0, 1}, &error);
                break;
            case Reentry::None:
                break;
        }
        --gReentryDepth;
        return ndk::ScopedAStatus::ok();
    }

    bool dead = false;
    Reentry reentry = Reentry::None;
};

// ---- The phone, made once ----

struct Phone {
    Phone() {
        root = cwbfuzz::makeSandbox();
        device = std::make_unique<host::device::Device>(root);
        host::clock::setManual(true);
        device->displayConfig()->setSynchronousCompletion(true);
        for (auto& client : clients) client = ndk::SharedRefBase::make<FuzzClient>();
        for (auto& region : regions) {
            region = ndk::ScopedFileDescriptor(memfd_create("cwb_fuzz_region", MFD_CLOEXEC));
            if (region.get() < 0) abort();
        }
        int ends[2] = {-1, -1};
        if (pipe2(ends, O_CLOEXEC) != 0) abort();
        pipeRead.reset(ends[0]);
        pipeWrite.reset(ends[1]);
        readOnly.reset(open("/dev/null", O_RDONLY | O_CLOEXEC));
        const char* undersized = getenv("CWB_FUZZ_UNDERSIZED_REGIONS");
        undersizedRegions = undersized == nullptr || undersized[0] != '0';
    }
    ~Phone() {
        device.reset();
        std::error_code ec;
        std::filesystem::remove_all(root, ec);
    }

    // The descriptor a client hands over: a region, none, or ones that cannot be mapped.
    const ndk::ScopedFileDescriptor& descriptor(uint8_t pick) {
        const ndk::ScopedFileDescriptor* const all[] = {
                &regions[0], &regions[1], &regions[2], &none, &pipeRead, &readOnly, &closed};
        return *all[pick % 7];
    }

    void resizeRegion(int index, int64_t bytes) {
        if (regionBytes[index] == bytes) return;
        if (ftruncate(regions[index].get(), bytes) != 0) {
            // The service seals a region against shrinking once it maps it: take a fresh file.
            if (errno != EPERM) abort();
            regions[index] =
                    ndk::ScopedFileDescriptor(memfd_create("cwb_fuzz_region", MFD_CLOEXEC));
            if (regions[index].get() < 0 || ftruncate(regions[index].get(), bytes) != 0) abort();
        }
        regionBytes[index] = bytes;
    }

    // Device files are rewritten only when they change: most inputs keep the previous ones.
    void setWeights(PanelId panel, const std::optional<std::string>& text) {
        std::optional<std::string>& current = weights[panel == PanelId::Main ? 0 : 1];
        if (current == text) return;
        if (text) {
            device->writeWeights(panel, *text);
        } else {
            using host::device::Device;
            const char* file =
                    panel == PanelId::Main ? Device::kWeightsMain : Device::kWeightsSecondary;
            unlink(device->hostPath(file).c_str());
        }
        current = text;
    }
    void setApl(const std::optional<std::string>& text) {
        if (apl == text) return;
        device->setAplFile(text);
        apl = text;
    }

    std::string root;
    std::unique_ptr<host::device::Device> device;
    std::shared_ptr<FuzzClient> clients[kClientCount];
    ndk::ScopedFileDescriptor regions[kRegionCount];
    int64_t regionBytes[kRegionCount] = {-1, -1, -1};
    std::optional<std::string> weights[2];
    std::optional<std::string> apl;
    ndk::ScopedFileDescriptor none;
    ndk::ScopedFileDescriptor pipeRead;
    ndk::ScopedFileDescriptor pipeWrite;
    ndk::ScopedFileDescriptor readOnly;
    ndk::ScopedFileDescriptor closed{1 << 20};  // above any descriptor the process can hold
    bool undersizedRegions = false;
};

Phone& phone() {
    static Phone p;
    return p;
}

// ---- Input-driven values ----

int32_t coordinate(FuzzBytes& in) {
    const uint8_t pick = in.u8();
    if (pick < 200) return kCoordinates[pick % (sizeof(kCoordinates) / sizeof(kCoordinates[0]))];
    if (pick < 240) return static_cast<int32_t>(0x80000000u | in.pick(kFractions));
    return in.i32();
}

// Braced initialisers run in order: left, top, right, bottom.
Rect rect(FuzzBytes& in) {
    return Rect{coordinate(in), coordinate(in), coordinate(in), coordinate(in)};
}

int32_t size(FuzzBytes& in) {
    const uint8_t pick = in.u8();
    if (pick < 240) return kSizes[pick % (sizeof(kSizes) / sizeof(kSizes[0]))];
    return in.i32();
}

// A weights file: absent, raw text, or a well-formed one with chosen count and values.
std::optional<std::string> weightsText(FuzzBytes& in) {
    switch (in.u8() % 4) {
        case 0:
            return std::nullopt;
        case 1:
            return in.text(48);
        default: {
            static const int32_t kCounts[] = {4, 9, 16, 0, 1, -1, 3, INT_MAX};
            static const char* const kValues[] = {"1",   "2",          "0",           "-1",
                                                  "100", "2147483647", "-2147483648", "x"};
            std::string text = "{\"count\":" + std::to_string(in.pick(kCounts)) + ",\"Weights\":[";
            const int n = in.u8() % 18;
            for (int i = 0; i < n; ++i) {
                if (i > 0) text += ",";
                text += in.pick(kValues);
            }
            return text + "]}";
        }
    }
}

std::optional<std::string> aplText(FuzzBytes& in) {
    switch (in.u8() % 4) {
        case 0: {
            char text[16];
            snprintf(text, sizeof(text), "%02x %02x\n", in.u8(), in.u8());
            return std::string(text);
        }
        case 1:
            return std::nullopt;
        case 2:
            return std::string();
        default:
            return in.text(40);
    }
}

void setFrame(host::device::Device& device, FuzzBytes& in, PanelId panel) {
    const FrameKind kind = in.flag() ? FrameKind::PostProcessed : FrameKind::Mixer;
    const std::vector<PanelMode> modes = device.displayConfig()->panelModes(panel);
    const PanelMode mode =
            modes.empty() ? PanelMode{64, 48, 0} : modes[device.displayConfig()->activeMode(panel)];
    int width = mode.width;
    int height = mode.height;
    // Sometimes a picture that does not match the mode.
    if (in.u8() % 8 == 7) {
        static const int kSides[] = {1, 7, 33, 100};
        width = in.pick(kSides);
        height = in.pick(kSides);
    }
    if (width <= 0 || height <= 0) return;
    const uint8_t choice = in.u8() % (4 + kFillCount);
    // Pictures are drawn once: drawing one costs more than most inputs.
    using Key = std::tuple<uint8_t, int, int>;
    static std::map<Key, std::shared_ptr<const Frame>> drawn;
    const Key key{choice, width, height};
    auto it = drawn.find(key);
    if (it == drawn.end()) {
        if (drawn.size() >= 1024) drawn.clear();
        std::optional<Frame> frame;
        if (choice < 4) {
            frame = Frame::pattern(kPatterns[choice], width, height);
        } else {
            const uint8_t* c = kFills[choice - 4];
            frame = Frame::filled(width, height, c[0], c[1], c[2]);
        }
        if (!frame) return;
        it = drawn.emplace(key, std::make_shared<const Frame>(std::move(*frame))).first;
    }
    device.displayConfig()->setFrame(panel, kind, it->second);
}

// Answers carry documented codes only; getRGBValue adds its verdict bits above them.
void checkError(Error error, bool withState = false) {
    const uint32_t word = static_cast<uint32_t>(error);
    if ((word & 0xFFFF) > static_cast<uint32_t>(Error::SCREEN_OFF) ||
        (word >> 16) > (withState ? 3u : 0u)) {
        fprintf(stderr, "undocumented error word 0x%x\n", word);
        abort();
    }
}

// ---- One input ----

class Session {
  public:
    Session(Phone& phone, FuzzBytes& in) : mPhone(phone), mIn(in), mDevice(*phone.device) {}

    void setUp() {
        host::gralloc::reset();
        aidl::vendor::zarel::hardware::cwb::implementation::mLightModeID = 2;

        for (const PropertyChoice& choice : kPropertyChoices) {
            const char* value = choice.values[mIn.u8() % choice.values.size()];
            if (value != nullptr) host::properties::set(choice.key, value);
        }
        const uint8_t ct = mIn.u8();
        if (ct < 240) {
            if (const char* value = kCtRanges[ct % (sizeof(kCtRanges) / sizeof(kCtRanges[0]))]) {
                host::properties::set(kCtRangeKey, value);
            }
        } else {
            host::properties::set(kCtRangeKey, mIn.text(24));
        }

        mPhone.setWeights(PanelId::Main, weightsText(mIn));
        mPhone.setWeights(PanelId::Secondary, weightsText(mIn));
        mPhone.setApl(aplText(mIn));

        const uint8_t mainPick = mIn.u8();
        mDevice.setPanelModes(PanelId::Main,
                              mainPick < 248 ? kMainModes[mainPick % 7] : kMainModes[7]);
        mDevice.setPanelModes(PanelId::Secondary, mIn.pick(kSecondaryModes));
        for (PanelId panel : {PanelId::Main, PanelId::Secondary}) {
            mDevice.displayConfig()->clearFrame(panel, FrameKind::PostProcessed);
            mDevice.displayConfig()->clearFrame(panel, FrameKind::Mixer);
            setFrame(mDevice, mIn, panel);
        }
        mDevice.setVendorPresent(mIn.u8() % 8 != 7);
        mDevice.setQServicePresent(mIn.u8() % 8 != 7);
        mDevice.qservice()->setAnswer(303, 0);
        mDevice.qservice()->setAnswer(304, 0);
        for (int i = 0; i < kRegionCount; ++i) mPhone.resizeRegion(i, mIn.pick(kRegionSizes));
        for (auto& client : mPhone.clients) {
            client->dead = false;
            client->reentry = FuzzClient::Reentry::None;
        }
        gReentryBudget = 16;
        if (mIn.u8() % 8 != 7) boot();
    }

    void play() {
        for (int i = 0; i < kMaxOperations && !mIn.empty(); ++i) runOne();
    }

    void tearDown() {
        gService.reset();
        mService.reset();
        host::binder::removeService(kServiceInstance);
        mComposer.reset();
        // Completions still held by the vendor would reach no one now.
        mDevice.displayConfig()->setManualCompletion(false);
        mDevice.displayConfig()->dropPending();
        mDevice.displayConfig()->clearOutcomes();
        mDevice.displayConfig()->clearRequests();
        mDevice.qservice()->clearCommands();
        mDevice.setVendorPresent(true);
        mDevice.setQServicePresent(true);
        std::error_code ec;
        std::filesystem::remove_all(mDevice.hostPath(host::device::Device::kDumpDir), ec);
        // Whatever the input allocated goes before it ends: libFuzzer replays an input that leaves
        // more allocations than it found, to look for leaks.
        host::properties::clear();
        host::log::clear();
        host::sandbox::resetCounts();
        mDevice.setPanelModes(PanelId::Main, kMainModes[0]);
        mDevice.setPanelModes(PanelId::Secondary, kSecondaryModes[0]);
        // A destroyed service leaves no capture buffer behind.
        if (host::gralloc::liveBuffers() != 0) {
            fprintf(stderr, "%zu capture buffers outlive the service\n",
                    host::gralloc::liveBuffers());
            abort();
        }
    }

  private:
    void boot() {
        if (mComposer != nullptr) return;
        mComposer = std::make_unique<host::device::Composer>();
        mComposer->boot();
        mService = mComposer->proxy().service();
        gService = mService;
    }

    void runOne() {
        const uint8_t op = mIn.u8();
        if (op < 128) {
            if (mService == nullptr) {
                boot();
                return;
            }
            clientCall(op);
        } else if (op < 192) {
            hostEvent(op);
        } else {
            phoneChange(op);
        }
    }

    void clientCall(uint8_t op) {
        CwbService& s = *mService;
        Error error = Error::NONE;
        switch (op % 18) {
            case 0: {
                Rgb rgb;
                s.getRGBValue(rect(mIn), &rgb, &error);
                checkError(error, true);
                break;
            }
            case 1: {
                std::vector<float> lumas;
                s.getLumasValue(rect(mIn), &lumas, &error);
                checkError(error);
                if (lumas.size() != 1) abort();
                break;
            }
            case 2: {
                Histogram histogram;
                s.getHistogramValue(rect(mIn), &histogram, &error);
                checkError(error);
                break;
            }
            case 3: {
                bool status = false;
                s.getCwbPostProcessStatus(&status);
                break;
            }
            case 4:
                s.setCwbPostProcessStatus(mIn.flag(), &error);
                break;
            case 5:
            case 6: {
                const uint8_t pick = mIn.u8() % (kClientCount + 1);
                std::shared_ptr<ICwbCallback> client;
                if (pick < kClientCount) client = mPhone.clients[pick];
                if (op % 18 == 5) {
                    s.registerCallback(client, &error);
                } else {
                    s.unregisterCallback(client, &error);
                }
                break;
            }
            case 7:
            case 8: {
                bool done = false;
                op % 18 == 7 ? s.enable(&done) : s.disable(&done);
                break;
            }
            case 9: {
                static const int32_t kDebug[] = {0, 1, -1, 2, INT_MIN};
                std::vector<int32_t> debug(mIn.u8() % 5);
                for (int32_t& value : debug) value = mIn.pick(kDebug);
                s.setDebug(debug, &error);
                break;
            }
            case 10:
            case 11: {
                const uint8_t pick = mIn.u8();
                const int32_t id = pick < 250 ? static_cast<int8_t>(pick) % 17 : mIn.i32();
                const Rect r = rect(mIn);
                std::vector<int32_t> values;
                s.getCwbValue(id, r, &values, &error);
                checkError(error);
                break;
            }
            case 12: {
                const int32_t id = mIn.i32();
                s.reserved(id, mIn.i32());
                break;
            }
            case 13: {
                const uint8_t pick = mIn.u8();
                const int32_t declared = size(mIn);
                // Unless asked for, the file holds what the service is told it holds.
                if (!mPhone.undersizedRegions && pick % 7 < kRegionCount) {
                    const int64_t needed = std::min<int64_t>(declared, kMaxRegionBytes);
                    if (mPhone.regionBytes[pick % 7] < needed)
                        mPhone.resizeRegion(pick % 7, needed);
                }
                s.initializeSharedMemory(0, declared, mPhone.descriptor(pick), &error);
                break;
            }
            case 14: {
                static const int32_t kIds[] = {5, 2, 3, 0, 1, 4};
                const uint8_t pick = mIn.u8();
                const int32_t id = pick < 250 ? kIds[pick % 6] : mIn.i32();
                const Rect r = rect(mIn);
                const ndk::ScopedFileDescriptor& fd = mPhone.descriptor(mIn.u8());
                const int32_t bufferSize = size(mIn);
                std::vector<int32_t> values;
                s.getSharedData(id, r, fd, bufferSize, &values, &error);
                checkError(error);
                break;
            }
            case 15: {
                std::vector<int32_t> values;
                s.getScreenResolution(mIn.i32(), &values, &error);
                if (values.size() != 2) abort();
                break;
            }
            case 16:
                s.releaseSharedMemory(mIn.i32(), mIn.i32(), &error);
                break;
            case 17: {
                int loading = 0;
                s.getDisplayPanelLoading(&loading);
                break;
            }
        }
    }

    void hostEvent(uint8_t op) {
        if (mComposer == nullptr) {
            // Events before boot go to a proxy with no service, as they may on a device.
            host::device::Composer early;
            early.layerChange();
            early.powerMode(0, 2);
            return;
        }
        host::device::Composer& c = *mComposer;
        switch (op % 12) {
            case 0:
            case 1:
                c.layerChange();
                break;
            case 2: {
                const uint64_t display = mIn.pick(kDisplays);
                c.powerMode(display, mIn.pick(kPowerModes));
                break;
            }
            case 3: {
                const uint64_t display = mIn.pick(kDisplays);
                c.configChange(display, mIn.u8() < 240 ? mIn.u8() % 4 : mIn.i32());
                break;
            }
            case 4:
                c.updateConfigs();
                break;
            case 5: {
                static const int kModes[] = {7, 0, -1, 9};
                static const int kIntents[] = {300, 303, 304, 307, 308, 0, -1};
                const uint64_t display = mIn.pick(kDisplays);
                const int mode = mIn.pick(kModes);
                c.colorMode(display, mode, mIn.pick(kIntents));
                break;
            }
            case 6:
                c.aodLayer(mIn.flag());
                break;
            case 7:
                c.fodLayer(mIn.flag());
                break;
            case 8:
                c.status(mIn.flag());
                break;
            case 9:
                host::clock::advance(std::chrono::nanoseconds(mIn.pick(kClockSteps)));
                break;
            case 10: {
                // The operations the service exports to its host besides the proxy's events.
                CwbService& s = *mService;
                const uint8_t pick = mIn.u8() % 7;
                uint32_t width = 0;
                uint32_t height = 0;
                Rect checked;
                if (pick == 0) s.clearCache();
                if (pick == 1) s.getResolution(width, height);
                if (pick == 2) s.generateCookie();
                if (pick == 3) CwbServiceTestPeer(s).captureScreenAllowed();
                if (pick == 4) s.checkInputRect(rect(mIn), checked);
                if (pick == 5) s.destroyCwbBuffer();
                if (pick == 6) s.prepareCwbBuffer();
                break;
            }
            case 11: {
                // A completion through the vendor's legacy callback, whether or not one is awaited.
                static const int32_t kErrors[] = {0, -1, 3};
                mService->NotifyCWBBufferDone(mIn.pick(kErrors), nullptr);
                break;
            }
        }
    }

    void phoneChange(uint8_t op) {
        auto& vendor = *mDevice.displayConfig();
        const PanelId panel = mIn.flag() ? PanelId::Secondary : PanelId::Main;
        switch (op % 14) {
            case 0:
            case 1:
                host::clock::advance(std::chrono::nanoseconds(mIn.pick(kClockSteps)));
                break;
            case 2: {
                // A resolution change: new modes, then the composer tells the service.
                const uint8_t pick = mIn.u8();
                if (panel == PanelId::Main) {
                    vendor.setPanelModes(panel, kMainModes[pick % 7]);
                } else {
                    vendor.setPanelModes(panel, kSecondaryModes[pick % 4]);
                }
                if (mComposer != nullptr) mComposer->updateConfigs();
                break;
            }
            case 3:
                vendor.setActiveMode(panel, mIn.u8() % 4);
                break;
            case 4:
                setFrame(mDevice, mIn, panel);
                break;
            case 5: {
                static const Outcome kOutcomes[] = {Outcome::Error, Outcome::Drop, Outcome::Refuse,
                                                    Outcome::Ok};
                static const int32_t kErrors[] = {-1, -22, 1, 0};
                const Outcome outcome = mIn.pick(kOutcomes);
                vendor.pushOutcome(outcome, mIn.pick(kErrors));
                break;
            }
            case 6:
                // Completions held back arrive late, after their request gave up.
                vendor.setManualCompletion(mIn.flag());
                break;
            case 7: {
                static const int32_t kErrors[] = {0, -1, -22, 5};
                vendor.completeNext(mIn.pick(kErrors));
                break;
            }
            case 8:
                mDevice.setVendorPresent(mIn.flag());
                break;
            case 9:
                mDevice.setQServicePresent(mIn.flag());
                break;
            case 10: {
                static const uint32_t kCodes[] = {303, 304};
                static const int32_t kAnswers[] = {1,   0,   2000, 1250,    1249,
                                                   800, 799, 1,    INT_MAX, -1};
                const uint32_t code = mIn.pick(kCodes);
                mDevice.qservice()->setAnswer(code, mIn.pick(kAnswers));
                break;
            }
            case 11:
                mPhone.setApl(aplText(mIn));
                break;
            case 12: {
                auto& client = *mPhone.clients[mIn.u8() % kClientCount];
                const uint8_t pick = mIn.u8();
                if (pick % 8 == 7) {
                    client.dead = !client.dead;
                } else {
                    client.reentry = static_cast<FuzzClient::Reentry>(pick % 7);
                }
                break;
            }
            case 13: {
                const uint8_t pick = mIn.u8() % 7;
                if (pick == 0) host::gralloc::failAllocations(1);
                if (pick == 1) host::gralloc::failAllocationsLeavingHandle(1);
                if (pick == 2) host::gralloc::failLocks(1);
                if (pick == 3) host::gralloc::reportFormat(mIn.flag() ? 1 : -1);
                if (pick == 4) host::gralloc::setRowAlignment(mIn.pick(kRowAlignments));
                if (pick >= 5 && mPhone.undersizedRegions) {
                    mPhone.resizeRegion(mIn.u8() % kRegionCount, mIn.pick(kRegionSizes));
                }
                break;
            }
        }
    }

    Phone& mPhone;
    FuzzBytes& mIn;
    host::device::Device& mDevice;
    std::unique_ptr<host::device::Composer> mComposer;
    std::shared_ptr<CwbService> mService;
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    cwbfuzz::echoLogsWhenAsked();
    phone();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzBytes in(data, size);
    Session session(phone(), in);
    session.setUp();
    session.play();
    session.tearDown();
    return 0;
}
