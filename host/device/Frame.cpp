#include <device/Frame.h>

#include <algorithm>

namespace host::device {

namespace {

// Level i of n evenly spread over 0..255.
uint8_t ramp(int i, int n) {
    return n <= 1 ? 0 : static_cast<uint8_t>((i * 255 + (n - 1) / 2) / (n - 1));
}

}  // namespace

Frame Frame::filled(int w, int h, uint8_t r, uint8_t g, uint8_t b) {
    Frame f;
    f.width = std::max(w, 0);
    f.height = std::max(h, 0);
    f.rgb.resize(static_cast<size_t>(f.width) * f.height * 3);
    for (size_t i = 0; i < f.rgb.size(); i += 3) {
        f.rgb[i] = r;
        f.rgb[i + 1] = g;
        f.rgb[i + 2] = b;
    }
    return f;
}

std::vector<std::string> Frame::patternNames() {
    return {"bars", "ramp", "checker", "gradient"};
}

std::optional<Frame> Frame::pattern(const std::string& name, int w, int h) {
    if (w <= 0 || h <= 0) return std::nullopt;
    Frame f = filled(w, h, 0, 0, 0);
    if (name == "bars") {
        static constexpr Pixel kBars[] = {{255, 255, 255}, {255, 255, 0}, {0, 255, 255},
                                          {0, 255, 0},     {255, 0, 255}, {255, 0, 0},
                                          {0, 0, 255},     {0, 0, 0}};
        constexpr int kCount = sizeof(kBars) / sizeof(kBars[0]);
        const int barsBottom = h * 2 / 3;
        for (int i = 0; i < kCount; ++i) {
            f.fillRect(i * w / kCount, 0, (i + 1) * w / kCount, barsBottom, kBars[i]);
        }
        for (int x = 0; x < w; ++x) {
            const uint8_t v = ramp(x, w);
            f.fillRect(x, barsBottom, x + 1, h, {v, v, v});
        }
    } else if (name == "ramp") {
        for (int x = 0; x < w; ++x) {
            const uint8_t v = ramp(x, w);
            f.fillRect(x, 0, x + 1, h, {v, v, v});
        }
    } else if (name == "checker") {
        for (int y = 0; y < h; y += 8) {
            for (int x = 0; x < w; x += 8) {
                if (((x / 8) + (y / 8)) % 2 == 1) f.fillRect(x, y, x + 8, y + 8, {255, 255, 255});
            }
        }
    } else if (name == "gradient") {
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x) f.setPixel(x, y, {ramp(x, w), ramp(y, h), 128});
        }
    } else {
        return std::nullopt;
    }
    return f;
}

Pixel Frame::pixel(int x, int y) const {
    if (!contains(x, y)) return {};
    const uint8_t* p = row(y) + static_cast<size_t>(x) * 3;
    return {p[0], p[1], p[2]};
}

void Frame::setPixel(int x, int y, Pixel p) {
    if (!contains(x, y)) return;
    uint8_t* d = rgb.data() + (static_cast<size_t>(y) * width + x) * 3;
    d[0] = p.r;
    d[1] = p.g;
    d[2] = p.b;
}

void Frame::fillRect(int left, int top, int right, int bottom, Pixel p) {
    left = std::max(left, 0);
    top = std::max(top, 0);
    right = std::min(right, width);
    bottom = std::min(bottom, height);
    for (int y = top; y < bottom; ++y) {
        for (int x = left; x < right; ++x) setPixel(x, y, p);
    }
}

}  // namespace host::device
