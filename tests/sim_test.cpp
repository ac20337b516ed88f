// cwb-sim: the session parser, the command line, the printers and PNG files on their own, then
// whole sessions played in-process against the simulated phone (every example included), and a
// few runs of the built binary for its exit status.
#include <android/binder_manager.h>
#include <gtest/gtest.h>
#include <host/gralloc_control.h>
#include <host/sandbox.h>
#include <png.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <sstream>

#include "CommandLine.h"
#include "DefaultSession.h"
#include "HistogramPlot.h"
#include "JsonPrinter.h"
#include "PngFile.h"
#include "SessionParser.h"
#include "Simulator.h"
#include "TablePrinter.h"

namespace cwbsim {
namespace {

namespace fs = std::filesystem;
using host::device::Frame;
using host::device::Pixel;

// ---- A strict reader for the flat JSON objects the simulator prints ----

struct Value {
    enum Kind { Str, Num, Bool, Arr } kind = Num;
    std::string s;
    double n = 0;
    bool b = false;
    std::vector<double> a;
};
using Object = std::map<std::string, Value>;

class JsonReader {
  public:
    explicit JsonReader(const std::string& text) : t(text) {}
    bool object(Object* out) {
        if (!eat('{')) return false;
        while (true) {
            std::string key;
            Value v;
            if (!string(&key) || !eat(':') || !value(&v)) return false;
            (*out)[key] = v;
            if (eat('}')) return i == t.size();
            if (!eat(',')) return false;
        }
    }

  private:
    bool eat(char c) { return i < t.size() && t[i] == c && ++i; }
    bool string(std::string* out) {
        if (!eat('"')) return false;
        for (; i < t.size() && t[i] != '"'; ++i) {
            if (static_cast<unsigned char>(t[i]) < 0x20) return false;
            if (t[i] == '\\') ++i;
            *out += t[i];
        }
        return eat('"');
    }
    bool number(double* out) {
        const size_t start = i;
        while (i < t.size() && strchr("-+.eE0123456789", t[i]) != nullptr) ++i;
        if (i == start) return false;
        *out = std::stod(t.substr(start, i - start));
        return true;
    }
    bool value(Value* v) {
        if (t.compare(i, 4, "true") == 0 || t.compare(i, 5, "false") == 0) {
            v->kind = Value::Bool;
            v->b = t[i] == 't';
            i += v->b ? 4 : 5;
            return true;
        }
        if (i < t.size() && t[i] == '"') {
            v->kind = Value::Str;
            return string(&v->s);
        }
        if (eat('[')) {
            v->kind = Value::Arr;
            if (eat(']')) return true;
            do {
                double x = 0;
                if (!number(&x)) return false;
                v->a.push_back(x);
            } while (eat(','));
            return eat(']');
        }
        return number(&v->n);
    }
    const std::string& t;
    size_t i = 0;
};

struct Played {
    int code = -1;
    std::string out;
    std::string err;
    std::vector<Object> objects;
    double seconds = 0;

