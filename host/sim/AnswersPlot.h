// `plot answers`: the RGB and luma answers of a session over its lines, so that a drift or a
// step between requests shows at a glance. Luma is drawn as level luma x 255.
#pragma once

#include <device/Frame.h>

#include <array>
#include <optional>
#include <vector>

namespace cwbsim {

struct Answer {
    int line = 0;
    std::optional<std::array<int, 3>> rgb;
    std::optional<float> luma;  // 0..1
};

class AnswersPlot {
  public:
    static host::device::Frame render(const std::vector<Answer>& answers);
    // Where the i-th of n answers lands, and a level 0..255.
    static int x(size_t i, size_t n);
    static int y(double level);
};

}  // namespace cwbsim
