// Marks on a snapshot: each rectangle a request asked about, outlined in a colour of its own with
// a black edge on both sides (visible on any background, drawn inside where the frame's edge
// leaves no room outside), labelled with its session line and short answer; the client's own
// rectangle dashed where it differs from the one the service read (fractions, rotation); and the
// weights that weighed a window as a heat map in it and, magnified, beside it with a scale.
#pragma once

#include <aidl/vendor/zarel/hardware/cwb/Rect.h>
#include <device/Frame.h>

#include <optional>
#include <string>
#include <vector>

namespace cwbsim {

struct Mark {
    aidl::vendor::zarel::hardware::cwb::Rect buffer;  // where the service read, buffer pixels
    std::optional<aidl::vendor::zarel::hardware::cwb::Rect> client;  // as given, in pixels
    int line = 0;
    std::string answer;            // short, for the label
    std::vector<int32_t> weights;  // row-major over `buffer` when they weighed it
};

class RectMarks {
  public:
    static constexpr int kBand = 6;  // 1 black, 4 colour, 1 black
    static host::device::Pixel colour(size_t index);
    static host::device::Pixel heat(double t);  // 0..1, dark blue to red

    static void draw(host::device::Frame& frame, const std::vector<Mark>& marks);

  private:
    static void band(host::device::Frame& frame, const aidl::vendor::zarel::hardware::cwb::Rect& r,
                     host::device::Pixel colour);
    static void dashed(host::device::Frame& frame,
                       const aidl::vendor::zarel::hardware::cwb::Rect& r,
                       host::device::Pixel colour);
    static void heatMap(host::device::Frame& frame, const Mark& mark, host::device::Pixel colour);
};

}  // namespace cwbsim
