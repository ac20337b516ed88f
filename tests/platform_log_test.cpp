// Log capture as the service tests rely on it: exact text, priority and tag, nothing lost or
// reordered across threads, and CHECK's fatal line.
#define LOG_TAG "PlatformTest"

#include <android-base/logging.h>
#include <android/binder_status.h>
#include <gtest/gtest.h>
#include <host/log_capture.h>
#include <log/log.h>

#include <string>
#include <thread>
#include <vector>

namespace {

TEST(PlatformLogTest, RecordsExactTextPriorityAndTag) {
    host::log::clear();
    const std::string longText(5000, 'x');
    ALOGD("frame %d of %s\n", 3, "primary");
    ALOGI("info");
    ALOGW("warn %u", 7u);
    ALOGE("%s|", longText.c_str());  // no truncation
    ALOGV("verbose is compiled out %d", 1);
    const std::vector<host::log::Line> lines = host::log::lines();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0].tag, "PlatformTest");
    EXPECT_EQ(lines[0].text, "frame 3 of primary\n");
    EXPECT_EQ(host::log::count(ANDROID_LOG_DEBUG, "frame 3 of primary\n"), 1u);
    EXPECT_EQ(host::log::count(ANDROID_LOG_DEBUG, "frame 3 of primary"), 0u);  // exact match
    EXPECT_TRUE(host::log::contains(ANDROID_LOG_INFO, "info"));
    EXPECT_FALSE(host::log::contains(ANDROID_LOG_ERROR, "info"));
    EXPECT_TRUE(host::log::contains(ANDROID_LOG_WARN, "warn 7"));
    EXPECT_TRUE(host::log::contains(ANDROID_LOG_ERROR, longText + "|"));
    EXPECT_EQ(host::log::countContaining("verbose"), 0u);
    EXPECT_EQ(host::log::countContaining("r"), 2u);  // "frame", "warn"
    EXPECT_EQ(host::log::countContaining("in"), 1u);
}

TEST(PlatformLogTest, ConcurrentLoggersLoseNothingAndListenerSeesRecordingOrder) {
    host::log::clear();
    constexpr int kThreads = 8, kPerThread = 500;
    std::vector<std::string> heard;  // written under the log lock only
    host::log::setListener([&heard](const host::log::Line& line) { heard.push_back(line.text); });
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < kPerThread; ++i) ALOGI("t%d i%d", t, i);
        });
    }
    for (std::thread& thread : threads) thread.join();
    host::log::setListener(nullptr);
    // Recorded and heard in the same order, each thread's lines in the order it logged them.
    const std::vector<host::log::Line> lines = host::log::lines();
    ASSERT_EQ(lines.size(), static_cast<size_t>(kThreads * kPerThread));
    ASSERT_EQ(heard.size(), lines.size());
    std::vector<int> next(kThreads, 0);
    for (size_t k = 0; k < lines.size(); ++k) {
        int t = -1, i = -1;
        ASSERT_EQ(sscanf(heard[k].c_str(), "t%d i%d", &t, &i), 2);
        ASSERT_EQ(lines[k].text, "t" + std::to_string(t) + " i" + std::to_string(next.at(t)++));
    }
}

TEST(PlatformCheckDeathTest, CheckRecordsFatalLineAndAborts) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    binder_status_t status = STATUS_BAD_VALUE;
    EXPECT_DEATH(
            {
                host::log::setListener([](const host::log::Line& line) {
                    fprintf(stderr, "[recorded %d %s:%s]\n", line.priority, line.tag.c_str(),
                            line.text.c_str());
                });
                CHECK(status == STATUS_OK);
            },
            "Check failed: status == STATUS_OK \n.*\\[recorded 7 PlatformTest:Check failed: "
            "status == STATUS_OK \\]");
    EXPECT_DEATH(CHECK_EQ(status, STATUS_OK),
                 "Check failed: status == STATUS_OK \\(status=-22, STATUS_OK=0\\) ");
    CHECK(status == STATUS_BAD_VALUE) << "never printed";
    CHECK_NE(status, STATUS_OK);
}

}  // namespace
