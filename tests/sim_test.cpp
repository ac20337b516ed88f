// cwb-sim: the parser, command line, printers and PNG files on their own, whole sessions played
// in-process against the simulated phone (every example included), and runs of the built binary.
#include <android/binder_manager.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <host/gralloc_control.h>
#include <host/sandbox.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <regex>
#include <set>
#include <sstream>

#include "CommandLine.h"
#include "DefaultSession.h"
#include "HistogramPlot.h"
#include "JsonPrinter.h"
#include "PlotAxes.h"
#include "PngFile.h"
#include "RectMarks.h"
#include "SessionParser.h"
#include "Simulator.h"

// Only when cwb-sim itself is built with libpng (CMake finds none for a cross build).
#if CWB_HAVE_PNG
#include <png.h>
#endif

namespace cwbsim {
namespace {

namespace fs = std::filesystem;
using host::device::Frame;
using host::device::Pixel;
using V = std::vector<double>;

// One value of the flat JSON objects the simulator prints.
struct Value {
    std::string s;
    double n = 0;
    bool b = false;
    V a;
};
using Object = std::map<std::string, Value>;

// Strict: only strings, numbers, booleans and number arrays, nothing after the closing brace.
bool parseObject(const std::string& t, Object* out) {
    size_t i = 0;
    auto eat = [&](char c) { return i < t.size() && t[i] == c && ++i; };
    auto str = [&](std::string* s) {
        if (!eat('"')) return false;
        for (; i < t.size() && t[i] != '"'; ++i) {
            if (static_cast<unsigned char>(t[i]) < 0x20) return false;
            if (t[i] == '\\') ++i;
            *s += t[i];
        }
        return eat('"');
    };
    auto num = [&](double* d) {
        const size_t start = i;
        while (i < t.size() && strchr("-+.eE0123456789", t[i]) != nullptr) ++i;
        if (i == start) return false;
        *d = std::stod(t.substr(start, i - start));
        return true;
    };
    auto value = [&](Value* v) {
        if (t.compare(i, 4, "true") == 0 || t.compare(i, 5, "false") == 0) {
            v->b = t[i] == 't';
            i += v->b ? 4 : 5;
            return true;
        }
        if (i < t.size() && t[i] == '"') return str(&v->s);
        if (!eat('[')) return num(&v->n);
        if (eat(']')) return true;
        do {
            v->a.emplace_back();
            if (!num(&v->a.back())) return false;
        } while (eat(','));
        return eat(']');
    };
    if (!eat('{')) return false;
    do {
        std::string key;
        if (!str(&key) || !eat(':') || !value(&(*out)[key])) return false;
    } while (eat(','));
    return eat('}') && i == t.size();
}

// Line: Error word and leading values.
using Answers = std::map<int, std::pair<int, V>>;

struct Played {
    int code = -1;
    std::string out, err;
    std::vector<Object> objects;
    double seconds = 0;

