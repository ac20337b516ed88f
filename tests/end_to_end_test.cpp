// The whole path as a phone runs it: composer boot and power-on, a client's requests, the
// vendor's writeback of the panel's picture, the answers.
#include <android/binder_manager.h>

#include "service_fixture.h"

namespace cwbtest {
namespace {

using host::device::Frame;

TEST_F(ServiceTest, ClientReadsColourLumaAndHistogramOfThePanel) {
    Frame frame = Frame::filled(1080, 2400, 0, 0, 0);
    frame.fillRect(100, 200, 300, 400, {255, 0, 0});
    device->setFrame(PanelId::Main, FrameKind::Mixer, frame);
    bootOn();

    auto [word, colour] = rgb(rect(100, 200, 300, 400));
    EXPECT_EQ(0, word & 0xFFFF);
    EXPECT_EQ(255, colour.r);
    EXPECT_EQ(0, colour.g);
    EXPECT_EQ(0, colour.b);

    // Same frame: the luma request captures again (its own cache is empty) once the gate opens.
    ASSERT_TRUE(gateOpen());
    auto [lumaResult, value] = luma(rect(100, 200, 300, 400));
    EXPECT_EQ(Error::NONE, lumaResult);
    EXPECT_FLOAT_EQ(55.0f / 255.0f, value);

    ASSERT_TRUE(gateOpen());
    auto [histResult, hist] = histogram(rect(0, 0, 1080, 2400));
    EXPECT_EQ(Error::NONE, histResult);
    EXPECT_EQ(200 * 200, hist.counts[255 * 3 + 0]);
    EXPECT_EQ(1080 * 2400 - 200 * 200, hist.counts[0 * 3 + 0]);
    EXPECT_EQ(1080 * 2400, hist.counts[0 * 3 + 1]);
}

TEST_F(ServiceTest, RegisteredUnderDescriptorAndDefault) {
    boot();
    ndk::SpAIBinder binder(
            AServiceManager_checkService("vendor.zarel.hardware.cwb.ICwbService/default"));
    auto client = aidl::vendor::zarel::hardware::cwb::ICwbService::fromBinder(binder);
    ASSERT_NE(nullptr, client);
    bool status = false;
    EXPECT_TRUE(client->getCwbPostProcessStatus(&status).isOk());
    EXPECT_FALSE(status);
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, "Registered CWB AIDL Service"));
}

}  // namespace
}  // namespace cwbtest
