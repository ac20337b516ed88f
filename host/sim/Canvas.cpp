#include "Canvas.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace cwbsim {

namespace {

// Rows of a 3 x 5 glyph, three bits each, most significant bit on the left.
const uint8_t* glyph(char c) {
    static constexpr uint8_t kDigits[10][5] = {
            {7, 5, 5, 5, 7}, {2, 6, 2, 2, 7}, {7, 1, 7, 4, 7}, {7, 1, 7, 1, 7}, {5, 5, 7, 1, 1},
            {7, 4, 7, 1, 7}, {7, 4, 7, 5, 7}, {7, 1, 1, 1, 1}, {7, 5, 7, 5, 7}, {7, 5, 7, 1, 7}};
    static constexpr uint8_t kLetters[26][5] = {
            {2, 5, 7, 5, 5}, {6, 5, 6, 5, 6}, {3, 4, 4, 4, 3}, {6, 5, 5, 5, 6}, {7, 4, 6, 4, 7},
            {7, 4, 6, 4, 4}, {3, 4, 5, 5, 3}, {5, 5, 7, 5, 5}, {7, 2, 2, 2, 7}, {1, 1, 1, 5, 2},
            {5, 5, 6, 5, 5}, {4, 4, 4, 4, 7}, {5, 7, 7, 5, 5}, {6, 5, 5, 5, 5}, {2, 5, 5, 5, 2},
            {6, 5, 6, 4, 4}, {2, 5, 5, 6, 3}, {6, 5, 6, 5, 5}, {3, 4, 2, 1, 6}, {7, 2, 2, 2, 2},
            {5, 5, 5, 5, 7}, {5, 5, 5, 5, 2}, {5, 5, 7, 7, 5}, {5, 5, 2, 5, 5}, {5, 5, 2, 2, 2},
            {7, 1, 2, 4, 7}};
    static constexpr struct {
        char c;
        uint8_t rows[5];
    } kMarks[] = {{'-', {0, 0, 7, 0, 0}}, {'.', {0, 0, 0, 0, 2}}, {',', {0, 0, 0, 2, 4}},
                  {':', {0, 2, 0, 2, 0}}, {';', {0, 2, 0, 2, 4}}, {'+', {0, 2, 7, 2, 0}},
                  {'=', {0, 7, 0, 7, 0}}, {'%', {5, 1, 2, 4, 5}}, {'(', {1, 2, 2, 2, 1}},
                  {')', {4, 2, 2, 2, 4}}, {'/', {1, 1, 2, 4, 4}}, {'#', {5, 7, 5, 7, 5}},
                  {'<', {1, 2, 4, 2, 1}}, {'>', {4, 2, 1, 2, 4}}, {'_', {0, 0, 0, 0, 7}},
                  {'x', {0, 5, 2, 5, 0}}};
    static constexpr uint8_t kBlank[5] = {0, 0, 0, 0, 0};
    if (c >= '0' && c <= '9') return kDigits[c - '0'];
    for (const auto& mark : kMarks) {
        if (mark.c == c) return mark.rows;
    }
    const int upper = toupper(static_cast<unsigned char>(c));
    if (upper >= 'A' && upper <= 'Z') return kLetters[upper - 'A'];
    return kBlank;
}

// Bresenham from (x0, y0) to (x1, y1), both ends included; plot(x, y) for each point.
template <typename Plot>
void walkLine(int x0, int y0, int x1, int y1, Plot plot) {
    const int dx = std::abs(x1 - x0);
    const int dy = -std::abs(y1 - y0);
    const int sx = x0 < x1 ? 1 : -1;
    const int sy = y0 < y1 ? 1 : -1;
    int err = dx + dy;
    while (true) {
        plot(x0, y0);
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

}  // namespace

void Canvas::line(int x0, int y0, int x1, int y1, host::device::Pixel colour) {
    walkLine(x0, y0, x1, y1, [&](int x, int y) { mFrame.setPixel(x, y, colour); });
}

void Canvas::addLine(int x0, int y0, int x1, int y1, int width, host::device::Pixel colour) {
    auto add = [&](int x, int y) {
        if (x < 0 || y < 0 || x >= mFrame.width || y >= mFrame.height) return;
        const host::device::Pixel p = mFrame.pixel(x, y);
        mFrame.setPixel(
                x, y, {std::max(p.r, colour.r), std::max(p.g, colour.g), std::max(p.b, colour.b)});
    };
    // Each point widened downwards; a point met twice adds nothing new.
    walkLine(x0, y0, x1, y1, [&](int x, int y) {
        for (int d = 0; d < width; ++d) add(x, y + d);
    });
}

void Canvas::outline(int left, int top, int right, int bottom, int gap,
                     host::device::Pixel colour) {
    const int l = left - gap, t = top - gap, r = right - 1 + gap, b = bottom - 1 + gap;
    line(l, t, r, t, colour);
    line(l, b, r, b, colour);
    line(l, t, l, b, colour);
    line(r, t, r, b, colour);
}

void Canvas::ring(int left, int top, int right, int bottom, int width, host::device::Pixel colour) {
    mFrame.fillRect(left, top, right, top + width, colour);
    mFrame.fillRect(left, bottom - width, right, bottom, colour);
    mFrame.fillRect(left, top, left + width, bottom, colour);
    mFrame.fillRect(right - width, top, right, bottom, colour);
}

int Canvas::textWidth(const std::string& text, int scale) {
    return text.empty() ? 0 : static_cast<int>(text.size()) * 4 * scale - scale;
}

int Canvas::text(int x, int y, const std::string& text, int scale, host::device::Pixel colour) {
    int at = x;
    for (char c : text) {
        const uint8_t* rows = glyph(c);
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

void Canvas::label(int x, int y, const std::string& text, int scale, int pad,
                   host::device::Pixel colour, host::device::Pixel box) {
    mFrame.fillRect(x - pad, y - pad, x + textWidth(text, scale) + pad, y + textHeight(scale) + pad,
                    box);
    this->text(x, y, text, scale, colour);
}

}  // namespace cwbsim
