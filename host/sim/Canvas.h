// Minimal drawing on a Frame: lines, bands, rectangle outlines and a small built-in font, enough
// for plots and for marking rectangles on a snapshot.
#pragma once

#include <device/Frame.h>

#include <string>

namespace cwbsim {

class Canvas {
  public:
    explicit Canvas(host::device::Frame& frame) : mFrame(frame) {}

    void line(int x0, int y0, int x1, int y1, host::device::Pixel colour);
    // A line `width` pixels thick whose colour is added channel by channel to what is there, so
    // that red over green shows yellow and all three show white.
    void addLine(int x0, int y0, int x1, int y1, int width, host::device::Pixel colour);
    // The ring of pixels just outside [left, right) x [top, bottom), `gap` pixels away.
    void outline(int left, int top, int right, int bottom, int gap, host::device::Pixel colour);
    // The ring between the outer box and the box `width` pixels inside it.
    void ring(int left, int top, int right, int bottom, int width, host::device::Pixel colour);
    // Letters (shown in capitals), digits and . , : ; - + = % ( ) / # < > in a 3 x 5 font scaled
    // by `scale`; other characters draw as blanks. Returns the width drawn.
    int text(int x, int y, const std::string& text, int scale, host::device::Pixel colour);
    // The same on a filled box `pad` pixels larger on every side, for labels over pictures.
    void label(int x, int y, const std::string& text, int scale, int pad,
               host::device::Pixel colour, host::device::Pixel box);
    static int textWidth(const std::string& text, int scale);
    static int textHeight(int scale) { return 5 * scale; }

  private:
    host::device::Frame& mFrame;
};

}  // namespace cwbsim
