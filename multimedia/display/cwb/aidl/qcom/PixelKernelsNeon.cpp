// Luma and histogram passes with NEON, which every AArch64 CPU has.
#include "PixelKernels.h"

#include <cstring>

#if defined(__aarch64__)
#include <arm_neon.h>
#endif

namespace aidl::vendor::zarel::hardware::cwb::implementation {

#if defined(__aarch64__)

namespace {

#define CWB_KERNEL_TARGET

inline size_t matchingBytes(const uint8_t* p, size_t n) {
    size_t i = 0;
    for (; i + 16 <= n; i += 16) {
        const uint8x16_t equal = vceqq_u8(vld1q_u8(p + i), vld1q_u8(p + i + 3));
        if (vminvq_u8(equal) != 0xFF) {
            // Four mask bits per byte: the first clear nibble is the first differing byte.
            const uint64_t mask = vget_lane_u64(
                    vreinterpret_u64_u8(vshrn_n_u16(vreinterpretq_u16_u8(equal), 4)), 0);
            return i + static_cast<size_t>(__builtin_ctzll(~mask)) / 4;
        }
    }
    while (i < n && p[i] == p[i + 3]) ++i;
    return i;
}

// Sixteen pixels per block, each compared with the next after de-interleaving loads.
constexpr int kBlockPixels = 16;
constexpr ptrdiff_t kBlockReach = 51;

inline bool blockHasRun(const uint8_t* p) {
    const uint8x16x3_t a = vld3q_u8(p);
    const uint8x16x3_t b = vld3q_u8(p + 3);
    const uint8x16_t same =
            vandq_u8(vandq_u8(vceqq_u8(a.val[0], b.val[0]), vceqq_u8(a.val[1], b.val[1])),
                     vceqq_u8(a.val[2], b.val[2]));
    return vmaxvq_u8(same) != 0;
}

#include "PixelHistogram.inc"

// Sixteen pixels per de-interleaving load; each 16-bit weighted sum fits (32 * 255).
uint32_t lumaSumNeon(const PixelRect& rect) {
    uint32_t sum = 0;
    uint32x4_t acc = vdupq_n_u32(0);
    const uint8x8_t kR = vdup_n_u8(7);
    const uint8x8_t kG = vdup_n_u8(23);
    const uint8x8_t kB = vdup_n_u8(2);
    const uint8x16_t kR16 = vdupq_n_u8(7);
    const uint8x16_t kG16 = vdupq_n_u8(23);
    const uint8x16_t kB16 = vdupq_n_u8(2);
    for (uint32_t y = 0; y < rect.height; ++y) {
        const uint8_t* p = rect.base + y * rect.pitchBytes;
        uint32_t x = 0;
        for (; x + 16 <= rect.width; x += 16, p += 48) {
            const uint8x16x3_t px = vld3q_u8(p);
            uint16x8_t lo = vmull_u8(vget_low_u8(px.val[0]), kR);
            lo = vmlal_u8(lo, vget_low_u8(px.val[1]), kG);
            lo = vmlal_u8(lo, vget_low_u8(px.val[2]), kB);
            uint16x8_t hi = vmull_high_u8(px.val[0], kR16);
            hi = vmlal_high_u8(hi, px.val[1], kG16);
            hi = vmlal_high_u8(hi, px.val[2], kB16);
            acc = vpadalq_u16(acc, vshrq_n_u16(lo, 5));
            acc = vpadalq_u16(acc, vshrq_n_u16(hi, 5));
        }
        for (; x < rect.width; ++x, p += 3) sum += (7u * p[0] + 23u * p[1] + 2u * p[2]) >> 5;
    }
    return sum + vaddvq_u32(acc);
}

const PixelKernelSet kNeon = {"neon", lumaSumNeon, histogramRuns};

}  // namespace

const PixelKernelSet* neonPixelKernels() {
    return &kNeon;
}

#else

const PixelKernelSet* neonPixelKernels() {
    return nullptr;
}

#endif

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
