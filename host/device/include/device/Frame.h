// A picture as the display pipeline would hold it: packed RGB, three bytes per pixel.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace host::device {

struct Pixel {
    uint8_t r = 0;
    uint8_t g = 0;
    uint8_t b = 0;

    bool operator==(const Pixel& o) const { return r == o.r && g == o.g && b == o.b; }
    bool operator!=(const Pixel& o) const { return !(*this == o); }
};

struct Frame {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> rgb;  // rows of width * 3 bytes, no padding

    static Frame filled(int w, int h, uint8_t r, uint8_t g, uint8_t b);
    // "bars": colour bars over the upper two thirds, grey ramp below; "ramp": horizontal grey
    // ramp; "checker": 8x8 black/white cells, black at the origin; "gradient": R follows x,
    // G follows y, B is 128. Unknown names and empty sizes give nothing.
    static std::optional<Frame> pattern(const std::string& name, int w, int h);
    static std::vector<std::string> patternNames();

    bool contains(int x, int y) const { return x >= 0 && y >= 0 && x < width && y < height; }
    // Outside the frame reads black and writes are ignored.
    Pixel pixel(int x, int y) const;
    void setPixel(int x, int y, Pixel p);
    // Right and bottom are exclusive; the rectangle is clipped to the frame.
    void fillRect(int left, int top, int right, int bottom, Pixel p);

    const uint8_t* row(int y) const { return rgb.data() + static_cast<size_t>(y) * width * 3; }
};

}  // namespace host::device
