// The vendor policy in sepolicy/ must compile against the device's policy and label what the
// library really touches; the VINTF fragments must name the same service.
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

// Declared by AOSP's public policy or the chip vendor's display policy, always on the device.
const std::set<std::string> kPlatformTypes = {
        // system/sepolicy
        "hal_graphics_composer_server", "hal_service_type", "protected_service",
        "service_manager_type", "file_type", "data_file_type", "fs_type", "sysfs_type", "tmpfs",
        "ashmem_device", "ashmem_libcutils_device", "vendor_configs_file",
        // the chip vendor's display policy
        "qdisplay_service", "vendor_hal_vnddisplayconfig_service", "display_vendor_data_file"};
// Macros whose first argument declares a type; every other argument of a known macro uses one.
const std::set<std::string> kDeclaringMacros = {"vendor_internal_prop"};
const std::set<std::string> kUsingMacros = {"add_service", "binder_call", "get_prop"};

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

bool isName(const std::string& token) {
    return std::isalpha(static_cast<unsigned char>(token[0])) || token[0] == '_';
}

// Names, quoted strings and single punctuation characters, comments dropped.
std::vector<std::string> tokenize(const std::string& text) {
    static const std::regex kToken(R"(#[^\n]*|"[^"]*"|\w+|\S)");
    std::vector<std::string> tokens;
    for (std::sregex_iterator it(text.begin(), text.end(), kToken), end; it != end; ++it) {
        if (it->str()[0] != '#') tokens.push_back(it->str());
    }
    return tokens;
}

struct PolicyCheck {
    std::set<std::string> declared;
    std::vector<std::pair<std::string, std::string>> used;  // type, file
    std::vector<std::string> problems;

    void use(const std::string& type, const std::string& file) {
        if (isName(type) && type != "self") used.emplace_back(type, file);
    }

    // One statement: up to ';' or, for a macro call, up to its closing parenthesis.
    void addTe(const std::string& file, const std::string& text) {
        const std::vector<std::string> t = tokenize(text);
        for (size_t i = 0; i < t.size();) {
            std::vector<std::string> s;
            for (int depth = 0; i < t.size();) {
                s.push_back(t[i++]);
                if (s.back() == "(") ++depth;
                if ((s.back() == ")" && --depth == 0) || (s.back() == ";" && depth == 0)) break;
            }
            addStatement(file, s);
        }
    }

    void addStatement(const std::string& file, const std::vector<std::string>& s) {
        const std::string& word = s[0];
        const size_t colon = std::find(s.begin(), s.end(), ":") - s.begin();
        if (s.size() > 1 && s[1] == "(") {
            const bool declares = kDeclaringMacros.count(word) > 0;
            if (!declares && kUsingMacros.count(word) == 0) {
                problems.push_back(file + ": unknown macro " + word);
            }
            for (size_t k = 2; k < s.size(); ++k) {
                if (declares && k == 2) {
                    declared.insert(s[k]);
                } else {
                    use(s[k], file);
                }
            }
        } else if (word == "type" || word == "attribute") {
            declared.insert(s.at(1));
            for (size_t k = 2; k < s.size(); ++k) use(s[k], file);
        } else if (word == "typeattribute") {
            for (size_t k = 1; k < s.size(); ++k) use(s[k], file);
        } else if ((word == "allow" || word == "neverallow" || word == "dontaudit") &&
                   colon < s.size()) {
            for (size_t k = 1; k < colon; ++k) use(s[k], file);  // source and target sets
        } else if (word == "type_transition" && colon + 2 < s.size()) {
            for (size_t k = 1; k < colon; ++k) use(s[k], file);
            use(s[colon + 2], file);  // the new type, after the class
        } else {
            problems.push_back(file + ": unknown statement " + word);
        }
    }

    // Every "u:object_r:TYPE:s0" of a context file.
    void addContexts(const std::string& file, const std::string& text) {
        static const std::regex kLabel("u:object_r:([A-Za-z0-9_]+):s0");
        for (std::sregex_iterator it(text.begin(), text.end(), kLabel), end; it != end; ++it) {
            use((*it)[1], file);
        }
    }

    std::vector<std::string> check(const std::map<std::string, std::string>& files) {
        for (const auto& [name, text] : files) {
            if (name.size() > 3 && name.substr(name.size() - 3) == ".te") {
                addTe(name, text);
            } else if (name.find("_contexts") != std::string::npos) {
                addContexts(name, text);
            } else {
                problems.push_back(name + ": neither policy nor contexts");
            }
        }
        for (const auto& [type, file] : used) {
            if (!declared.count(type) && !kPlatformTypes.count(type)) {
                problems.push_back(file + ": undeclared type " + type);
            }
        }
        return problems;
    }
};

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

TEST(SepolicyTest, EveryTypeIsDeclaredByThePolicyOrThePlatform) {
    PolicyCheck policy;
    EXPECT_EQ(policy.check(readDir(kPolicyDir)), std::vector<std::string>{});
    EXPECT_GE(policy.used.size(), 20u);  // the parser saw the rules
}

// The checker itself: each mistake, as one would type it, must be reported.
TEST(SepolicyTest, CheckerReportsMistakes) {
    const struct {
        const char* file;
        const char* text;
        const char* problem;
    } cases[] = {
            {"a.te",
             "type foo_file, file_type;\nallow hal_graphics_composer_server fo_file:file read;",
             "a.te: undeclared type fo_file"},
            {"a.te", "attribute c;\nbinder_call(c, hal_graphics_composer_srever)",
             "a.te: undeclared type hal_graphics_composer_srever"},
            {"a.te", "add_servce(hal_graphics_composer_server, tmpfs)",
             "a.te: unknown macro add_servce"},
            {"a.te", "type_transition hal_graphics_composer_server tmpfs:dir dump_file \"d\";",
             "a.te: undeclared type dump_file"},
            {"a.te", "alow tmpfs tmpfs:file read;", "a.te: unknown statement alow"},
            {"file_contexts", "/data/vendor/x(/.*)?  u:object_r:vendor_x_file:s0",
             "file_contexts: undeclared type vendor_x_file"},
            {"README", "text", "README: neither policy nor contexts"},
    };
    for (const auto& c : cases) {
        PolicyCheck policy;
        EXPECT_EQ(policy.check({{c.file, c.text}}), std::vector<std::string>{c.problem}) << c.text;
    }
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
