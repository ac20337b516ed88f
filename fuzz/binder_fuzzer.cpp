// The service's binder surface, as AOSP's fuzzService drives it: from a client process,
// transactions with any code and flags and parcels of fuzzed values, descriptors and binders,
// which the generated stub parses before the service sees anything; between them composer events
// and vendor faults. The phone is made once and the service booted afresh for every input; the
// clock is manual and the vendor completes on the calling thread, so no input waits on real time.
#include <aidl/vendor/zarel/hardware/cwb/BnCwbCallback.h>
#include <aidl/vendor/zarel/hardware/cwb/ICwbService.h>
#include <android/binder_manager.h>
#include <device/Composer.h>
#include <device/Device.h>
#include <host/binder_process.h>
#include <host/binder_registry.h>
#include <host/clock.h>
#include <host/log_capture.h>
#include <host/properties.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "FuzzBytes.h"
#include "FuzzEcho.h"
#include "FuzzSandbox.h"

namespace {

using aidl::vendor::zarel::hardware::cwb::BnCwbCallback;
using aidl::vendor::zarel::hardware::cwb::ICwbService;
using cwbfuzz::FuzzBytes;
using host::binder::ProcessScope;
using Outcome = host::device::SimulatedDisplayConfig::Outcome;

constexpr const char* kInstance = "vendor.zarel.hardware.cwb.ICwbService/default";
constexpr int kMaxTransactions = 32;
constexpr int kMaxValues = 12;
constexpr uint32_t kMethods = 18;  // the interface's 16 and the version and hash queries

class Callback : public BnCwbCallback {
  public:
    ndk::ScopedAStatus notifyCwbStatus(bool /*status*/) override {
        return ndk::ScopedAStatus::ok();
    }
};

struct Phone {
    Phone() {
        root = cwbfuzz::makeSandbox();
        host::clock::setManual(true);
        device = std::make_unique<host::device::Device>(root);
        device->displayConfig()->setSynchronousCompletion(true);
        ProcessScope in(client);
        callback = ndk::SharedRefBase::make<Callback>()->asBinder();
        descriptors.push_back(memfd_create("cwb_fuzz_region", MFD_CLOEXEC | MFD_ALLOW_SEALING));
        if (ftruncate(descriptors.back(), 64 * 1024) != 0) abort();
        descriptors.push_back(memfd_create("cwb_fuzz_small", MFD_CLOEXEC));
        int ends[2] = {-1, -1};
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) abort();
        descriptors.insert(descriptors.end(), {ends[0], ends[1], -1});
    }
    ~Phone() {
        for (int fd : descriptors) close(fd);
        device.reset();
        std::error_code ec;
        std::filesystem::remove_all(root, ec);
    }

    std::string root;
    std::unique_ptr<host::device::Device> device;
    std::shared_ptr<host::binder::Process> client = host::binder::newProcess("fuzz client");
    ndk::SpAIBinder callback;      // a binder of the client's own
    std::vector<int> descriptors;  // regions, unmappable sockets, and none
};

Phone& phone() {
    static Phone* instance = new Phone();  // never destroyed: binder threads may still run
    return *instance;
}

