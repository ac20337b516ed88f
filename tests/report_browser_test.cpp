// The report as a colleague sees it: headless Chromium renders the report of
// examples/pictures.cwb, and its screenshot must show the pictures themselves: the histogram's
// red, green and blue curves and the rectangles' own outline colours.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "PlotAxes.h"
#include "PngFile.h"
#include "RectMarks.h"

namespace cwbsim {
namespace {

namespace fs = std::filesystem;
using host::device::Frame;
using host::device::Pixel;

std::string chromium() {
    for (const char* path : {"/usr/bin/chromium", "/usr/bin/chromium-browser"}) {
        if (access(path, X_OK) == 0) return path;
    }
    return "";
}

size_t pixelsNear(const Frame& f, Pixel want) {
    size_t n = 0;
    for (int y = 0; y < f.height; ++y) {
        for (int x = 0; x < f.width; ++x) {
            const Pixel p = f.pixel(x, y);
            n += std::abs(p.r - want.r) <= 12 && std::abs(p.g - want.g) <= 12 &&
                 std::abs(p.b - want.b) <= 12;
        }
    }
    return n;
}

TEST(ReportInBrowser, ShowsTheHistogramColoursAndTheOutlinedRectangles) {
    if (!CWB_HAVE_PNG)
        GTEST_SKIP() << "cwb-sim is built without libpng: the report has no pictures";
    if (CWB_EMULATOR[0] != '\0') GTEST_SKIP() << "not under the AArch64 emulator: no browser there";
    const std::string browser = chromium();
    if (browser.empty()) GTEST_SKIP() << "chromium is not installed (apt-get install chromium)";

    const fs::path dir = fs::temp_directory_path() / ("cwb_report_" + std::to_string(getpid()));
    fs::remove_all(dir);
    fs::create_directories(dir / "profile");
    const std::string sim = "cd '" + dir.string() + "' && '" + CWB_SIM_PATH + "' '" +
                            CWB_EXAMPLES_DIR + "/pictures.cwb' --report rep > /dev/null";
    ASSERT_EQ(0, std::system(sim.c_str()));
    // A fresh profile, no network and nothing started in the background; the page has no script.
    const std::string shot = (dir / "shot.png").string();
    const std::string run = "'" + browser +
                            "' --headless --no-sandbox --disable-gpu --disable-quic --no-first-run "
                            "--disable-background-networking --disable-component-update "
                            "--disable-sync --user-data-dir='" +
                            (dir / "profile").string() +
                            "' --window-size=1400,2600 --screenshot='" + shot + "' 'file://" +
                            (dir / "rep/index.html").string() + "' > '" +
                            (dir / "chromium.log").string() + "' 2>&1";
    const int status = std::system(run.c_str());
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << run;
    Frame page;
    std::string error;
    ASSERT_TRUE(PngFile::read(shot, &page, &error)) << error;
    const struct {
        const char* what;
        Pixel colour;
    } shown[] = {
            {"histogram red", PlotAxes::kChannels[0]},  {"histogram green", PlotAxes::kChannels[1]},
            {"histogram blue", PlotAxes::kChannels[2]}, {"first rectangle", RectMarks::colour(0)},
            {"second rectangle", RectMarks::colour(1)}, {"third rectangle", RectMarks::colour(2)},
    };
    for (const auto& s : shown) EXPECT_GE(pixelsNear(page, s.colour), 50u) << s.what;
    fs::remove_all(dir);
}

}  // namespace
}  // namespace cwbsim
