// Frame dumps: one raw file per successful capture with the geometry and boot time in its name,
// and the dump helper's handling of its folder, null data and empty buffers.
#include <GrallocHelper.h>
#include <sys/stat.h>
#include <utils/Timers.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "service_fixture.h"

namespace cwbtest {
namespace {

namespace fs = std::filesystem;
using Outcome = host::device::SimulatedDisplayConfig::Outcome;
using host::device::Device;
using host::device::Frame;

class CaptureDumpTest : public ServiceTest {
  protected:
    std::string dumpDir() const { return device->hostPath(Device::kDumpDir); }
    std::string readDump(const std::string& name) const {
        std::ifstream in(dumpDir() + "/" + name, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    void setDebug(std::vector<int32_t> values) {
        Error ignored;
        ASSERT_TRUE(service->setDebug(values, &ignored).isOk());
    }
};

struct DumpCase {
    const char* name;
    bool secondary;
    const char* prefix;  // geometry part of the file name
};

void PrintTo(const DumpCase& c, std::ostream* os) {
    *os << c.name;
}

class CaptureDumpPerDisplayTest : public CaptureDumpTest,
                                  public ::testing::WithParamInterface<DumpCase> {};

TEST_P(CaptureDumpPerDisplayTest, EverySuccessfulCaptureWritesTheWholeBuffer) {
    const DumpCase& c = GetParam();
    setProp("ro.vendor.zarel.display.cwb.display_id_sec", "3");
    device->setPanelModes(PanelId::Secondary, {{720, 1600, kVsync60}});
    const PanelId panel = c.secondary ? PanelId::Secondary : PanelId::Main;
    device->setFrame(
            panel, FrameKind::Mixer,
            *Frame::pattern("gradient", c.secondary ? 720 : 1080, c.secondary ? 1600 : 2400));
    bootOn();
    if (c.secondary) peer->setDisplayId(3);
    setDebug({0, 1});

    const nsecs_t before = systemTime(SYSTEM_TIME_BOOTTIME);
    ASSERT_EQ(0, peer->setCWBOutputBuffer(rect(0, 0, 0, 0), false, c.secondary));
    const nsecs_t after = systemTime(SYSTEM_TIME_BOOTTIME);

    auto files = device->dumpFiles();
    ASSERT_EQ(1u, files.size());
    const std::string prefix = std::string("output_layer_") + c.prefix + "_rgb888_cwb_";
    ASSERT_EQ(0u, files[0].rfind(prefix, 0)) << files[0];
    ASSERT_EQ(".raw", files[0].substr(files[0].size() - 4));
    const long long stamp = std::stoll(files[0].substr(prefix.size()));
    EXPECT_GE(stamp, before);
    EXPECT_LE(stamp, after);

    const auto info = peer->buffer(c.secondary);
    const std::string bytes = readDump(files[0]);
    ASSERT_EQ(info.size, bytes.size());
    EXPECT_EQ(0, memcmp(info.base, bytes.data(), bytes.size()));

    // A failed capture writes nothing; the next good one a file of its own.
    device->displayConfig()->pushOutcome(Outcome::Error, -1);
    ASSERT_EQ(-4, peer->setCWBOutputBuffer(rect(0, 0, 0, 0), false, c.secondary));
    EXPECT_EQ(1u, device->dumpFiles().size());
    ASSERT_EQ(0, peer->setCWBOutputBuffer(rect(0, 0, 0, 0), false, c.secondary));
    EXPECT_EQ(2u, device->dumpFiles().size());

    // Switched off again: no more files.
    setDebug({-1, 0});
    ASSERT_EQ(0, peer->setCWBOutputBuffer(rect(0, 0, 0, 0), false, c.secondary));
    EXPECT_EQ(2u, device->dumpFiles().size());
}

INSTANTIATE_TEST_SUITE_P(Displays, CaptureDumpPerDisplayTest,
                         ::testing::Values(DumpCase{"Main", false, "1088_2400"},
                                           DumpCase{"Secondary", true, "768_1600"}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(CaptureDumpTest, NullDataCreatesTheFolderButNoFile) {
    ASSERT_FALSE(fs::exists(dumpDir()));
    android::sp<GrallocHelper> helper = new GrallocHelper();
    helper->DumpOutputBuffer(16, nullptr, -1, 4, 4, 123);
    ASSERT_TRUE(fs::is_directory(dumpDir()));
    struct stat st {};
    ASSERT_EQ(0, ::stat(dumpDir().c_str(), &st));
    EXPECT_EQ(0777u, st.st_mode & 0777u);  // whatever the umask
    EXPECT_TRUE(device->dumpFiles().empty());
}

TEST_F(CaptureDumpTest, SizesAndTimestampsShapeTheFiles) {
    android::sp<GrallocHelper> helper = new GrallocHelper();
    const std::string data = "0123456789ab";
    struct Dump {
        int size;
        int width;
        int height;
        long timestamp;
        const char* name;
    };
    // The folder is made by the first dump and reused by the others; equal geometry at
    // different times gives separate files; size 0 gives an empty one.
    const Dump dumps[] = {
            {12, 2, 2, 1000, "output_layer_2_2_rgb888_cwb_1000.raw"},
            {12, 2, 2, 123456789012, "output_layer_2_2_rgb888_cwb_123456789012.raw"},
            {0, 1088, 2400, 7, "output_layer_1088_2400_rgb888_cwb_7.raw"},
            {5, 1, 1, -1, "output_layer_1_1_rgb888_cwb_-1.raw"},
    };
    for (const Dump& d : dumps) {
        helper->DumpOutputBuffer(d.size, const_cast<char*>(data.data()), -1, d.width, d.height,
                                 d.timestamp);
        EXPECT_EQ(data.substr(0, d.size), readDump(d.name)) << d.name;
    }
    EXPECT_EQ(4u, device->dumpFiles().size());
    // Same name again: truncated and rewritten, not appended.
    helper->DumpOutputBuffer(3, const_cast<char*>("xyz"), -1, 2, 2, 1000);
    EXPECT_EQ("xyz", readDump("output_layer_2_2_rgb888_cwb_1000.raw"));
}

TEST_F(CaptureDumpTest, UncreatableFolderIsLoggedAndNothingWritten) {
    // A file where the parent folder should be: mkdir fails with ENOTDIR.
    const std::string parent = device->hostPath("/data/vendor/display");
    fs::remove_all(parent);
    std::ofstream(parent) << "not a folder";
    android::sp<GrallocHelper> helper = new GrallocHelper();
    char data[4] = {1, 2, 3, 4};
    helper->DumpOutputBuffer(4, data, -1, 1, 1, 1);
    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, "Failed errno = " + std::to_string(ENOTDIR)));
    EXPECT_TRUE(fs::is_regular_file(parent));
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
