#include "PlotAxes.h"

#include "Canvas.h"

namespace cwbsim {

namespace {

constexpr int kFont = 2;

}  // namespace

host::device::Frame PlotAxes::draw(const std::string& title, const std::string& xName,
                                   const std::string& yName,
                                   const std::vector<std::pair<int, std::string>>& xTicks,
                                   const std::string& yTop) {
    host::device::Frame frame = host::device::Frame::filled(kWidth, kHeight, kBackground.r,
                                                            kBackground.g, kBackground.b);
    Canvas canvas(frame);
    canvas.text(12, 12, title, kFont, kInk);
    for (int quarter = 1; quarter < 4; ++quarter) {
        const int y = kBottom - quarter * (kBottom - kTop) / 4;
        canvas.line(kLeft, y, kRight, y, kGrid);
    }
    for (const auto& [x, label] : xTicks) {
        canvas.line(x, kTop, x, kBottom, kGrid);
        canvas.line(x, kBottom, x, kBottom + 5, kInk);
        canvas.text(x - Canvas::textWidth(label, kFont) / 2, kBottom + 10, label, kFont, kInk);
    }
    canvas.line(kLeft - 5, kTop, kLeft, kTop, kInk);
    canvas.text(kLeft - 9 - Canvas::textWidth(yTop, kFont), kTop - 4, yTop, kFont, kInk);
    canvas.text(kLeft - 9 - Canvas::textWidth("0", kFont), kBottom - 4, "0", kFont, kInk);
    canvas.text(12, kTop - 24, yName, kFont, kInk);
    canvas.text((kLeft + kRight - Canvas::textWidth(xName, kFont)) / 2, kBottom + 32, xName, kFont,
                kInk);
    canvas.line(kLeft, kTop, kLeft, kBottom, kInk);
    canvas.line(kLeft, kBottom, kRight, kBottom, kInk);
    return frame;
}

void PlotAxes::legend(host::device::Frame& frame,
                      const std::vector<std::pair<host::device::Pixel, std::string>>& entries) {
    Canvas canvas(frame);
    int x = kRight;
    for (auto it = entries.rbegin(); it != entries.rend(); ++it) {
        x -= Canvas::textWidth(it->second, kFont);
        canvas.text(x, 34, it->second, kFont, kInk);
        x -= 22;
        frame.fillRect(x, 32, x + 16, 46, it->first);
        x -= 18;
    }
}

}  // namespace cwbsim
