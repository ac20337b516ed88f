#include "SnapshotRecorder.h"

#include <algorithm>

namespace cwbsim {

using host::device::Frame;
using host::device::PanelId;

SnapshotRecorder::SnapshotRecorder(std::shared_ptr<host::device::SimulatedDisplayConfig> vendor)
    : mVendor(std::move(vendor)) {
    mVendor->setRequestObserver([this](const host::device::WritebackRequest& r) { onRequest(r); });
}

SnapshotRecorder::~SnapshotRecorder() {
    mVendor->setRequestObserver(nullptr);
}

void SnapshotRecorder::setFrame(PanelId panel, host::device::FrameKind kind,
                                std::shared_ptr<const Frame> frame) {
    std::lock_guard<std::mutex> lock(mMutex);
    State& s = mPanels[static_cast<int>(panel)];
    (kind == host::device::FrameKind::Mixer ? s.mixer : s.post) = std::move(frame);
}

void SnapshotRecorder::expectOutcome(Outcome outcome) {
    std::lock_guard<std::mutex> lock(mMutex);
    mOutcomes.push_back(outcome);
}

void SnapshotRecorder::addMark(PanelId panel, Mark mark) {
    std::lock_guard<std::mutex> lock(mMutex);
    mPanels[static_cast<int>(panel)].rects.push_back(std::move(mark));
}

bool SnapshotRecorder::hasCapture(PanelId panel) const {
    std::lock_guard<std::mutex> lock(mMutex);
    return mPanels[static_cast<int>(panel)].captured != nullptr;
}

size_t SnapshotRecorder::rectCount(PanelId panel) const {
    std::lock_guard<std::mutex> lock(mMutex);
    return mPanels[static_cast<int>(panel)].rects.size();
}

void SnapshotRecorder::onRequest(const host::device::WritebackRequest& request) {
    // The vendor takes one injected outcome per request that passed its own checks: accepted
    // requests and those it refused on purpose.
    Outcome outcome = Outcome::Ok;
    {
        std::lock_guard<std::mutex> lock(mMutex);
        const bool refusedOnPurpose = request.result == EX_TRANSACTION_FAILED &&
                                      !mOutcomes.empty() && mOutcomes.front() == Outcome::Refuse;
        if (request.result != EX_NONE && !refusedOnPurpose) return;
        if (!mOutcomes.empty()) {
            outcome = mOutcomes.front();
            mOutcomes.pop_front();
        }
    }
    if (outcome != Outcome::Ok) return;
    const std::optional<PanelId> panel =
            host::device::SimulatedDisplayConfig::panelFor(request.dispId);
    if (!panel) return;
    const std::vector<host::device::PanelMode> modes = mVendor->panelModes(*panel);
    const uint32_t active = mVendor->activeMode(*panel);

    std::lock_guard<std::mutex> lock(mMutex);
    State& s = mPanels[static_cast<int>(*panel)];
    std::shared_ptr<const Frame> source = request.postProcessed && s.post ? s.post : s.mixer;
    Frame shown = source != nullptr ? *source
                  : active < modes.size()
                          ? Frame::filled(modes[active].width, modes[active].height, 0, 0, 0)
                          : Frame();
    const auto& r = request.rect;
    if (r.left != 0 || r.top != 0 || r.right != 0 || r.bottom != 0) {
        // A region writeback leaves the rest of the capture buffer as the service cleared it.
        Frame region = Frame::filled(shown.width, shown.height, 0, 0, 0);
        for (int y = std::max(r.top, 0); y < std::min(r.bottom, shown.height); ++y) {
            for (int x = std::max(r.left, 0); x < std::min(r.right, shown.width); ++x) {
                region.setPixel(x, y, shown.pixel(x, y));
            }
        }
        shown = std::move(region);
    }
    // Rectangles stay marked while the captures show the same picture.
    if (source != s.capturedFrom || r != s.capturedRect || s.captured == nullptr) s.rects.clear();
    s.captured = std::make_shared<const Frame>(std::move(shown));
    s.capturedFrom = source;
    s.capturedRect = r;
}

Frame SnapshotRecorder::picture(PanelId panel) const {
    std::lock_guard<std::mutex> lock(mMutex);
    const State& s = mPanels[static_cast<int>(panel)];
    if (s.captured == nullptr) return Frame();
    Frame out = *s.captured;
    RectMarks::draw(out, s.rects);
    return out;
}

}  // namespace cwbsim
