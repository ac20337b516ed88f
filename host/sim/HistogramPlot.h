// Draws a histogram answer: one curve per channel (red, green, blue) of the pixel count against
// the level 0..255, on axes with the level ticks and the largest count labelled.
#pragma once

#include <aidl/vendor/zarel/hardware/cwb/Histogram.h>
#include <device/Frame.h>

namespace cwbsim {

class HistogramPlot {
  public:
    static constexpr int kWidth = 800;
    static constexpr int kHeight = 480;
    static constexpr int kLeft = 70;  // plot area, inside the axes
    static constexpr int kTop = 20;
    static constexpr int kRight = kWidth - 20;
    static constexpr int kBottom = kHeight - 40;

    static host::device::Frame render(const aidl::vendor::zarel::hardware::cwb::Histogram& h);
    // Where a count of `count` at `level` lands for a plot whose largest count is `max`.
    static int x(int level);
    static int y(uint32_t count, uint32_t max);
};

}  // namespace cwbsim
