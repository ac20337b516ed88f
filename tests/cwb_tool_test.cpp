// The cwb command-line client, run in-process against the service on the simulated phone: the
// output of every sub-command and the exit status for malformed arguments and a missing service.
#include <CwbMain.h>
#include <host/binder_process.h>

#include <cstdio>
#include <sstream>
#include <thread>

#include "service_fixture.h"

namespace cwbtest {
namespace {

using aidl::vendor::zarel::hardware::cwb::ICwbService;

struct ToolCase {
    const char* name;
    std::vector<std::string> args;
    int exit;
    std::vector<std::string> out;  // substrings the standard output must hold, in order
    std::string err;               // substring of the error output; empty: no error output
    bool boot = true;
    bool captureFirst = false;  // a capture buffer exists before the command runs
};

ToolCase ran(const char* name, std::vector<std::string> args, std::vector<std::string> out,
             bool captureFirst = false) {
    return ToolCase{name, std::move(args), 0, std::move(out), "", true, captureFirst};
}

ToolCase refused(const char* name, std::vector<std::string> args, int exit, std::string err,
                 bool boot = true) {
    return ToolCase{name, std::move(args), exit, {}, std::move(err), boot, false};
}

std::string readAll(FILE* f) {
    std::string text;
    rewind(f);
    for (int c; (c = fgetc(f)) != EOF;) text.push_back(static_cast<char>(c));
    fclose(f);
    return text;
}

// Runs "cwb ARGS" as its own client process and returns its exit status and what it printed.
int run(std::vector<std::string> args, std::string* out, std::string* err) {
    host::binder::ProcessScope in(host::binder::newProcess("cwb"));
    args.insert(args.begin(), "cwb");
    std::vector<char*> argv;
    for (std::string& w : args) argv.push_back(w.data());
    argv.push_back(nullptr);
    FILE* o = tmpfile();
    FILE* e = tmpfile();
    const int status = cwbtool::cwbMain(static_cast<int>(args.size()), argv.data(), o, e);
    *out = readAll(o);
    *err = readAll(e);
    return status;
}

class CwbToolTest : public ServiceTest, public ::testing::WithParamInterface<ToolCase> {};

TEST_P(CwbToolTest, PrintsTheAnswerAndExits) {
    const ToolCase& c = GetParam();
    device->setFrame(PanelId::Main, FrameKind::Mixer,
                     host::device::Frame::filled(1080, 2400, 10, 200, 30));
    if (c.boot) bootOn();
    if (c.captureFirst) {
        ASSERT_EQ(0, rgb(rect(0, 0, 4, 2)).first);
    }
    std::string out, err;
    EXPECT_EQ(c.exit, run(c.args, &out, &err)) << out << err;
    size_t at = 0;
    for (const std::string& part : c.out) {
        const size_t found = out.find(part, at);
        EXPECT_NE(std::string::npos, found) << "missing '" << part << "' in:\n" << out;
        if (found != std::string::npos) at = found + part.size();
    }
    if (c.err.empty()) {
        EXPECT_EQ("", err);
    } else {
        EXPECT_NE(std::string::npos, err.find(c.err)) << err;
        EXPECT_EQ("", out);
    }
}

const std::string kRow = "ok      NONE";

INSTANTIATE_TEST_SUITE_P(
        SubCommands, CwbToolTest,
        ::testing::Values(
                ran("rgb", {"getRGBValue", "0,0,4,2"},
                    {"request", "answer\n", "getRGBValue 0,0,4,2", kRow, "rgb 10,200,30\n"}),
                ran("luma_json", {"--json", "getLumasValue", "0,0,4,2"},
                    {"{\"request\":\"getLumasValue 0,0,4,2\",\"status\":0,\"error\":\"NONE\","
                     "\"errorWord\":0,\"lumas\":[0.576471]}\n"}),
                ran("histogram", {"getHistogramValue", "0,0,4,2"},
                    {kRow, "R: mean 10.00, levels 10..10, peak at 10",
                     "G: mean 200.00, levels 200..200", "B: mean 30.00"}),
                ran("post_process_get", {"getCwbPostProcessStatus"}, {"ok      -", "false"}),
                ran("post_process_set", {"setCwbPostProcessStatus", "1"}, {kRow}),
                ran("register", {"registerCallback"},
                    {"registerCallback", kRow, "event notifyCwbStatus(true)", "unregisterCallback",
                     kRow}),
                ran("unregister", {"unregisterCallback"}, {"unregisterCallback", kRow}),
                ran("disable_json", {"disable", "--json"},
                    {"{\"request\":\"disable\",\"status\":0,\"result\":true}\n"}),
                ran("set_debug", {"setDebug", "-1,-1,-1"}, {"setDebug -1,-1,-1", kRow}),
                ran("cwb_value", {"getCwbValue", "1", "0,0,4,2"},
                    {kRow, "rgb 10,200,30\n", "shown ", " ms (", "loading 1.000000"}),
                ran("cwb_value_bad_id", {"getCwbValue", "0", "0,0,4,2"},
                    {"ok      INVALID_ARGUMENT", "no values"}),
                ran("reserved", {"reserved", "-3", "0x7"}, {"reserved -3 0x7", "ok      -"}),
                ran("init_refused", {"initializeSharedMemory", "0"},
                    {"initializeSharedMemory 0", "-1"}),
                ran("shared_copy", {"--json", "getSharedData", "5", "0,0,4,2", "64"},
                    {"\"error\":\"NONE\"", "\"values\":[0,4,2,1080,2400]", "\"marker\":3735928559"},
                    true),
                ran("shared_mode", {"getSharedData", "3", "0,0,4,2", "0"},
                    {kRow, "copying, crop area 4x2, display 1080x2400"}),
                ran("resolution", {"getScreenResolution"}, {kRow, "height 2400, row pitch 1088"},
                    true),
                ran("release", {"releaseSharedMemory"}, {kRow}),
                ran("version", {"version"}, {"version 2, hash " + ICwbService::hash}),
                // Three requests, one answer: a watch prints only what changed.
                ran("watch", {"--watch", "100", "--count", "3", "getRGBValue", "0,0,4,2"},
                    {"time (s)", "getRGBValue 0,0,4,2", "rgb 10,200,30\n"}),
                refused("no_command", {}, 2, "no sub-command given"),
                refused("unknown", {"getRGB", "0,0,1,1"}, 2, "unknown sub-command 'getRGB'"),
                refused("missing_rect", {"getRGBValue"}, 2, "expected RECT, got 0 arguments"),
                refused("bad_rect", {"getLumasValue", "1,2,3"}, 2, "bad rectangle '1,2,3'"),
                refused("bad_flag", {"setCwbPostProcessStatus", "2"}, 2, "from 0 to 1"),
                refused("bad_list", {"setDebug", "1,x"}, 2, "bad value 'x'"),
                refused("bad_rate", {"--watch", "0", "enable"}, 2, "--watch: '0'"),
                refused("count_alone", {"--count", "2", "enable"}, 2, "--count needs --watch"),
                refused("watch_callback", {"--watch", "5", "registerCallback"}, 2,
                        "cannot be watched"),
                refused("unknown_option", {"--frobnicate", "enable"}, 2, "unknown option"),
                refused("no_service", {"enable"}, 1, "is not running", false)),
        [](const auto& info) { return std::string(info.param.name); });

TEST_F(ServiceTest, CwbWatchPrintsEachChange) {
    // A small panel keeps each capture short next to the watch period, even under sanitizers.
    device->setPanelModes(PanelId::Main, {{64, 64, kVsync60}});
    bootOn();
    host::device::SimulatedDisplayConfig& vendor = *device->displayConfig();
    vendor.setManualCompletion(true);
    int status = -1;
    std::string out, err;
    std::thread tool([&] {
        status = run({"--watch", "2", "--count", "3", "--json", "getRGBValue", "0,0,4,2"}, &out,
                     &err);
    });
    // Each request captures a new picture; the layer change after it keeps the next one from
    // answering out of the cache. The watch period (500 ms) leaves ample time for both.
    for (int k = 1; k <= 3; ++k) {
        if (!waitFor([&] { return vendor.pendingCount() == 1; }, std::chrono::seconds(5))) break;
        device->setFrame(PanelId::Main, FrameKind::Mixer,
                         host::device::Frame::filled(64, 64, 40 * k, 40 * k, 40 * k));
        vendor.completeNext();
        EXPECT_TRUE(waitFor([&] { return peer->bufferCacheValid(); }));
        composer->layerChange();
    }
    tool.join();
    EXPECT_EQ(0, status);
    EXPECT_EQ("", err);
    std::vector<std::string> rows, expected;
    std::istringstream in(out);
    for (std::string line; std::getline(in, line);) rows.push_back(line.substr(line.find(",")));
    for (const char* v : {"40", "80", "120"}) {
        expected.push_back(
                ",\"request\":\"getRGBValue 0,0,4,2\",\"status\":0,\"error\":\"NONE\","
                "\"errorWord\":0,\"rgb\":[" +
                std::string(v) + "," + v + "," + v + "],\"state\":0}");
    }
    EXPECT_EQ(expected, rows);
}

// Notifications that come later, from another thread, until as many as asked have arrived.
TEST_F(ServiceTest, CwbRegisterCallbackWaitsForCountNotifications) {
    bootOn();
    int status = -1;
    std::string out, err;
    std::thread tool([&] {
        status = run({"--count", "3", "--timeout", "20000", "registerCallback"}, &out, &err);
    });
    EXPECT_TRUE(waitFor([&] { return peer->callbackCount() == 1; }));  // the call returned
    std::thread([&] {
        composer->status(false);
        composer->status(true);
    }).join();
    tool.join();
    EXPECT_EQ(0, status);
    std::string events;
    std::istringstream in(out);
    for (std::string line; std::getline(in, line);) {
        if (line.rfind("event ", 0) == 0) events += line.substr(6) + " ";
    }
    EXPECT_EQ("notifyCwbStatus(true) notifyCwbStatus(false) notifyCwbStatus(true) ", events)
            << out << err;
    EXPECT_NE(std::string::npos, out.find("unregisterCallback", out.rfind("event"))) << out;
}

}  // namespace
}  // namespace cwbtest
