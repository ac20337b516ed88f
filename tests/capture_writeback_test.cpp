// Writeback requests: every result code, the one-second wait, and completions that come early,
// late or never.
#include <chrono>

#include "capture_helpers.h"

namespace cwbtest {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

struct OutcomeCase {
    const char* name;
    Outcome outcome;
    int expected;
    bool slow;  // waits out the whole second
    Lines lines;
};

// clang-format off
const OutcomeCase kOutcomes[] = {
    {"Success", Outcome::Ok, 0, false, {}},
    {"Refused", Outcome::Refuse, 1, false, {"E Failed to read cwb buffer.\n"}},
    {"ErrorCompletion", Outcome::Error, -4, false, {"E CWB Error\n", "I Failed to dump data.\n"}},
    {"NoCompletion", Outcome::Drop, -4, true, {"I Failed to dump data.\n"}},
};
// clang-format on

class CaptureOutcomeTest : public CaptureTest, public ::testing::WithParamInterface<OutcomeCase> {};

TEST_P(CaptureOutcomeTest, ResultLogsAndFrameState) {
    const OutcomeCase& c = GetParam();
    bootOn();
    composer->layerChange();
    // A failure leaves the flag as it was; start from "current" so that a change shows.
    const bool validBefore = c.expected != 0;
    peer->setBufferCacheValid(validBefore);
    host::log::clear();
    vendor().pushOutcome(c.outcome, -1);

    const auto start = Clock::now();
    EXPECT_EQ(c.expected, capture());
    const auto elapsed = Clock::now() - start;
    EXPECT_EQ(c.slow, elapsed >= milliseconds(950));
    EXPECT_LT(elapsed, milliseconds(3000));
    EXPECT_EQ(c.lines, logged());
    EXPECT_EQ(c.expected == 0 || validBefore, peer->bufferCacheValid());
    // The count restarts with every request the vendor was asked about, whatever it answered.
    EXPECT_EQ(0, peer->invalidCacheCount());
    // Only a success restarts the capture gate.
    EXPECT_EQ(c.expected == 0, peer->lastCwbTime() != 0);
}

INSTANTIATE_TEST_SUITE_P(VendorOutcomes, CaptureOutcomeTest, ::testing::ValuesIn(kOutcomes),
                         caseName);

TEST_F(CaptureTest, NoVendorMeansNoBufferAndNoWritebackLog) {
    ASSERT_TRUE(device->setVendorPresent(false));
    bootOn();
    host::log::clear();
    EXPECT_EQ(-1, capture());
    EXPECT_EQ(-1, capture(true));
    EXPECT_EQ(0u, host::gralloc::allocationCount());
    for (const char* line : {"base is NULL", "cwb buffer", "dump data"})
        EXPECT_EQ(0u, host::log::countContaining(line)) << line;
    EXPECT_TRUE(vendor().requests().empty());
}

TEST_F(CaptureTest, OnlyTheRequestsOwnCompletionCounts) {
    bootOn();
    vendor().setManualCompletion(true);
    auto start = Clock::now();
    ASSERT_EQ(-4, capture());
    EXPECT_GE(Clock::now() - start, milliseconds(950));

    // The vendor finally answers the abandoned request, successfully: ignored entirely.
    host::log::clear();
    ASSERT_TRUE(vendor().completeNext(0));
    ASSERT_TRUE(vendor().waitForCompletions(1, milliseconds(2000)));
    EXPECT_TRUE(host::log::lines().empty());
    EXPECT_EQ(0, peer->lastCwbTime());
    EXPECT_EQ(0, peer->lastCwbDoneTime());
    EXPECT_FALSE(peer->bufferCacheValid());
    // Nor does its success answer the next request, which the vendor drops.
    vendor().setManualCompletion(false);
    vendor().pushOutcome(Outcome::Drop);
    EXPECT_EQ(-4, capture());

    // A completion delivered while the request is still inside the vendor call counts, success
    // and error alike, without waiting out the second.
    vendor().setManualCompletion(true);
    size_t delivered = 1;
    for (int32_t completeWith : {0, -1}) {
        vendor().setRequestObserver([&](const host::device::WritebackRequest&) {
            ASSERT_TRUE(vendor().completeNext(completeWith));
            ASSERT_TRUE(vendor().waitForCompletions(++delivered, milliseconds(2000)));
        });
        start = Clock::now();
        EXPECT_EQ(completeWith == 0 ? 0 : -4, capture());
        EXPECT_LT(Clock::now() - start, milliseconds(950));
        EXPECT_EQ(completeWith == 0, peer->bufferCacheValid());
        peer->setBufferCacheValid(false);
    }
    vendor().setRequestObserver(nullptr);
}

}  // namespace
}  // namespace cwbtest
