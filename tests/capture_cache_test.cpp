// Validity of the captured frame: layer changes, the trace counters that publish it, and how long
// the result caches live.
#include "capture_helpers.h"

namespace cwbtest {
namespace {

using Counts = std::vector<int64_t>;
using CacheSizes = std::vector<size_t>;  // RGB, luma, histogram

class CaptureCacheTest : public CaptureTest {
  protected:
    CacheSizes cacheSizes() { return {peer->cacheSize(0), peer->cacheSize(1), peer->cacheSize(2)}; }
};

TEST_F(CaptureCacheTest, ResultsLiveAsLongAsTheirFrame) {
    auto frame = host::device::Frame::filled(1080, 2400, 0, 0, 0);
    device->setFrame(PanelId::Main, FrameKind::Mixer, frame);
    bootOn();
    host::trace::setEnabledTags(1 << 1);
    const Rect r = rect(0, 0, 100, 100);
    // One entry in each result cache, each from a capture of its own.
    ASSERT_EQ(0, rgb(r).first & 0xFFFF);
    ASSERT_TRUE(gateOpen());
    ASSERT_EQ(Error::NONE, luma(r).first);
    ASSERT_TRUE(gateOpen());
    ASSERT_EQ(Error::NONE, histogram(r).first);
    ASSERT_EQ((CacheSizes{1, 1, 1}), cacheSizes());
    const size_t captured = vendor().requests().size();

    // While the frame is current, answers come from the cache and a capture keeps the entries.
    ASSERT_EQ(0, rgb(r).first & 0xFFFF);
    EXPECT_EQ(captured, vendor().requests().size());
    ASSERT_EQ(0, capture());
    EXPECT_EQ((CacheSizes{1, 1, 1}), cacheSizes());

    // Layer changes count up, published as traced counters; the next request captures the new
    // picture instead of answering from the cache, and its capture drops every old entry.
    frame.fillRect(0, 0, 100, 100, {255, 255, 255});
    device->setFrame(PanelId::Main, FrameKind::Mixer, frame);
    host::trace::clear();
    for (int i = 0; i < 3; ++i) composer->layerChange();
    EXPECT_EQ(3, peer->invalidCacheCount());
    ASSERT_TRUE(gateOpen());
    const auto [word, colour] = rgb(r);
    EXPECT_EQ(0, word & 0xFFFF);
    EXPECT_EQ(255, colour.r);
    EXPECT_EQ((CacheSizes{1, 0, 0}), cacheSizes());
    EXPECT_EQ((Counts{1, 2, 3, 0}), host::trace::counterValues("mInvalidCacheCount"));
    EXPECT_EQ((Counts{0, 0, 0, 1}), host::trace::counterValues("BufferCacheValid"));

    // Stale again: emptied before the vendor is asked, even when it refuses, and the refusal
    // zeroes the count but never publishes a current frame.
    composer->layerChange();
    vendor().pushOutcome(Outcome::Refuse);
    ASSERT_EQ(1, capture());
    EXPECT_EQ((CacheSizes{0, 0, 0}), cacheSizes());
    EXPECT_FALSE(peer->bufferCacheValid());
    EXPECT_EQ((Counts{1, 2, 3, 0, 1, 0}), host::trace::counterValues("mInvalidCacheCount"));
    EXPECT_EQ((Counts{0, 0, 0, 1, 0}), host::trace::counterValues("BufferCacheValid"));

    // Emptied on request while the frame stays current; the same rectangle then captures anew.
    ASSERT_TRUE(gateOpen());
    ASSERT_EQ(0, rgb(r).first & 0xFFFF);
    service->clearCache();
    EXPECT_EQ((CacheSizes{0, 0, 0}), cacheSizes());
    EXPECT_TRUE(peer->bufferCacheValid());
    const size_t before = vendor().requests().size();
    ASSERT_TRUE(gateOpen());
    ASSERT_EQ(0, rgb(r).first & 0xFFFF);
    EXPECT_EQ(before + 1, vendor().requests().size());
}

// A client walking new rectangles over a static screen fills each cache to its cap and no
// further: the oldest entry gives way, and every answer stays what the frame says.
TEST_F(CaptureCacheTest, CachesStopAtTheirCapOldestFirst) {
    using aidl::vendor::zarel::hardware::cwb::implementation::kResultCacheCap;
    constexpr int kRects = static_cast<int>(kResultCacheCap) + 2;
    auto cell = [](int i) {
        const int l = (i % 50) * 20, t = (i / 50) * 20;
        return rect(l, t, l + 20, t + 20);
    };
    auto colour = [](int i) -> host::device::Pixel {
        return {uint8_t(i * 3), uint8_t(255 - i * 3), uint8_t(i)};
    };
    auto frame = host::device::Frame::filled(1080, 2400, 0, 0, 0);
    for (int i = 0; i < kRects; ++i) {
        const Rect r = cell(i);
        frame.fillRect(r.left, r.top, r.right, r.bottom, colour(i));
    }
    device->setFrame(PanelId::Main, FrameKind::Mixer, frame);
    bootOn();
    auto expectAnswer = [&](int i) {
        ASSERT_TRUE(gateOpen());
        const auto [word, got] = rgb(cell(i));
        EXPECT_EQ(0, word & 0xFFFF) << i;
        EXPECT_EQ((std::vector<int>{colour(i).r, colour(i).g, colour(i).b}),
                  (std::vector<int>{got.r, got.g, got.b}))
                << i;
    };
    for (int i = 0; i < kRects; ++i) expectAnswer(i);
    EXPECT_EQ(kResultCacheCap, peer->cacheSize(0));
    const size_t captured = vendor().requests().size();
    expectAnswer(kRects - 1);  // newest: from the cache
    EXPECT_EQ(captured, vendor().requests().size());
    expectAnswer(0);  // oldest: evicted, captured again, the same answer
    EXPECT_EQ(captured + 1, vendor().requests().size());
    EXPECT_EQ(kResultCacheCap, peer->cacheSize(0));
}

}  // namespace
}  // namespace cwbtest
