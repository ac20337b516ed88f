#define LOG_TAG "CwbService"

#include "ColorTempHelper.h"

#include <log/log.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>

#include "ParseInt.h"

namespace aidl::vendor::zarel::hardware::cwb::implementation {

namespace {

void resetRange(ColorRange& range) {
    for (int c = 0; c < 3; ++c) {
        range.min[c] = 256;
        range.max[c] = -1;
    }
}

void widen(ColorRange& range, int r, int g, int b) {
    const int v[3] = {r, g, b};
    for (int c = 0; c < 3; ++c) {
        if (v[c] < range.min[c]) range.min[c] = v[c];
        if (v[c] > range.max[c]) range.max[c] = v[c];
    }
}

bool inBand(int r, int g, int b, int32_t low, int32_t high) {
    return low <= r && r <= high && low <= g && g <= high && low <= b && b <= high;
}

}  // namespace

ColorTempHelper::ColorTempHelper() {
    reset();
}

bool ColorTempHelper::configure(const char* value) {
    std::string text = value != nullptr ? value : "";
    size_t pieces = 0;
    size_t pos = 0;
    while (pos < text.size()) {
        // Runs of commas count as one separator; leading and trailing commas are ignored.
        size_t start = text.find_first_not_of(',', pos);
        if (start == std::string::npos) break;
        size_t end = text.find(',', start);
        if (end == std::string::npos) end = text.size();
        if (pieces < 4) {
            int32_t limit = 0;
            if (!parseInt32(text.substr(start, end - start), &limit)) {
                ALOGE("ct_range \"%s\": piece %zu is not an int32, colour classification disabled",
                      text.c_str(), pieces);
                mEnabled = false;
                return false;
            }
            mCtRange[pieces] = limit;
        }
        ++pieces;
        pos = end;
    }
    mEnabled = pieces == 4;
    return true;
}

void ColorTempHelper::reset() {
    mPure = true;
    mBlackWhite = true;
    resetRange(mRangeFull);
    resetRange(mRange1);
    resetRange(mRange2);
    mRangeFullValid = false;
    mRange1Valid = false;
    mRange2Valid = false;
}

void ColorTempHelper::addSample(int r, int g, int b) {
    if (!mEnabled) return;
    if (mPure) {
        mRangeFullValid = true;
        widen(mRangeFull, r, g, b);
    }
    if (!mBlackWhite) return;
    if (inBand(r, g, b, mCtRange[0], mCtRange[1])) {
        mRange1Valid = true;
        widen(mRange1, r, g, b);
        return;
    }
    if (inBand(r, g, b, mCtRange[2], mCtRange[3])) {
        mRange2Valid = true;
        widen(mRange2, r, g, b);
        return;
    }
    mBlackWhite = false;
    if (mDebug.load(std::memory_order_relaxed)) {
        ALOGD("Pixel out of range: R(%d), G(%d), B(%d)", r, g, b);
    }
}

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
