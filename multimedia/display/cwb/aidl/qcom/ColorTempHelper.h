#pragma once

#include <atomic>
#include <cstdint>

namespace aidl::vendor::zarel::hardware::cwb::implementation {

// Per-channel minimum and maximum of a population of samples.
struct ColorRange {
    int32_t min[3];
    int32_t max[3];
};

// Watches the pixels sampled by the RGB pass and keeps, per frame, the ranges from which the
// pure-colour and black-and-white verdicts are made. Driven only under the request lock.
class ColorTempHelper {
  public:
    ColorTempHelper();

    // Parses "ro.vendor.zarel.display.cwb.ct_range": exactly four comma-separated integers
    // enable the sampler. Returns false when a piece does not convert (sampler left disabled).
    bool configure(const char* value);

    // Starts a new frame: verdicts true, ranges empty.
    void reset();

    void addSample(int r, int g, int b);

    // Written by setDebug from a binder thread while a pass may read it.
    std::atomic<bool> mDebug{false};
    bool mPure = true;
    bool mBlackWhite = true;
    bool mEnabled = false;
    ColorRange mRangeFull;
    ColorRange mRange1;
    ColorRange mRange2;
    bool mRangeFullValid = false;
    bool mRange1Valid = false;
    bool mRange2Valid = false;
    int32_t mCtRange[4] = {0, 0, 0, 0};
};

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
