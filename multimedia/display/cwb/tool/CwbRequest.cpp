#include "CwbRequest.h"

#include <android/binder_status.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>

#include "RectSyntax.h"
#include "ReplyPrinter.h"

namespace cwbtool {

namespace {

using ::aidl::vendor::zarel::hardware::cwb::Error;
using ::aidl::vendor::zarel::hardware::cwb::Histogram;
using ::aidl::vendor::zarel::hardware::cwb::ICwbService;
using ::aidl::vendor::zarel::hardware::cwb::Rgb;

constexpr int64_t kInt32Min = std::numeric_limits<int32_t>::min();
constexpr int64_t kInt32Max = std::numeric_limits<int32_t>::max();
constexpr int64_t kMaxRegion = 256 << 20;

// Argument kinds: R rectangle, I int32, B 0 or 1, L comma list of int32 or -, S region size.
struct Signature {
    const char* method;
    const char* args;
    const char* usage;
};

constexpr Signature kSignatures[] = {
        {"getRGBValue", "R", "RECT"},
        {"getLumasValue", "R", "RECT"},
        {"getHistogramValue", "R", "RECT"},
        {"getCwbPostProcessStatus", "", ""},
        {"setCwbPostProcessStatus", "B", "0|1"},
        {"registerCallback", "", "(prints --count notifications, then unregisters)"},
        {"unregisterCallback", "", "(registers a callback and removes it again)"},
        {"enable", "", ""},
        {"disable", "", ""},
        {"setDebug", "L", "V,V,V | -"},
        {"getCwbValue", "IR", "ID RECT"},
        {"reserved", "II", "A B"},
        {"initializeSharedMemory", "S", "SIZE"},
        {"getSharedData", "IRI", "ID RECT BUFSIZE"},
        {"getScreenResolution", "", ""},
        {"releaseSharedMemory", "", ""},
        {"version", "", "(getInterfaceVersion and getInterfaceHash)"},
};

int32_t statusCode(const ndk::ScopedAStatus& status) {
    if (status.isOk()) return 0;
    if (status.getExceptionCode() == EX_SERVICE_SPECIFIC) return status.getServiceSpecificError();
    return status.getExceptionCode();
}

std::string format(const char* fmt, double value) {
    char text[64];
    snprintf(text, sizeof(text), fmt, value);
    return text;
}

std::string list(const int32_t* values, size_t n) {
    std::string out = "[";
    for (size_t i = 0; i < n; ++i) out += (i == 0 ? "" : ",") + std::to_string(values[i]);
    return out + "]";
}

std::string verdict(uint32_t state) {
    std::string out;
    if (state & 0x1) out += ", pure colour";
    if (state & 0x2) out += ", black/white";
    return out;
}

std::string rgbText(int32_t r, int32_t g, int32_t b, uint32_t state) {
    return "rgb " + std::to_string(r) + "," + std::to_string(g) + "," + std::to_string(b) +
           verdict(state);
}

int64_t joinTime(int32_t high, int32_t low) {
    return static_cast<int64_t>((static_cast<uint64_t>(static_cast<uint32_t>(high)) << 32) |
                                static_cast<uint32_t>(low));
}

// The interval (boot clock) and panel loading that getCwbValue appends after its analysis values.
void timing(const std::vector<int32_t>& v, size_t at, Reply* reply) {
    const int64_t start = joinTime(v[at], v[at + 1]);
    const int64_t end = joinTime(v[at + 2], v[at + 3]);
    reply->answer.push_back("shown " + format("%.3f", (end - start) / 1e6) + " ms (" +
                            format("%.6f", start / 1e9) + " s to " + format("%.6f", end / 1e9) +
                            " s), loading " + format("%.6f", v[at + 4] / 1e8));
    reply->json += ",\"start\":" + std::to_string(start) + ",\"end\":" + std::to_string(end) +
                   ",\"loading\":" + std::to_string(v[at + 4]);
}

void histogramAnswer(const Histogram& h, Reply* reply) {
    static constexpr const char* kChannels[] = {"R", "G", "B"};
    static constexpr const char* kKeys[] = {"r", "g", "b"};
    reply->json = "\"histogram\":{";
    for (int ch = 0; ch < 3; ++ch) {
        int32_t column[256];
        int64_t total = 0;
        double weighted = 0;
        int lowest = -1, highest = -1, peak = 0;
        for (int level = 0; level < 256; ++level) {
            column[level] = h.counts[level * 3 + ch];
            const int64_t n = static_cast<uint32_t>(column[level]);
            if (n == 0) continue;
            total += n;
            weighted += static_cast<double>(n) * level;
            if (lowest < 0) lowest = level;
            highest = level;
            if (n > static_cast<uint32_t>(column[peak])) peak = level;
        }
        reply->json +=
                std::string(ch == 0 ? "" : ",") + "\"" + kKeys[ch] + "\":" + list(column, 256);
        if (total == 0) {
            reply->answer.push_back(std::string(kChannels[ch]) + ": no pixels counted");
            continue;
        }
        reply->answer.push_back(std::string(kChannels[ch]) + ": mean " +
                                format("%.2f", weighted / total) + ", levels " +
                                std::to_string(lowest) + ".." + std::to_string(highest) +
                                ", peak at " + std::to_string(peak));
    }
    reply->json += "}";
}

void valuesAnswer(const std::string& method, const std::vector<int32_t>& v, Reply* reply) {
    reply->json = "\"values\":" + list(v.data(), v.size());
    if (method == "getCwbValue" && v.size() == 9) {
        reply->answer.push_back(rgbText(v[0], v[1], v[2], static_cast<uint32_t>(v[3])));
        timing(v, 4, reply);
    } else if (method == "getCwbValue" && v.size() == 6) {
        reply->answer.push_back("luma " + format("%.4f", v[0] / 10000.0));
        timing(v, 1, reply);
    } else if (method == "getSharedData" && v.size() == 5) {
        reply->answer.push_back(std::string(v[0] != 0 ? "copies paused" : "copying") +
                                ", crop area " + std::to_string(v[1]) + "x" + std::to_string(v[2]) +
                                ", display " + std::to_string(v[3]) + "x" + std::to_string(v[4]));
    } else if (method == "getScreenResolution" && v.size() == 2) {
        reply->answer.push_back("height " + std::to_string(v[0]) + ", row pitch " +
                                std::to_string(v[1]));
    } else {
        std::string text = v.empty() ? "no values" : "values";
        for (int32_t x : v) text += " " + std::to_string(x);
        reply->answer.push_back(text);
    }
}

// A region of client shared memory, as a client hands one over: a sealed-size memfd.
class Region {
  public:
    explicit Region(int64_t size) : mSize(static_cast<size_t>(size > 0 ? size : 1)) {
        mFd = memfd_create("cwb-region", MFD_CLOEXEC);
        if (mFd < 0 || ftruncate(mFd, static_cast<off_t>(mSize)) != 0) return;
        void* base = mmap(nullptr, mSize, PROT_READ, MAP_SHARED, mFd, 0);
        if (base != MAP_FAILED) mBase = static_cast<const uint8_t*>(base);
    }
    ~Region() {
        if (mBase != nullptr) munmap(const_cast<uint8_t*>(mBase), mSize);
        if (mFd >= 0) close(mFd);
    }
    Region(const Region&) = delete;
    Region& operator=(const Region&) = delete;

