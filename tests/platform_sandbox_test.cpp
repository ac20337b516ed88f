// Device-path sandbox: the four wrapped calls are redirected, everything else passes through.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <host/sandbox.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

namespace sandbox = host::sandbox;

class PlatformSandboxTest : public ::testing::Test {
  protected:
    void SetUp() override {
        previousRoot = sandbox::root();
        root = sandbox::makeTempRoot();
        ASSERT_FALSE(root.empty());
        sandbox::resetCounts();
    }
    void TearDown() override {
        sandbox::setRoot(previousRoot);
        sandbox::resetCounts();
        std::string command = "rm -rf '" + root + "'";
        EXPECT_EQ(system(command.c_str()), 0);
    }

    bool hostFileHas(const std::string& relative, const std::string& content) {
        FILE* f = fopen((root + relative).c_str(), "r");
        if (f == nullptr) return false;
        char buffer[256] = {};
        size_t n = fread(buffer, 1, sizeof(buffer) - 1, f);
        fclose(f);
        return std::string(buffer, n) == content;
    }

    std::string previousRoot;
    std::string root;
};

TEST_F(PlatformSandboxTest, MkdirOpenFopenChmodAreRedirected) {
    EXPECT_EQ(sandbox::hostPath("/data/vendor/display/x"), root + "/data/vendor/display/x");
    ASSERT_EQ(mkdir((root + "/data").c_str(), 0755), 0);  // root itself is not a device path
    ASSERT_EQ(mkdir((root + "/data/vendor").c_str(), 0755), 0);
    ASSERT_EQ(mkdir("/data/vendor/display", 0700), 0);
    struct stat st {};
    ASSERT_EQ(stat((root + "/data/vendor/display").c_str(), &st), 0);
    EXPECT_TRUE(S_ISDIR(st.st_mode));

    int fd = open("/data/vendor/display/state", O_CREAT | O_WRONLY | O_TRUNC, 0600);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(write(fd, "on", 2), 2);
    close(fd);
    EXPECT_TRUE(hostFileHas("/data/vendor/display/state", "on"));
    ASSERT_EQ(stat((root + "/data/vendor/display/state").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);  // the mode reached the real open

    ASSERT_EQ(chmod("/data/vendor/display/state", 0644), 0);
    ASSERT_EQ(stat((root + "/data/vendor/display/state").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0644u);

    FILE* f = fopen("/data/vendor/display/state", "a");
    ASSERT_NE(f, nullptr);
    fputs("+", f);
    fclose(f);
    EXPECT_TRUE(hostFileHas("/data/vendor/display/state", "on+"));

    EXPECT_EQ(open("/data/vendor/display/missing", O_RDONLY), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(sandbox::openCount("/data/vendor/display/state"), 2u);
    EXPECT_EQ(sandbox::openCount("/data/vendor/display/missing"), 1u);
    sandbox::resetCounts();
    EXPECT_EQ(sandbox::openCount("/data/vendor/display/state"), 0u);
}

TEST_F(PlatformSandboxTest, OnlyTheDeviceFoldersAreRedirected) {
    struct Case {
        const char* path;
        bool redirected;
    } cases[] = {
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
    for (const Case& c : cases) {
        EXPECT_EQ(sandbox::hostPath(c.path), c.redirected ? root + c.path : std::string(c.path))
                << c.path;
    }

    sandbox::setRoot("");
    EXPECT_EQ(sandbox::hostPath("/odm/etc/x"), "/odm/etc/x");
}

TEST_F(PlatformSandboxTest, OtherPathsPassThroughUntouched) {
    std::string outside = root + "-outside";
    ASSERT_EQ(mkdir(outside.c_str(), 0700), 0);
    std::string file = outside + "/plain";
    int fd = open(file.c_str(), O_CREAT | O_WRONLY, 0640);
    ASSERT_GE(fd, 0);
    close(fd);
    ASSERT_EQ(chmod(file.c_str(), 0600), 0);
    FILE* f = fopen(file.c_str(), "r");
    ASSERT_NE(f, nullptr);
    fclose(f);
    struct stat st {};
    ASSERT_EQ(stat(file.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
    EXPECT_EQ(sandbox::openCount(file), 0u);
    EXPECT_EQ(unlink(file.c_str()), 0);
    EXPECT_EQ(rmdir(outside.c_str()), 0);
}

TEST_F(PlatformSandboxTest, WithoutRootDevicePathsAreOpenedAsIs) {
    sandbox::setRoot("");
    // The host has no /odm tree; the call reaches the real path and fails there.
    EXPECT_EQ(open("/odm/etc/display/none.json", O_RDONLY), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(sandbox::openCount("/odm/etc/display/none.json"), 1u);
}

}  // namespace
