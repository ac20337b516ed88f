// Request counters, and the last requests and composer events, for dumpsys and its session form.
// Writers are binder, vendor and composer threads on the request paths, so writing costs relaxed
// atomics only: no lock, no allocation.
#pragma once

#include <aidl/vendor/zarel/hardware/cwb/Error.h>
#include <aidl/vendor/zarel/hardware/cwb/Histogram.h>
#include <aidl/vendor/zarel/hardware/cwb/Rect.h>
#include <aidl/vendor/zarel/hardware/cwb/Rgb.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

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

    // Composer events that change what a request answers, kept in the same ring.
    enum class Event : uint8_t {
        setPowerMode,           // arg display; values mode, previous main, previous sec
        notifyColorModeChange,  // arg display; values mode, intent
        notifyConfigChange,     // arg display; values config
        aodLayerExist,          // values exist
        fodLayerExist,          // values exist
        updateCwbStatus,        // values status
        invalidCache,           // a run of layer changes, recorded once until something else
        kCount,
    };

    static constexpr int32_t kNoResult = INT32_MIN;
    static constexpr int32_t kEventBase = 0x100;  // Record::method of an event
    static constexpr size_t kShown = 8;           // requests dumpsys lists
    static constexpr size_t kHistory = 64;        // requests and events kept for a session
    static constexpr size_t kValues = 6;

    // One finished request or one event. Plain data so that it can travel through the ring as
    // atomic words.
    struct Record {
        int64_t endNs;       // CLOCK_MONOTONIC
        int64_t durationNs;  // from entry to return
        int32_t method;      // Method, or kEventBase + Event
        int32_t arg;         // feature id, size or display where there is one, else 0
        int32_t result;      // Error word, 0/1 for a boolean, kNoResult when there is none
        int32_t hasRect;
        int32_t rect[4];
        // The answer in short: up to kValues leading values and how many there were. A
        // histogram keeps its three means in hundredths and an FNV-1a checksum of its counts.
        int32_t valueCount;
        int32_t values[kValues];
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

        // The answer (or the argument list) to summarise at the end; the object must outlive
        // the Request.
        void watch(const Rgb* rgb) { mAnswer = {Answer::Rgb, rgb}; }
        void watch(const std::vector<float>* lumas) { mAnswer = {Answer::Floats, lumas}; }
        void watch(const Histogram* histogram) { mAnswer = {Answer::Histogram, histogram}; }
        void watch(const std::vector<int32_t>* values) { mAnswer = {Answer::Ints, values}; }

      private:
        enum class Answer : uint8_t { None, Rgb, Floats, Histogram, Ints };
        void summarise();

        CwbStats& mStats;
        Record mRecord;
        const Error* mError;
        const bool* mBool;
        std::pair<Answer, const void*> mAnswer{Answer::None, nullptr};
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
    void event(Event event, int64_t display, std::initializer_list<int32_t> values);
    // Up to max finished requests, newest first; a slot being rewritten right now is skipped.
    size_t lastRequests(Record* out, size_t max) const;
    // The same with the events among them.
    size_t history(Record* out, size_t max) const;

    static const char* name(Counter counter);
    static const char* name(Method method);
    static const char* name(Event event);

    // The counters and the last requests as dumpsys prints them, ages relative to nowNs.
    void print(std::string* out, int64_t nowNs) const;
    // The kept requests and events, oldest first, as cwb-sim session lines: the gaps between
    // them as sleeps, each answer as an expect line.
    void printSession(std::string* out) const;

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
    std::atomic<bool> mLayerChangeOpen{false};  // the last record was a layer change
    std::array<Slot, kHistory> mSlots;
};

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
