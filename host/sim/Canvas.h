// Minimal drawing on a Frame: lines, rectangle outlines and small digits, enough for plots and
// for marking rectangles on a snapshot.
#pragma once

#include <device/Frame.h>

#include <string>

namespace cwbsim {

class Canvas {
  public:
    explicit Canvas(host::device::Frame& frame) : mFrame(frame) {}

    void line(int x0, int y0, int x1, int y1, host::device::Pixel colour);
    // The ring of pixels just outside [left, right) x [top, bottom), `gap` pixels away.
    void outline(int left, int top, int right, int bottom, int gap, host::device::Pixel colour);
    // Digits, '-', '.' and blanks in a 3 x 5 font scaled by `scale`; other characters are
    // skipped. Returns the width drawn.
    int text(int x, int y, const std::string& text, int scale, host::device::Pixel colour);
    static int textWidth(const std::string& text, int scale);

  private:
    host::device::Frame& mFrame;
};

}  // namespace cwbsim