    std::vector<Object> calls(const std::string& name) const {
        std::vector<Object> found;
        for (const Object& o : objects) {
            if (o.count("call") && o.at("call").s == name) found.push_back(o);
        }
        return found;
    }
    Object atLine(int line) const {
        for (const Object& o : objects) {
            if (o.count("line") && o.at("line").n == line) return o;
        }
        ADD_FAILURE() << "no call at line " << line;
        return {};
    }
    // Log lines whose "LEVEL text" matches pattern.
    size_t logs(const std::string& pattern) const {
        const std::regex re(pattern);
        return std::count_if(objects.begin(), objects.end(), [&](const Object& o) {
            return o.count("log") && std::regex_match(o.at("log").s + " " + o.at("text").s, re);
        });
    }
    // Each line's Error word and the leading values of key, as floats since lumas print as such.
    void expect(const char* key, const Answers& want) const {
        for (const auto& [line, w] : want) {
            const Object o = atLine(line);
            EXPECT_EQ(w.first, o.at("error").n) << line;
            const V& got = o.at(key).a;
            EXPECT_EQ(std::vector<float>(w.second.begin(), w.second.end()),
                      std::vector<float>(got.begin(),
                                         got.begin() + std::min(got.size(), w.second.size())))
                    << key << " at line " << line;
        }
    }
};

Played play(const std::string& text, Options options = {}, bool json = true,
            const std::string& baseDir = "") {
    options.json = json;
    std::ostringstream out, err;
    Played run;
    const auto start = std::chrono::steady_clock::now();
    run.code = Simulator::play(text, "test", baseDir, options, out, err);
    run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    run.out = out.str();
    run.err = err.str();
    std::istringstream lines(json ? run.out : "");
    for (std::string line; std::getline(lines, line);) {
        EXPECT_TRUE(parseObject(line, &run.objects.emplace_back())) << "not JSON: " << line;
    }
    return run;
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

Played playExample(const std::string& name, Options options = {}) {
    const std::string dir = CWB_EXAMPLES_DIR;
    Played run = play(readFile(dir + "/" + name), options, true, dir);
    EXPECT_EQ(0, run.code) << name << ": " << run.err;
    return run;
}

// A 64-bit answer sent as two ints, high word first.
int64_t word64(const V& v, size_t at) {
    auto word = [&](size_t k) { return static_cast<uint32_t>(static_cast<int64_t>(v[k])); };
    return static_cast<int64_t>(uint64_t{word(at)} << 32 | word(at + 1));
}

constexpr bool kHavePng = CWB_HAVE_PNG;
constexpr char kNoPng[] = "cwb-sim is built without libpng: no PNG file to read or write";

#if CWB_HAVE_PNG
bool writePng(const std::string& path, int w, int h, uint32_t format,
              const std::vector<uint8_t>& pixels) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = w;
    image.height = h;
    image.format = format;
    return png_image_write_to_file(&image, path.c_str(), 0, pixels.data(), 0, nullptr) != 0;
}
#endif

// ---- Parser ----

TEST(SessionParser, ConvertsWhatItAccepts) {
    std::vector<Command> c;
    SessionError error;
    ASSERT_TRUE(
            SessionParser::parse("  # comment only\n"
                                 "panel main 1080x2400@59.94 720x1600@120   # two modes\n"
                                 "panel sec none\n"
                                 "file apl 0f   a0\n"
                                 "boot\n"
                                 "getRGBValue 0x80000000,-5,0xFFFFFFFF,0x7fffffff\n"
                                 "setDebug -\n"
                                 "setDebug 1,-1,0\n"
                                 "host setPowerMode -1 2\n"
                                 "vendor next error -5\n",
                                 &c, &error))
            << error.message;
    ASSERT_EQ(9u, c.size());
    EXPECT_EQ(2, c[0].line);
    ASSERT_EQ(2u, c[0].modes.size());
    EXPECT_EQ(16683350, c[0].modes[0].vsyncPeriodNs);  // 1e9 / 59.94, truncated
    EXPECT_EQ(8333333, c[0].modes[1].vsyncPeriodNs);
    EXPECT_TRUE(c[1].modes.empty());
    EXPECT_EQ("0f a0\n", c[2].str);
    const auto& r = c[4].rect;
    EXPECT_EQ((std::vector<int32_t>{INT32_MIN, -5, -1, INT32_MAX}),
              (std::vector<int32_t>{r.left, r.top, r.right, r.bottom}));
    EXPECT_TRUE(c[5].list.empty());
    EXPECT_EQ((std::vector<int32_t>{1, -1, 0}), c[6].list);
    EXPECT_EQ((std::vector<int64_t>{-1, 2}), c[7].nums);
    EXPECT_EQ(host::device::SimulatedDisplayConfig::Outcome::Error, c[8].outcome);
    EXPECT_EQ(std::vector<int64_t>{-5}, c[8].nums);
}

TEST(SessionParser, SurvivesArbitraryText) {
    std::vector<std::string> words{""};  // the empty word too
    std::istringstream list(
            "boot getRGBValue frame main png 0,0,1,1 0x - ,,, # host setPowerMode "
            "9999999999999999999 @ 1x1@ vendor next");
    for (std::string w; list >> w;) words.push_back(w);
    std::mt19937 random(7);
    for (int round = 0; round < 2000; ++round) {
        std::string text;
        for (int w = random() % 6; w >= 0; --w) {
            text += words[random() % words.size()] + (random() % 3 ? " " : "\n");
            if (random() % 5 == 0) text += static_cast<char>(random() % 256);
        }
        std::vector<Command> c;
        SessionError error;
        if (!SessionParser::parse(text, &c, &error)) {
            EXPECT_GT(error.line, 0) << text;
            EXPECT_FALSE(error.message.empty()) << text;
        }
    }
}

// ---- Command line ----

TEST(CommandLine, AcceptsOrExplains) {
    const struct {
        std::vector<std::string> args;
        bool ok;
        const char* error;
    } cases[] = {{{"--json", "--logs", "s.cwb"}, true, ""},
                 {{"--prop", "a=b", "--prop=c=", "--frame=f.png", "-"}, true, ""},
                 {{"--colour"}, false, "unknown option '--colour'"},
                 {{"--prop", "novalue"}, false, "--prop needs NAME=VALUE"},
                 {{"--prop", "=v"}, false, "--prop needs NAME=VALUE"},
                 {{"--prop"}, false, "--prop needs a value"},
                 {{"--frame="}, false, "--frame needs a PNG file"},
                 {{"a.cwb", "b.cwb"}, false, "only one session file"}};
    for (const auto& c : cases) {
        CommandLine line;
        std::string error;
        EXPECT_EQ(c.ok, line.parse(c.args, &error)) << c.args[0];
        EXPECT_NE(std::string::npos, error.find(c.error)) << error;
    }
}

TEST(CommandLine, KeepsEverythingAfterTheFirstEquals) {
    CommandLine line;
    std::string error;
    ASSERT_TRUE(line.parse({"--prop=x.y=1=2", "--prop", "z=", "--json"}, &error));
    using Props = std::vector<std::pair<std::string, std::string>>;
    EXPECT_EQ((Props{{"x.y", "1=2"}, {"z", ""}}), line.options().props);
    EXPECT_TRUE(line.options().json);
    EXPECT_EQ("", line.script());
}

// ---- Printers ----

TEST(JsonPrinter, EscapesWhatJsonRequires) {
    EXPECT_EQ("\"a\\\"b\\\\c\\n\\t\\u0001\"", JsonPrinter::quote("a\"b\\c\n\t\x01"));
    std::ostringstream out;
    JsonPrinter printer(out);
    printer.log(6, "CwbService", "line one\n");
    printer.event("c\"1", false);
    EXPECT_EQ(
            "{\"log\":\"E\",\"tag\":\"CwbService\",\"text\":\"line one\"}\n"
            "{\"event\":\"notifyCwbStatus\",\"client\":\"c\\\"1\",\"status\":false}\n",
            out.str());
}

// ---- PNG ----

class PngFileTest : public ::testing::Test {
  protected:
    void SetUp() override { fs::create_directories(dir); }
    void TearDown() override { fs::remove_all(dir); }
    std::string path(const std::string& name) { return (dir / name).string(); }
    const fs::path dir = fs::temp_directory_path() / ("cwb-sim-png-" + std::to_string(getpid()));
};

#if CWB_HAVE_PNG
TEST_F(PngFileTest, RoundTripsRgbAndDropsAlpha) {
    Frame frame = Frame::filled(3, 2, 1, 2, 3);
    frame.setPixel(2, 1, {250, 128, 0});
    std::string error;
    ASSERT_TRUE(PngFile::write(path("rgb.png"), frame, &error)) << error;
    Frame back;
    ASSERT_TRUE(PngFile::read(path("rgb.png"), &back, &error)) << error;
    EXPECT_EQ(frame.rgb, back.rgb);
    // Fully and half transparent pixels keep their colour: alpha is dropped, not composited.
    ASSERT_TRUE(
            writePng(path("rgba.png"), 2, 1, PNG_FORMAT_RGBA, {10, 20, 30, 0, 200, 100, 50, 128}));
    ASSERT_TRUE(PngFile::read(path("rgba.png"), &back, &error)) << error;
    EXPECT_EQ((std::vector<uint8_t>{10, 20, 30, 200, 100, 50}), back.rgb);
    ASSERT_TRUE(writePng(path("grey.png"), 2, 1, PNG_FORMAT_GRAY, {7, 99}));
    ASSERT_TRUE(PngFile::read(path("grey.png"), &back, &error)) << error;
    EXPECT_EQ((std::vector<uint8_t>{7, 7, 7, 99, 99, 99}), back.rgb);
    EXPECT_EQ(std::make_pair(2, 1), std::make_pair(back.width, back.height));
}

TEST_F(PngFileTest, RefusesWhatIsNotAPng) {
    std::ofstream(path("fake.png")) << "GIF89a, not a PNG";
    Frame out;
    std::string error;
    EXPECT_FALSE(PngFile::read(path("fake.png"), &out, &error));
    EXPECT_NE(std::string::npos, error.find("cannot read PNG " + path("fake.png"))) << error;
    EXPECT_FALSE(PngFile::read(path("missing.png"), &out, &error));
    EXPECT_FALSE(PngFile::write(path("empty.png"), Frame(), &error));
    EXPECT_FALSE(PngFile::write(path("no/such/dir.png"), Frame::filled(1, 1, 0, 0, 0), &error));
}
#else
TEST_F(PngFileTest, WithoutLibpngEveryCallSaysPngIsUnavailable) {
    std::ofstream(path("fake.png")) << "not read";
    Frame out;
    int width = 0, height = 0;
    std::string error;
    EXPECT_FALSE(PngFile::size(path("fake.png"), &width, &height, &error));
    EXPECT_EQ("cannot read PNG " + path("fake.png") +
                      ": PNG is unavailable, this cwb-sim was built without libpng",
              error);
    EXPECT_FALSE(PngFile::read(path("fake.png"), &out, &error));
    EXPECT_EQ(0u, error.find("cannot read PNG ")) << error;
    EXPECT_FALSE(PngFile::write(path("out.png"), Frame::filled(1, 1, 0, 0, 0), &error));
    EXPECT_EQ(0u, error.find("cannot write PNG " + path("out.png") + ": PNG is unavailable"));
    EXPECT_FALSE(fs::exists(path("out.png")));
}
#endif

// ---- Sessions ----

// Every session must leave the process as it found it: no capture buffer, no registered
// service, the sandbox root restored.
class SimSession : public PngFileTest {
  protected:
    void TearDown() override {
        EXPECT_EQ(liveBuffers, host::gralloc::liveBuffers());
        EXPECT_EQ(sandboxRoot, host::sandbox::root());
        EXPECT_EQ(nullptr,
                  AServiceManager_checkService("vendor.zarel.hardware.cwb.ICwbService/default"));
        PngFileTest::TearDown();
    }
    const size_t liveBuffers = host::gralloc::liveBuffers();
    const std::string sandboxRoot = host::sandbox::root();
};

constexpr const char* kPhone =
        "prop ro.vendor.zarel.display.cwb.display_id 0\n"
        "panel main 1080x2400@60\n";

TEST_F(SimSession, DefaultSessionIsTheDemoExampleAndAnswers) {
    EXPECT_EQ(readFile(std::string(CWB_EXAMPLES_DIR) + "/demo.cwb"), DefaultSession::text());
    const Played run = play(DefaultSession::text());
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    ASSERT_EQ(0, run.code) << run.err;
    // Pure bars, a white/yellow mix averaged in linear light, and a black-and-white label.
    const Answers rgb = {{20, {1 << 16, {255, 255, 255}}},
                         {22, {1 << 16, {255, 255, 0}}},
                         {24, {0, {255, 255, 187}}},
                         {26, {2 << 16, {183, 183, 183}}}};
    run.expect("rgb", rgb);
    // The ramp is symmetric around 127.5.
    EXPECT_EQ(V{0.5}, run.calls("getLumasValue")[0].at("lumas").a);
    const V hist = run.calls("getHistogramValue")[0].at("histogram").a;
    ASSERT_EQ(768u, hist.size());
    for (int ch = 0; ch < 3; ++ch) {
        double total = 0;
        for (int level = 0; level < 256; ++level) total += hist[level * 3 + ch];
        EXPECT_EQ(1080.0 * 800, total);
    }
    // Magenta bar, then the vsync interval and the loading for APL 0x0fa0 at 2000 nits.
    run.expect("values", {{36, {0, {255, 0, 255, 1}}}});
    const V values = run.atLine(36).at("values").a;
    ASSERT_EQ(9u, values.size());
    EXPECT_GE(word64(values, 6) - word64(values, 4), 16666666);
    EXPECT_EQ(125000000 - 6105 * 4000, values[8]);
    // The crop record: timestamp, white white yellow yellow twice, marker.
    const std::string bytes = run.calls("readShared")[0].at("bytes").s;
    EXPECT_EQ("ffffffffffffffff00ffff00ffffffffffffffff00ffff00efbeadde", bytes.substr(16));
    int64_t stamp = 0;
    for (int i = 7; i >= 0; --i)
        stamp = stamp * 256 + std::stoi(bytes.substr(i * 2, 2), nullptr, 16);
    EXPECT_GT(stamp, 0);
    EXPECT_LE(stamp, static_cast<int64_t>(now.tv_sec) * 1000000000 + now.tv_nsec);
    EXPECT_EQ((V{2400, 1088}), run.calls("getScreenResolution")[0].at("values").a);
}

TEST_F(SimSession, TableShowsTheSameAnswers) {
    const Played run = play(DefaultSession::text(), {}, false);
    ASSERT_EQ(0, run.code) << run.err;
    for (const char* text :
         {"line  request", "rgb 255,255,255, pure colour", "rgb 183,183,183, black/white",
          "luma 0.5000", "event notifyCwbStatus(true) to demo", "loading 1.005800",
          "@32: ef be ad de", "height 2400, row pitch 1088",
          "R: mean 127.50, levels 0..255, peak at 4 (4000 of 864000 px)", " ms ("}) {
        EXPECT_NE(std::string::npos, run.out.find(text)) << text << "\n" << run.out;
    }
    EXPECT_EQ(std::string::npos, run.out.find("sleep"));
}

// Logs are printed only when asked, in order with the calls; props given on the command line win
// over the session's; a failed binder status carries neither Error nor values.
TEST_F(SimSession, OptionsAndFailedStatuses) {
    Options options;
    options.logs = true;
    options.props = {{"ro.vendor.zarel.display.cwb.postprocess", "1"}};
    const std::string session = std::string(kPhone) +
                                "prop ro.vendor.zarel.display.cwb.postprocess 0\n"
                                "boot\nenable\ngetCwbPostProcessStatus\n"
                                "getSharedData 5 0,0,2,2 100\ninitializeSharedMemory none\n"
                                "initializeSharedMemory 0\n";
    const Played run = play(session, options);
    ASSERT_EQ(0, run.code) << run.err;
    std::vector<std::string> seen;
    for (const Object& o : run.objects) {
        seen.push_back(o.count("log") ? o.at("log").s + " " + o.at("text").s : o.at("call").s);
    }
    auto at = [&](const std::string& s) {
        return std::find(seen.begin(), seen.end(), s) - seen.begin();
    };
    EXPECT_EQ(0, at("E CwbProxy::initialize() get called."));
    EXPECT_LT(at("E CwbProxy::initialize() get called."), at("I Registered CWB AIDL Service"));
    EXPECT_LT(at("I Registered CWB AIDL Service"), at("I Enable Cwb function."));
    EXPECT_EQ(at("I Enable Cwb function.") + 1, at("enable"));
    EXPECT_TRUE(run.calls("getCwbPostProcessStatus")[0].at("result").b);
    // A descriptor of -1 never leaves the client (7, 8); the service refuses a size of 0 (9).
    for (int line = 7; line <= 9; ++line) {
        EXPECT_EQ(line == 9 ? -1 : EX_TRANSACTION_FAILED, run.atLine(line).at("status").n);
        EXPECT_EQ(0u, run.atLine(line).count("error") + run.atLine(line).count("values"));
    }
    const Played quiet = play(session);
    EXPECT_EQ(5u, quiet.objects.size());
    EXPECT_EQ(0u, quiet.logs(".*"));
}

// A client file smaller than the size it declares is refused as a failed mapping, and no crop
// reaches it; a file that holds the size maps and takes the record.
TEST_F(SimSession, UndersizedRegionIsRefused) {
    Options options;
    options.logs = true;
    const std::string session = std::string(kPhone) +
                                "boot\nhost setPowerMode 0 2\ngetRGBValue 0,0,8,8\n"
                                "initializeSharedMemory 30020 4096\n"
                                "getSharedData 5 0,0,100,100 30012\n"
                                "initializeSharedMemory 30020 30020\n"
                                "getSharedData 5 0,0,100,100 30012\n";
    const Played run = play(session, options);
    ASSERT_EQ(0, run.code) << run.err;
    EXPECT_EQ(-1, run.atLine(6).at("status").n);
    EXPECT_EQ(-1, run.atLine(7).at("status").n);
    EXPECT_EQ(0, run.atLine(8).at("status").n);
    EXPECT_EQ(0, run.atLine(9).at("status").n);
    EXPECT_EQ(1u, run.logs(". MORVIK_AI::mmap failed for fd=.*: Invalid argument.*"));
}

// A session that stops names the line: malformed text exits 2 before anything runs, a failing
// command exits 1.
struct Stop {
    const char* text;
    int line;
    const char* message;
    int code = Simulator::kMalformed;
    bool needsPng = false;
};

class SimStops : public SimSession, public ::testing::WithParamInterface<Stop> {};

TEST_P(SimStops, NamesTheLineAndTheProblem) {
    const Stop& s = GetParam();
    if (s.needsPng && !kHavePng) GTEST_SKIP() << kNoPng;
    std::string pngError;
    if (kHavePng) {
        ASSERT_TRUE(PngFile::write(path("small.png"), Frame::filled(100, 100, 0, 0, 0), &pngError));
    }
    const Played run = play(s.text, {}, true, dir.string());
    EXPECT_EQ(s.code, run.code);
    EXPECT_TRUE(s.code != Simulator::kMalformed || run.out.empty()) << run.out;
    EXPECT_EQ(0u, run.err.find("cwb-sim: test line " + std::to_string(s.line) + ": ")) << run.err;
    EXPECT_NE(std::string::npos, run.err.find(s.message)) << run.err;
}

constexpr int kFailed = Simulator::kFailed;

INSTANTIATE_TEST_SUITE_P(
        Lines, SimStops,
        ::testing::Values(
                Stop{"boot\ngetRGB 0,0,1,1", 2, "unknown command 'getRGB'"},
                Stop{"boot\ngetRGBValue 1,2,3", 2, "bad rectangle '1,2,3'"},
                Stop{"boot\ngetRGBValue 1,2,3,x", 2, "bad rectangle"},
                Stop{"boot\ngetRGBValue 0,0,2147483648,1", 2, "bad rectangle"},
                Stop{"boot\ngetRGBValue 0,0,0x100000000,1", 2, "bad rectangle"},
                Stop{"boot\ngetRGBValue", 2, "expected RECT, got 0 arguments"},
                Stop{"boot\ngetCwbValue 1 0,0,1,1 9", 2, "expected ID RECT, got 3"},
                Stop{"boot\nsetDebug 1,,0", 2, "setDebug: bad value ''"},
                Stop{"boot\nsetCwbPostProcessStatus 2", 2, "must be 0 or 1"},
                Stop{"boot\nregisterCallback a/b", 2, "bad client name 'a/b'"},
                Stop{"boot\nreadShared 0 0", 2, "length '0' is not an integer from 1"},
                Stop{"boot\ninitializeSharedMemory -4", 2, "size '-4'"},
                Stop{"getRGBValue 0,0,1,1", 1, "the service exists only after boot"},
                Stop{"boot\nprop a b", 2, "must come before boot (line 1)"},
                Stop{"boot\n\nboot", 3, "boot given twice (first at line 1)"},
                Stop{"boot extra", 1, "expected no argument, got 1"},
                Stop{"panel tv 10x10@60", 1, "unknown display 'tv'"},
                Stop{"panel main 0x10@60", 1, "bad panel mode '0x10@60'"},
                Stop{"panel main 10x10@0", 1, "bad panel mode"},
                Stop{"panel main 10x10", 1, "bad panel mode"},
                Stop{"file weights main", 1, "expected main|sec PATH"},
                Stop{"file gamma x", 1, "unknown file 'gamma'"},
                Stop{"frame main fill 256,0,0", 1, "bad colour '256,0,0'"},
                Stop{"frame main post", 1, "expected fill, png, pattern or paint"},
                Stop{"frame main pattern zebra", 1, "unknown pattern 'zebra'"},
                Stop{"frame sec paint 0,0,1,1", 1, "expected L,T,R,B R,G,B"},
                Stop{"vendor next explode", 1, "unknown outcome 'explode'"},
                Stop{"vendor next error", 1, "expected an error code"},
                Stop{"vendor latency -1", 1, "latency '-1'"},
                Stop{"qservice 305 1", 1, "unknown command '305'"},
                Stop{"sleep 600001", 1, "sleep '600001'"},
                Stop{"host setPowerMode 0", 1, "expected DISPLAY MODE, got 1"},
                Stop{"host rotate 1", 1, "unknown operation 'rotate'"},
                Stop{"host aodLayerExist yes", 1, "aodLayerExist must be 0 or 1"},
                Stop{"host notifyConfigChange 0 -1", 1, "config '-1'"},
                Stop{"client x asleep", 1, "expected dead or alive"},
                Stop{"snapshot main out.jpg", 1, "must end in .png"},
                Stop{"plot luma x.png", 1, "'plot histogram PATH.png' or 'plot answers"},
                Stop{"boot\nexpect error=NONE", 2, "expect follows the client call"},
                Stop{"boot\nenable\nexpect colour=1", 3, "'colour=1' is not KEY=VALUE"},
                Stop{"boot\nenable\nexpect result=true result=false", 3, "result given twice"},
                Stop{"boot\nplot answers x.png", 2, "no RGB or luma answer yet", kFailed},
                Stop{"frame main png small.png", 1, "is 100x100, the main panel is 1080x2400",
                     kFailed, true},
                Stop{"frame main png none.png", 1, "frame: cannot read PNG", kFailed},
                Stop{"file weights sec none.json", 1, "file weights: cannot read", kFailed},
                Stop{"boot\nreadShared 0 4", 2, "readShared: no shared memory region", kFailed},
                Stop{"boot\ninitializeSharedMemory 8\nreadShared 4 5", 3,
                     "readShared: bytes 4 to 9 are outside the 8-byte region", kFailed},
                Stop{"boot\nsnapshot sec x.png", 2, "nothing has been captured on the sec",
                     kFailed},
                Stop{"plot histogram x.png", 1, "no getHistogramValue answer yet", kFailed}));

TEST_F(SimSession, ShowsAPngOnTheMainPanel) {
    if (!kHavePng) GTEST_SKIP() << kNoPng;
    Frame frame = Frame::filled(1080, 2400, 0, 0, 0);
    frame.fillRect(10, 20, 30, 40, {12, 34, 56});
    std::string error;
    ASSERT_TRUE(PngFile::write(path("frame.png"), frame, &error));
    Options options;
    options.frame = path("frame.png");
    const std::string session =
            std::string(kPhone) + "boot\nhost setPowerMode 0 2\ngetRGBValue 10,20,30,40\n";
    // From the command line, and by a path in the session relative to the session file.
    for (const Played& run : {play(session, options), play("frame main png frame.png\n" + session,
                                                           {}, true, dir.string())}) {
        ASSERT_EQ(0, run.code) << run.err;
        EXPECT_EQ((V{12, 34, 56}), run.calls("getRGBValue")[0].at("rgb").a);
    }
    options.frame = path("missing.png");
    const Played run = play(session, options);
    EXPECT_EQ(Simulator::kFailed, run.code);
    EXPECT_EQ(0u, run.err.find("cwb-sim: test: --frame " + path("missing.png") + ": ")) << run.err;
}

TEST_F(SimSession, SnapshotOutlinesTheRectanglesOfTheLastGoodCapture) {
    if (!kHavePng) GTEST_SKIP() << kNoPng;
    const Played run = play(std::string(kPhone) +
                            "frame main fill 0,0,255\n"
                            "boot\nhost setPowerMode 0 2\ninitializeSharedMemory 30020\n"
                            "sleep 60\ngetRGBValue 100,100,200,200\n"
                            "getSharedData 5 400,400,410,410 30020\n"
                            // A failed writeback of a changed picture does not replace it.
                            "frame main fill 255,0,0\nvendor next error -1\nhost invalidCache\n"
                            "sleep 60\ngetRGBValue 500,500,600,600\n"
                            "snapshot main " +
                            path("snap.png") + "\n");
    ASSERT_EQ(0, run.code) << run.err;
    EXPECT_EQ(1, run.calls("getRGBValue")[1].at("error").n);
    Frame snap;
    std::string error;
    ASSERT_TRUE(PngFile::read(path("snap.png"), &snap, &error)) << error;
    ASSERT_EQ(std::make_pair(1080, 2400), std::make_pair(snap.width, snap.height));
    EXPECT_EQ((Pixel{0, 0, 255}), snap.pixel(150, 150));
    // Each in its own colour between black edges, outside the rectangle.
    for (int i : {0, 1, 2}) {
        const int left = std::vector<int>{100, 400, 500}[i];
        EXPECT_EQ((Pixel{0, 0, 0}), snap.pixel(left - 1, left + 5)) << left;
        EXPECT_EQ(RectMarks::colour(i), snap.pixel(left - 2, left + 5)) << left;
        EXPECT_EQ(RectMarks::colour(i), snap.pixel(left - 5, left + 5)) << left;
        EXPECT_EQ((Pixel{0, 0, 0}), snap.pixel(left - 6, left + 5)) << left;
        EXPECT_EQ((Pixel{0, 0, 255}), snap.pixel(left - 7, left + 5)) << left;
    }
}

TEST_F(SimSession, PlotDrawsEachChannelAtItsLevel) {
    if (!kHavePng) GTEST_SKIP() << kNoPng;
    const Played run = play(std::string(kPhone) +
                            "frame main fill 10,20,30\nboot\nhost setPowerMode 0 2\nsleep 60\n"
                            "getHistogramValue 0,0,50,40\nplot histogram " +
                            path("plot.png") + "\n");
    ASSERT_EQ(0, run.code) << run.err;
    Frame plot;
    std::string error;
    ASSERT_TRUE(PngFile::read(path("plot.png"), &plot, &error)) << error;
    ASSERT_EQ(HistogramPlot::kWidth, plot.width);
    const int top = HistogramPlot::y(2000, 2000);
    EXPECT_EQ(HistogramPlot::kTop, top);
    for (int ch = 0; ch < 3; ++ch) {
        EXPECT_EQ(PlotAxes::kChannels[ch], plot.pixel(HistogramPlot::x(10 * (ch + 1)), top)) << ch;
    }
    EXPECT_EQ(PlotAxes::kInk, plot.pixel(HistogramPlot::kLeft, HistogramPlot::kTop + 50));
}

// ---- The examples, each played and its answers checked ----

// Each example has its own test here (demo.cwb is the default session, pictures.cwb runs in the
// binary); a new one needs one too.
TEST(SimExamples, EveryExampleIsPlayedHere) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(CWB_EXAMPLES_DIR)) {
        if (entry.path().extension() == ".cwb") names.insert(entry.path().filename().string());
    }
    EXPECT_EQ(names, (std::set<std::string>{"callbacks.cwb", "demo.cwb", "doze_aod.cwb",
                                            "faults.cwb", "light_sensor.cwb", "pictures.cwb",
                                            "rotation.cwb", "secondary.cwb", "shared_memory.cwb"}));
}