    bool valid() const { return mBase != nullptr; }
    // A descriptor for the call; the binder layer duplicates it as it would across processes.
    ndk::ScopedFileDescriptor handle() const { return ndk::ScopedFileDescriptor(dup(mFd)); }
    const uint8_t* base() const { return mBase; }
    size_t size() const { return mSize; }

  private:
    size_t mSize;
    int mFd = -1;
    const uint8_t* mBase = nullptr;
};

}  // namespace

std::string CwbRequest::usage() {
    std::string out;
    for (const Signature& s : kSignatures) {
        out += std::string("  ") + s.method + (s.usage[0] != '\0' ? " " : "") + s.usage + "\n";
    }
    return out + "  RECT is " + kRectSyntax + ";\n  all four negative are fractions of the " +
           "screen (low 24 bits in units of 1/100000).\n";
}

bool CwbRequest::parse(const std::vector<std::string>& words, std::string* error) {
    if (words.empty()) {
        *error = "no sub-command given";
        return false;
    }
    const Signature* signature = nullptr;
    for (const Signature& s : kSignatures) {
        if (words[0] == s.method) signature = &s;
    }
    if (signature == nullptr) {
        *error = "unknown sub-command '" + words[0] + "'";
        return false;
    }
    mMethod = words[0];
    mText = words[0];
    const size_t expected = strlen(signature->args);
    if (words.size() - 1 != expected) {
        *error = mMethod + ": expected " +
                 (expected == 0 ? std::string("no argument") : std::string(signature->usage)) +
                 ", got " + std::to_string(words.size() - 1) + " argument" +
                 (words.size() == 2 ? "" : "s");
        return false;
    }
    for (size_t i = 0; i < expected; ++i) {
        const std::string& w = words[i + 1];
        mText += " " + w;
        int64_t value = 0;
        switch (signature->args[i]) {
            case 'R':
                if (!parseRect(w, &mRect)) {
                    *error = mMethod + ": bad rectangle '" + w + "': expected " + kRectSyntax;
                    return false;
                }
                break;
            case 'I':
            case 'S':
            case 'B': {
                const int64_t min = signature->args[i] == 'B' ? 0 : kInt32Min;
                const int64_t max = signature->args[i] == 'B'   ? 1
                                    : signature->args[i] == 'S' ? kMaxRegion
                                                                : kInt32Max;
                if (!parseInt(w, min, max, &value)) {
                    *error = mMethod + ": '" + w + "' is not an integer from " +
                             std::to_string(min) + " to " + std::to_string(max);
                    return false;
                }
                mNums.push_back(value);
                break;
            }
            case 'L':
                if (w == "-") break;
                for (const std::string& piece : split(w, ',')) {
                    if (!parseInt(piece, kInt32Min, kInt32Max, &value)) {
                        *error = mMethod + ": bad value '" + piece +
                                 "': expected integers separated by commas, or -";
                        return false;
                    }
                    mList.push_back(static_cast<int32_t>(value));
                }
                break;
        }
    }
    return true;
}

bool CwbRequest::run(ICwbService& service, Reply* reply, std::string* error) const {
    *reply = Reply{};
    reply->request = mText;
    Error result = Error::NONE;
    ndk::ScopedAStatus status;
    bool flag = false;
    std::vector<int32_t> values;
    const std::string& m = mMethod;
    auto finish = [&](bool hasError) {
        reply->status = statusCode(status);
        if (reply->status != 0) {
            reply->answer.clear();
            reply->json.clear();
        } else if (hasError) {
            reply->error = static_cast<int32_t>(result);
        }
        return true;
    };
    if (m == "getRGBValue") {
        Rgb rgb;
        status = service.getRGBValue(mRect, &rgb, &result);
        const uint32_t state = static_cast<uint32_t>(result) >> 16;
        reply->answer.push_back(rgbText(rgb.r, rgb.g, rgb.b, state));
        reply->json = "\"rgb\":[" + std::to_string(rgb.r) + "," + std::to_string(rgb.g) + "," +
                      std::to_string(rgb.b) + "],\"state\":" + std::to_string(state);
        return finish(true);
    }
    if (m == "getLumasValue") {
        std::vector<float> lumas;
        status = service.getLumasValue(mRect, &lumas, &result);
        std::string text = "luma", json = "\"lumas\":[";
        for (size_t i = 0; i < lumas.size(); ++i) {
            text += " " + format("%.4f", lumas[i]);
            json += (i == 0 ? "" : ",") + format("%.6f", lumas[i]);
        }
        reply->answer.push_back(text);
        reply->json = json + "]";
        return finish(true);
    }
    if (m == "getHistogramValue") {
        Histogram histogram;
        status = service.getHistogramValue(mRect, &histogram, &result);
        histogramAnswer(histogram, reply);
        return finish(true);
    }
    if (m == "getCwbPostProcessStatus" || m == "enable" || m == "disable") {
        status = m == "enable"    ? service.enable(&flag)
                 : m == "disable" ? service.disable(&flag)
                                  : service.getCwbPostProcessStatus(&flag);
        reply->answer.push_back(flag ? "true" : "false");
        reply->json = std::string("\"result\":") + (flag ? "true" : "false");
        return finish(false);
    }
    if (m == "setCwbPostProcessStatus") {
        status = service.setCwbPostProcessStatus(mNums[0] != 0, &result);
        return finish(true);
    }
    if (m == "setDebug") {
        status = service.setDebug(mList, &result);
        return finish(true);
    }
    if (m == "getCwbValue") {
        status = service.getCwbValue(static_cast<int32_t>(mNums[0]), mRect, &values, &result);
        valuesAnswer(m, values, reply);
        return finish(true);
    }
    if (m == "reserved") {
        status = service.reserved(static_cast<int32_t>(mNums[0]), static_cast<int32_t>(mNums[1]));
        return finish(false);
    }
    if (m == "initializeSharedMemory") {
        Region region(mNums[0]);
        if (!region.valid()) {
            *error = "could not create a shared-memory region: " + std::string(strerror(errno));
            return false;
        }
        status = service.initializeSharedMemory(0, static_cast<int32_t>(mNums[0]), region.handle(),
                                                &result);
        return finish(true);
    }
    if (m == "getSharedData") return sharedData(service, reply, error);
    if (m == "getScreenResolution") {
        status = service.getScreenResolution(0, &values, &result);
        valuesAnswer(m, values, reply);
        return finish(true);
    }
    if (m == "releaseSharedMemory") {
        status = service.releaseSharedMemory(0, 0, &result);
        return finish(true);
    }
    if (m == "version") {
        int32_t version = 0;
        std::string hash;
        status = service.getInterfaceVersion(&version);
        if (status.isOk()) status = service.getInterfaceHash(&hash);
        reply->answer.push_back("version " + std::to_string(version) + ", hash " + hash);
        reply->json =
                "\"version\":" + std::to_string(version) + ",\"hash\":" + ReplyPrinter::quote(hash);
        return finish(false);
    }
    // registerCallback and unregisterCallback need a callback object: cwbMain runs them.
    *error = m + " cannot be run as a plain request";
    return false;
}

// Feature 5 copies into the region of initializeSharedMemory, so the tool maps a region of its
// own first, reads the record back, and releases the region again.
bool CwbRequest::sharedData(ICwbService& service, Reply* reply, std::string* error) const {
    const int32_t feature = static_cast<int32_t>(mNums[0]);
    const int64_t bufferSize = mNums[1];
    Region region(bufferSize > 0 && bufferSize <= kMaxRegion ? bufferSize : 4096);
    if (!region.valid()) {
        *error = "could not create a shared-memory region: " + std::string(strerror(errno));
        return false;
    }
    Error result = Error::NONE;
    if (feature == 5) {
        ndk::ScopedAStatus init = service.initializeSharedMemory(
                0, static_cast<int32_t>(region.size()), region.handle(), &result);
        if (!init.isOk()) {
            reply->status = statusCode(init);
            reply->answer.push_back("initializeSharedMemory failed");
            return true;
        }
    }
    std::vector<int32_t> values;
    ndk::ScopedAStatus status = service.getSharedData(
            feature, mRect, region.handle(), static_cast<int32_t>(bufferSize), &values, &result);
    reply->status = statusCode(status);
    if (status.isOk()) {
        reply->error = static_cast<int32_t>(result);
        valuesAnswer(mMethod, values, reply);
        const int64_t crop =
                static_cast<int64_t>(mRect.right - mRect.left) * (mRect.bottom - mRect.top) * 3;
        if (feature == 5 && result == Error::NONE && crop > 0 &&
            static_cast<uint64_t>(crop) + 12 <= region.size()) {
            int64_t timestamp = 0;
            uint32_t marker = 0;
            memcpy(&timestamp, region.base(), sizeof(timestamp));
            memcpy(&marker, region.base() + 8 + crop, sizeof(marker));
            char text[128];
            snprintf(text, sizeof(text), "record at %.6f s, %lld pixel bytes, marker %08x",
                     timestamp / 1e9, static_cast<long long>(crop), marker);
            reply->answer.push_back(text);
            reply->json += ",\"timestamp\":" + std::to_string(timestamp) +
                           ",\"marker\":" + std::to_string(marker);
        }
    }
    if (feature == 5) service.releaseSharedMemory(0, 0, &result);
    return true;
}

}  // namespace cwbtool
