// Draws a histogram answer: one curve per channel of the pixel count against the level 0..255,
// red, green and blue added where they overlap (yellow, cyan, magenta, white for all three), with
// a title naming the request, a legend and named axes.
#pragma once

#include <aidl/vendor/zarel/hardware/cwb/Histogram.h>
#include <device/Frame.h>

#include <string>

#include "PlotAxes.h"

namespace cwbsim {

class HistogramPlot {
  public:
    static constexpr int kWidth = PlotAxes::kWidth;
    static constexpr int kHeight = PlotAxes::kHeight;
    static constexpr int kLeft = PlotAxes::kLeft;
    static constexpr int kTop = PlotAxes::kTop;
    static constexpr int kRight = PlotAxes::kRight;
    static constexpr int kBottom = PlotAxes::kBottom;

    // title: the request, for example "LINE 32 GETHISTOGRAMVALUE 0,1600,1080,2400".
    static host::device::Frame render(const aidl::vendor::zarel::hardware::cwb::Histogram& h,
                                      const std::string& title);
    // Where a count of `count` at `level` lands for a plot whose largest count is `max`.
    static int x(int level);
    static int y(uint32_t count, uint32_t max);
};

}  // namespace cwbsim