TEST_F(SimSession, ExampleLightSensorWeights) {
    const Played run = playExample("light_sensor.cwb");
    // Weighted 36:12 white over black at line 22; unweighted every-third-pixel samples at 25.
    run.expect("rgb", {{22, {0, {224, 224, 224}}}, {25, {0, {187, 187, 187}}}});
    run.expect("values", {{30, {0, {224, 224, 224, 0}}}});
    const V v = run.atLine(30).at("values").a;
    ASSERT_EQ(9u, v.size());
    EXPECT_EQ(200000000 - 24420 * 4000, v[8]);  // UirState 1, 900 nits, APL 0x0fa0
    EXPECT_GE(word64(v, 6) - word64(v, 4), 16666666);
}

TEST_F(SimSession, ExampleRotationAndFractions) {
    const Played run = playExample("rotation.cwb");
    // Rotation 1 reads buffer (1080 - b, l, 1080 - t, r); comments name the region read.
    run.expect("rgb", {{19, {0, {0, 255, 0}}},  // x 780..980, y 100..300
                       {21, {0, {0, 0, 255}}},  // x 80..280, y 2000..2200
                       {26, {0, {0, 255, 0}}},  // x 864..972, y 240..480
                       {28, {0, {0, 0, 255}}},  // x 109..216, y 1920..2159
                       {31, {2, {}}},
                       {32, {2, {}}}});
}

