// What one output of a panel (mixer or post-processed) shows, kept as a recipe so that the
// picture can be drawn again at a new size when the panel changes mode.
#pragma once

#include <aidl/vendor/zarel/hardware/cwb/Rect.h>
#include <device/Frame.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Command.h"

namespace cwbsim {

class PanelPicture {
  public:
    // Nothing set yet: the panel keeps the device's default (black at its mode's size).
    bool empty() const { return !mSet; }

    void fill(host::device::Pixel colour);
    void pattern(const std::string& name);
    // A decoded image; it keeps its own size whatever the panel does later.
    void image(host::device::Frame frame);
    // A filled rectangle over whatever is shown (black when nothing was set).
    void paint(const aidl::vendor::zarel::hardware::cwb::Rect& rect, host::device::Pixel colour);

    host::device::Frame render(int width, int height) const;

  private:
    bool mSet = false;
    FrameSource mSource = FrameSource::Fill;
    host::device::Pixel mColour;
    std::string mPattern;
    std::shared_ptr<const host::device::Frame> mImage;
    std::vector<std::pair<aidl::vendor::zarel::hardware::cwb::Rect, host::device::Pixel>> mPaints;
};

}  // namespace cwbsim
