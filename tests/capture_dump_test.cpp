// Frame dumps: one raw file per successful capture with the geometry and boot time in its name,
// and the dump helper's handling of its folder, null data and empty buffers.
#include <GrallocHelper.h>
#include <sys/stat.h>
#include <utils/Timers.h>

#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <tuple>

#include "capture_helpers.h"

namespace cwbtest {
namespace {

namespace fs = std::filesystem;
using host::device::Device;

class CaptureDumpTest : public CaptureTest {
  protected:
    std::string dumpDir() const { return device->hostPath(Device::kDumpDir); }
    std::string readDump(const std::string& name) const {
        std::ifstream in(dumpDir() + "/" + name, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
};

class CaptureDumpPerDisplayTest : public CaptureDumpTest,
                                  public ::testing::WithParamInterface<bool> {};

TEST_P(CaptureDumpPerDisplayTest, EverySuccessfulCaptureWritesTheWholeBuffer) {
    const bool sec = GetParam();
    addSecondary();
    device->setFrame(
            sec ? PanelId::Secondary : PanelId::Main, FrameKind::Mixer,
            *host::device::Frame::pattern("gradient", sec ? 720 : 1080, sec ? 1600 : 2400));
    bootOn();
    if (sec) peer->setDisplayId(3);
    setDebug({0, 1});

    const nsecs_t before = systemTime(SYSTEM_TIME_BOOTTIME);
    ASSERT_EQ(0, capture(sec));
    const nsecs_t after = systemTime(SYSTEM_TIME_BOOTTIME);
    auto files = device->dumpFiles();
    ASSERT_EQ(1u, files.size());
    const std::string prefix =
            std::string("output_layer_") + (sec ? "768_1600" : "1088_2400") + "_rgb888_cwb_";
    const long long stamp = std::stoll(files[0].substr(prefix.size()));
    EXPECT_EQ(prefix + std::to_string(stamp) + ".raw", files[0]);
    EXPECT_GE(stamp, before);
    EXPECT_LE(stamp, after);
    const auto info = peer->buffer(sec);
    const std::string bytes = readDump(files[0]);
    ASSERT_EQ(info.size, bytes.size());
    EXPECT_EQ(0, memcmp(info.base, bytes.data(), bytes.size()));

    // A failed capture writes nothing; the next good one a file of its own.
    vendor().pushOutcome(Outcome::Error, -1);
    ASSERT_EQ(-4, capture(sec));
    EXPECT_EQ(1u, device->dumpFiles().size());
    ASSERT_EQ(0, capture(sec));
    EXPECT_EQ(2u, device->dumpFiles().size());
    setDebug({-1, 0});
    ASSERT_EQ(0, capture(sec));
    EXPECT_EQ(2u, device->dumpFiles().size());
}

INSTANTIATE_TEST_SUITE_P(Displays, CaptureDumpPerDisplayTest, ::testing::Bool(),
                         [](const auto& i) { return std::string(i.param ? "Secondary" : "Main"); });

TEST_F(CaptureDumpTest, HelperMakesTheFolderAndOneFilePerName) {
    android::sp<GrallocHelper> helper = new GrallocHelper();
    const std::string data = "0123456789ab";
    // A file where the parent folder should be: mkdir fails with ENOTDIR, logged.
    const std::string parent = device->hostPath("/data/vendor/display");
    fs::remove_all(parent);
    std::ofstream(parent) << "not a folder";
    helper->DumpOutputBuffer(4, const_cast<char*>(data.data()), -1, 1, 1, 1);
    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, "Failed errno = " + std::to_string(ENOTDIR)));
    ASSERT_TRUE(fs::remove(parent) && fs::create_directory(parent));

    // Null data still makes the folder, open to all whatever the umask, but writes no file.
    helper->DumpOutputBuffer(16, nullptr, -1, 4, 4, 123);
    struct stat st {};
    ASSERT_EQ(0, ::stat(dumpDir().c_str(), &st));
    EXPECT_EQ(0777u, st.st_mode & 0777u);
    EXPECT_TRUE(device->dumpFiles().empty());

    // Equal geometry at different times gives separate files; size 0 gives an empty one.
    const std::tuple<int, int, int, long, const char*> dumps[] = {
            {12, 2, 2, 1000, "output_layer_2_2_rgb888_cwb_1000.raw"},
            {12, 2, 2, 123456789012, "output_layer_2_2_rgb888_cwb_123456789012.raw"},
            {0, 1088, 2400, 7, "output_layer_1088_2400_rgb888_cwb_7.raw"},
            {5, 1, 1, -1, "output_layer_1_1_rgb888_cwb_-1.raw"},
    };
    for (const auto& [size, width, height, timestamp, name] : dumps) {
        helper->DumpOutputBuffer(size, const_cast<char*>(data.data()), -1, width, height,
                                 timestamp);
        EXPECT_EQ(data.substr(0, size), readDump(name)) << name;
    }
    EXPECT_EQ(4u, device->dumpFiles().size());
    // Same name again: truncated and rewritten, not appended.
    helper->DumpOutputBuffer(3, const_cast<char*>("xyz"), -1, 2, 2, 1000);
    EXPECT_EQ("xyz", readDump("output_layer_2_2_rgb888_cwb_1000.raw"));
}

TEST(CaptureClockTest, CurrentTimeIsWallClockMilliseconds) {
    const time_t before = time(nullptr);
    const long ms = getCurrentTime();
    const time_t after = time(nullptr);
    EXPECT_GE(ms, static_cast<long>(before) * 1000);
    EXPECT_LT(ms, (static_cast<long>(after) + 1) * 1000);
}

}  // namespace
}  // namespace cwbtest
