// Validity of the captured frame: layer changes, the trace counters that publish it, and the
// explicit emptying of the result caches.
#include "service_fixture.h"

namespace cwbtest {
namespace {

using Outcome = host::device::SimulatedDisplayConfig::Outcome;
using Counts = std::vector<int64_t>;

class CaptureCacheTest : public ServiceTest {
  protected:
    int capture() { return peer->setCWBOutputBuffer(rect(0, 0, 0, 0), false); }
    size_t vendorRequests() { return device->displayConfig()->requests().size(); }
};

TEST_F(CaptureCacheTest, LayerChangesCountUpAndACaptureResetsThem) {
    bootOn();
    host::trace::setEnabledTags(1 << 1);
    host::trace::clear();
    for (int i = 0; i < 3; ++i) composer->layerChange();
    EXPECT_EQ(3, peer->invalidCacheCount());
    EXPECT_EQ((Counts{1, 2, 3}), host::trace::counterValues("mInvalidCacheCount"));
    EXPECT_EQ((Counts{0, 0, 0}), host::trace::counterValues("BufferCacheValid"));

    ASSERT_EQ(0, capture());
    EXPECT_EQ(0, peer->invalidCacheCount());
    EXPECT_TRUE(peer->bufferCacheValid());
    EXPECT_EQ((Counts{1, 2, 3, 0}), host::trace::counterValues("mInvalidCacheCount"));
    EXPECT_EQ((Counts{0, 0, 0, 1}), host::trace::counterValues("BufferCacheValid"));

    // A failed capture zeroes the count too but never publishes a current frame.
    composer->layerChange();
    device->displayConfig()->pushOutcome(Outcome::Error, -1);
    ASSERT_EQ(-4, capture());
    EXPECT_FALSE(peer->bufferCacheValid());
    EXPECT_EQ((Counts{1, 2, 3, 0, 1, 0}), host::trace::counterValues("mInvalidCacheCount"));
    EXPECT_EQ((Counts{0, 0, 0, 1, 0}), host::trace::counterValues("BufferCacheValid"));
}

TEST_F(CaptureCacheTest, NothingIsTracedWithGraphicsTracingOff) {
    bootOn();
    host::trace::setEnabledTags(~(uint64_t{1} << 1));
    host::trace::clear();
    composer->layerChange();
    ASSERT_EQ(0, capture());
    composer->layerChange();
    ASSERT_TRUE(gateOpen());
    EXPECT_EQ(0, rgb(rect(0, 0, 10, 10)).first & 0xFFFF);
    EXPECT_TRUE(host::trace::events().empty());
    // The state itself moves all the same.
    EXPECT_TRUE(peer->bufferCacheValid());
    EXPECT_EQ(0, peer->invalidCacheCount());
}

TEST_F(CaptureCacheTest, ClearCacheEmptiesResultsButKeepsTheFrameCurrent) {
    bootOn();
    const Rect r = rect(0, 0, 100, 100);
    ASSERT_EQ(0, rgb(r).first & 0xFFFF);
    ASSERT_TRUE(gateOpen());
    ASSERT_EQ(Error::NONE, luma(r).first);
    ASSERT_TRUE(gateOpen());
    ASSERT_EQ(Error::NONE, histogram(r).first);
    for (int which = 0; which < 3; ++which) ASSERT_EQ(1u, peer->cacheSize(which)) << which;
    const size_t captured = vendorRequests();

    // Served from the cache while the frame is current.
    ASSERT_EQ(0, rgb(r).first & 0xFFFF);
    EXPECT_EQ(captured, vendorRequests());

    service->clearCache();
    for (int which = 0; which < 3; ++which) EXPECT_EQ(0u, peer->cacheSize(which)) << which;
    EXPECT_TRUE(peer->bufferCacheValid());

    // The same rectangle now misses and captures a new frame once the gate is open.
    ASSERT_TRUE(gateOpen());
    ASSERT_EQ(0, rgb(r).first & 0xFFFF);
    EXPECT_EQ(captured + 1, vendorRequests());
    EXPECT_EQ(1u, peer->cacheSize(0));
}

TEST_F(CaptureCacheTest, LayerChangeStopsCachedAnswersAndTheCaptureDropsOldEntries) {
    host::device::Frame frame = host::device::Frame::filled(1080, 2400, 0, 0, 0);
    device->setFrame(PanelId::Main, FrameKind::Mixer, frame);
    bootOn();
    ASSERT_EQ(0, rgb(rect(0, 0, 100, 100)).first & 0xFFFF);
    ASSERT_TRUE(gateOpen());
    ASSERT_EQ(0, rgb(rect(100, 100, 200, 200)).first & 0xFFFF);
    ASSERT_EQ(2u, peer->cacheSize(0));

    frame.fillRect(0, 0, 100, 100, {255, 255, 255});
    device->setFrame(PanelId::Main, FrameKind::Mixer, frame);
    composer->layerChange();
    ASSERT_TRUE(gateOpen());
    const auto [word, colour] = rgb(rect(0, 0, 100, 100));
    EXPECT_EQ(0, word & 0xFFFF);
    EXPECT_EQ(255, colour.r);
    EXPECT_EQ(1u, peer->cacheSize(0));  // the other rectangle's entry went with the old frame
}

}  // namespace
}  // namespace cwbtest
