// The vendor policy in sepolicy/ must label what the library really touches and open no client
// memory beyond the clients' own; the VINTF fragments must name the same service. Compiling the
// policy against the platform's is tools/platform-check/policy.sh's job.
#include "service_fixture.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

using ::aidl::vendor::zarel::hardware::cwb::ICwbService;

const std::string kSourceDir = CWB_SOURCE_DIR;
const std::string kPolicyDir = kSourceDir + "/sepolicy/";
const std::string kProductDir = kSourceDir + "/multimedia/display/cwb/aidl/qcom/";

std::string readFile(const std::string& path) {
    std::ifstream in(path);
    EXPECT_TRUE(in.good()) << "cannot read " << path;
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::map<std::string, std::string> readDir(const std::string& dir) {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(dir)) {
        if (entry.is_regular_file()) {
            files[entry.path().filename().string()] = readFile(entry.path().string());
        }
    }
    return files;
}

// The first capture of every match of the pattern in the product's sources.
std::set<std::string> productStrings(const std::regex& pattern) {
    std::set<std::string> found;
    for (const auto& [name, text] : readDir(kProductDir)) {
        for (std::sregex_iterator it(text.begin(), text.end(), pattern), end; it != end; ++it) {
            found.insert((*it)[1]);
        }
    }
    return found;
}

// The lines of a contexts file as (first field, label type) pairs; genfscon lines give the path.
std::vector<std::pair<std::string, std::string>> contextEntries(const std::string& file) {
    std::vector<std::pair<std::string, std::string>> entries;
    std::istringstream in(readFile(kPolicyDir + file));
    static const std::regex kLine(R"(^\s*(?:genfscon\s+\S+\s+)?(\S+)\s+.*u:object_r:(\w+):s0)");
    std::smatch m;
    for (std::string line; std::getline(in, line);) {
        if (std::regex_search(line, m, kLine)) entries.emplace_back(m[1], m[2]);
    }
    return entries;
}

// The composer maps only its clients' own memfd types: a rule naming tmpfs or appdomain_tmpfs
// would open every process's or every app's memfds to it.
TEST(SepolicyTest, NoRuleOpensEveryMemfd) {
    static const std::regex kComment("#[^\\n]*");
    static const std::regex kShared(R"(\b(tmpfs|appdomain_tmpfs)\b)");
    int statements = 0;
    for (const auto& [name, text] : readDir(kPolicyDir)) {
        if (name.size() < 3 || name.compare(name.size() - 3, 3, ".te") != 0) continue;
        std::istringstream in(std::regex_replace(text, kComment, ""));
        for (std::string statement; std::getline(in, statement, ';'); ++statements) {
            EXPECT_FALSE(std::regex_search(statement, kShared)) << name << ":" << statement;
        }
    }
    EXPECT_GE(statements, 10);  // the policy was read
}

class SepolicyServiceTest : public cwbtest::ServiceTest {};

// The name the library registers under is the one service_contexts labels.
TEST_F(SepolicyServiceTest, ServiceContextsLabelTheRegisteredService) {
    boot();
    const auto entries = contextEntries("service_contexts");
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].first, std::string(ICwbService::descriptor) + "/default");
    EXPECT_EQ(ICwbService::fromBinder(host::binder::lookup(entries[0].first)), service);
}

TEST(SepolicyTest, PropertyContextsCoverEveryPropertyTheProductReads) {
    const std::set<std::string> read =
            productStrings(std::regex(R"(\w*[Pp]roperty\w*\(\s*"([^"]+)\")"));
    ASSERT_GE(read.size(), 11u);  // the settings the service reads at construction
    const auto entries = contextEntries("property_contexts");
    for (const std::string& property : read) {
        bool covered = false;
        for (const auto& [prefix, type] : entries) covered |= property.rfind(prefix, 0) == 0;
        EXPECT_TRUE(covered) << property;
    }
}

// Device files the product opens under /sys and /data/vendor carry the policy's own labels.
TEST(SepolicyTest, DevicePathsTheProductOpensAreLabelled) {
    const std::set<std::string> paths = productStrings(std::regex(R"("(/(?:sys|data)/[^"]+)\")"));
    ASSERT_EQ(paths.size(), 2u) << "the panel APL node and the frame-dump folder";
    for (const std::string& path : paths) {
        const bool sysfs = path.rfind("/sys/", 0) == 0;
        bool labelled = false;
        for (const auto& [spec, type] :
             contextEntries(sysfs ? "genfs_contexts" : "file_contexts")) {
            labelled |= sysfs ? path.rfind("/sys" + spec, 0) == 0
                              : std::regex_match(path, std::regex(spec, std::regex::extended));
        }
        EXPECT_TRUE(labelled) << path;
    }
}

// The manifest declares the service and the matrix accepts it, both at the interface's version.
TEST(SepolicyTest, VintfFragmentsNameTheService) {
    const std::string version = "<version>" + std::to_string(ICwbService::version) + "</version>";
    for (const char* file :
         {"vendor.zarel.hardware.cwb-service.xml", "device_framework_matrix_cwb.xml"}) {
        std::string xml = readFile(kProductDir + file);
        xml.erase(std::remove_if(xml.begin(), xml.end(),
                                 [](unsigned char c) { return std::isspace(c); }),
                  xml.end());
        EXPECT_NE(xml.find("<halformat=\"aidl\""), std::string::npos) << file;
        EXPECT_NE(xml.find("<name>vendor.zarel.hardware.cwb</name>"), std::string::npos) << file;
        EXPECT_NE(xml.find(version), std::string::npos) << file;
        const bool fqname = xml.find("<fqname>ICwbService/default</fqname>") != std::string::npos;
        const bool iface = xml.find(
                                   "<interface><name>ICwbService</name><instance>default</"
                                   "instance></interface>") != std::string::npos;
        EXPECT_TRUE(fqname || iface) << file;
    }
}

}  // namespace
