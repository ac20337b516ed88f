// Request counters and the last few requests, for dumpsys. Writers are binder and vendor threads
// on the request paths, so writing costs relaxed atomics only: no lock, no allocation.
#pragma once

#include <aidl/vendor/zarel/hardware/cwb/Error.h>
#include <aidl/vendor/zarel/hardware/cwb/Rect.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

namespace aidl::vendor::zarel::hardware::cwb::implementation {

class CwbStats {
  public:
    enum class Counter : uint8_t {
        CaptureRequests,  // writebacks handed to the vendor
        Captures,         // writebacks that completed with a frame
        RgbCacheHits,
        LumaCacheHits,
        HistogramCacheHits,
        RefusedDisabled,   // service status off or disabled by a client
        RefusedNoDisplay,  // no valid display selected
        RefusedRect,       // rectangle check failed
        RefusedBusy,       // request lock stayed busy
        RefusedScreenOff,  // power mode, doze-suspend or AOD rules
        RefusedGate,       // 50 ms capture gate closed
        CaptureFailed,     // no connection, no buffer, or the buffer cannot hold the rectangle
        VendorRefused,     // setCWBOutputBuffer failed
        VendorErrors,      // completion reported an error
        Timeouts,          // no completion within 1 s
        Copies,            // shared-memory crops written
        CopyRefusals,      // crops refused (outside the frame or too large)
        Pauses,            // copy limit reached, copies paused until the next layer change
        kCount,
    };

    // The ICwbService methods, in declaration order.
    enum class Method : uint8_t {
        getRGBValue,
        getLumasValue,
        getHistogramValue,
        getCwbPostProcessStatus,
        setCwbPostProcessStatus,
        registerCallback,
        unregisterCallback,
        enable,
        disable,
        setDebug,
        getCwbValue,
        reserved,
        initializeSharedMemory,
        getSharedData,
        getScreenResolution,
        releaseSharedMemory,
        kCount,
    };

    static constexpr int32_t kNoResult = INT32_MIN;
    static constexpr size_t kHistory = 8;

    // One finished request. Plain data so that it can travel through the ring as atomic words.
    struct Record {
        int64_t endNs;       // CLOCK_MONOTONIC
        int64_t durationNs;  // from entry to return
        int32_t method;      // Method
        int32_t arg;         // feature id or size where the method has one, else 0
        int32_t result;      // Error word, 0/1 for a boolean, kNoResult when there is none
        int32_t hasRect;
        int32_t rect[4];
    };

    // Times one binder call from construction to destruction and records it. result points at
    // the call's out-value, read at the end; pass nothing for a method whose value may be unset.
    class Request {
      public:
        Request(CwbStats& stats, Method method, const Rect* rect = nullptr,
                const Error* result = nullptr, int32_t arg = 0);
        Request(CwbStats& stats, Method method, const bool* result);
        ~Request();
        Request(const Request&) = delete;
        Request& operator=(const Request&) = delete;

      private:
        CwbStats& mStats;
        Record mRecord;
        const Error* mError;
        const bool* mBool;
    };

    void count(Counter counter) {
        mCounters[static_cast<size_t>(counter)].fetch_add(1, std::memory_order_relaxed);
    }
    uint64_t value(Counter counter) const {
        return mCounters[static_cast<size_t>(counter)].load(std::memory_order_relaxed);
    }
    uint64_t calls(Method method) const {
        return mCalls[static_cast<size_t>(method)].load(std::memory_order_relaxed);
    }
    void record(const Record& record);
    // Up to max finished requests, newest first; a slot being rewritten right now is skipped.
    size_t lastRequests(Record* out, size_t max) const;

    static const char* name(Counter counter);
    static const char* name(Method method);

    // The counters and the last requests as dumpsys prints them, ages relative to nowNs.
    void print(std::string* out, int64_t nowNs) const;

  private:
    static constexpr size_t kWords = (sizeof(Record) + 7) / 8;
    struct Slot {
        // 2 * ticket + 1 while the record is written, 2 * ticket + 2 once it is complete.
        std::atomic<uint64_t> sequence{0};
        std::array<std::atomic<uint64_t>, kWords> words{};
    };

    std::array<std::atomic<uint64_t>, static_cast<size_t>(Counter::kCount)> mCounters{};
    std::array<std::atomic<uint64_t>, static_cast<size_t>(Method::kCount)> mCalls{};
    std::atomic<uint64_t> mNextTicket{0};
    std::array<Slot, kHistory> mSlots;
};

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