TEST_F(SimSession, ExampleDozeAndAlwaysOnDisplay) {
    const Played run = playExample("doze_aod.cwb");
    const V grey = {200, 200, 200}, black = {0, 0, 0};
    const Answers rgb = {{15, {0, grey}}, {17, {0, black}}, {19, {0, black}}, {22, {3, black}},
                         {23, {0, grey}}, {28, {0, grey}},  {39, {3, black}}, {41, {0, grey}}};
    run.expect("rgb", rgb);
    run.expect("lumas", {{31, {3, {0}}}, {34, {0, {200.0 / 255}}}, {43, {0, {0}}}, {47, {3, {0}}}});
}

TEST_F(SimSession, ExampleSharedMemoryCrops) {
    const Played run = playExample("shared_memory.cwb");
    EXPECT_EQ((V{0, 100, 100, 1080, 2400}), run.atLine(13).at("values").a);
    EXPECT_EQ((V{0, 2, 1, 1080, 2400}), run.atLine(20).at("values").a);
    // Gradient at (100, 200) and (101, 200): red 24, green 21, blue 128.
    EXPECT_EQ("181580181580efbeadde", run.atLine(21).at("bytes").s.substr(16));
    EXPECT_EQ(-1, run.atLine(23).at("status").n);
    EXPECT_EQ(0u, run.atLine(23).count("values"));
    EXPECT_EQ("efbeadde", run.atLine(26).at("bytes").s);
    // Crops 4 to 6 copy; the sixth attempt pauses the copies until a layer change.
    for (int line : {28, 29, 30, 34}) EXPECT_EQ(0, run.atLine(line).at("values").a[0]) << line;
    EXPECT_EQ(1, run.atLine(31).at("values").a[0]);
    EXPECT_EQ((V{2400, 1088}), run.atLine(36).at("values").a);
}

