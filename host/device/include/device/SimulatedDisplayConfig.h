// The chip vendor's display-config service as seen from the CWB library: two panels with their
// modes and current pictures, and a concurrent-writeback engine that fills client buffers on its
// own thread and reports each one through IDisplayConfigCallback::notifyCWBBufferDone.
#pragma once

#include <aidl/vendor/qti/hardware/display/config/BnDisplayConfig.h>
#include <aidl/vendor/qti/hardware/display/config/IDisplayConfigCallback.h>
#include <android/binder_status.h>
#include <device/Frame.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace host::device {

namespace config = ::aidl::vendor::qti::hardware::display::config;

enum class PanelId { Main, Secondary };
enum class FrameKind { Mixer, PostProcessed };

struct PanelMode {
    int32_t width;
    int32_t height;
    int32_t vsyncPeriodNs;
};

// One setCWBOutputBuffer call as the vendor saw it.
struct WritebackRequest {
    int32_t dispId;  // the display as the vendor's interface takes it: a DisplayType value
    config::Rect rect;
    bool postProcessed;
    int64_t monotonicNs;                  // CLOCK_MONOTONIC at the call
    binder_exception_t result = EX_NONE;  // what the call returned; EX_NONE when accepted
};

class SimulatedDisplayConfig : public config::BnDisplayConfig {
  public:
    static constexpr const char* kInstance =
            "vendor.qti.hardware.display.config.IDisplayConfig/default";
    static constexpr float kPanelDpi = 400.0f;
    static constexpr int32_t kVsync60Hz = 16'666'666;
    static constexpr int32_t kVsync120Hz = 8'333'333;
    static std::vector<PanelMode> defaultModes(PanelId panel);
    // Display 1 (DisplayType PRIMARY) is the main panel, 4 (BUILTIN2) the secondary one; anything
    // else is none.
    static std::optional<PanelId> panelFor(int32_t dispId);

    // What happens to the next accepted request. Ok completes with 0 after the latency, Error
    // completes with the given code and writes nothing, Drop is forgotten without completion,
    // Refuse fails the call itself with EX_TRANSACTION_FAILED.
    enum class Outcome { Ok, Error, Drop, Refuse };

    SimulatedDisplayConfig();
    ~SimulatedDisplayConfig() override;

    ndk::ScopedAStatus getConfigCount(config::DisplayType dpy, int32_t* count) override;
    ndk::ScopedAStatus getDisplayAttributes(int32_t index, config::DisplayType dpy,
                                            config::Attributes* attributes) override;
    ndk::ScopedAStatus setCWBOutputBuffer(
            const std::shared_ptr<config::IDisplayConfigCallback>& callback, int32_t dispId,
            const config::Rect& rect, bool postProcessed,
            const ::aidl::android::hardware::common::NativeHandle& buffer) override;

    void setPanelModes(PanelId panel, std::vector<PanelMode> modes);
    std::vector<PanelMode> panelModes(PanelId panel) const;
    // Returns false (and changes nothing) when index is not one of the panel's modes.
    bool setActiveMode(PanelId panel, uint32_t index);
    uint32_t activeMode(PanelId panel) const;
    // Until a frame is set the panel shows black at its active mode's size. Without a
    // post-processed frame the post-processed output equals the mixer output.
    void setFrame(PanelId panel, FrameKind kind, Frame frame);
    // The same without a copy, for a picture shown again and again.
    void setFrame(PanelId panel, FrameKind kind, std::shared_ptr<const Frame> frame);
    void clearFrame(PanelId panel, FrameKind kind);

    // Time from an accepted request to its completion; nullopt is one vsync period of the
    // panel's active mode at the time of the request.
    void setLatency(std::optional<std::chrono::nanoseconds> latency);
    void pushOutcome(Outcome outcome, int32_t error = -1);
    void clearOutcomes();

    // While on, queued requests wait for completeNext instead of the latency. completeNext
    // releases the oldest waiting request to the completion thread, which writes the picture when
    // error >= 0 and then reports error; injected Ok/Error outcomes do not apply to it. Returns
    // false when nothing is waiting. Use waitForCompletions to see it delivered.
    void setManualCompletion(bool manual);
    bool completeNext(int32_t error = 0);
    // Accepted requests not yet completed (including one being completed right now).
    size_t pendingCount() const;
    // Forgets every accepted request not yet completed, without completing it, as a vendor that
    // restarted would. Returns how many were forgotten.
    size_t dropPending();

    // While on, completions are delivered on the caller's thread and latency is ignored:
    // setCWBOutputBuffer completes the requests it can (all of them unless manual completion
    // holds them) before it returns, and so does completeNext. For one driving thread with a
    // manual clock (the fuzzers): nothing then depends on the completion thread's timing.
    void setSynchronousCompletion(bool synchronous);

    // Called on the caller's thread at the end of every setCWBOutputBuffer call, after the
    // request is queued, so a test can act between the call and the caller's wait.
    void setRequestObserver(std::function<void(const WritebackRequest&)> observer);

    // The most recent kHistoryWindow requests, oldest first: a long session or soak keeps a
    // bounded history.
    static constexpr size_t kHistoryWindow = 4096;
    std::vector<WritebackRequest> requests() const;
    void clearRequests();
    // Callbacks that have returned.
    size_t completionsSent() const;
    bool waitForCompletions(size_t n, std::chrono::milliseconds timeout) const;

    // Drops every pending request without completing it and stops the completion thread; later
    // requests fail with EX_TRANSACTION_FAILED, as a dead vendor process would.
    void shutdown();

  private:
    // Everything the completion thread touches. The thread holds its own reference, so the state
    // outlives this object if the last reference to it drops on that very thread.
    struct Engine;
    std::shared_ptr<Engine> mEngine;
};

}  // namespace host::device
