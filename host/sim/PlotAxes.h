// The frame every plot shares: a dark picture with a title, a plot area with a grid, named axes
// and ticks, so that coloured curves and their overlaps read well and look alike across plots.
#pragma once

#include <device/Frame.h>

#include <string>
#include <utility>
#include <vector>

namespace cwbsim {

struct PlotAxes {
    static constexpr int kWidth = 800;
    static constexpr int kHeight = 520;
    static constexpr int kLeft = 80;  // plot area, inside the axes
    static constexpr int kTop = 56;
    static constexpr int kRight = kWidth - 24;
    static constexpr int kBottom = kHeight - 64;

    static constexpr host::device::Pixel kBackground{24, 24, 32};
    static constexpr host::device::Pixel kInk{230, 230, 230};
    static constexpr host::device::Pixel kGrid{60, 60, 72};
    // Bright on the dark ground, and none of them a pure primary, so that a picture of them is
    // never mistaken for colour bars; added together they give kAllThree.
    static constexpr host::device::Pixel kChannels[3] = {
            {255, 60, 60}, {60, 230, 60}, {70, 110, 255}};
    static constexpr host::device::Pixel kAllThree{255, 230, 255};

    // x ticks as (pixel, label); the y axis is labelled 0 at the bottom and yTop at the top.
    static host::device::Frame draw(const std::string& title, const std::string& xName,
                                    const std::string& yName,
                                    const std::vector<std::pair<int, std::string>>& xTicks,
                                    const std::string& yTop);
    // Coloured swatches with their names, right-aligned on the title row.
    static void legend(host::device::Frame& frame,
                       const std::vector<std::pair<host::device::Pixel, std::string>>& entries);
};

}  // namespace cwbsim