TEST_F(SimSession, ExampleSecondaryDisplay) {
    const Played run = playExample("secondary.cwb");
    // Line 23 reads the panel's own corner under rotation 2; line 28 is the luma of blue.
    const Answers values = {{20, {0, {0, 0, 255, 0}}},
                            {23, {0, {255, 255, 255, 0}}},
                            {25, {0, {255, 128, 0, 0}}},
                            {28, {0, {588}}},
                            {33, {0, {255, 128, 0, 0}}}};
    run.expect("values", values);
    const V v = run.atLine(33).at("values").a;
    EXPECT_GE(word64(v, 6) - word64(v, 4), 8333333);  // 120 Hz floor
}

TEST_F(SimSession, ExampleCallbacks) {
    Options options;
    options.logs = true;
    const Played run = playExample("callbacks.cwb", options);
    std::string events;
    for (const Object& o : run.objects) {
        if (o.count("event")) events += o.at("client").s + (o.at("status").b ? "+ " : "- ");
    }
    EXPECT_EQ(
            "launcher+ sensor+ launcher- sensor- launcher+ sensor+ launcher- sensor- "
            "launcher+ sensor+ launcher- late- launcher+ late+ ",
            events);
    EXPECT_EQ(1u, run.logs("W Stale client connection!"));
    EXPECT_EQ(1u, run.logs(". Stale client connection!"));
    EXPECT_EQ(1, run.calls("getRGBValue")[0].at("error").n);
}

