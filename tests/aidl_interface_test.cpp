// The host aidl code must stay in step with interface/: same methods in the same order (their
// transaction codes), frozen dumps that match the sources, and hashes the aidl tool would accept.
#include <aidl/vendor/zarel/hardware/cwb/BnCwbCallback.h>
#include <aidl/vendor/zarel/hardware/cwb/BnCwbService.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using ::aidl::vendor::zarel::hardware::cwb::BnCwbCallback;
using ::aidl::vendor::zarel::hardware::cwb::BnCwbService;
using ::aidl::vendor::zarel::hardware::cwb::Error;
using ::aidl::vendor::zarel::hardware::cwb::Histogram;
using ::aidl::vendor::zarel::hardware::cwb::ICwbCallback;
using ::aidl::vendor::zarel::hardware::cwb::ICwbService;
using ::aidl::vendor::zarel::hardware::cwb::Rect;
using ::aidl::vendor::zarel::hardware::cwb::Rgb;
using ::ndk::ScopedAStatus;
using ::ndk::ScopedFileDescriptor;

const std::string kSourceDir = CWB_SOURCE_DIR;
const std::string kPackageDir = kSourceDir + "/interface/vendor/zarel/hardware/cwb/";
const std::string kApiDir = kSourceDir + "/interface/aidl_api/vendor.zarel.hardware.cwb/";
const std::vector<std::string> kTypes = {"Rect",  "Rgb",          "Histogram",
                                         "Error", "ICwbCallback", "ICwbService"};
// Methods that existed before shared memory came in, in version 1.
constexpr size_t kVersion1MethodCount = 12;

