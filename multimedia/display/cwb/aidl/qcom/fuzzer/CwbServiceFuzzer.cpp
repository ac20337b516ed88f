// Random transactions against ICwbService's binder, as any process allowed to find the service
// could send them: unknown codes, truncated parcels, foreign interface tokens, random descriptors
// and binders. The service is built as the composer builds it; it needs no display-config
// service to exist, so requests it cannot serve fail their own ways.
#include <fuzzbinder/libbinder_ndk_driver.h>
#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

#include "CwbService.h"

using ::aidl::vendor::zarel::hardware::cwb::implementation::CwbService;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider provider(data, size);
    std::shared_ptr<CwbService> service = CwbService::initialize();
    // The composer's side of the state decides which paths a client reaches: let the input
    // choose the service status and a display's power mode before the client calls.
    service->updateCwbStatus(provider.ConsumeBool());
    const int64_t display = provider.ConsumeIntegralInRange<int64_t>(-1, 3);
    service->setPowerMode(static_cast<uint64_t>(display), provider.ConsumeIntegralInRange(0, 3));
    android::fuzzService(service->asBinder().get(), std::move(provider));
    return 0;
}
