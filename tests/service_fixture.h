// Shared harness of the service tests: a simulated phone, the composer, a booted service and a
// peer that reads the service's state the way a debugger would.
#pragma once

#include <CwbProxy.h>
#include <CwbService.h>
#include <CwbServiceTestPeer.h>
#include <device/Composer.h>
#include <device/Device.h>
#include <gtest/gtest.h>
#include <host/binder_registry.h>
#include <host/gralloc_control.h>
#include <host/log_capture.h>
#include <host/properties.h>
#include <host/sandbox.h>
#include <host/trace_recorder.h>
#include <log/log.h>

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace cwbtest {

using aidl::vendor::zarel::hardware::cwb::Error;
using aidl::vendor::zarel::hardware::cwb::Histogram;
using aidl::vendor::zarel::hardware::cwb::ICwbCallback;
using aidl::vendor::zarel::hardware::cwb::Rect;
using aidl::vendor::zarel::hardware::cwb::Rgb;
using aidl::vendor::zarel::hardware::cwb::implementation::CwbService;
using aidl::vendor::zarel::hardware::cwb::implementation::CwbServiceTestPeer;
using host::device::FrameKind;
using host::device::PanelId;
using host::device::PanelMode;

constexpr int32_t kVsync60 = 16666666;

inline Rect rect(int32_t l, int32_t t, int32_t r, int32_t b) {
    Rect out;
    out.left = l;
    out.top = t;
    out.right = r;
    out.bottom = b;
    return out;
}

// A fraction field: low 24 bits in units of 1/100000, bit 31 set.
inline int32_t frac(int32_t units) {
    return static_cast<int32_t>(0x80000000u | static_cast<uint32_t>(units));
}

// Waits for cond with a bounded timeout; true when it held in time.
template <typename Cond>
bool waitFor(Cond cond, std::chrono::milliseconds timeout = std::chrono::milliseconds(2000)) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (!cond()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// A phone with a 1080 x 2400 main panel at 60 Hz, display id 0, and a composer ready to boot
// the service. Tests set properties and device state before boot().
class ServiceTest : public ::testing::Test {
  protected:
    void SetUp() override {
        host::log::clear();
        host::properties::clear();
        host::trace::clear();
        host::trace::setEnabledTags(0);
        host::gralloc::reset();
        host::binder::resetRegistry();
        host::sandbox::resetCounts();
        aidl::vendor::zarel::hardware::cwb::implementation::mLightModeID = 2;
        device = std::make_unique<host::device::Device>();
        device->setPanelModes(PanelId::Main, {{1080, 2400, kVsync60}});
        device->setLatency(std::chrono::milliseconds(1));
        setProp("ro.vendor.zarel.display.cwb.display_id", "0");
    }

    void TearDown() override {
        composer.reset();
        service.reset();
        host::binder::resetRegistry();
        device.reset();
        host::properties::clear();
    }

    void setProp(const std::string& key, const std::string& value) {
        host::properties::set(key, value);
    }

    // Starts the service the way the composer does.
    void boot() {
        composer = std::make_unique<host::device::Composer>();
        ASSERT_EQ(0, composer->boot());
        service = composer->proxy().service();
        ASSERT_NE(nullptr, service);
        peer = std::make_unique<CwbServiceTestPeer>(*service);
    }

    // Boots and switches the main display on.
    void bootOn() {
        boot();
        composer->powerMode(0, 2);
    }

    // The 50 ms capture gate is open again (bounded wait, never a blind sleep).
    bool gateOpen() {
        return waitFor([this] { return peer->captureScreenAllowed(); });
    }

    std::pair<int32_t, Rgb> rgb(const Rect& r) {
        Rgb out;
        Error word = Error::NONE;
        EXPECT_TRUE(service->getRGBValue(r, &out, &word).isOk());
        return {static_cast<int32_t>(word), out};
    }

    std::pair<Error, float> luma(const Rect& r) {
        std::vector<float> out;
        Error result = Error::NONE;
        EXPECT_TRUE(service->getLumasValue(r, &out, &result).isOk());
        EXPECT_EQ(1u, out.size());
        return {result, out.empty() ? -1.0f : out[0]};
    }

    std::pair<Error, Histogram> histogram(const Rect& r) {
        Histogram out;
        Error result = Error::NONE;
        EXPECT_TRUE(service->getHistogramValue(r, &out, &result).isOk());
        return {result, out};
    }

    size_t logCount(int priority, const std::string& text) {
        return host::log::count(priority, text);
    }

    std::unique_ptr<host::device::Device> device;
    std::unique_ptr<host::device::Composer> composer;
    std::shared_ptr<CwbService> service;
    std::unique_ptr<CwbServiceTestPeer> peer;
};

}  // namespace cwbtest
