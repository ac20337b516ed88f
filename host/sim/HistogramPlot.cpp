#include "HistogramPlot.h"

#include <algorithm>

#include "Canvas.h"

namespace cwbsim {

namespace {

constexpr host::device::Pixel kInk{0, 0, 0};
constexpr host::device::Pixel kGrid{220, 220, 220};
constexpr host::device::Pixel kChannels[3] = {{220, 0, 0}, {0, 160, 0}, {0, 0, 230}};
constexpr int kFont = 2;

}  // namespace

int HistogramPlot::x(int level) {
    return kLeft + level * (kRight - kLeft) / 255;
}

int HistogramPlot::y(uint32_t count, uint32_t max) {
    if (max == 0) return kBottom;
    return kBottom - static_cast<int>(static_cast<uint64_t>(count) * (kBottom - kTop) / max);
}

host::device::Frame HistogramPlot::render(const aidl::vendor::zarel::hardware::cwb::Histogram& h) {
    host::device::Frame frame = host::device::Frame::filled(kWidth, kHeight, 255, 255, 255);
    Canvas canvas(frame);
    uint32_t max = 0;
    for (int32_t c : h.counts) max = std::max(max, static_cast<uint32_t>(c));

    for (int level : {0, 64, 128, 192, 255}) {
        const int at = x(level);
        canvas.line(at, kTop, at, kBottom, kGrid);
        canvas.line(at, kBottom, at, kBottom + 5, kInk);
        const std::string label = std::to_string(level);
        canvas.text(at - Canvas::textWidth(label, kFont) / 2, kBottom + 9, label, kFont, kInk);
    }
    canvas.line(kLeft - 5, kTop, kLeft, kTop, kInk);
    const std::string top = std::to_string(max);
    canvas.text(kLeft - 8 - Canvas::textWidth(top, kFont), kTop - 4, top, kFont, kInk);
    canvas.text(kLeft - 8 - Canvas::textWidth("0", kFont), kBottom - 4, "0", kFont, kInk);
    canvas.line(kLeft, kTop, kLeft, kBottom, kInk);
    canvas.line(kLeft, kBottom, kRight, kBottom, kInk);

    for (int ch = 0; ch < 3; ++ch) {
        int px = x(0), py = y(static_cast<uint32_t>(h.counts[ch]), max);
        for (int level = 1; level < 256; ++level) {
            const int nx = x(level);
            const int ny = y(static_cast<uint32_t>(h.counts[level * 3 + ch]), max);
            canvas.line(px, py, nx, ny, kChannels[ch]);
            px = nx;
            py = ny;
        }
    }
    return frame;
}

}  // namespace cwbsim
