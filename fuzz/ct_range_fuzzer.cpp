// Parses a ct_range property value and classifies pixels with it. The input is the value up to
// its first zero byte; the bytes after it are pixels (three bytes each).
#include <ColorTempHelper.h>
#include <host/log_capture.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

using aidl::vendor::zarel::hardware::cwb::implementation::ColorTempHelper;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    host::log::clear();
    const auto* text = reinterpret_cast<const char*>(data);
    const size_t length = size > 0 ? strnlen(text, size) : 0;
    const std::string value(text, length);

    ColorTempHelper helper;
    const bool parsed = helper.configure(value.c_str());
    if (!parsed && helper.mEnabled) {
        fprintf(stderr, "sampler enabled by a value that did not parse\n");
        abort();
    }
    helper.mDebug = length % 2 == 1;
    helper.reset();
    for (size_t i = length + 1; i + 3 <= size; i += 3) {
        helper.addSample(data[i], data[i + 1], data[i + 2]);
    }
    // A range that saw a sample holds it: min <= max, both within the byte range.
    const struct {
        bool valid;
        const aidl::vendor::zarel::hardware::cwb::implementation::ColorRange& range;
    } ranges[] = {{helper.mRangeFullValid, helper.mRangeFull},
                  {helper.mRange1Valid, helper.mRange1},
                  {helper.mRange2Valid, helper.mRange2}};
    for (const auto& [valid, range] : ranges) {
        for (int c = 0; c < 3 && valid; ++c) {
            if (range.min[c] < 0 || range.min[c] > range.max[c] || range.max[c] > 255) abort();
        }
    }
    return 0;
}
