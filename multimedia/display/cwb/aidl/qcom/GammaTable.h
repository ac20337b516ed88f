#pragma once

#include <array>
#include <cstdint>

namespace aidl::vendor::zarel::hardware::cwb::implementation {

// Linear light of each 8-bit code: 255 * (i / 255)^2.2 rounded to three decimals (entry 1 is
// 0.002). Strictly increasing.
extern const std::array<double, 256> kGammaTable;

// The smallest code whose linear value, in thousandths truncated, reaches mean * 1000 truncated;
// 0 when none does. A negative or NaN mean gives 0.
uint8_t linearToCode(double mean);

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
