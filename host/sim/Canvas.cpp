#include "Canvas.h"

#include <cstdlib>

namespace cwbsim {

namespace {

// Rows of a 3 x 5 glyph, three bits each, most significant bit on the left.
const uint8_t* glyph(char c) {
    static constexpr uint8_t kDigits[10][5] = {
            {7, 5, 5, 5, 7}, {2, 6, 2, 2, 7}, {7, 1, 7, 4, 7}, {7, 1, 7, 1, 7}, {5, 5, 7, 1, 1},
            {7, 4, 7, 1, 7}, {7, 4, 7, 5, 7}, {7, 1, 1, 1, 1}, {7, 5, 7, 5, 7}, {7, 5, 7, 1, 7}};
    static constexpr uint8_t kMinus[5] = {0, 0, 7, 0, 0};
    static constexpr uint8_t kDot[5] = {0, 0, 0, 0, 2};
    static constexpr uint8_t kBlank[5] = {0, 0, 0, 0, 0};
    if (c >= '0' && c <= '9') return kDigits[c - '0'];
    if (c == '-') return kMinus;
    if (c == '.') return kDot;
    if (c == ' ') return kBlank;
    return nullptr;
}

}  // namespace

void Canvas::line(int x0, int y0, int x1, int y1, host::device::Pixel colour) {
    const int dx = std::abs(x1 - x0);
    const int dy = -std::abs(y1 - y0);
    const int sx = x0 < x1 ? 1 : -1;
    const int sy = y0 < y1 ? 1 : -1;
    int err = dx + dy;
    while (true) {
        mFrame.setPixel(x0, y0, colour);
        if (x0 == x1 && y0 == y1) break;
        const int e2 = 2 * err;
        if (e2 >= dy) {
            err += dy;
            x0 += sx;
        }
        if (e2 <= dx) {
            err += dx;
            y0 += sy;
        }
    }
}

void Canvas::outline(int left, int top, int right, int bottom, int gap,
                     host::device::Pixel colour) {
    const int l = left - gap, t = top - gap, r = right - 1 + gap, b = bottom - 1 + gap;
    line(l, t, r, t, colour);
    line(l, b, r, b, colour);
    line(l, t, l, b, colour);
    line(r, t, r, b, colour);
}

int Canvas::textWidth(const std::string& text, int scale) {
    int width = 0;
    for (char c : text) {
        if (glyph(c) != nullptr) width += 4 * scale;
    }
    return width > 0 ? width - scale : 0;
}

int Canvas::text(int x, int y, const std::string& text, int scale, host::device::Pixel colour) {
    int at = x;
    for (char c : text) {
        const uint8_t* rows = glyph(c);
        if (rows == nullptr) continue;
        for (int row = 0; row < 5; ++row) {
            for (int col = 0; col < 3; ++col) {
                if ((rows[row] >> (2 - col)) & 1) {
                    mFrame.fillRect(at + col * scale, y + row * scale, at + (col + 1) * scale,
                                    y + (row + 1) * scale, colour);
                }
            }
        }
        at += 4 * scale;
    }
    return at - x;
}

}  // namespace cwbsim
