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
    mRecord.endNs = systemTime(SYSTEM_TIME_MONOTONIC);
    mRecord.durationNs = mRecord.endNs - mRecord.durationNs;
    mStats.record(mRecord);
}

void CwbStats::record(const Record& record) {
    const size_t method = static_cast<size_t>(record.method);
    if (method < mCalls.size()) mCalls[method].fetch_add(1, std::memory_order_relaxed);
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
    Record records[kHistory];
    const size_t n = lastRequests(records, kHistory);
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

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
