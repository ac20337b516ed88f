#include "HistogramPlot.h"

#include <algorithm>

#include "Canvas.h"

namespace cwbsim {

int HistogramPlot::x(int level) {
    return kLeft + level * (kRight - kLeft) / 255;
}

int HistogramPlot::y(uint32_t count, uint32_t max) {
    if (max == 0) return kBottom;
    return kBottom - static_cast<int>(static_cast<uint64_t>(count) * (kBottom - kTop) / max);
}

host::device::Frame HistogramPlot::render(const aidl::vendor::zarel::hardware::cwb::Histogram& h,
                                          const std::string& title) {
    uint32_t max = 0;
    for (int32_t c : h.counts) max = std::max(max, static_cast<uint32_t>(c));
    std::vector<std::pair<int, std::string>> ticks;
    for (int level : {0, 64, 128, 192, 255}) ticks.emplace_back(x(level), std::to_string(level));
    host::device::Frame frame =
            PlotAxes::draw(title, "LEVEL", "PIXEL COUNT", ticks, std::to_string(max));
    PlotAxes::legend(frame, {{PlotAxes::kChannels[0], "R"},
                             {PlotAxes::kChannels[1], "G"},
                             {PlotAxes::kChannels[2], "B"},
                             {PlotAxes::kAllThree, "ALL THREE"}});
    Canvas canvas(frame);
    for (int ch = 0; ch < 3; ++ch) {
        int px = x(0), py = y(static_cast<uint32_t>(h.counts[ch]), max);
        for (int level = 1; level < 256; ++level) {
            const int nx = x(level);
            const int ny = y(static_cast<uint32_t>(h.counts[level * 3 + ch]), max);
            canvas.addLine(px, py, nx, ny, 2, PlotAxes::kChannels[ch]);
            px = nx;
            py = ny;
        }
    }
    return frame;
}

}  // namespace cwbsim
