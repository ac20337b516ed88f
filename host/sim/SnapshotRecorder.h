// Keeps, per panel, the picture the vendor last wrote back and the rectangles asked since, for
// `snapshot`. It watches the vendor's writeback requests; which of them complete successfully it
// learns from the outcomes the session injected, in the order the vendor consumes them.
#pragma once

#include <aidl/vendor/zarel/hardware/cwb/Rect.h>
#include <device/Frame.h>
#include <device/SimulatedDisplayConfig.h>

#include <deque>
#include <memory>
#include <mutex>
#include <vector>

#include "RectMarks.h"

namespace cwbsim {

class SnapshotRecorder {
  public:
    using Outcome = host::device::SimulatedDisplayConfig::Outcome;

    explicit SnapshotRecorder(std::shared_ptr<host::device::SimulatedDisplayConfig> vendor);
    ~SnapshotRecorder();
    SnapshotRecorder(const SnapshotRecorder&) = delete;
    SnapshotRecorder& operator=(const SnapshotRecorder&) = delete;

    // What the panel output shows now; null for the device's default black.
    void setFrame(host::device::PanelId panel, host::device::FrameKind kind,
                  std::shared_ptr<const host::device::Frame> frame);
    void expectOutcome(Outcome outcome);
    // A rectangle in capture-buffer pixels that a request asked of the panel.
    void addMark(host::device::PanelId panel, Mark mark);

    bool hasCapture(host::device::PanelId panel) const;
    size_t rectCount(host::device::PanelId panel) const;
    // The captured picture with every rectangle asked since marked (RectMarks).
    host::device::Frame picture(host::device::PanelId panel) const;

  private:
    struct State {
        std::shared_ptr<const host::device::Frame> mixer;
        std::shared_ptr<const host::device::Frame> post;
        std::shared_ptr<const host::device::Frame> captured;
        std::shared_ptr<const host::device::Frame> capturedFrom;        // the output it showed
        decltype(host::device::WritebackRequest::rect) capturedRect{};  // region, or all zero
        std::vector<Mark> rects;
    };

    void onRequest(const host::device::WritebackRequest& request);

    const std::shared_ptr<host::device::SimulatedDisplayConfig> mVendor;
    mutable std::mutex mMutex;
    State mPanels[2];
    std::deque<Outcome> mOutcomes;
};

}  // namespace cwbsim
