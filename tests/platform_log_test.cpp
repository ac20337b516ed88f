// Log capture, CHECK, properties and trace of the host platform.
#define LOG_TAG "PlatformTest"
#define ATRACE_TAG ATRACE_TAG_GRAPHICS

#include <android-base/logging.h>
#include <android/binder_status.h>
#include <cutils/properties.h>
#include <gtest/gtest.h>
#include <host/log_capture.h>
#include <host/properties.h>
#include <host/trace_recorder.h>
#include <log/log.h>
#include <utils/Trace.h>

#include <string>
#include <thread>
#include <vector>

namespace {

class PlatformLogTest : public ::testing::Test {
  protected:
    void SetUp() override {
        host::log::clear();
        host::log::setListener(nullptr);
    }
    void TearDown() override { host::log::setListener(nullptr); }
};

TEST_F(PlatformLogTest, RecordsExactTextPriorityAndTag) {
    ALOGD("frame %d of %s\n", 3, "primary");
    ALOGI("info");
    ALOGW("warn %u", 7u);
    ALOGE("error");
    ALOGV("verbose is compiled out %d", 1);

    std::vector<host::log::Line> lines = host::log::lines();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0].tag, "PlatformTest");
    EXPECT_EQ(lines[0].text, "frame 3 of primary\n");
    EXPECT_EQ(host::log::count(ANDROID_LOG_DEBUG, "frame 3 of primary\n"), 1u);
    EXPECT_EQ(host::log::count(ANDROID_LOG_DEBUG, "frame 3 of primary"), 0u);  // exact match
    EXPECT_TRUE(host::log::contains(ANDROID_LOG_INFO, "info"));
    EXPECT_FALSE(host::log::contains(ANDROID_LOG_ERROR, "info"));
    EXPECT_TRUE(host::log::contains(ANDROID_LOG_WARN, "warn 7"));
    EXPECT_TRUE(host::log::contains(ANDROID_LOG_ERROR, "error"));
    EXPECT_EQ(host::log::countContaining("verbose"), 0u);
    EXPECT_EQ(host::log::countContaining("r"), 3u);  // all but "info"
    EXPECT_EQ(host::log::countContaining("in"), 1u);
}

TEST_F(PlatformLogTest, LongMessagesAreNotTruncated) {
    std::string longText(5000, 'x');
    ALOGE("%s|", longText.c_str());
    EXPECT_TRUE(host::log::contains(ANDROID_LOG_ERROR, longText + "|"));
}

TEST_F(PlatformLogTest, EchoWritesLogcatStyleLine) {
    host::log::setEcho(true);
    ::testing::internal::CaptureStderr();
    ALOGW("low %d", 5);
    ALOGD("ends in newline\n");
    std::string err = ::testing::internal::GetCapturedStderr();
    host::log::setEcho(false);
    EXPECT_EQ(err, "W PlatformTest: low 5\nD PlatformTest: ends in newline\n");
}

