#include "RectMarks.h"

#include <algorithm>
#include <cmath>

#include "Canvas.h"

namespace cwbsim {

namespace {

using aidl::vendor::zarel::hardware::cwb::Rect;
using host::device::Frame;
using host::device::Pixel;

constexpr Pixel kBlack{0, 0, 0};
constexpr int kFont = 4;

}  // namespace

Pixel RectMarks::colour(size_t index) {
    static constexpr Pixel kPalette[] = {{255, 140, 0}, {0, 220, 255},  {255, 40, 200},
                                         {170, 255, 0}, {255, 235, 0},  {160, 100, 255},
                                         {0, 255, 150}, {255, 100, 100}};
    return kPalette[index % (sizeof(kPalette) / sizeof(kPalette[0]))];
}

Pixel RectMarks::heat(double t) {
    static constexpr Pixel kStops[] = {{30, 30, 170}, {0, 200, 255}, {255, 230, 0}, {230, 30, 0}};
    t = std::clamp(t, 0.0, 1.0) * 3.0;
    const int i = std::min(static_cast<int>(t), 2);
    const double f = t - i;
    auto mix = [&](uint8_t a, uint8_t b) {
        return static_cast<uint8_t>(std::lround(a + (b - a) * f));
    };
    return {mix(kStops[i].r, kStops[i + 1].r), mix(kStops[i].g, kStops[i + 1].g),
            mix(kStops[i].b, kStops[i + 1].b)};
}

void RectMarks::band(Frame& frame, const Rect& r, Pixel colour) {
    // Outside the rectangle where there is room, inside along the frame's edge.
    const int l = r.left >= kBand ? r.left - kBand : r.left;
    const int t = r.top >= kBand ? r.top - kBand : r.top;
    const int rr = r.right + kBand <= frame.width ? r.right + kBand : r.right;
    const int b = r.bottom + kBand <= frame.height ? r.bottom + kBand : r.bottom;
    Canvas canvas(frame);
    canvas.ring(l, t, rr, b, kBand, kBlack);
    canvas.ring(l + 1, t + 1, rr - 1, b - 1, kBand - 2, colour);
}

void RectMarks::dashed(Frame& frame, const Rect& r, Pixel colour) {
    const int l = std::max(r.left, 0), t = std::max(r.top, 0);
    const int rr = std::min(r.right, frame.width), b = std::min(r.bottom, frame.height);
    if (rr - l < 3 || b - t < 3) return;
    constexpr int kDash = 12, kWidth = 3;
    auto dash = [&](int at) { return (at / kDash) % 2 == 0 ? colour : kBlack; };
    for (int x = l; x < rr; ++x) {
        frame.fillRect(x, t, x + 1, t + kWidth, dash(x - l));
        frame.fillRect(x, b - kWidth, x + 1, b, dash(x - l));
    }
    for (int y = t; y < b; ++y) {
        frame.fillRect(l, y, l + kWidth, y + 1, dash(y - t));
        frame.fillRect(rr - kWidth, y, rr, y + 1, dash(y - t));
    }
}

void RectMarks::heatMap(Frame& frame, const Mark& mark, Pixel colour) {
    const Rect& r = mark.buffer;
    const int w = r.right - r.left, h = r.bottom - r.top;
    if (w <= 0 || h <= 0 || mark.weights.size() < static_cast<size_t>(w) * h) return;
    // Plain values, not a structured binding: lambdas may not capture those before C++20.
    const auto range = std::minmax_element(mark.weights.begin(), mark.weights.end());
    const int32_t lo = *range.first, hi = *range.second;
    auto level = [&](int32_t v) { return hi == lo ? 1.0 : double(v - lo) / double(hi - lo); };
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            frame.setPixel(r.left + x, r.top + y, heat(level(mark.weights[y * w + x])));
        }
    }
    // Magnified beside the window, with a scale from the smallest to the largest weight.
    const int cell = std::clamp(240 / std::max(w, h), 4, 40);
    const int iw = w * cell, ih = h * cell;
    const int scaleW = std::max(iw, 160);
    int x0 = r.right + 40;
    if (x0 + scaleW + 8 > frame.width) x0 = std::max(8, r.left - 40 - scaleW);
    int y0 = std::clamp(r.top + 40, 40, std::max(40, frame.height - ih - 90));
    Canvas canvas(frame);
    frame.fillRect(x0 - 8, y0 - 30, x0 + scaleW + 8, y0 + ih + 62, kBlack);
    canvas.text(x0, y0 - 22, "WEIGHTS", kFont, colour);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            frame.fillRect(x0 + x * cell, y0 + y * cell, x0 + (x + 1) * cell - 1,
                           y0 + (y + 1) * cell - 1, heat(level(mark.weights[y * w + x])));
        }
    }
    const int sy = y0 + ih + 10;
    for (int x = 0; x < scaleW; ++x) {
        frame.fillRect(x0 + x, sy, x0 + x + 1, sy + 12, heat(double(x) / (scaleW - 1)));
    }
    const std::string low = std::to_string(lo), high = std::to_string(hi);
    canvas.text(x0, sy + 18, low, kFont, {230, 230, 230});
    canvas.text(x0 + scaleW - Canvas::textWidth(high, kFont), sy + 18, high, kFont,
                {230, 230, 230});
    canvas.line(r.right, r.top, x0 - 8, y0 - 30, colour);
}

void RectMarks::draw(Frame& frame, const std::vector<Mark>& marks) {
    for (size_t i = 0; i < marks.size(); ++i) {
        const Mark& m = marks[i];
        const Pixel c = colour(i);
        if (!m.weights.empty()) heatMap(frame, m, c);
        if (m.client) dashed(frame, *m.client, c);
        band(frame, m.buffer, c);
    }
    // Labels last, so that no outline crosses one; a label that would cover an earlier one moves
    // down below it.
    Canvas canvas(frame);
    std::vector<Rect> placed;
    for (size_t i = 0; i < marks.size(); ++i) {
        const Mark& m = marks[i];
        const std::string text = "L" + std::to_string(m.line) + " " + m.answer;
        const int tw = Canvas::textWidth(text, kFont), th = Canvas::textHeight(kFont);
        const int x = std::clamp(m.buffer.left, 4, std::max(4, frame.width - tw - 4));
        int y = m.buffer.top - kBand - th - 6;
        if (y < 4) y = m.buffer.bottom + kBand + 6;
        if (y + th + 4 > frame.height) y = std::max(4, m.buffer.top + kBand + 4);
        for (bool moved = true; moved;) {
            moved = false;
            for (const Rect& p : placed) {
                if (x < p.right && p.left < x + tw && y < p.bottom && p.top < y + th) {
                    y = p.bottom + 8;
                    moved = true;
                }
            }
        }
        placed.push_back({x - 3, y - 3, x + tw + 3, y + th + 3});
        canvas.label(x, y, text, kFont, 3, colour(i), kBlack);
    }
}

}  // namespace cwbsim
