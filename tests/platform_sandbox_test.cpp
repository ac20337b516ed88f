// Device-path sandbox: the four wrapped calls on a device path reach the sandbox; other paths,
// and all paths without a root, are used as they are.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <host/sandbox.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace {

namespace fs = std::filesystem;
namespace sandbox = host::sandbox;

class PlatformSandboxTest : public ::testing::Test {
  protected:
    void SetUp() override {
        root = sandbox::makeTempRoot();
        ASSERT_FALSE(root.empty());
        sandbox::resetCounts();
    }
    void TearDown() override {
        sandbox::setRoot(previousRoot);
        sandbox::resetCounts();
        fs::remove_all(root);
    }
    // Permissions of the file behind a device path, read on the host side.
    fs::perms mode(const std::string& path) {
        return fs::status(root + path).permissions() & fs::perms::mask;
    }
    const std::string previousRoot = sandbox::root();
    std::string root;
};

TEST_F(PlatformSandboxTest, MkdirOpenFopenChmodAreRedirected) {
    fs::create_directories(root + "/data/vendor");
    ASSERT_EQ(mkdir("/data/vendor/display", 0700), 0);
    EXPECT_TRUE(fs::is_directory(root + "/data/vendor/display"));
    const std::string file = "/data/vendor/display/state";
    const int fd = open(file.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0600);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(write(fd, "on", 2), 2);
    close(fd);
    EXPECT_EQ(mode(file), fs::perms(0600));  // the mode reached the real open
    ASSERT_EQ(chmod(file.c_str(), 0644), 0);
    EXPECT_EQ(mode(file), fs::perms(0644));
    FILE* f = fopen(file.c_str(), "a");
    ASSERT_NE(f, nullptr);
    fputs("+", f);
    fclose(f);
    std::ostringstream text;
    text << std::ifstream(root + file).rdbuf();
    EXPECT_EQ(text.str(), "on+");
    EXPECT_EQ(open("/data/vendor/display/missing", O_RDONLY), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(sandbox::openCount(file), 2u);
    EXPECT_EQ(sandbox::openCount("/data/vendor/display/missing"), 1u);
}

TEST_F(PlatformSandboxTest, OnlyTheDeviceFoldersAreRedirected) {
    const std::pair<const char*, bool> cases[] = {
            {"/sys/kernel/zarel_display/cwb_enable", true},
            {"/sys/kernel/zarel_displayx/a", false},
            {"/odm", true},
            {"/odm/etc/display/cwb_weightspos.json", true},
            {"/odmx/file", false},
            {"/data/vendor/display", true},
            {"/data/vendor/displays", false},
            {"relative/odm/file", false},
            {"/tmp/odm", false},
    };
    for (const auto& [path, redirected] : cases) {
        EXPECT_EQ(sandbox::hostPath(path), redirected ? root + path : std::string(path)) << path;
    }
    sandbox::setRoot("");
    EXPECT_EQ(sandbox::hostPath("/odm/etc/x"), "/odm/etc/x");
}

}  // namespace