    std::vector<Object> calls(const std::string& name) const {
        std::vector<Object> found;
        for (const Object& o : objects) {
            auto it = o.find("call");
            if (it != o.end() && it->second.s == name) found.push_back(o);
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
};

std::vector<double> nums(std::initializer_list<double> v) {
    return v;
}

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
    if (json) {
        std::istringstream lines(run.out);
        for (std::string line; std::getline(lines, line);) {
            Object o;
            EXPECT_TRUE(JsonReader(line).object(&o)) << "not a JSON object: " << line;
            run.objects.push_back(o);
        }
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
    return play(readFile(dir + "/" + name), options, true, dir);
}

int64_t word64(const std::vector<double>& v, size_t at) {
    return static_cast<int64_t>(
            (static_cast<uint64_t>(static_cast<uint32_t>(static_cast<int64_t>(v[at]))) << 32) |
            static_cast<uint32_t>(static_cast<int64_t>(v[at + 1])));
}

bool writePng(const std::string& path, int w, int h, uint32_t format,
              const std::vector<uint8_t>& pixels) {
    png_image image;
    memset(&image, 0, sizeof(image));
    image.version = PNG_IMAGE_VERSION;
    image.width = w;
    image.height = h;
    image.format = format;
    return png_image_write_to_file(&image, path.c_str(), 0, pixels.data(), 0, nullptr) != 0;
}

// ---- Parser ----

struct Malformed {
    const char* text;
    int line;
    const char* message;
};

class SessionParserMalformed : public ::testing::TestWithParam<Malformed> {};

TEST_P(SessionParserMalformed, NamesTheLineAndTheProblem) {
    const Malformed& m = GetParam();
    std::vector<Command> commands;
    SessionError error;
    EXPECT_FALSE(SessionParser::parse(m.text, &commands, &error));
    EXPECT_EQ(m.line, error.line);
    EXPECT_NE(std::string::npos, error.message.find(m.message)) << error.message;
    // Played, the same text stops before anything runs.
    const Played run = play(m.text);
    EXPECT_EQ(Simulator::kMalformed, run.code);
    EXPECT_EQ("", run.out);
    EXPECT_NE(std::string::npos, run.err.find("test line " + std::to_string(m.line) + ": "))
            << run.err;
}

INSTANTIATE_TEST_SUITE_P(
        Lines, SessionParserMalformed,
        ::testing::Values(Malformed{"boot\ngetRGB 0,0,1,1", 2, "unknown command 'getRGB'"},
                          Malformed{"boot\ngetRGBValue 1,2,3", 2, "bad rectangle '1,2,3'"},
                          Malformed{"boot\ngetRGBValue 1,2,3,x", 2, "bad rectangle"},
                          Malformed{"boot\ngetRGBValue 0,0,2147483648,1", 2, "bad rectangle"},
                          Malformed{"boot\ngetRGBValue 0,0,0x100000000,1", 2, "bad rectangle"},
                          Malformed{"boot\ngetRGBValue", 2, "expected RECT, got 0 arguments"},
                          Malformed{"boot\ngetCwbValue 1 0,0,1,1 9", 2, "expected ID RECT, got 3"},
                          Malformed{"boot\nsetDebug 1,,0", 2, "setDebug: bad value ''"},
                          Malformed{"boot\nsetCwbPostProcessStatus 2", 2, "must be 0 or 1"},
                          Malformed{"boot\nregisterCallback a/b", 2, "bad client name 'a/b'"},
                          Malformed{"boot\nreadShared 0 0", 2,
                                    "length '0' is not an integer from 1"},
                          Malformed{"boot\ninitializeSharedMemory -4", 2, "size '-4'"},
                          Malformed{"getRGBValue 0,0,1,1", 1, "the service exists only after boot"},
                          Malformed{"boot\nprop a b", 2, "must come before boot (line 1)"},
                          Malformed{"boot\n\nboot", 3, "boot given twice (first at line 1)"},
                          Malformed{"boot extra", 1, "expected no argument, got 1"},
                          Malformed{"panel tv 10x10@60", 1, "unknown display 'tv'"},
                          Malformed{"panel main 0x10@60", 1, "bad panel mode '0x10@60'"},
                          Malformed{"panel main 10x10@0", 1, "bad panel mode"},
                          Malformed{"panel main 10x10", 1, "bad panel mode"},
                          Malformed{"file weights main", 1, "expected main|sec PATH"},
                          Malformed{"file gamma x", 1, "unknown file 'gamma'"},
                          Malformed{"frame main fill 256,0,0", 1, "bad colour '256,0,0'"},
                          Malformed{"frame main post", 1, "expected fill, png, pattern or paint"},
                          Malformed{"frame main pattern zebra", 1, "unknown pattern 'zebra'"},
                          Malformed{"frame sec paint 0,0,1,1", 1, "expected L,T,R,B R,G,B"},
                          Malformed{"vendor next explode", 1, "unknown outcome 'explode'"},
                          Malformed{"vendor next error", 1, "expected an error code"},
                          Malformed{"vendor latency -1", 1, "latency '-1'"},
                          Malformed{"qservice 305 1", 1, "unknown command '305'"},
                          Malformed{"sleep 600001", 1, "sleep '600001'"},
                          Malformed{"host setPowerMode 0", 1, "expected DISPLAY MODE, got 1"},
                          Malformed{"host rotate 1", 1, "unknown operation 'rotate'"},
                          Malformed{"host aodLayerExist yes", 1, "aodLayerExist must be 0 or 1"},
                          Malformed{"host notifyConfigChange 0 -1", 1, "config '-1'"},
                          Malformed{"client x asleep", 1, "expected dead or alive"},
                          Malformed{"snapshot main out.jpg", 1, "must end in .png"},
                          Malformed{"plot luma x.png", 1, "only 'plot histogram PATH.png'"}));

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
    EXPECT_EQ(INT32_MIN, c[4].rect.left);
    EXPECT_EQ(-5, c[4].rect.top);
    EXPECT_EQ(-1, c[4].rect.right);
    EXPECT_EQ(INT32_MAX, c[4].rect.bottom);
    EXPECT_TRUE(c[5].list.empty());
    EXPECT_EQ((std::vector<int32_t>{1, -1, 0}), c[6].list);
    EXPECT_EQ((std::vector<int64_t>{-1, 2}), c[7].nums);
    EXPECT_EQ(host::device::SimulatedDisplayConfig::Outcome::Error, c[8].outcome);
    EXPECT_EQ(std::vector<int64_t>{-5}, c[8].nums);
}

TEST(SessionParser, SurvivesArbitraryText) {
    static constexpr const char* kWords[] = {"boot",
                                             "getRGBValue",
                                             "frame",
                                             "main",
                                             "png",
                                             "0,0,1,1",
                                             "0x",
                                             "-",
                                             ",,,",
                                             "#",
                                             "host",
                                             "setPowerMode",
                                             "9999999999999999999",
                                             "@",
                                             "1x1@",
                                             "vendor",
                                             "next",
                                             ""};
    std::mt19937 random(7);
    for (int round = 0; round < 2000; ++round) {
        std::string text;
        for (int w = random() % 6; w >= 0; --w) {
            text += std::string(kWords[random() % std::size(kWords)]) + (random() % 3 ? " " : "\n");
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

struct Args {
    std::vector<std::string> args;
    bool ok;
    const char* error;
};

class CommandLineArgs : public ::testing::TestWithParam<Args> {};

TEST_P(CommandLineArgs, AcceptsOrExplains) {
    CommandLine line;
    std::string error;
    EXPECT_EQ(GetParam().ok, line.parse(GetParam().args, &error));
    EXPECT_NE(std::string::npos, error.find(GetParam().error)) << error;
}

INSTANTIATE_TEST_SUITE_P(
        Options, CommandLineArgs,
        ::testing::Values(Args{{"--json", "--logs", "s.cwb"}, true, ""},
                          Args{{"--prop", "a=b", "--prop=c=", "--frame=f.png", "-"}, true, ""},
                          Args{{"--colour"}, false, "unknown option '--colour'"},
                          Args{{"--prop", "novalue"}, false, "--prop needs NAME=VALUE"},
                          Args{{"--prop", "=v"}, false, "--prop needs NAME=VALUE"},
                          Args{{"--prop"}, false, "--prop needs a value"},
                          Args{{"--frame="}, false, "--frame needs a PNG file"},
                          Args{{"a.cwb", "b.cwb"}, false, "only one session file"}));

TEST(CommandLine, KeepsEverythingAfterTheFirstEquals) {
    CommandLine line;
    std::string error;
    ASSERT_TRUE(line.parse({"--prop=x.y=1=2", "--prop", "z=", "--json"}, &error));
    ASSERT_EQ(2u, line.options().props.size());
    EXPECT_EQ("x.y", line.options().props[0].first);
    EXPECT_EQ("1=2", line.options().props[0].second);
    EXPECT_EQ("", line.options().props[1].second);
    EXPECT_TRUE(line.options().json);
    EXPECT_EQ("", line.script());
}

TEST(CommandLine, MainReportsArgumentsAndMissingFiles) {
    std::istringstream in;
    std::ostringstream out, err;
    EXPECT_EQ(Simulator::kMalformed, Simulator::main({"--nope"}, in, out, err));
    EXPECT_NE(std::string::npos, err.str().find("usage: cwb-sim"));
    EXPECT_EQ(Simulator::kPlayed, Simulator::main({"--help"}, in, out, err));
    EXPECT_NE(std::string::npos, out.str().find("--frame PNG"));
    std::ostringstream err2;
    EXPECT_EQ(Simulator::kFailed, Simulator::main({"/nonexistent/s.cwb"}, in, out, err2));
    EXPECT_EQ("cwb-sim: cannot open /nonexistent/s.cwb: No such file or directory\n", err2.str());
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

TEST(TablePrinter, DecodesAnswers) {
    CallRecord r;
    r.name = "getCwbValue";
    // rgb, state 3, start 1 s, end 1.016666666 s, loading 1.5
    r.values = {1, 2, 3, 3, 0, 1000000000, 0, 1016666666, 150000000};
    const std::vector<std::string> rgb = TablePrinter::answer(r);
    ASSERT_EQ(2u, rgb.size());
    EXPECT_EQ("rgb 1,2,3, pure colour, black/white", rgb[0]);
    EXPECT_EQ("shown 16.667 ms (1.000000 s to 1.016667 s), loading 1.500000", rgb[1]);
    r.values = {4990, 0, 0, 0, 0, 100000000};
    EXPECT_EQ("luma 0.4990 (4990)", TablePrinter::answer(r)[0]);

    CallRecord h;
    h.histogram.emplace();
    (*h.histogram)[10 * 3] = 3;  // R: three pixels at 10, one at 20
    (*h.histogram)[20 * 3] = 1;
    const std::vector<std::string> lines = TablePrinter::answer(h);
    ASSERT_EQ(3u, lines.size());
    EXPECT_EQ("R: mean 12.50, levels 10..20, peak at 10 (3 of 4 px)", lines[0]);
    EXPECT_EQ("G: no pixels counted", lines[1]);
    EXPECT_EQ("SCREEN_OFF", TablePrinter::errorName(3));
    EXPECT_EQ("7", TablePrinter::errorName(7));
}

// ---- PNG ----

class PngFileTest : public ::testing::Test {
  protected:
    void SetUp() override {
        dir = fs::temp_directory_path() / ("cwb-sim-png-" + std::to_string(getpid()));
        fs::create_directories(dir);
    }
    void TearDown() override { fs::remove_all(dir); }
    std::string path(const std::string& name) { return (dir / name).string(); }
    fs::path dir;
};

TEST_F(PngFileTest, RoundTripsRgbAndDropsAlpha) {
    Frame frame = Frame::filled(3, 2, 1, 2, 3);
    frame.setPixel(2, 1, {250, 128, 0});
    std::string error;
    ASSERT_TRUE(PngFile::write(path("rgb.png"), frame, &error)) << error;
    Frame back;
    ASSERT_TRUE(PngFile::read(path("rgb.png"), &back, &error)) << error;
    EXPECT_EQ(frame.rgb, back.rgb);
    EXPECT_EQ(3, back.width);

    // Fully and half transparent pixels keep their colour: alpha is dropped, not composited.
    ASSERT_TRUE(
            writePng(path("rgba.png"), 2, 1, PNG_FORMAT_RGBA, {10, 20, 30, 0, 200, 100, 50, 128}));
    ASSERT_TRUE(PngFile::read(path("rgba.png"), &back, &error)) << error;
    EXPECT_EQ((std::vector<uint8_t>{10, 20, 30, 200, 100, 50}), back.rgb);

    ASSERT_TRUE(writePng(path("grey.png"), 2, 1, PNG_FORMAT_GRAY, {7, 99}));
    ASSERT_TRUE(PngFile::read(path("grey.png"), &back, &error)) << error;
    EXPECT_EQ((std::vector<uint8_t>{7, 7, 7, 99, 99, 99}), back.rgb);
    int w = 0, h = 0;
    ASSERT_TRUE(PngFile::size(path("grey.png"), &w, &h, &error));
    EXPECT_EQ(2, w);
    EXPECT_EQ(1, h);
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

// ---- Sessions ----

// Every session must leave the process as it found it: no capture buffer, no registered
// service, the sandbox root restored.
class SimSession : public PngFileTest {
  protected:
    void SetUp() override {
        PngFileTest::SetUp();
        liveBuffers = host::gralloc::liveBuffers();
        sandboxRoot = host::sandbox::root();
    }
    void TearDown() override {
        EXPECT_EQ(liveBuffers, host::gralloc::liveBuffers());
        EXPECT_EQ(sandboxRoot, host::sandbox::root());
        EXPECT_EQ(nullptr,
                  AServiceManager_checkService("vendor.zarel.hardware.cwb.ICwbService/default"));
        PngFileTest::TearDown();
    }
    size_t liveBuffers = 0;
    std::string sandboxRoot;
};

constexpr const char* kPhone =
        "prop ro.vendor.zarel.display.cwb.display_id 0\n"
        "panel main 1080x2400@60\n";

TEST_F(SimSession, DefaultSessionIsTheDemoExample) {
    EXPECT_EQ(readFile(std::string(CWB_EXAMPLES_DIR) + "/demo.cwb"), DefaultSession::text());
}

TEST_F(SimSession, DefaultSessionAnswers) {
    timespec now{};
    const Played run = play(DefaultSession::text());
    clock_gettime(CLOCK_BOOTTIME, &now);
    ASSERT_EQ(0, run.code) << run.err;
    const auto rgb = run.calls("getRGBValue");
    ASSERT_EQ(4u, rgb.size());
    // White and yellow bars: pure (state 1 in the high half of the Error word).
    EXPECT_EQ(nums({255, 255, 255}), rgb[0].at("rgb").a);
    EXPECT_EQ(1 << 16, rgb[0].at("error").n);
    EXPECT_EQ(nums({255, 255, 0}), rgb[1].at("rgb").a);
    // Half white, half yellow: blue averages 0 and 255 in linear light, 187.
    EXPECT_EQ(nums({255, 255, 187}), rgb[2].at("rgb").a);
    EXPECT_EQ(0, rgb[2].at("error").n);
    // The white label on the black bar: black and white (state 2), not pure.
    EXPECT_EQ(2 << 16, rgb[3].at("error").n);
    // The ramp is symmetric around 127.5.
    EXPECT_EQ(nums({0.5}), run.calls("getLumasValue")[0].at("lumas").a);
    const auto hist = run.calls("getHistogramValue")[0].at("histogram").a;
    ASSERT_EQ(768u, hist.size());
    for (int ch = 0; ch < 3; ++ch) {
        double total = 0;
        for (int level = 0; level < 256; ++level) total += hist[level * 3 + ch];
        EXPECT_EQ(1080.0 * 800, total);
    }
    // Magenta bar, then the interval and the loading for APL 0x0fa0 = 4000 at UirState 1 and
    // 2000 nits: t = 250000 / 2000 * 1e6, slope (1e8 - t) / 4095 = -6105.
    const auto values = run.calls("getCwbValue")[0].at("values").a;
    ASSERT_EQ(9u, values.size());
    EXPECT_EQ(nums({255, 0, 255, 1}), std::vector<double>(values.begin(), values.begin() + 4));
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
    EXPECT_EQ(nums({2400, 1088}), run.calls("getScreenResolution")[0].at("values").a);
}

TEST_F(SimSession, TableShowsTheSameAnswers) {
    const Played run = play(DefaultSession::text(), {}, false);
    ASSERT_EQ(0, run.code) << run.err;
    for (const char* text :
         {"line  request", "rgb 255,255,255, pure colour", "rgb 183,183,183, black/white",
          "luma 0.5000", "event notifyCwbStatus(true) to demo", "loading 1.005800",
          "@32: ef be ad de", "height 2400, row pitch 1088"}) {
        EXPECT_NE(std::string::npos, run.out.find(text)) << text << "\n" << run.out;
    }
    EXPECT_EQ(std::string::npos, run.out.find("sleep"));
}

TEST_F(SimSession, LogsComeInOrderAndOnlyWhenAsked) {
    Options options;
    options.logs = true;
    const Played run = play(std::string(kPhone) + "boot\nenable\n", options);
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
    EXPECT_EQ(1u, play(std::string(kPhone) + "boot\nenable\n").objects.size());
}

TEST_F(SimSession, PropsFromTheCommandLineWinOverTheSession) {
    Options options;
    options.props = {{"ro.vendor.zarel.display.cwb.postprocess", "1"}};
    const Played run = play(std::string(kPhone) +
                                    "prop ro.vendor.zarel.display.cwb.postprocess 0\n"
                                    "boot\ngetCwbPostProcessStatus\n",
                            options);
    ASSERT_EQ(0, run.code) << run.err;
    EXPECT_TRUE(run.calls("getCwbPostProcessStatus")[0].at("result").b);
}

TEST_F(SimSession, FailedBinderStatusCarriesNoResult) {
    const Played run = play(std::string(kPhone) +
                            "boot\ngetSharedData 5 0,0,2,2 100\ninitializeSharedMemory none\n"
                            "initializeSharedMemory 0\n");
    ASSERT_EQ(0, run.code) << run.err;
    for (const Object& o : run.objects) {
        EXPECT_EQ(-1, o.at("status").n);
        EXPECT_EQ(0u, o.count("error") + o.count("values"));
    }
    EXPECT_EQ(3u, run.objects.size());
}

struct Failure {
    const char* session;
    int line;
    const char* message;
};

class SimFailure : public SimSession, public ::testing::WithParamInterface<Failure> {};

TEST_P(SimFailure, StopsWithExitOneAndAReason) {
    const Failure& f = GetParam();
    std::string session = f.session;
    for (size_t at; (at = session.find("$DIR")) != std::string::npos;) {
        session.replace(at, 4, dir.string());
    }
    Frame small = Frame::filled(100, 100, 0, 0, 0);
    std::string error;
    ASSERT_TRUE(PngFile::write(path("small.png"), small, &error));
    const Played run = play(std::string(kPhone) + session);
    EXPECT_EQ(Simulator::kFailed, run.code);
    EXPECT_EQ(0u, run.err.find("cwb-sim: test line " + std::to_string(f.line + 2) + ": "))
            << run.err;
    EXPECT_NE(std::string::npos, run.err.find(f.message)) << run.err;
}

INSTANTIATE_TEST_SUITE_P(
        Sessions, SimFailure,
        ::testing::Values(
                Failure{"frame main png $DIR/small.png", 1,
                        "is 100x100, the main panel is 1080x2400"},
                Failure{"frame main png $DIR/none.png", 1, "frame: cannot read PNG"},
                Failure{"file weights sec $DIR/none.json", 1, "file weights: cannot read"},
                Failure{"boot\nreadShared 0 4", 2, "readShared: no shared memory region"},
                Failure{"boot\ninitializeSharedMemory 8\nreadShared 4 5", 3,
                        "readShared: bytes 4 to 9 are outside the 8-byte region"},
                Failure{"boot\nsnapshot sec x.png", 2, "nothing has been captured on the sec"},
                Failure{"plot histogram x.png", 1, "no getHistogramValue answer yet"}));

TEST_F(SimSession, ShowsAPngOnTheMainPanel) {
    Frame frame = Frame::filled(1080, 2400, 0, 0, 0);
    frame.fillRect(10, 20, 30, 40, {12, 34, 56});
    std::string error;
    ASSERT_TRUE(PngFile::write(path("frame.png"), frame, &error));
    Options options;
    options.frame = path("frame.png");
    const std::string session =
            std::string(kPhone) + "boot\nhost setPowerMode 0 2\ngetRGBValue 10,20,30,40\n";
    Played run = play(session, options);
    ASSERT_EQ(0, run.code) << run.err;
    EXPECT_EQ(nums({12, 34, 56}), run.calls("getRGBValue")[0].at("rgb").a);

    // The same picture with an alpha channel of 0: still the same colours.
    std::vector<uint8_t> rgba;
    for (size_t i = 0; i < frame.rgb.size(); i += 3) {
        rgba.insert(rgba.end(), {frame.rgb[i], frame.rgb[i + 1], frame.rgb[i + 2], 0});
    }
    ASSERT_TRUE(writePng(path("alpha.png"), 1080, 2400, PNG_FORMAT_RGBA, rgba));
    run = play("frame main png alpha.png\n" + session, {}, true, dir.string());
    ASSERT_EQ(0, run.code) << run.err;
    EXPECT_EQ(nums({12, 34, 56}), run.calls("getRGBValue")[0].at("rgb").a);

    options.frame = path("missing.png");
    run = play(session, options);
    EXPECT_EQ(Simulator::kFailed, run.code);
    EXPECT_EQ(0u, run.err.find("cwb-sim: test: --frame " + path("missing.png") + ": ")) << run.err;
}

TEST_F(SimSession, SnapshotOutlinesTheRectanglesOfTheLastGoodCapture) {
    const std::string out = path("snap.png");
    const Played run = play(std::string(kPhone) +
                            "frame main fill 0,0,255\n"
                            "boot\nhost setPowerMode 0 2\ninitializeSharedMemory 30020\n"
                            "sleep 60\ngetRGBValue 100,100,200,200\n"
                            "getSharedData 5 400,400,410,410 30020\n"
                            // A failed writeback of a changed picture does not replace it.
                            "frame main fill 255,0,0\nvendor next error -1\nhost invalidCache\n"
                            "sleep 60\ngetRGBValue 500,500,600,600\n"
                            "snapshot main " +
                            out + "\n");
    ASSERT_EQ(0, run.code) << run.err;
    EXPECT_EQ(1, run.calls("getRGBValue")[1].at("error").n);
    Frame snap;
    std::string error;
    ASSERT_TRUE(PngFile::read(out, &snap, &error)) << error;
    ASSERT_EQ(1080, snap.width);
    ASSERT_EQ(2400, snap.height);
    EXPECT_EQ((Pixel{0, 0, 255}), snap.pixel(150, 150));
    for (int left : {100, 400, 500}) {
        EXPECT_EQ((Pixel{0, 0, 0}), snap.pixel(left - 1, left + 5)) << left;
        EXPECT_EQ((Pixel{255, 255, 255}), snap.pixel(left - 2, left + 5)) << left;
        EXPECT_EQ((Pixel{0, 0, 255}), snap.pixel(left - 3, left + 5)) << left;
    }
}

TEST_F(SimSession, PlotDrawsEachChannelAtItsLevel) {
    const std::string out = path("plot.png");
    const Played run = play(std::string(kPhone) +
                            "frame main fill 10,20,30\nboot\nhost setPowerMode 0 2\nsleep 60\n"
                            "getHistogramValue 0,0,50,40\nplot histogram " +
                            out + "\n");
    ASSERT_EQ(0, run.code) << run.err;
    Frame plot;
    std::string error;
    ASSERT_TRUE(PngFile::read(out, &plot, &error)) << error;
    ASSERT_EQ(HistogramPlot::kWidth, plot.width);
    const int top = HistogramPlot::y(2000, 2000);
    EXPECT_EQ(HistogramPlot::kTop, top);
    EXPECT_EQ((Pixel{220, 0, 0}), plot.pixel(HistogramPlot::x(10), top));
    EXPECT_EQ((Pixel{0, 160, 0}), plot.pixel(HistogramPlot::x(20), top));
    EXPECT_EQ((Pixel{0, 0, 230}), plot.pixel(HistogramPlot::x(30), top));
    EXPECT_EQ((Pixel{0, 0, 0}), plot.pixel(HistogramPlot::kLeft, HistogramPlot::kTop + 50));
}

// ---- The examples, each played and its answers checked ----

TEST_F(SimSession, ExampleLightSensorWeights) {
    const Played run = playExample("light_sensor.cwb");
    ASSERT_EQ(0, run.code) << run.err;
    // Weighted: (255 x 36 + 0 x 12) / 48 = 191.25 in linear light; the gamma table reaches it
    // first at code 224 (223 is 189.863, 224 is 191.741).
    EXPECT_EQ(nums({224, 224, 224}), run.atLine(22).at("rgb").a);
    // Unweighted, every third pixel: two white and two black samples, 127.5, code 187.
    EXPECT_EQ(nums({187, 187, 187}), run.atLine(25).at("rgb").a);
    const auto v = run.atLine(30).at("values").a;
    ASSERT_EQ(9u, v.size());
    EXPECT_EQ(nums({224, 224, 224, 0}), std::vector<double>(v.begin(), v.begin() + 4));
    EXPECT_EQ(200000000 - 24420 * 4000, v[8]);  // UirState 1, 900 nits, APL 0x0fa0
    EXPECT_GE(word64(v, 6) - word64(v, 4), 16666666);
}

TEST_F(SimSession, ExampleRotationAndFractions) {
    const Played run = playExample("rotation.cwb");
    ASSERT_EQ(0, run.code) << run.err;
    // Rotation 1: user (l, t, r, b) reads buffer (1080 - b, l, 1080 - t, r).
    EXPECT_EQ(nums({0, 255, 0}), run.atLine(19).at("rgb").a);  // x 780..980, y 100..300
    EXPECT_EQ(nums({0, 0, 255}), run.atLine(21).at("rgb").a);  // x 80..280, y 2000..2200
    EXPECT_EQ(nums({0, 255, 0}), run.atLine(26).at("rgb").a);  // x 864..972, y 240..480
    EXPECT_EQ(nums({0, 0, 255}), run.atLine(28).at("rgb").a);  // x 109..216, y 1920..2159
    EXPECT_EQ(2, run.atLine(31).at("error").n);
    EXPECT_EQ(2, run.atLine(32).at("error").n);
}

TEST_F(SimSession, ExampleDozeAndAlwaysOnDisplay) {
    const Played run = playExample("doze_aod.cwb");
    ASSERT_EQ(0, run.code) << run.err;
    const std::map<int, std::pair<int, double>> rgb = {
            // line: error, grey level
            {15, {0, 200}}, {17, {0, 0}},   {19, {0, 0}}, {22, {3, 0}},
            {23, {0, 200}}, {28, {0, 200}}, {39, {3, 0}}, {41, {0, 200}}};
    for (const auto& [line, expected] : rgb) {
        const Object o = run.atLine(line);
        EXPECT_EQ(expected.first, o.at("error").n) << line;
        EXPECT_EQ(nums({expected.second, expected.second, expected.second}), o.at("rgb").a) << line;
    }
    const std::map<int, std::pair<int, float>> luma = {
            {31, {3, 0.0f}}, {34, {0, 200.0f / 255.0f}}, {43, {0, 0.0f}}, {47, {3, 0.0f}}};
    for (const auto& [line, expected] : luma) {
        const Object o = run.atLine(line);
        EXPECT_EQ(expected.first, o.at("error").n) << line;
        EXPECT_FLOAT_EQ(expected.second, static_cast<float>(o.at("lumas").a.at(0))) << line;
    }
}

TEST_F(SimSession, ExampleSharedMemoryCrops) {
    const Played run = playExample("shared_memory.cwb");
    ASSERT_EQ(0, run.code) << run.err;
    EXPECT_EQ(nums({0, 100, 100, 1080, 2400}), run.atLine(13).at("values").a);
    EXPECT_EQ(nums({0, 2, 1, 1080, 2400}), run.atLine(20).at("values").a);
    // Gradient at (100, 200) and (101, 200): red 24, green 21, blue 128.
    EXPECT_EQ("181580181580efbeadde", run.atLine(21).at("bytes").s.substr(16));
    EXPECT_EQ(-1, run.atLine(23).at("status").n);
    EXPECT_EQ(0u, run.atLine(23).count("values"));
    EXPECT_EQ("efbeadde", run.atLine(26).at("bytes").s);
    for (int line : {28, 29, 30}) EXPECT_EQ(0, run.atLine(line).at("values").a[0]) << line;
    EXPECT_EQ(1, run.atLine(31).at("values").a[0]);  // the sixth attempt paused the copies
    EXPECT_EQ(0, run.atLine(34).at("values").a[0]);
    EXPECT_EQ(nums({2400, 1088}), run.atLine(36).at("values").a);
}

TEST_F(SimSession, ExampleSecondaryDisplay) {
    const Played run = playExample("secondary.cwb");
    ASSERT_EQ(0, run.code) << run.err;
    auto head = [&](int line) {
        const auto v = run.atLine(line).at("values").a;
        EXPECT_EQ(0, run.atLine(line).at("error").n) << line;
        return std::vector<double>(v.begin(), v.begin() + std::min<size_t>(4, v.size()));
    };
    EXPECT_EQ(nums({0, 0, 255, 0}), head(20));
    EXPECT_EQ(nums({255, 255, 255, 0}), head(23));  // rotation 2: the panel's own corner
    EXPECT_EQ(nums({255, 128, 0, 0}), head(25));
    EXPECT_EQ(588, head(28)[0]);  // blue: Y = (2 x 255) >> 5 = 15; 15 / 255 x 10000
    EXPECT_EQ(nums({255, 128, 0, 0}), head(33));
    const auto v = run.atLine(33).at("values").a;
    EXPECT_GE(word64(v, 6) - word64(v, 4), 8333333);  // 120 Hz floor
}

TEST_F(SimSession, ExampleCallbacks) {
    Options options;
    options.logs = true;
    const Played run = playExample("callbacks.cwb", options);
    ASSERT_EQ(0, run.code) << run.err;
    std::string events;
    size_t stale = 0;
    for (const Object& o : run.objects) {
        if (o.count("event")) events += o.at("client").s + (o.at("status").b ? "+ " : "- ");
        if (o.count("log") && o.at("text").s == "Stale client connection!") {
            EXPECT_EQ("W", o.at("log").s);
            ++stale;
        }
    }
    EXPECT_EQ(
            "launcher+ sensor+ launcher- sensor- launcher+ sensor+ launcher- sensor- "
            "launcher+ sensor+ launcher- late- launcher+ late+ ",
            events);
    EXPECT_EQ(1u, stale);
    EXPECT_EQ(1, run.calls("getRGBValue")[0].at("error").n);
}

TEST_F(SimSession, ExampleVendorFaults) {
    const Played run = playExample("faults.cwb");
    ASSERT_EQ(0, run.code) << run.err;
    const auto calls = run.calls("getRGBValue");
    ASSERT_EQ(6u, calls.size());
    std::vector<double> errors;
    for (const Object& o : calls) errors.push_back(o.at("error").n);
    EXPECT_EQ(nums({2, 0, 1, 1, 1, 0}), errors);
    EXPECT_EQ(nums({10, 20, 30}), calls[5].at("rgb").a);
    EXPECT_GE(run.seconds, 1.0);  // the dropped completion is waited for one second
}

TEST(SimExamples, EveryExampleParses) {
    size_t count = 0;
    for (const auto& entry : fs::directory_iterator(CWB_EXAMPLES_DIR)) {
        if (entry.path().extension() != ".cwb") continue;
        std::vector<Command> commands;
        SessionError error;
        EXPECT_TRUE(SessionParser::parse(readFile(entry.path().string()), &commands, &error))
                << entry.path() << " line " << error.line << ": " << error.message;
        ++count;
    }
    EXPECT_GE(count, 9u);
}

// ---- The binary ----

class SimBinary : public PngFileTest {
  protected:
    // Runs cwb-sim in the test's folder; returns the exit status.
    int sh(const std::string& args, const std::string& input = "") {
        std::ofstream(path("in.txt")) << input;
        const std::string command = "cd '" + dir.string() + "' && '" + CWB_SIM_PATH + "' " + args +
                                    " < in.txt > out.txt 2> err.txt";
        const int status = std::system(command.c_str());
        out = readFile(path("out.txt"));
        err = readFile(path("err.txt"));
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    std::string out, err;
};

TEST_F(SimBinary, DefaultRunPrintsTheTable) {
    EXPECT_EQ(0, sh(""));
    EXPECT_EQ(0u, out.find("cwb-sim built-in session"));
    EXPECT_NE(std::string::npos, out.find("rgb 255,255,255, pure colour")) << out;
    EXPECT_EQ("", err);
}

TEST_F(SimBinary, ExitStatusFollowsWhatWentWrong) {
    EXPECT_EQ(2, sh("-", "boot\n\ngetRGBValue 1,2\n"));
    EXPECT_EQ(
            "cwb-sim: <stdin> line 3: getRGBValue: bad rectangle '1,2': expected L,T,R,B, each "
            "decimal or 0x hexadecimal\n",
            err);
    EXPECT_EQ(2, sh("--prop"));
    EXPECT_EQ(1, sh("missing.cwb"));
    EXPECT_EQ(1, sh("-", "boot\nsnapshot main x.png\n"));
    EXPECT_EQ(0, sh("--json -", "boot\nenable\n"));
    EXPECT_EQ("{\"call\":\"enable\",\"status\":0,\"result\":true,\"line\":2}\n", out);
}

TEST_F(SimBinary, PicturesExampleWritesBothImages) {
    ASSERT_EQ(0, sh(std::string(CWB_EXAMPLES_DIR) + "/pictures.cwb")) << err;
    Frame capture, plot;
    std::string error;
    ASSERT_TRUE(PngFile::read(path("capture.png"), &capture, &error)) << error;
    ASSERT_TRUE(PngFile::read(path("histogram.png"), &plot, &error)) << error;
    EXPECT_EQ(1080, capture.width);
    EXPECT_EQ(800, plot.width);
    // The two crops and the histogram's rectangle are outlined on the bars.
    EXPECT_EQ((Pixel{0, 0, 0}), capture.pixel(99, 150));
    EXPECT_EQ((Pixel{0, 0, 0}), capture.pixel(599, 950));
    EXPECT_EQ((Pixel{0, 0, 0}), capture.pixel(500, 1599));
    EXPECT_EQ((Pixel{255, 0, 255}), capture.pixel(650, 950));
}

}  // namespace
}  // namespace cwbsim