std::string readFile(const std::string& path) {
    std::ifstream in(path);
    EXPECT_TRUE(in.good()) << "cannot read " << path;
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

bool isIdentChar(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

std::string trimmed(const std::string& s) {
    const char* kSpace = " \t\r\n";
    size_t b = s.find_first_not_of(kSpace);
    if (b == std::string::npos) return "";
    return s.substr(b, s.find_last_not_of(kSpace) - b + 1);
}

std::string replaceAll(std::string s, const std::string& from, const std::string& to) {
    for (size_t pos = s.find(from); pos != std::string::npos; pos = s.find(from, pos + to.size())) {
        s.replace(pos, from.size(), to);
    }
    return s;
}

// Whitespace runs become one space, and none is kept around punctuation, so that line breaks
// and alignment do not count as differences.
std::string collapseSpaces(const std::string& s) {
    auto isPunct = [](char c) { return c == '(' || c == ')' || c == ',' || c == '[' || c == ']'; };
    std::string out;
    bool pendingSpace = false;
    for (char c : s) {
        if (std::isspace(static_cast<unsigned char>(c))) {
            pendingSpace = true;
            continue;
        }
        if (pendingSpace && !out.empty() && !isPunct(c) && !isPunct(out.back())) out += ' ';
        pendingSpace = false;
        out += c;
    }
    return out;
}

std::string stripComments(const std::string& in) {
    std::string out;
    for (size_t i = 0; i < in.size();) {
        if (in.compare(i, 2, "/*") == 0) {
            size_t end = in.find("*/", i + 2);
            i = end == std::string::npos ? in.size() : end + 2;
            out += ' ';
        } else if (in.compare(i, 2, "//") == 0) {
            size_t end = in.find('\n', i);
            i = end == std::string::npos ? in.size() : end;
        } else {
            out += in[i++];
        }
    }
    return out;
}

// One top-level declaration of an .aidl file, reduced to what decides compatibility.
struct Decl {
    std::set<std::string> annotations;
    std::string kind;
    std::string name;
    std::vector<std::string> members;
};

Decl parseAidl(const std::string& path) {
    std::string text;
    std::istringstream lines(stripComments(readFile(path)));
    for (std::string line; std::getline(lines, line);) {
        const std::string t = trimmed(line);
        if (t.rfind("package ", 0) == 0 || t.rfind("import ", 0) == 0) continue;
        text += line + "\n";
    }
    // Frozen dumps spell every type of the package in full.
    text = replaceAll(text, "vendor.zarel.hardware.cwb.", "");

    Decl decl;
    size_t open = text.find('{');
    size_t close = text.rfind('}');
    if (open == std::string::npos || close == std::string::npos || close < open) {
        ADD_FAILURE() << "no declaration body in " << path;
        return decl;
    }
    std::istringstream head(text.substr(0, open));
    std::vector<std::string> words;
    for (std::string w; head >> w;) {
        if (w[0] == '@') {
            decl.annotations.insert(w);
        } else {
            words.push_back(w);
        }
    }
    if (words.size() >= 2) {
        decl.kind = words[words.size() - 2];
        decl.name = words.back();
    }
    const char separator = decl.kind == "enum" ? ',' : ';';
    std::istringstream body(text.substr(open + 1, close - open - 1));
    for (std::string member; std::getline(body, member, separator);) {
        member = collapseSpaces(member);
        if (!member.empty()) decl.members.push_back(member);
    }
    return decl;
}

std::string methodName(const std::string& member) {
    size_t end = member.find('(');
    if (end == std::string::npos) return "";
    size_t begin = end;
    while (begin > 0 && isIdentChar(member[begin - 1])) --begin;
    return member.substr(begin, end - begin);
}

// Reads text at pos: skips blanks, then takes an identifier or a number.
std::string nextToken(const std::string& text, size_t* pos) {
    while (*pos < text.size() && std::isspace(static_cast<unsigned char>(text[*pos]))) ++*pos;
    size_t begin = *pos;
    while (*pos < text.size() && isIdentChar(text[*pos])) ++*pos;
    if (*pos == begin && *pos < text.size()) ++*pos;  // a single punctuation character
    return text.substr(begin, *pos - begin);
}

std::vector<std::string> methodNames(const Decl& decl) {
    std::vector<std::string> names;
    for (const std::string& member : decl.members) names.push_back(methodName(member));
    return names;
}

std::string runShell(const std::string& command) {
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return "";
    std::string out;
    char buf[256];
    while (fgets(buf, sizeof(buf), pipe) != nullptr) out += buf;
    pclose(pipe);
    return out;
}

TEST(AidlInterfaceTest, TransactionCodesFollowDeclarationOrder) {
    const std::vector<std::string> names = methodNames(parseAidl(kPackageDir + "ICwbService.aidl"));
    ASSERT_EQ(names.size(), 16u);
    // Its place is what it is kept for.
    EXPECT_EQ(names[11], "reserved");

    const std::string header = readFile(kSourceDir +
                                        "/host/aidl/include/aidl/vendor/zarel/hardware/cwb/"
                                        "ICwbService.h");
    // Every "TRANSACTION_<name> = FIRST_CALL_TRANSACTION + <n>" in the order written.
    std::vector<std::pair<std::string, size_t>> declared;
    const std::string prefix = "TRANSACTION_";
    for (size_t at = header.find(prefix); at != std::string::npos; at = header.find(prefix, at)) {
        if (at > 0 && isIdentChar(header[at - 1])) {
            at += prefix.size();
            continue;
        }
        size_t pos = at + prefix.size();
        at = pos;
        std::string name = nextToken(header, &pos);
        if (nextToken(header, &pos) != "=" || nextToken(header, &pos) != "FIRST_CALL_TRANSACTION" ||
            nextToken(header, &pos) != "+") {
            continue;
        }
        const std::string offset = nextToken(header, &pos);
        ASSERT_FALSE(offset.empty()) << name;
        ASSERT_TRUE(std::all_of(offset.begin(), offset.end(), ::isdigit)) << name;
        declared.emplace_back(name, std::stoul(offset));
    }
    ASSERT_EQ(declared.size(), names.size());
    for (size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(declared[i].first, names[i]) << "transaction " << i;
        EXPECT_EQ(declared[i].second, i) << names[i];
    }

    // The compiled values, not just the text, must agree with the .aidl order.
    const std::vector<std::pair<std::string, uint32_t>> compiled = {
            {"getRGBValue", ICwbService::TRANSACTION_getRGBValue},
            {"getLumasValue", ICwbService::TRANSACTION_getLumasValue},
            {"getHistogramValue", ICwbService::TRANSACTION_getHistogramValue},
            {"getCwbPostProcessStatus", ICwbService::TRANSACTION_getCwbPostProcessStatus},
            {"setCwbPostProcessStatus", ICwbService::TRANSACTION_setCwbPostProcessStatus},
            {"registerCallback", ICwbService::TRANSACTION_registerCallback},
            {"unregisterCallback", ICwbService::TRANSACTION_unregisterCallback},
            {"enable", ICwbService::TRANSACTION_enable},
            {"disable", ICwbService::TRANSACTION_disable},
            {"setDebug", ICwbService::TRANSACTION_setDebug},
            {"getCwbValue", ICwbService::TRANSACTION_getCwbValue},
            {"reserved", ICwbService::TRANSACTION_reserved},
            {"initializeSharedMemory", ICwbService::TRANSACTION_initializeSharedMemory},
            {"getSharedData", ICwbService::TRANSACTION_getSharedData},
            {"getScreenResolution", ICwbService::TRANSACTION_getScreenResolution},
            {"releaseSharedMemory", ICwbService::TRANSACTION_releaseSharedMemory},
    };
    ASSERT_EQ(compiled.size(), names.size());
    for (const auto& [name, code] : compiled) {
        auto pos = std::find(names.begin(), names.end(), name);
        ASSERT_NE(pos, names.end()) << name;
        EXPECT_EQ(code, 1u + static_cast<uint32_t>(pos - names.begin())) << name;
    }
    EXPECT_EQ(ICwbCallback::TRANSACTION_notifyCwbStatus, 1u);
}

class FrozenDumpTest : public ::testing::TestWithParam<std::tuple<int, std::string>> {};

TEST_P(FrozenDumpTest, MatchesSource) {
    const auto& [version, type] = GetParam();
    const std::string dumpPath =
            kApiDir + std::to_string(version) + "/vendor/zarel/hardware/cwb/" + type + ".aidl";
    EXPECT_NE(readFile(dumpPath).find("// THIS FILE IS IMMUTABLE. DO NOT EDIT IN ANY CASE."),
              std::string::npos);

    Decl source = parseAidl(kPackageDir + type + ".aidl");
    const Decl dump = parseAidl(dumpPath);
    if (type == "ICwbService" && version == 1) {
        ASSERT_GT(source.members.size(), kVersion1MethodCount);
        source.members.resize(kVersion1MethodCount);
    }
    EXPECT_EQ(dump.kind, source.kind);
    EXPECT_EQ(dump.name, type);
    EXPECT_EQ(source.name, type);
    EXPECT_EQ(dump.annotations, source.annotations);
    EXPECT_TRUE(dump.annotations.count("@VintfStability"));
    EXPECT_EQ(dump.members, source.members);
}

INSTANTIATE_TEST_SUITE_P(AllTypes, FrozenDumpTest,
                         ::testing::Combine(::testing::Values(1, 2), ::testing::ValuesIn(kTypes)),
                         [](const auto& info) {
                             return "V" + std::to_string(std::get<0>(info.param)) + "_" +
                                    std::get<1>(info.param);
                         });

class FrozenHashTest : public ::testing::TestWithParam<int> {};

TEST_P(FrozenHashTest, RecordedHashIsTheToolsHash) {
    const std::string dir = kApiDir + std::to_string(GetParam());
    const std::string recorded = trimmed(readFile(dir + "/.hash"));
    ASSERT_EQ(recorded.size(), 40u);
    // The aidl build recomputes it this way and refuses the module on a mismatch.
    const std::string computed = trimmed(
            runShell("(cd '" + dir +
                     "' && find ./ -name \"*.aidl\" -print0 | LC_ALL=C sort -z | xargs -0 sha1sum"
                     " && echo latest-version) | sha1sum | cut -d \" \" -f 1"));
    EXPECT_EQ(computed, recorded);
    if (GetParam() == ICwbService::version) {
        EXPECT_EQ(ICwbService::hash, recorded);
        EXPECT_EQ(ICwbCallback::hash, recorded);
    } else {
        EXPECT_NE(ICwbService::hash, recorded);
    }
}

INSTANTIATE_TEST_SUITE_P(Versions, FrozenHashTest, ::testing::Values(1, 2));

TEST(AidlInterfaceTest, BuildFileFreezesEveryDumpedVersion) {
    const std::string bp = readFile(kSourceDir + "/interface/Android.bp");
    std::vector<int> versions;
    const std::string key = "version:";
    for (size_t at = bp.find(key); at != std::string::npos; at = bp.find(key, at + 1)) {
        size_t open = bp.find('"', at);
        size_t close = open == std::string::npos ? open : bp.find('"', open + 1);
        ASSERT_NE(close, std::string::npos);
        versions.push_back(std::stoi(bp.substr(open + 1, close - open - 1)));
    }
    EXPECT_EQ(versions, (std::vector<int>{1, 2}));
    EXPECT_EQ(versions.back(), ICwbService::version);
    EXPECT_EQ(ICwbCallback::version, ICwbService::version);
    EXPECT_NE(bp.find("frozen: true"), std::string::npos);
}

class FakeService : public BnCwbService {
  public:
    ScopedAStatus getRGBValue(const Rect& rect, Rgb* rgb, Error* ret) override {
        rgb->r = rect.left;
        rgb->g = rect.top;
        rgb->b = rect.bottom;
        *ret = Error::NONE;
        return ScopedAStatus::ok();
    }
    ScopedAStatus getLumasValue(const Rect&, std::vector<float>*, Error* ret) override {
        return fail(ret);
    }
    ScopedAStatus getHistogramValue(const Rect&, Histogram*, Error* ret) override {
        return fail(ret);
    }
    ScopedAStatus getCwbPostProcessStatus(bool* ret) override {
        *ret = false;
        return ScopedAStatus::ok();
    }
    ScopedAStatus setCwbPostProcessStatus(bool, Error* ret) override { return fail(ret); }
    ScopedAStatus registerCallback(const std::shared_ptr<ICwbCallback>& cb, Error* ret) override {
        if (cb != nullptr) cb->notifyCwbStatus(true);
        *ret = Error::NONE;
        return ScopedAStatus::ok();
    }
    ScopedAStatus unregisterCallback(const std::shared_ptr<ICwbCallback>&, Error* ret) override {
        return fail(ret);
    }
    ScopedAStatus enable(bool* ret) override {
        *ret = true;
        return ScopedAStatus::ok();
    }
    ScopedAStatus disable(bool* ret) override {
        *ret = true;
        return ScopedAStatus::ok();
    }
    ScopedAStatus setDebug(const std::vector<int32_t>&, Error* ret) override { return fail(ret); }
    ScopedAStatus getCwbValue(int32_t, const Rect&, std::vector<int32_t>*, Error* ret) override {
        return fail(ret);
    }
    ScopedAStatus reserved(int32_t, int32_t) override { return ScopedAStatus::ok(); }
    ScopedAStatus initializeSharedMemory(int32_t, int32_t, const ScopedFileDescriptor&,
                                         Error* ret) override {
        return fail(ret);
    }
    ScopedAStatus getSharedData(int32_t, const Rect&, const ScopedFileDescriptor&, int32_t,
                                std::vector<int32_t>*, Error* ret) override {
        return fail(ret);
    }
    ScopedAStatus getScreenResolution(int32_t, std::vector<int32_t>*, Error* ret) override {
        return fail(ret);
    }
    ScopedAStatus releaseSharedMemory(int32_t, int32_t, Error* ret) override { return fail(ret); }

  private:
    static ScopedAStatus fail(Error* ret) {
        *ret = Error::FAILED;
        return ScopedAStatus::ok();
    }
};

class CountingCallback : public BnCwbCallback {
  public:
    ScopedAStatus notifyCwbStatus(bool status) override {
        (status ? on : off).fetch_add(1, std::memory_order_relaxed);
        return ScopedAStatus::ok();
    }
    std::atomic<int> on{0};
    std::atomic<int> off{0};
};

TEST(AidlBinderTest, FromBinderRoundTripsAndRejectsOtherInterfaces) {
    auto service = ::ndk::SharedRefBase::make<FakeService>();
    auto callback = ::ndk::SharedRefBase::make<CountingCallback>();

    EXPECT_EQ(ICwbService::fromBinder(service->asBinder()), service);
    EXPECT_EQ(ICwbCallback::fromBinder(callback->asBinder()), callback);
    EXPECT_EQ(ICwbService::fromBinder(callback->asBinder()), nullptr);
    EXPECT_EQ(ICwbCallback::fromBinder(service->asBinder()), nullptr);
    EXPECT_EQ(ICwbService::fromBinder(::ndk::SpAIBinder()), nullptr);
    EXPECT_EQ(ICwbCallback::fromBinder(::ndk::SpAIBinder()), nullptr);
    EXPECT_EQ(std::string(service->asBinder().get()->descriptor),
              "vendor.zarel.hardware.cwb.ICwbService");
    EXPECT_EQ(std::string(callback->asBinder().get()->descriptor),
              "vendor.zarel.hardware.cwb.ICwbCallback");
}

TEST(AidlBinderTest, BinderKeepsServiceAliveAndCallsReachIt) {
    ::ndk::SpAIBinder binder;
    std::weak_ptr<FakeService> weak;
    {
        auto service = ::ndk::SharedRefBase::make<FakeService>();
        weak = service;
        binder = service->asBinder();
    }
    ASSERT_FALSE(weak.expired());
    std::shared_ptr<ICwbService> service = ICwbService::fromBinder(binder);
    ASSERT_NE(service, nullptr);

    int32_t version = 0;
    std::string hash;
    EXPECT_TRUE(service->getInterfaceVersion(&version).isOk());
    EXPECT_TRUE(service->getInterfaceHash(&hash).isOk());
    EXPECT_EQ(version, 2);
    EXPECT_EQ(hash, ICwbService::hash);

    Rgb rgb;
    Error error = Error::FAILED;
    EXPECT_TRUE(service->getRGBValue(Rect{7, 8, 9, 10}, &rgb, &error).isOk());
    EXPECT_EQ(error, Error::NONE);
    EXPECT_EQ(rgb, (Rgb{7, 8, 10, {}}));

    auto callback = ::ndk::SharedRefBase::make<CountingCallback>();
    EXPECT_TRUE(service->registerCallback(ICwbCallback::fromBinder(callback->asBinder()), &error)
                        .isOk());
    EXPECT_EQ(callback->on.load(), 1);

    service.reset();
    binder.reset();
    EXPECT_TRUE(weak.expired());
}

TEST(AidlBinderTest, ConcurrentBindersShareOneObject) {
    auto callback = ::ndk::SharedRefBase::make<CountingCallback>();
    constexpr int kThreads = 8;
    constexpr int kRounds = 500;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&callback, t] {
            for (int i = 0; i < kRounds; ++i) {
                ::ndk::SpAIBinder binder = callback->asBinder();
                ::ndk::SpAIBinder copy = binder;
                std::shared_ptr<ICwbCallback> cb = ICwbCallback::fromBinder(copy);
                if (cb != nullptr) cb->notifyCwbStatus((t + i) % 2 == 0);
            }
        });
    }
    for (auto& th : threads) th.join();
    EXPECT_EQ(callback->on.load() + callback->off.load(), kThreads * kRounds);
    EXPECT_EQ(callback->on.load(), kThreads * kRounds / 2);
}