TEST_F(PlatformLogTest, ConcurrentLoggersLoseNothingAndListenerSeesRecordingOrder) {
    constexpr int kThreads = 8;
    constexpr int kPerThread = 500;
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

    std::vector<host::log::Line> lines = host::log::lines();
    ASSERT_EQ(lines.size(), static_cast<size_t>(kThreads * kPerThread));
    ASSERT_EQ(heard.size(), lines.size());
    std::vector<int> next(kThreads, 0);
    for (size_t k = 0; k < lines.size(); ++k) {
        EXPECT_EQ(heard[k], lines[k].text);
        int t = -1;
        int i = -1;
        ASSERT_EQ(sscanf(lines[k].text.c_str(), "t%d i%d", &t, &i), 2);
        ASSERT_GE(t, 0);
        ASSERT_LT(t, kThreads);
        EXPECT_EQ(i, next[t]++) << "lines of one thread must stay in order";
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

class PlatformPropertiesTest : public ::testing::Test {
  protected:
    void SetUp() override { host::properties::clear(); }
    void TearDown() override { host::properties::clear(); }
};

TEST_F(PlatformPropertiesTest, GetReturnsValueOrDefaultTruncated) {
    char value[PROPERTY_VALUE_MAX];
    EXPECT_EQ(property_get("vendor.cwb.debug", value, "fallback"), 8);
    EXPECT_STREQ(value, "fallback");
    EXPECT_EQ(property_get("vendor.cwb.debug", value, nullptr), 0);
    EXPECT_STREQ(value, "");

    host::properties::set("vendor.cwb.debug", "1");
    EXPECT_EQ(property_get("vendor.cwb.debug", value, "fallback"), 1);
    EXPECT_STREQ(value, "1");

    std::string longValue(PROPERTY_VALUE_MAX + 10, 'v');
    host::properties::set("ro.vendor.long", longValue);
    EXPECT_EQ(property_get("ro.vendor.long", value, ""), PROPERTY_VALUE_MAX - 1);
    EXPECT_EQ(std::string(value), longValue.substr(0, PROPERTY_VALUE_MAX - 1));
    EXPECT_EQ(property_get("unset", value, longValue.c_str()), PROPERTY_VALUE_MAX - 1);

    host::properties::set("vendor.empty", "");
    EXPECT_EQ(property_get("vendor.empty", value, "dflt"), 4);  // empty reads as unset
}

TEST_F(PlatformPropertiesTest, SetRulesAndTypedGetters) {
    EXPECT_EQ(property_set("vendor.a", std::string(PROPERTY_VALUE_MAX - 1, 'a').c_str()), 0);
    EXPECT_EQ(property_set("vendor.a", std::string(PROPERTY_VALUE_MAX, 'a').c_str()), -1);
    EXPECT_EQ(property_set("ro.vendor.once", "1"), 0);
    EXPECT_EQ(property_set("ro.vendor.once", "2"), -1);
    EXPECT_EQ(property_get_int32("ro.vendor.once", 9), 1);

    struct Case {
        const char* value;
        int8_t asBool;
        int64_t asInt;
    } cases[] = {
            {"true", 1, -5}, {"off", 0, -5}, {"0x10", -1, 16}, {"-3", -1, -3}, {"12ab", -1, -5}};
    for (const Case& c : cases) {
        host::properties::set("vendor.v", c.value);
        EXPECT_EQ(property_get_bool("vendor.v", -1), c.asBool) << c.value;
        EXPECT_EQ(property_get_int64("vendor.v", -5), c.asInt) << c.value;
    }
    host::properties::set("vendor.v", "4294967296");
    EXPECT_EQ(property_get_int32("vendor.v", 7), 7);  // out of int32 range
}

TEST(PlatformTraceTest, RecordsOnlyWhenTheTagIsEnabled) {
    host::trace::clear();
    host::trace::setEnabledTags(ATRACE_TAG_HAL);
    EXPECT_FALSE(ATRACE_ENABLED());
    {
        ATRACE_NAME("disabled");
        ATRACE_INT("counter", 1);
    }
    EXPECT_TRUE(host::trace::events().empty());

    host::trace::setEnabledTags(ATRACE_TAG_GRAPHICS | ATRACE_TAG_HAL);
    EXPECT_TRUE(ATRACE_ENABLED());
    {
        ATRACE_CALL();
        ATRACE_INT("counter", 2);
        ATRACE_INT64("counter", int64_t{1} << 40);
        ATRACE_BEGIN("manual");
        ATRACE_END();
    }
    host::trace::setEnabledTags(0);

    using Kind = host::trace::Event::Kind;
    std::vector<host::trace::Event> events = host::trace::events();
    ASSERT_EQ(events.size(), 6u);
    EXPECT_EQ(events[0].kind, Kind::Begin);
    EXPECT_EQ(events[0].name, "TestBody");
    EXPECT_EQ(events[3].name, "manual");
    EXPECT_EQ(events[4].kind, Kind::End);
    EXPECT_EQ(events[5].kind, Kind::End);
    EXPECT_EQ(host::trace::sectionCount("TestBody"), 1u);
    EXPECT_EQ(host::trace::counterValues("counter"), (std::vector<int64_t>{2, int64_t{1} << 40}));
    host::trace::clear();
}

}  // namespace