// Values as the generated code writes them, in any order and number.
void fill(FuzzBytes& in, AParcel* parcel, const ndk::SpAIBinder& service) {
    Phone& p = phone();
    const int count = in.u8() % (kMaxValues + 1);
    for (int i = 0; i < count && !in.empty(); ++i) {
        switch (in.u8() % 8) {
            case 0:
                AParcel_writeInt32(parcel, in.i32());
                break;
            case 1: {  // a Rect: present, its size, four fields
                AParcel_writeInt32(parcel, 1);
                AParcel_writeInt32(parcel, in.flag() ? in.i32() : 20);
                for (int f = 0; f < 4; ++f) AParcel_writeInt32(parcel, in.i32());
                break;
            }
            case 2: {
                const int32_t length = static_cast<int32_t>(in.u8() % 18) - 1;  // -1 is null
                std::vector<int32_t> values(length > 0 ? length : 0);
                for (int32_t& v : values) v = in.i32();
                AParcel_writeInt32Array(parcel, length < 0 ? nullptr : values.data(), length);
                break;
            }
            case 3:
                AParcel_writeParcelFileDescriptor(parcel,
                                                  p.descriptors[in.u8() % p.descriptors.size()]);
                break;
            case 4: {
                AIBinder* const binders[] = {p.callback.get(), nullptr, service.get()};
                AParcel_writeStrongBinder(parcel, binders[in.u8() % 3]);
                break;
            }
            case 5:
                AParcel_writeBool(parcel, in.flag());
                break;
            case 6: {
                const int32_t bits = in.i32();
                float f;
                memcpy(&f, &bits, sizeof(f));
                AParcel_writeFloat(parcel, f);
                break;
            }
            default: {
                const std::string s = in.text(40);
                AParcel_writeString(parcel, s.c_str(), static_cast<int32_t>(s.size()));
                break;
            }
        }
    }
}

// Composer events and vendor faults between transactions.
void event(FuzzBytes& in, host::device::Composer& composer) {
    auto& vendor = *phone().device->displayConfig();
    switch (in.u8() % 7) {
        case 0:
            composer.layerChange();
            break;
        case 1:
            composer.powerMode(in.flag() ? 3 : 0, in.u8() % 5);
            break;
        case 2:
            composer.status(in.flag());
            break;
        case 3:
            vendor.pushOutcome(in.flag() ? Outcome::Refuse : Outcome::Error, -1);
            break;
        case 4:
            composer.aodLayer(in.flag());
            break;
        case 5:
            phone().device->setVendorPresent(in.flag());
            break;
        default:
            host::binder::kill(*host::binder::newProcess("passer-by"));  // a death elsewhere
            break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    cwbfuzz::echoLogsWhenAsked();
    phone();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzBytes in(data, size);
    Phone& p = phone();
    host::properties::clear();
    host::properties::set("ro.vendor.zarel.display.cwb.display_id", "0");
    p.device->displayConfig()->clearOutcomes();
    p.device->setVendorPresent(true);
    auto composer = std::make_unique<host::device::Composer>();
    if (composer->boot() != 0) abort();
    composer->powerMode(0, 2);
    {
        ProcessScope in_client(p.client);
        const ndk::SpAIBinder service(AServiceManager_checkService(kInstance));
        if (!AIBinder_isRemote(service.get()) || ICwbService::fromBinder(service) == nullptr) {
            abort();
        }
        for (int t = 0; t < kMaxTransactions && !in.empty(); ++t) {
            if (in.u8() % 4 == 1) event(in, *composer);
            ndk::ScopedAParcel request;
            if (in.u8() % 8 != 7) {
                if (AIBinder_prepareTransaction(service.get(), request.getR()) != STATUS_OK)
                    abort();
            } else {  // a parcel with another interface's token, or none
                request.set(AParcel_create());
                const std::string token = in.text(40);
                if (in.flag()) AParcel_writeString(request.get(), token.c_str(), token.size());
            }
            const uint32_t code = in.flag() ? static_cast<uint32_t>(in.i32())
                                            : FIRST_CALL_TRANSACTION + in.u8() % kMethods;
            const binder_flags_t flags = in.flag() ? FLAG_ONEWAY : 0;
            fill(in, request.get(), service);
            ndk::ScopedAParcel reply;
            AIBinder_transact(service.get(), code, request.getR(), reply.getR(), flags);
        }
    }
    // Oneway calls run to their end before the service goes with the composer.
    host::binder::waitIdle(*host::binder::mainProcess(), -1);
    host::binder::waitIdle(*p.client, -1);
    composer.reset();
    host::binder::resetRegistry();
    return 0;
}
