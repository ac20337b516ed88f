// A capture the way the phone makes one: the composer powers the panel on, a client asks for a
// colour, the vendor writes the panel's picture into the buffer, read back at its row pitch.
#include <algorithm>
#include <cstring>
#include <tuple>

#include "capture_helpers.h"

namespace cwbtest {
namespace {

using aidl::vendor::zarel::hardware::cwb::implementation::CwbBufferInfo;
using host::device::Frame;
using ::testing::Bool;

// Rows of the buffer that differ from what the vendor should have written: the frame inside
// `region` (everything when the region is all zeros) and zeros elsewhere, padding included.
int wrongRows(const CwbBufferInfo& info, const Frame& frame, Rect region) {
    if (region == Rect{}) region = rect(0, 0, frame.width, frame.height);
    std::vector<uint8_t> expected(info.width * 3);
    int wrong = 0;
    for (int y = 0; y < static_cast<int>(info.height); ++y) {
        std::fill(expected.begin(), expected.end(), 0);
        if (y >= region.top && y < region.bottom) {
            memcpy(expected.data() + region.left * 3, frame.row(y) + region.left * 3,
                   (region.right - region.left) * 3);
        }
        const auto* row = static_cast<const uint8_t*>(info.base) + y * info.width * 3;
        if (memcmp(row, expected.data(), expected.size()) != 0) ++wrong;
    }
    return wrong;
}

class CaptureEndToEndTest : public CaptureTest,
                            public ::testing::WithParamInterface<std::tuple<bool, bool, bool>> {};

// The AI capture mode rides along with post-processing to keep the matrix small: it replaces the
// region only on the main display with ROI support.
TEST_P(CaptureEndToEndTest, BufferHoldsThePanelPictureAtTheRowPitch) {
    const auto [secondary, roi, postProcessed] = GetParam();
    const int32_t width = secondary ? 720 : 1080, height = secondary ? 1600 : 2400;
    const uint64_t pitch = secondary ? 768 : 1088;  // rows padded to 64 pixels
    const Rect sampled = rect(100, 200, 300, 400), ai = rect(50, 150, 600, 900);
    addSecondary();
    setProp("ro.vendor.zarel.display.cwb.roi", roi ? "1" : "0");
    // Mixer and post-processed outputs differ everywhere, the sampled square included.
    Frame mixer = *Frame::pattern("gradient", width, height);
    mixer.fillRect(100, 200, 300, 400, {255, 0, 0});
    Frame post = *Frame::pattern("checker", width, height);
    post.fillRect(100, 200, 300, 400, {0, 0, 255});
    const PanelId panel = secondary ? PanelId::Secondary : PanelId::Main;
    device->setFrame(panel, FrameKind::Mixer, mixer);
    device->setFrame(panel, FrameKind::PostProcessed, post);
    boot();
    if (secondary) peer->setDisplayId(3);
    Error ignored;
    ASSERT_TRUE(service->setCwbPostProcessStatus(postProcessed, &ignored).isOk());
    setDebug({1});
    peer->setAiRect(ai);
    aidl::vendor::zarel::hardware::cwb::implementation::mLightModeID = postProcessed ? 3 : 2;

    // Until the composer reports a power mode the panel counts as off: no writeback.
    EXPECT_EQ(static_cast<int32_t>(Error::SCREEN_OFF), rgb(sampled).first);
    EXPECT_TRUE(vendor().requests().empty());

    composer->powerMode(secondary ? 3 : 0, 2);
    const auto [word, colour] = rgb(sampled);
    EXPECT_EQ(0, word & 0xFFFF);
    EXPECT_EQ(postProcessed ? std::make_tuple(0, 0, 255) : std::make_tuple(255, 0, 0),
              std::make_tuple(colour.r, colour.g, colour.b));

    const auto requests = vendor().requests();
    ASSERT_EQ(1u, requests.size());
    EXPECT_EQ(secondary ? 4 : 1, requests[0].dispId);
    EXPECT_EQ(postProcessed, requests[0].postProcessed);
    const bool aiRegion = roi && postProcessed && !secondary;
    const Rect region = !roi ? rect(0, 0, 0, 0) : aiRegion ? ai : sampled;
    const auto& sent = requests[0].rect;
    EXPECT_EQ(region, rect(sent.left, sent.top, sent.right, sent.bottom));
    EXPECT_EQ(
            aiRegion ? 1u : 0u,
            logCount(ANDROID_LOG_DEBUG,
                     "MORVIK_AI::mRoiSupport=1||mLightModeID=3||fhd_Width=1088||left=50||top=150||"
                     "right=600||bottom=900"));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, "DumpFinish\n"));

    const CwbBufferInfo info = peer->buffer(secondary);
    ASSERT_NE(nullptr, info.base);
    EXPECT_EQ(3, info.format);
    EXPECT_EQ(static_cast<uint64_t>(width), info.unaligned_width);
    EXPECT_EQ(pitch * height * 3, info.size);
    EXPECT_EQ(0, wrongRows(info, postProcessed ? post : mixer, region));
    EXPECT_EQ(nullptr, peer->buffer(!secondary).base);

    // Every capture starts from a cleared buffer: what the vendor does not write reads as zero.
    vendor().pushOutcome(Outcome::Error, -1);
    ASSERT_EQ(-4, capture(secondary, region, postProcessed));
    const auto* bytes = static_cast<const uint8_t*>(info.base);
    EXPECT_EQ(info.size, static_cast<uint64_t>(std::count(bytes, bytes + info.size, 0)));
}

// Parenthesised: the structured binding's commas would split the macro's arguments.
INSTANTIATE_TEST_SUITE_P(DisplaysRegionsAndPostProcessing, CaptureEndToEndTest,
                         ::testing::Combine(Bool(), Bool(), Bool()), ([](const auto& info) {
                             const auto [sec, roi, post] = info.param;
                             return std::string(sec ? "Secondary" : "Main") +
                                    (roi ? "Roi" : "WholeFrame") + (post ? "PostAi" : "Mixer");
                         }));

}  // namespace
}  // namespace cwbtest
