// Host side of the interface tests in interface/vts: before each of them, boots the service on a
// simulated phone with its main display on, so that the tests find it through the service manager
// as they do on a device; afterwards takes the phone down again.
#include <CwbService.h>
#include <device/Composer.h>
#include <device/Device.h>
#include <gtest/gtest.h>
#include <host/binder_registry.h>
#include <host/gralloc_control.h>
#include <host/log_capture.h>
#include <host/properties.h>

#include <chrono>
#include <memory>
#include <string>

namespace cwbtest {
namespace {

using host::device::FrameKind;
using host::device::PanelId;

class SimulatedPhoneForInterfaceTests : public ::testing::EmptyTestEventListener {
  public:
    void OnTestStart(const ::testing::TestInfo& test) override {
        if (std::string(test.test_suite_name()).find("CwbServiceAidl") == std::string::npos) {
            return;
        }
        host::log::clear();
        host::properties::clear();
        host::gralloc::reset();
        host::binder::resetRegistry();
        aidl::vendor::zarel::hardware::cwb::implementation::mLightModeID = 2;
        mDevice = std::make_unique<host::device::Device>();
        mDevice->setPanelModes(PanelId::Main, {{1080, 2400, 16666666}});
        mDevice->setLatency(std::chrono::milliseconds(1));
        mDevice->setFrame(PanelId::Main, FrameKind::Mixer,
                          host::device::Frame::filled(1080, 2400, 90, 120, 150));
        host::properties::set("ro.vendor.zarel.display.cwb.display_id", "0");
        mComposer = std::make_unique<host::device::Composer>();
        // A failed boot shows as the tests' own failure to find the service.
        if (mComposer->boot() == 0) mComposer->powerMode(0, 2);
    }

    void OnTestEnd(const ::testing::TestInfo& /*test*/) override {
        if (mDevice == nullptr) return;
        mComposer.reset();
        host::binder::resetRegistry();
        mDevice.reset();
        host::properties::clear();
    }

  private:
    std::unique_ptr<host::device::Device> mDevice;
    std::unique_ptr<host::device::Composer> mComposer;
};

// gtest owns and deletes the listener.
const bool kRegistered = [] {
    ::testing::UnitTest::GetInstance()->listeners().Append(new SimulatedPhoneForInterfaceTests);
    return true;
}();

}  // namespace
}  // namespace cwbtest
