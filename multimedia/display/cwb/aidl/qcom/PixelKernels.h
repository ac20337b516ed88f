#pragma once

#include <cstddef>
#include <cstdint>

#include "ColorTempHelper.h"

namespace aidl::vendor::zarel::hardware::cwb::implementation {

// A rectangle of packed 8-bit RGB pixels: base points at its top-left pixel, rows are
// pitchBytes apart. Kernels read exactly the rectangle's bytes, nothing around them.
struct PixelRect {
    const uint8_t* base;
    size_t pitchBytes;
    uint32_t width;
    uint32_t height;
};

// Per-channel sums of the gamma table over the sampled pixels, each one a sequential double
// addition in row-major order.
struct LinearSums {
    double sum[3];
};

// The work that depends on the instruction set. The RGB passes are chains of dependent double
// additions, which no vector unit shortens, so they are shared by every set.
struct PixelKernelSet {
    const char* name;
    // Sum over every pixel of (7R + 23G + 2B) >> 5, modulo 2^32.
    uint32_t (*lumaSum)(const PixelRect& rect);
    // Adds each pixel's levels to bins[level][channel].
    void (*histogram)(const PixelRect& rect, unsigned int (*bins)[3]);
};

const PixelKernelSet& portablePixelKernels();
// nullptr where the instruction set is not built in or the CPU lacks it.
const PixelKernelSet* avx2PixelKernels();
const PixelKernelSet* neonPixelKernels();
// The widest set this CPU runs, chosen once.
const PixelKernelSet& pixelKernels();

// Every third pixel of every third row, starting at the top-left one, unweighted. The sampler
// (nullptr or disabled: none) sees the same pixels in the same order as the sums.
LinearSums linearSumsSampled(const PixelRect& rect, ColorTempHelper* sampler);

// Every pixel, each table value multiplied by its weight (row-major, width * height of them)
// as a rounded product before it is added. weightSum gets the 32-bit wrapping weight total.
LinearSums linearSumsWeighted(const PixelRect& rect, const int32_t* weights, int32_t* weightSum,
                              ColorTempHelper* sampler);

// Plain byte fill and row copy; the C library's are already at the memory limit.
void zeroFill(void* dst, size_t bytes);
void copyRows(uint8_t* dst, size_t dstPitch, const uint8_t* src, size_t srcPitch, size_t rowBytes,
              size_t rows);

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
