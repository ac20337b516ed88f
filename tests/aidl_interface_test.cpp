// The host aidl code must stay in step with interface/: transaction codes, frozen dumps, hashes.
#include "skeleton_helpers.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using ::aidl::vendor::zarel::hardware::cwb::ICwbCallback;
using ::aidl::vendor::zarel::hardware::cwb::ICwbService;
using ::aidl::vendor::zarel::hardware::cwb::Rect;
using ::cwbtest::RecordingCallback;

const std::string kSourceDir = CWB_SOURCE_DIR;
const std::string kPackageDir = kSourceDir + "/interface/vendor/zarel/hardware/cwb/";
const std::string kApiDir = kSourceDir + "/interface/aidl_api/vendor.zarel.hardware.cwb/";
// Methods that existed before shared memory came in, in version 1.
constexpr size_t kVersion1MethodCount = 12;

std::string readFile(const std::string& path) {
    std::ifstream in(path);
    EXPECT_TRUE(in.good()) << "cannot read " << path;
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Identifiers (dotted) and numbers whole, any other character alone: layout never counts.
std::vector<std::string> tokens(const std::string& text) {
    std::string spaced;
    for (char c : text) {
        const bool word = std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '.';
        spaced += word ? std::string(1, c) : std::string(" ") + c + " ";
    }
    std::istringstream in(spaced);
    return {std::istream_iterator<std::string>(in), std::istream_iterator<std::string>()};
}

// One .aidl declaration reduced to what decides compatibility: no comments, package or import
// statements or package qualifiers; annotations as a set, since their order is free.
struct Decl {
    std::set<std::string> annotations;
    std::string head;  // "interface ICwbService", "enum Error", ...
    std::string body;  // tokens between the braces, one space apart
};

Decl parseAidl(const std::string& path) {
    std::string text = readFile(path);
    for (const auto& [open, close] :
         {std::pair<std::string, std::string>{"/*", "*/"}, {"//", "\n"}}) {
        for (size_t at; (at = text.find(open)) != std::string::npos;) {
            text.replace(at, text.find(close, at + 2) + close.size() - at, " ");
        }
    }
    std::vector<std::string> t = tokens(text);
    while (!t.empty() && (t[0] == "package" || t[0] == "import")) {
        t.erase(t.begin(), std::find(t.begin(), t.end(), ";") + 1);
    }
    Decl decl;
    size_t k = 0;
    for (; k < t.size() && t[k] != "{"; ++k) {
        if (t[k] == "@") {  // an annotation, with its arguments if any
            std::string annotation = "@" + t.at(++k);
            if (k + 1 < t.size() && t[k + 1] == "(") {
                while (t.at(k) != ")") annotation += t.at(++k);
            }
            decl.annotations.insert(annotation);
        } else {
            decl.head += (decl.head.empty() ? "" : " ") + t[k];
        }
    }
    const std::string kPackage = "vendor.zarel.hardware.cwb.";
    for (++k; k + 1 < t.size(); ++k) {  // up to the closing brace
        decl.body += t[k].substr(t[k].rfind(kPackage, 0) == 0 ? kPackage.size() : 0) + " ";
    }
    EXPECT_EQ(t.back(), "}") << path;
    return decl;
}

TEST(AidlInterfaceTest, TransactionCodesFollowDeclarationOrder) {
    std::vector<std::string> names;  // the word before each "("
    const std::vector<std::string> aidl = tokens(parseAidl(kPackageDir + "ICwbService.aidl").body);
    for (size_t k = 1; k < aidl.size(); ++k) {
        if (aidl[k] == "(") names.push_back(aidl[k - 1]);
    }
    ASSERT_EQ(names.size(), 16u);
    EXPECT_EQ(names[11], "reserved");  // its place is what it is kept for

    // Every "TRANSACTION_<name> = FIRST_CALL_TRANSACTION + <n>" in the host header, in order.
    const std::vector<std::string> t = tokens(readFile(
            kSourceDir + "/host/aidl/include/aidl/vendor/zarel/hardware/cwb/ICwbService.h"));
    std::vector<std::string> declared;
    for (size_t k = 0; k + 4 < t.size(); ++k) {
        if (t[k].rfind("TRANSACTION_", 0) != 0 || t[k + 1] != "=" ||
            t[k + 2] != "FIRST_CALL_TRANSACTION" || t[k + 3] != "+") {
            continue;
        }
        EXPECT_EQ(t[k + 4], std::to_string(declared.size())) << t[k];
        declared.push_back(t[k].substr(12));
    }
    EXPECT_EQ(declared, names);
    // The compiled values too: binder calls start at 1.
    EXPECT_EQ(ICwbService::TRANSACTION_getRGBValue, 1u);
    EXPECT_EQ(ICwbService::TRANSACTION_releaseSharedMemory, 16u);
    EXPECT_EQ(ICwbCallback::TRANSACTION_notifyCwbStatus, 1u);
}

// Dumps by directory: the frozen versions and "current", the dump of the sources the aidl build
// compares the package against (it fails when the directory is missing).
class FrozenDumpTest : public ::testing::TestWithParam<std::tuple<std::string, std::string>> {};

TEST_P(FrozenDumpTest, MatchesSource) {
    const auto& [version, type] = GetParam();
    const std::string dumpPath = kApiDir + version + "/vendor/zarel/hardware/cwb/" + type + ".aidl";
    EXPECT_NE(readFile(dumpPath).find("// THIS FILE IS IMMUTABLE. DO NOT EDIT IN ANY CASE."),
              std::string::npos);
    Decl source = parseAidl(kPackageDir + type + ".aidl");
    const Decl dump = parseAidl(dumpPath);
    if (type == "ICwbService" && version == "1") {  // methods were added since
        size_t end = 0;
        for (size_t i = 0; i < kVersion1MethodCount; ++i) end = source.body.find(';', end) + 1;
        ASSERT_LT(end, source.body.size());
        source.body.resize(end + 1);
    }
    EXPECT_EQ(dump.head, source.head);
    EXPECT_EQ(dump.head.substr(dump.head.find(' ') + 1), type);
    EXPECT_EQ(dump.annotations, source.annotations);
    EXPECT_TRUE(dump.annotations.count("@VintfStability"));
    EXPECT_EQ(dump.body, source.body);
}

INSTANTIATE_TEST_SUITE_P(AllTypes, FrozenDumpTest,
                         ::testing::Combine(::testing::Values("1", "2", "current"),
                                            ::testing::Values("Rect", "Rgb", "Histogram", "Error",
                                                              "ICwbCallback", "ICwbService")),
                         [](const auto& info) {
                             return "V" + std::get<0>(info.param) + "_" + std::get<1>(info.param);
                         });

// The aidl build's hash of a dump directory: sha1 over the sorted files' sha1sum lines and one
// line naming the version before it ("latest-version" for version 1, N - 1 for version N).
std::string toolHash(const std::string& dir, int version) {
    const std::string previous = version > 1 ? std::to_string(version - 1) : "latest-version";
    FILE* pipe = popen(("cd '" + dir +
                        "' && { find ./ -name \"*.aidl\" -print0 | LC_ALL=C sort -z | xargs -0 "
                        "sha1sum && echo " +
                        previous + "; } | sha1sum | cut -d \" \" -f 1")
                               .c_str(),
                       "r");
    if (pipe == nullptr) return "";
    char computed[64] = {};
    if (fgets(computed, sizeof(computed), pipe) == nullptr) computed[0] = '\0';
    pclose(pipe);
    return std::string(computed, strcspn(computed, "\n"));
}

class FrozenHashTest : public ::testing::TestWithParam<int> {};

TEST_P(FrozenHashTest, RecordedHashIsTheToolsHash) {
    const std::string dir = kApiDir + std::to_string(GetParam());
    std::string recorded = readFile(dir + "/.hash");
    recorded.erase(recorded.find_last_not_of(" \n") + 1);
    ASSERT_EQ(recorded.size(), 40u);
    // The aidl build recomputes it this way and refuses the module on a mismatch.
    EXPECT_EQ(toolHash(dir, GetParam()), recorded);
    if (GetParam() == ICwbService::version) {
        EXPECT_EQ(ICwbService::hash, recorded);
        EXPECT_EQ(ICwbCallback::hash, recorded);
    } else {
        EXPECT_NE(ICwbService::hash, recorded);
    }
}

INSTANTIATE_TEST_SUITE_P(Versions, FrozenHashTest, ::testing::Values(1, 2));

TEST(AidlInterfaceTest, BuildFileFreezesEveryDumpedVersion) {
    // Freezing copies no .hash into current/; one there would be checked against "latest-version".
    EXPECT_FALSE(std::ifstream(kApiDir + "current/.hash").good());
    const std::string bp = readFile(kSourceDir + "/interface/Android.bp");
    const std::vector<std::string> t = tokens(bp);
    std::vector<int> versions;  // version: "N"
    for (size_t k = 0; k + 3 < t.size(); ++k) {
        if (t[k] == "version" && t[k + 1] == ":") versions.push_back(std::stoi(t[k + 3]));
    }
    EXPECT_EQ(versions, (std::vector<int>{1, 2}));
    EXPECT_EQ(versions.back(), ICwbService::version);
    EXPECT_EQ(ICwbCallback::version, ICwbService::version);
    EXPECT_NE(bp.find("frozen: true"), std::string::npos);
}

class AidlBinderTest : public cwbtest::ServiceTest {};

// Objects live while a binder holds them; a binder is never handed out as another interface.
TEST_F(AidlBinderTest, ObjectsAnswerOnlyAsTheirOwnInterface) {
    boot();
    ndk::SpAIBinder binder;
    std::weak_ptr<RecordingCallback> weak;
    {
        auto callback = RecordingCallback::make();
        weak = callback;
        binder = callback->asBinder();
    }
    std::shared_ptr<ICwbCallback> callback = ICwbCallback::fromBinder(binder);
    ASSERT_EQ(callback, weak.lock());
    EXPECT_EQ(ICwbService::fromBinder(binder), nullptr);
    EXPECT_EQ(ICwbService::fromBinder(service->asBinder()), service);
    EXPECT_EQ(ICwbCallback::fromBinder(service->asBinder()), nullptr);
    EXPECT_EQ(ICwbCallback::fromBinder(ndk::SpAIBinder()), nullptr);
    EXPECT_STREQ(AIBinder_Class_getDescriptor(AIBinder_getClass(binder.get())),
                 "vendor.zarel.hardware.cwb.ICwbCallback");
    int32_t version = 0;
    std::string hash;
    EXPECT_TRUE(callback->getInterfaceVersion(&version).isOk());
    EXPECT_TRUE(callback->getInterfaceHash(&hash).isOk());
    EXPECT_EQ(std::make_pair(2, ICwbCallback::hash), std::make_pair(version, hash));
    callback.reset();
    binder = ndk::SpAIBinder();
    EXPECT_TRUE(weak.expired());
}

TEST(AidlCallbackTest, ConcurrentBindersShareOneObject) {
    auto callback = RecordingCallback::make();
    constexpr int kThreads = 8, kRounds = 500;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&callback, t] {
            for (int i = 0; i < kRounds; ++i) {
                ndk::SpAIBinder binder = callback->asBinder();
                ndk::SpAIBinder copy = binder;
                std::shared_ptr<ICwbCallback> cb = ICwbCallback::fromBinder(copy);
                if (cb != nullptr) cb->notifyCwbStatus((t + i) % 2 == 0);
            }
        });
    }
    for (auto& th : threads) th.join();
    const std::vector<bool> told = callback->statuses();
    EXPECT_EQ(std::count(told.begin(), told.end(), true), kThreads * kRounds / 2);
    EXPECT_EQ(std::count(told.begin(), told.end(), false), kThreads * kRounds / 2);
}

TEST(AidlTypesTest, RectOrderIsLexicographicOverFieldsInOrder) {
    const struct {
        Rect a, b;
        int sign;  // of a - b
    } cases[] = {
            {{1, 2, 3, 4}, {1, 2, 3, 4}, 0},  {{1, 2, 3, 4}, {1, 2, 3, 5}, -1},
            {{1, 2, 4, 0}, {1, 2, 3, 9}, 1},  {{1, 3, 0, 0}, {1, 2, 9, 9}, 1},
            {{0, 9, 9, 9}, {1, 0, 0, 0}, -1}, {{-5, 0, 0, 0}, {5, 0, 0, 0}, -1},
    };
    for (const auto& [a, b, s] : cases) {
        // The reverse comparison must agree too, so that sorting and map keys behave.
        EXPECT_EQ((std::vector<bool>{a == b, a != b, (a < b), (a > b), a <= b, a >= b, (b < a)}),
                  (std::vector<bool>{s == 0, s != 0, (s < 0), (s > 0), s <= 0, s >= 0, (s > 0)}))
                << a.toString() << " vs " << b.toString();
    }
}

}  // namespace
