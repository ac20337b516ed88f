// A capture the way the phone makes one: the composer powers the panel on, a client asks for a
// colour, the vendor writes the panel's picture into the capture buffer, and the service reads
// it back at the buffer's row pitch.
#include <algorithm>
#include <cstring>
#include <tuple>

#include "service_fixture.h"

namespace cwbtest {
namespace {

using aidl::vendor::zarel::hardware::cwb::implementation::CwbBufferInfo;
using host::device::Frame;
using Outcome = host::device::SimulatedDisplayConfig::Outcome;

struct PanelCase {
    PanelId panel;
    int32_t width;
    int32_t height;
    uint64_t pitch;  // rows padded to 64 pixels
    int32_t displayType;
};

const PanelCase kMain{PanelId::Main, 1080, 2400, 1088, 1};
const PanelCase kSecondary{PanelId::Secondary, 720, 1600, 768, 4};

// Rows of the buffer that differ from what the vendor should have written: the frame inside
// `region` (everything when the region is all zeros) and zeros elsewhere, padding included.
int wrongRows(const CwbBufferInfo& info, const Frame& frame, const Rect& region) {
    const bool whole =
            region.left == 0 && region.top == 0 && region.right == 0 && region.bottom == 0;
    const int left = whole ? 0 : region.left;
    const int right = whole ? frame.width : region.right;
    const int top = whole ? 0 : region.top;
    const int bottom = whole ? frame.height : region.bottom;
    std::vector<uint8_t> expected(info.width * 3);
    int wrong = 0;
    for (int y = 0; y < static_cast<int>(info.height); ++y) {
        std::fill(expected.begin(), expected.end(), 0);
        if (y >= top && y < bottom) {
            memcpy(expected.data() + left * 3, frame.row(y) + left * 3, (right - left) * 3);
        }
        const auto* row = static_cast<const uint8_t*>(info.base) + y * info.width * 3;
        if (memcmp(row, expected.data(), expected.size()) != 0) ++wrong;
    }
    return wrong;
}

class CaptureEndToEndTest : public ServiceTest,
                            public ::testing::WithParamInterface<std::tuple<bool, bool, bool>> {};

TEST_P(CaptureEndToEndTest, BufferHoldsThePanelPictureAtTheRowPitch) {
    const auto [secondary, roi, postProcessed] = GetParam();
    const PanelCase& panel = secondary ? kSecondary : kMain;
    setProp("ro.vendor.zarel.display.cwb.display_id_sec", "3");
    setProp("ro.vendor.zarel.display.cwb.roi", roi ? "1" : "0");
    device->setPanelModes(PanelId::Secondary, {{720, 1600, kVsync60}});
    // Mixer and post-processed outputs differ everywhere, the sampled square included.
    Frame mixer = *Frame::pattern("gradient", panel.width, panel.height);
    mixer.fillRect(100, 200, 300, 400, {255, 0, 0});
    Frame post = *Frame::pattern("checker", panel.width, panel.height);
    post.fillRect(100, 200, 300, 400, {0, 0, 255});
    device->setFrame(panel.panel, FrameKind::Mixer, mixer);
    device->setFrame(panel.panel, FrameKind::PostProcessed, post);
    boot();
    if (secondary) peer->setDisplayId(3);
    Error ignored;
    ASSERT_TRUE(service->setCwbPostProcessStatus(postProcessed, &ignored).isOk());

    // Until the composer reports a power mode the panel counts as off: no writeback.
    EXPECT_EQ(static_cast<int32_t>(Error::SCREEN_OFF), rgb(rect(100, 200, 300, 400)).first);
    EXPECT_TRUE(device->displayConfig()->requests().empty());

    composer->powerMode(secondary ? 3 : 0, 2);
    const auto [word, colour] = rgb(rect(100, 200, 300, 400));
    EXPECT_EQ(0, word & 0xFFFF);
    EXPECT_EQ(postProcessed ? 0 : 255, colour.r);
    EXPECT_EQ(0, colour.g);
    EXPECT_EQ(postProcessed ? 255 : 0, colour.b);

    const auto requests = device->displayConfig()->requests();
    ASSERT_EQ(1u, requests.size());
    EXPECT_EQ(panel.displayType, requests[0].displayType);
    EXPECT_EQ(postProcessed, requests[0].postProcessed);
    const Rect region = roi ? rect(100, 200, 300, 400) : rect(0, 0, 0, 0);
    EXPECT_EQ(region.left, requests[0].rect.left);
    EXPECT_EQ(region.top, requests[0].rect.top);
    EXPECT_EQ(region.right, requests[0].rect.right);
    EXPECT_EQ(region.bottom, requests[0].rect.bottom);

    const CwbBufferInfo info = peer->buffer(secondary);
    ASSERT_NE(nullptr, info.base);
    EXPECT_EQ(3, info.format);
    EXPECT_EQ(static_cast<uint64_t>(panel.width), info.unaligned_width);
    EXPECT_EQ(panel.pitch, info.width);
    EXPECT_EQ(static_cast<uint64_t>(panel.height), info.height);
    EXPECT_EQ(panel.pitch * panel.height * 3, info.size);
    EXPECT_EQ(0, wrongRows(info, postProcessed ? post : mixer, region));
    // The other display's buffer was never made.
    EXPECT_EQ(nullptr, peer->buffer(!secondary).base);

    // Every capture starts from a cleared buffer: what the vendor does not write reads as zero.
    device->displayConfig()->pushOutcome(Outcome::Error, -1);
    ASSERT_EQ(-4, peer->setCWBOutputBuffer(region, postProcessed, secondary));
    const auto* bytes = static_cast<const uint8_t*>(info.base);
    EXPECT_EQ(info.size, static_cast<uint64_t>(std::count(bytes, bytes + info.size, 0)));
}

INSTANTIATE_TEST_SUITE_P(DisplaysRegionsAndPostProcessing, CaptureEndToEndTest,
                         ::testing::Combine(::testing::Bool(), ::testing::Bool(),
                                            ::testing::Bool()),
                         [](const auto& info) {
                             return std::string(std::get<0>(info.param) ? "Secondary" : "Main") +
                                    (std::get<1>(info.param) ? "Roi" : "WholeFrame") +
                                    (std::get<2>(info.param) ? "Post" : "Mixer");
                         });

}  // namespace
}  // namespace cwbtest
