#include "CwbStats.h"

#include "DumpText.h"

#include <utils/Timers.h>

#include <algorithm>
#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <type_traits>

namespace aidl::vendor::zarel::hardware::cwb::implementation {

static_assert(std::is_trivially_copyable_v<CwbStats::Record>, "records travel as raw words");

namespace {

constexpr const char* kCounterNames[] = {
        "capture requests",     "captures",
        "rgb cache hits",       "luma cache hits",
        "histogram cache hits", "refused disabled",
        "refused no display",   "refused rectangle",
        "refused busy",         "refused screen off",
        "refused capture gate", "capture failed",
        "vendor refused",       "vendor errors",
        "vendor time-outs",     "copies",
        "copy refusals",        "pauses",
};
static_assert(sizeof(kCounterNames) / sizeof(kCounterNames[0]) ==
              static_cast<size_t>(CwbStats::Counter::kCount));

constexpr const char* kMethodNames[] = {
        "getRGBValue",
        "getLumasValue",
        "getHistogramValue",
        "getCwbPostProcessStatus",
        "setCwbPostProcessStatus",
        "registerCallback",
        "unregisterCallback",
        "enable",
        "disable",
        "setDebug",
        "getCwbValue",
        "reserved",
        "initializeSharedMemory",
        "getSharedData",
        "getScreenResolution",
        "releaseSharedMemory",
};
static_assert(sizeof(kMethodNames) / sizeof(kMethodNames[0]) ==
              static_cast<size_t>(CwbStats::Method::kCount));

constexpr const char* kEventNames[] = {
        "setPowerMode",  "notifyColorModeChange", "notifyConfigChange", "aodLayerExist",
        "fodLayerExist", "updateCwbStatus",       "invalidCache",
};
static_assert(sizeof(kEventNames) / sizeof(kEventNames[0]) ==
              static_cast<size_t>(CwbStats::Event::kCount));

bool isEvent(const CwbStats::Record& r) {
    return r.method >= CwbStats::kEventBase;
}

std::string resultText(const CwbStats::Record& r) {
    if (r.result == CwbStats::kNoResult) return "-";
    const auto method = static_cast<CwbStats::Method>(r.method);
    if (method == CwbStats::Method::getCwbPostProcessStatus || method == CwbStats::Method::enable ||
        method == CwbStats::Method::disable) {
        return r.result != 0 ? "true" : "false";
    }
    static constexpr const char* kErrors[] = {"NONE", "FAILED", "INVALID_ARGUMENT", "SCREEN_OFF"};
    const uint32_t word = static_cast<uint32_t>(r.result);
    const uint32_t low = word & 0xFFFF;
    std::string text = low < 4 ? kErrors[low] : std::to_string(low);
    if ((word >> 16) != 0) text += " state " + std::to_string(word >> 16);
    return text;
}

}  // namespace

CwbStats::Request::Request(CwbStats& stats, Method method, const Rect* rect, const Error* result,
                           int32_t arg)
    : mStats(stats), mRecord{}, mError(result), mBool(nullptr) {
    mRecord.method = static_cast<int32_t>(method);
    mRecord.arg = arg;
    mRecord.result = kNoResult;
    if (rect != nullptr) {
        mRecord.hasRect = 1;
        mRecord.rect[0] = rect->left;
        mRecord.rect[1] = rect->top;
        mRecord.rect[2] = rect->right;
        mRecord.rect[3] = rect->bottom;
    }
    mRecord.durationNs = systemTime(SYSTEM_TIME_MONOTONIC);
}

CwbStats::Request::Request(CwbStats& stats, Method method, const bool* result)
    : Request(stats, method) {
    mBool = result;
}

CwbStats::Request::~Request() {
    if (mError != nullptr) mRecord.result = static_cast<int32_t>(*mError);
    // For the statistics requests INVALID_ARGUMENT has one cause only: the rectangle check.
    const auto method = static_cast<Method>(mRecord.method);
    if ((method == Method::getRGBValue || method == Method::getLumasValue ||
         method == Method::getHistogramValue) &&
        (mRecord.result & 0xFFFF) == static_cast<int32_t>(Error::INVALID_ARGUMENT)) {
        mStats.count(Counter::RefusedRect);
    }
    if (mBool != nullptr) mRecord.result = *mBool ? 1 : 0;
    summarise();
    mRecord.endNs = systemTime(SYSTEM_TIME_MONOTONIC);
    mRecord.durationNs = mRecord.endNs - mRecord.durationNs;
    mStats.record(mRecord);
}

void CwbStats::Request::summarise() {
    const void* p = mAnswer.second;
    auto keep = [&](auto begin, size_t n) {
        mRecord.valueCount = static_cast<int32_t>(n);
        for (size_t i = 0; i < n && i < kValues; ++i) mRecord.values[i] = begin[i];
    };
    switch (mAnswer.first) {
        case Answer::None:
            break;
        case Answer::Rgb: {
            const auto* rgb = static_cast<const Rgb*>(p);
            const int32_t v[3] = {rgb->r, rgb->g, rgb->b};
            keep(v, 3);
            break;
        }
        case Answer::Floats: {
            const auto* floats = static_cast<const std::vector<float>*>(p);
            mRecord.valueCount = static_cast<int32_t>(floats->size());
            for (size_t i = 0; i < floats->size() && i < kValues; ++i) {
                memcpy(&mRecord.values[i], &(*floats)[i], sizeof(float));
            }
            break;
        }
        case Answer::Histogram: {
            const auto& counts = static_cast<const Histogram*>(p)->counts;
            uint64_t sum[3] = {}, pixels[3] = {};
            uint32_t hash = 2166136261u;
            for (size_t i = 0; i < counts.size(); ++i) {
                const auto count = static_cast<uint32_t>(counts[i]);
                sum[i % 3] += static_cast<uint64_t>(i / 3) * count;
                pixels[i % 3] += count;
                for (int b = 0; b < 4; ++b) hash = (hash ^ ((count >> (8 * b)) & 0xFF)) * 16777619u;
            }
            int32_t v[4];
            for (int c = 0; c < 3; ++c) {
                v[c] = pixels[c] == 0
                               ? 0
                               : static_cast<int32_t>((sum[c] * 100 + pixels[c] / 2) / pixels[c]);
            }
            v[3] = static_cast<int32_t>(hash);
            keep(v, 4);
            break;
        }
        case Answer::Ints: {
            const auto* ints = static_cast<const std::vector<int32_t>*>(p);
            keep(ints->data(), ints->size());
            break;
        }
    }
}

void CwbStats::event(Event event, int64_t display, std::initializer_list<int32_t> values) {
    // A layer change comes with every composed frame: a run of them is kept as one.
    const bool layerChange = event == Event::invalidCache;
    if (mLayerChangeOpen.exchange(layerChange, std::memory_order_relaxed) && layerChange) return;
    Record r{};
    r.endNs = systemTime(SYSTEM_TIME_MONOTONIC);
    r.method = kEventBase + static_cast<int32_t>(event);
    r.arg = static_cast<int32_t>(display);
    r.result = kNoResult;
    r.valueCount = static_cast<int32_t>(values.size());
    size_t i = 0;
    for (int32_t v : values) {
        if (i < kValues) r.values[i++] = v;
    }
    record(r);
}

void CwbStats::record(const Record& record) {
    const size_t method = static_cast<size_t>(record.method);
    if (method < mCalls.size()) {
        mCalls[method].fetch_add(1, std::memory_order_relaxed);
        mLayerChangeOpen.store(false, std::memory_order_relaxed);
    }
    uint64_t words[kWords] = {};
    memcpy(words, &record, sizeof(record));
    const uint64_t ticket = mNextTicket.fetch_add(1, std::memory_order_relaxed);
    Slot& slot = mSlots[ticket % kHistory];
    // A sequence lock: readers retry or skip a slot whose sequence moved while they read it.
    slot.sequence.store(2 * ticket + 1, std::memory_order_relaxed);
    std::atomic_thread_fence(std::memory_order_release);
    for (size_t i = 0; i < kWords; ++i) slot.words[i].store(words[i], std::memory_order_relaxed);
    slot.sequence.store(2 * ticket + 2, std::memory_order_release);
}

size_t CwbStats::lastRequests(Record* out, size_t max) const {
    Record all[kHistory];
    const size_t n = history(all, kHistory);
    size_t found = 0;
    for (size_t i = 0; i < n && found < max; ++i) {
        if (!isEvent(all[i])) out[found++] = all[i];
    }
    return found;
}

size_t CwbStats::history(Record* out, size_t max) const {
    const uint64_t next = mNextTicket.load(std::memory_order_acquire);
    size_t found = 0;
    for (uint64_t back = 1; back <= kHistory && back <= next && found < max; ++back) {
        const uint64_t ticket = next - back;
        const Slot& slot = mSlots[ticket % kHistory];
        const uint64_t before = slot.sequence.load(std::memory_order_acquire);
        if (before != 2 * ticket + 2) continue;
        uint64_t words[kWords];
        for (size_t i = 0; i < kWords; ++i)
            words[i] = slot.words[i].load(std::memory_order_relaxed);
        std::atomic_thread_fence(std::memory_order_acquire);
        if (slot.sequence.load(std::memory_order_relaxed) != before) continue;
        memcpy(&out[found++], words, sizeof(Record));
    }
    return found;
}

const char* CwbStats::name(Counter counter) {
    const size_t i = static_cast<size_t>(counter);
    return i < static_cast<size_t>(Counter::kCount) ? kCounterNames[i] : "?";
}

const char* CwbStats::name(Method method) {
    const size_t i = static_cast<size_t>(method);
    return i < static_cast<size_t>(Method::kCount) ? kMethodNames[i] : "?";
}

const char* CwbStats::name(Event event) {
    const size_t i = static_cast<size_t>(event);
    return i < static_cast<size_t>(Event::kCount) ? kEventNames[i] : "?";
}

void CwbStats::print(std::string* out, int64_t nowNs) const {
    out->append("Counters:\n");
    for (size_t i = 0; i < static_cast<size_t>(Counter::kCount); ++i) {
        appendf<256>(out, "  %s: %" PRIu64 "\n", kCounterNames[i], value(static_cast<Counter>(i)));
    }
    out->append("Calls:\n");
    for (size_t i = 0; i < static_cast<size_t>(Method::kCount); ++i) {
        const uint64_t n = calls(static_cast<Method>(i));
        if (n != 0) appendf<256>(out, "  %s: %" PRIu64 "\n", kMethodNames[i], n);
    }
    Record records[kShown];
    const size_t n = lastRequests(records, kShown);
    appendf<256>(out, "Last requests (newest first, %zu):\n", n);
    for (size_t i = 0; i < n; ++i) {
        const Record& r = records[i];
        std::string line = "  ";
        line += name(static_cast<Method>(r.method));
        const auto method = static_cast<Method>(r.method);
        if (method == Method::getCwbValue || method == Method::getSharedData ||
            method == Method::initializeSharedMemory) {
            line += " " + std::to_string(r.arg);
        }
        if (r.hasRect != 0) {
            appendf<256>(&line, " %d,%d,%d,%d", r.rect[0], r.rect[1], r.rect[2], r.rect[3]);
        }
        line += " -> " + resultText(r);
        appendf<256>(&line, ", took %.3f ms, %.3f s ago\n", static_cast<double>(r.durationNs) / 1e6,
                     static_cast<double>(nowNs - r.endNs) / 1e9);
        out->append(line);
    }
}

namespace {

// The answer of a request as cwb-sim's expect line words.
std::string expectText(const CwbStats::Record& r) {
    using Method = CwbStats::Method;
    const auto method = static_cast<Method>(r.method);
    std::string out = "expect";
    if (r.result != CwbStats::kNoResult) {
        if (method == Method::getCwbPostProcessStatus || method == Method::enable ||
            method == Method::disable) {
            out += r.result != 0 ? " result=true" : " result=false";
        } else {
            static constexpr const char* kErrors[] = {"NONE", "FAILED", "INVALID_ARGUMENT",
                                                      "SCREEN_OFF"};
            const uint32_t low = static_cast<uint32_t>(r.result) & 0xFFFF;
            out += " error=" + (low < 4 ? std::string(kErrors[low]) : std::to_string(low));
            if (method == Method::getRGBValue) {
                out += " state=" + std::to_string(static_cast<uint32_t>(r.result) >> 16);
            }
        }
    }
    const size_t kept = std::min(static_cast<size_t>(std::max(r.valueCount, 0)), CwbStats::kValues);
    switch (method) {
        case Method::getRGBValue:
            appendf<64>(&out, " rgb=%d,%d,%d", r.values[0], r.values[1], r.values[2]);
            break;
        case Method::getLumasValue:
            if (kept > 0) {
                float luma;
                memcpy(&luma, &r.values[0], sizeof(luma));
                appendf<64>(&out, " luma=%.6f", static_cast<double>(luma));
            }
            break;
        case Method::getHistogramValue:
            appendf<96>(&out, " means=%d.%02d,%d.%02d,%d.%02d checksum=%08x", r.values[0] / 100,
                        r.values[0] % 100, r.values[1] / 100, r.values[1] % 100, r.values[2] / 100,
                        r.values[2] % 100, static_cast<uint32_t>(r.values[3]));
            break;
        case Method::getCwbValue:
        case Method::getSharedData:
        case Method::getScreenResolution: {
            // getCwbValue's times after the colour are the device's own; they are not compared.
            const size_t shown = method == Method::getCwbValue ? std::min<size_t>(kept, 4) : kept;
            out += " values=";
            for (size_t i = 0; i < shown; ++i) {
                out += (i == 0 ? "" : ",") + std::to_string(r.values[i]);
            }
            if (shown == 0) out += "-";
            out += " count=" + std::to_string(r.valueCount);
            break;
        }
        default:
            break;
    }
    return out == "expect" ? "" : out + "\n";
}

}  // namespace

void CwbStats::printSession(std::string* out) const {
    Record records[kHistory];
    const size_t n = history(records, kHistory);
    appendf<128>(out, "# The last %zu requests and composer events, oldest first.\n", n);
    int64_t lastEnd = 0;
    int32_t sharedSize = 0;
    int clients = 0;
    for (size_t k = n; k-- > 0;) {
        const Record& r = records[k];
        const int64_t start = r.endNs - r.durationNs;
        if (lastEnd != 0 && start - lastEnd >= 500000) {
            appendf<64>(out, "sleep %lld\n",
                        static_cast<long long>((start - lastEnd + 500000) / 1000000));
        }
        lastEnd = r.endNs;
        if (isEvent(r)) {
            const auto event = static_cast<Event>(r.method - kEventBase);
            const int32_t* v = r.values;
            out->append("host ").append(name(event));
            switch (event) {
                case Event::setPowerMode:
                    appendf<64>(out, " %d %d\n", r.arg, v[0]);
                    break;
                case Event::notifyColorModeChange:
                    appendf<64>(out, " %d %d %d\n", r.arg, v[0], v[1]);
                    break;
                case Event::notifyConfigChange:
                    appendf<64>(out, " %d %u\n", r.arg, static_cast<uint32_t>(v[0]));
                    break;
                case Event::invalidCache:
                    out->append("\n");
                    break;
                default:
                    appendf<64>(out, " %d\n", v[0] != 0 ? 1 : 0);
                    break;
            }
            continue;
        }
        const auto method = static_cast<Method>(r.method);
        std::string line = name(method);
        std::string rect;
        if (r.hasRect != 0) {
            appendf<64>(&rect, " %d,%d,%d,%d", r.rect[0], r.rect[1], r.rect[2], r.rect[3]);
        }
        const size_t kept = std::min(static_cast<size_t>(std::max(r.valueCount, 0)), kValues);
        switch (method) {
            case Method::getCwbValue:
                line += " " + std::to_string(r.arg) + rect;
                break;
            case Method::getSharedData:
                line += " " + std::to_string(r.arg) + rect + " " + std::to_string(sharedSize);
                break;
            case Method::initializeSharedMemory:
                sharedSize = r.arg;
                line += " " + std::to_string(r.arg);
                break;
            case Method::setCwbPostProcessStatus:
                line += " " + std::to_string(r.arg != 0 ? 1 : 0);
                break;
            case Method::setDebug:
                // Only the first values are kept; the service reads no more than three.
                line += " ";
                for (size_t i = 0; i < kept; ++i) {
                    line += (i == 0 ? "" : ",") + std::to_string(r.values[i]);
                }
                if (kept == 0) line += "-";
                break;
            case Method::registerCallback:
                line += " client" + std::to_string(++clients);
                break;
            case Method::unregisterCallback:
            case Method::reserved:
                // Which client's callback is not known; the call changes no answer.
                line = "# " + line;
                break;
            default:
                line += rect;
                break;
        }
        out->append(line).append("\n");
        if (line[0] != '#') out->append(expectText(r));
    }
}

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