TEST_F(SimSession, ExampleVendorFaults) {
    const Played run = playExample("faults.cwb");
    const auto calls = run.calls("getRGBValue");
    V errors;
    for (const Object& o : calls) errors.push_back(o.at("error").n);
    ASSERT_EQ((V{2, 0, 1, 1, 1, 0}), errors);
    EXPECT_EQ((V{10, 20, 30}), calls[5].at("rgb").a);
    EXPECT_GE(run.seconds, 1.0);  // the dropped completion is waited for one second
}

// ---- The binary ----

class SimBinary : public PngFileTest {
  protected:
    // Runs cwb-sim in the test's folder, through the emulator in a cross build; returns the exit
    // status.
    int sh(const std::string& args, const std::string& input = "") {
        std::ofstream(path("in.txt")) << input;
        const std::string command = "cd '" + dir.string() + "' && " + CWB_EMULATOR + " '" +
                                    CWB_SIM_PATH + "' " + args + " < in.txt > out.txt 2> err.txt";
        const int status = std::system(command.c_str());
        out = readFile(path("out.txt"));
        err = readFile(path("err.txt"));
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    std::string out, err;
};

// The exit status says what went wrong (0 played, 1 could not play, 2 malformed); a message
// never quotes a token whole or prints raw control bytes. out: a regex for the whole output.
TEST_F(SimBinary, ExitStatusAndMessages) {
    const std::string rect = "expected L,T,R,B, each decimal or 0x hexadecimal\n";
    const struct {
        std::string args, input;
        int code;
        std::string err;
        const char* out;
    } runs[] = {
            {"", "", 0, "", "cwb-sim built-in session.*rgb 255,255,255, pure colour.*"},
            {"--help", "", 0, "", ".*--frame PNG.*"},
            {"--json -", "boot\nenable\n", 0, "",
             "\\{\"call\":\"enable\",\"status\":0,\"result\":true,\"line\":2\\}\n"},
            {"--nope", "", 2,
             std::string("cwb-sim: unknown option '--nope'\n") + CommandLine::usage(), ""},
            {"-", "boot\n\ngetRGBValue 1,2\n", 2,
             "cwb-sim: <stdin> line 3: getRGBValue: bad rectangle '1,2': " + rect, ""},
            {"-", "boot\ngetRGBValue " + std::string(1 << 20, '7') + "\n", 2,
             "cwb-sim: <stdin> line 2: getRGBValue: bad rectangle '" + std::string(63, '7') +
                     "... " + rect,
             ""},
            {"-", "get\x01\x1b[2J\xff 1\n", 2,
             "cwb-sim: <stdin> line 1: unknown command 'get\\x01\\x1b[2J\\xff'\n", ""},
            {"/nonexistent/s.cwb", "", 1,
             "cwb-sim: cannot open /nonexistent/s.cwb: No such file or directory\n", ""},
            {".", "", 1, "cwb-sim: cannot read .: Is a directory\n", ""},
            {"-", "file weights main empty.json\n", 1,
             "cwb-sim: <stdin> line 1: file weights: empty.json is empty\n", ""},
            {"-", "file weights main .\n", 1,
             "cwb-sim: <stdin> line 1: file weights: cannot read .: Is a directory\n", ""},
            {"-", "boot\nsnapshot main x.png\n", 1,
             "cwb-sim: <stdin> line 2: snapshot: nothing has been captured on the main panel yet\n",
             ".*"},
    };
    std::ofstream(path("empty.json")).flush();
    for (const auto& r : runs) {
        EXPECT_EQ(r.code, sh(r.args, r.input)) << r.args << " < " << r.input.substr(0, 40);
        EXPECT_EQ(r.err, err);
        EXPECT_THAT(out, ::testing::MatchesRegex(r.out));
    }
}

TEST_F(SimBinary, PicturesExampleWritesBothImages) {
    if (!kHavePng) GTEST_SKIP() << kNoPng;
    ASSERT_EQ(0, sh(std::string(CWB_EXAMPLES_DIR) + "/pictures.cwb")) << err;
    Frame capture, plot;
    std::string error;
    ASSERT_TRUE(PngFile::read(path("capture.png"), &capture, &error)) << error;
    ASSERT_TRUE(PngFile::read(path("histogram.png"), &plot, &error)) << error;
    EXPECT_EQ(1080, capture.width);
    EXPECT_EQ(800, plot.width);
    // The two crops and the histogram's rectangle are outlined on the bars.
    for (auto [x, y] : {std::pair{99, 150}, {599, 950}, {500, 1599}}) {
        EXPECT_EQ((Pixel{0, 0, 0}), capture.pixel(x, y)) << x << "," << y;
    }
    EXPECT_EQ((Pixel{255, 0, 255}), capture.pixel(650, 950));
    // The histogram's rectangle runs along the frame's bottom edge: its band lies inside there.
    EXPECT_EQ((Pixel{0, 0, 0}), capture.pixel(800, 2399));
    EXPECT_EQ(RectMarks::colour(0), capture.pixel(800, 2397));
    EXPECT_TRUE(PngFile::read(path("answers.png"), &plot, &error)) << error;
}

}  // namespace
}  // namespace cwbsim
