// Field to desk: a scripted session on the simulated phone, its dump taken as `cwb dump
// --session` takes it, and that dump played again by cwb-sim against the picture of the moment.
#include <CwbMain.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>

#include "JsonPrinter.h"
#include "SessionParser.h"
#include "SessionRunner.h"
#include "Simulator.h"

namespace cwbsim {
namespace {

constexpr const char* kScripted =
        "prop ro.vendor.zarel.display.cwb.display_id 0\n"
        "prop ro.vendor.zarel.display.cwb.ct_range 0,10,245,255\n"
        "panel main 1080x2400@60 1080x2400@90\n"
        "file weights main json {\"count\":24,\"Weights\":[3,3,3,1,1,1,3,3,3,1,1,1,3,3,3,1,1,1,"
        "3,3,3,1,1,1]}\n"
        "frame main pattern bars\n"
        "boot\n"
        "host setPowerMode 0 2\n"
        "host notifyColorModeChange 0 7 258\n"
        "sleep 60\n"
        "getRGBValue 0,0,135,1600\n"
        "sleep 60\n"
        "getRGBValue 520,40,526,44\n"
        "sleep 60\n"
        "getLumasValue 0,1600,1080,2400\n"
        "sleep 60\n"
        "getHistogramValue 0,1600,1080,2400\n"
        "host invalidCache\n"
        "host invalidCache\n"
        "sleep 80\n"
        "getCwbValue 1 560,20,640,100\n"
        "initializeSharedMemory 30020\n"
        "getSharedData 5 133,0,137,2 30020\n"
        "setDebug 0,0\n"
        "getScreenResolution\n"
        "host setPowerMode 0 0\n"
        "getRGBValue 0,0,135,1600\n";

// The session the service prints after kScripted, read through the cwb tool.
std::string dumpedSession() {
    std::ostringstream out;
    JsonPrinter printer(out);
    SessionRunner runner({}, "", printer);
    std::vector<Command> commands;
    SessionError error;
    EXPECT_TRUE(SessionParser::parse(kScripted, &commands, &error)) << error.message;
    EXPECT_TRUE(runner.run(commands)) << runner.error();
    FILE* f = tmpfile();
    const char* argv[] = {"cwb", "dump", "--session"};
    EXPECT_EQ(0, cwbtool::cwbMain(3, const_cast<char**>(argv), f, stderr));
    std::string text;
    rewind(f);
    for (int c; (c = fgetc(f)) != EOF;) text.push_back(static_cast<char>(c));
    fclose(f);
    return text;
}

size_t count(const std::string& text, const std::string& what) {
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

TEST(SimReplay, ADumpedSessionPlaysBackToTheAnswersTheDeviceGave) {
    const std::string session = dumpedSession();
    // What the phone was and what it was asked, in order; one layer change for the run of two.
    size_t at = 0;
    for (const char* line :
         {"prop ro.vendor.zarel.display.cwb.display_id 0\n",
          "prop ro.vendor.zarel.display.cwb.ct_range 0,10,245,255\n",
          "panel main 1080x2400@60 1080x2400@90\n",
          "file weights main json {\"count\":24,\"Weights\":[3,3,3,1,1,1,3,3,3,1,1,1,3,3,3,1,1,1,"
          "3,3,3,1,1,1]}\n",
          "boot\n", "host setPowerMode 0 2\n", "host notifyColorModeChange 0 7 258\nsleep ",
          "getRGBValue 0,0,135,1600\nexpect error=NONE state=1 rgb=255,255,255\n",
          "getRGBValue 520,40,526,44\nexpect error=NONE state=",
          "getLumasValue 0,1600,1080,2400\nexpect error=NONE luma=",
          "getHistogramValue 0,1600,1080,2400\nexpect error=NONE means=",
          "host invalidCache\nsleep ",
          "getCwbValue 1 560,20,640,100\nexpect values=255,0,255,1 count=",
          "getSharedData 5 133,0,137,2 30020\nexpect error=NONE values=",
          "setDebug 0,0\nexpect error=NONE\n",
          "getScreenResolution\nexpect error=NONE values=2400,", "host setPowerMode 0 0\n",
          "getRGBValue 0,0,135,1600\nexpect error=SCREEN_OFF"}) {
        const size_t found = session.find(line, at);
        ASSERT_NE(std::string::npos, found) << "after " << at << ": " << line << "\n" << session;
        at = found;
    }
    EXPECT_EQ(1u, count(session, "host invalidCache")) << session;
    const size_t expects = count(session, "\nexpect ");
    EXPECT_EQ(9u, expects) << session;

    // The same picture answers as the device did; another one does not, and says where.
    const struct {
        const char* frame;
        bool same;
    } cases[] = {{"frame main pattern bars\n", true}, {"frame main fill 40,40,40\n", false}};
    for (const auto& c : cases) {
        std::ostringstream out, err;
        Options options;
        options.json = true;
        ASSERT_EQ(0, Simulator::play(c.frame + session, "dump", "", options, out, err))
                << err.str();
        const size_t same = count(out.str(), "{\"expect\":true");
        EXPECT_EQ(expects, same + count(out.str(), "{\"expect\":false")) << out.str();
        if (c.same) {
            EXPECT_EQ(expects, same) << out.str();
        } else {
            EXPECT_LT(same, expects - 3) << out.str();
        }
    }
}

}  // namespace
}  // namespace cwbsim