struct RectOrder {
    Rect a;
    Rect b;
    int expected;  // sign of a - b
};

class RectOrderTest : public ::testing::TestWithParam<RectOrder> {};

TEST_P(RectOrderTest, IsLexicographicOverFieldsInOrder) {
    const RectOrder& c = GetParam();
    EXPECT_EQ(c.a == c.b, c.expected == 0);
    EXPECT_EQ(c.a != c.b, c.expected != 0);
    EXPECT_EQ(c.a < c.b, c.expected < 0);
    EXPECT_EQ(c.a > c.b, c.expected > 0);
    EXPECT_EQ(c.a <= c.b, c.expected <= 0);
    EXPECT_EQ(c.a >= c.b, c.expected >= 0);
    // The reverse comparison must agree, so that sorting and map keys behave.
    EXPECT_EQ(c.b<c.a, c.expected> 0);
}

INSTANTIATE_TEST_SUITE_P(
        Cases, RectOrderTest,
        ::testing::Values(RectOrder{{1, 2, 3, 4}, {1, 2, 3, 4}, 0},
                          RectOrder{{1, 2, 3, 4}, {1, 2, 3, 5}, -1},  // only bottom differs
                          RectOrder{{1, 2, 4, 0}, {1, 2, 3, 9}, 1},   // right outranks bottom
                          RectOrder{{1, 3, 0, 0}, {1, 2, 9, 9}, 1},   // top outranks the rest
                          RectOrder{{0, 9, 9, 9}, {1, 0, 0, 0}, -1},  // left outranks all
                          RectOrder{{-5, 0, 0, 0}, {5, 0, 0, 0}, -1}));

TEST(AidlTypesTest, ValuesCompareAndPrintByEveryField) {
    EXPECT_EQ(Rect({1, -2, 3, 4}).toString(), "Rect{left: 1, top: -2, right: 3, bottom: 4}");
    EXPECT_EQ((Rgb{1, 2, 3, {4, 5}}).toString(), "Rgb{r: 1, g: 2, b: 3, extra: [4, 5]}");
    EXPECT_EQ((Rgb{1, 2, 3, {}}).toString(), "Rgb{r: 1, g: 2, b: 3, extra: []}");
    EXPECT_NE((Rgb{1, 2, 3, {4}}), (Rgb{1, 2, 3, {}}));

    Histogram h1;
    Histogram h2;
    EXPECT_EQ(h1, h2);
    h2.counts[767] = 1;  // last blue counter
    EXPECT_NE(h1, h2);

    EXPECT_EQ(toString(Error::NONE), "NONE");
    EXPECT_EQ(toString(Error::SCREEN_OFF), "SCREEN_OFF");
    EXPECT_EQ(toString(static_cast<Error>(0x10000)), "65536");
}

}  // namespace
