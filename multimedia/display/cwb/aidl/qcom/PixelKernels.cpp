// Pixel passes shared by every instruction set (the RGB sums and the sampler), the portable
// luma and histogram passes, and the choice of the widest set this CPU runs.
//
// Exactness of the weighted sums: each product goes through an empty asm statement that claims
// to modify it in a floating-point register, so no compiler can fuse it with the following
// addition into a multiply-add, whatever -ffp-contract says (GCC ignores the STDC FP_CONTRACT
// pragma, Clang fuses across statements with -ffp-contract=fast). The unweighted sums have no
// product to fuse. Nothing is reassociated: each channel is one chain of additions in order.
#define LOG_TAG "CwbService"

#include "PixelKernels.h"

#include <log/log.h>

#include <algorithm>
#include <cstring>

#if defined(__x86_64__)
#include <emmintrin.h>
#elif defined(__aarch64__)
#include <arm_neon.h>
#endif

#include "GammaTable.h"

namespace aidl::vendor::zarel::hardware::cwb::implementation {

namespace {

// A run of identical pixels: matching bytes are found with plain 8-byte words here.
inline size_t matchingBytes(const uint8_t* p, size_t n) {
    size_t i = 0;
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    for (; i + 8 <= n; i += 8) {
        uint64_t a;
        uint64_t b;
        memcpy(&a, p + i, sizeof(a));
        memcpy(&b, p + i + 3, sizeof(b));
        if (a != b) return i + static_cast<size_t>(__builtin_ctzll(a ^ b)) / 8;
    }
#endif
    while (i < n && p[i] == p[i + 3]) ++i;
    return i;
}

// Two pixels per block: each compared with the next in one 8-byte word.
constexpr int kBlockPixels = 2;
constexpr ptrdiff_t kBlockReach = 11;

inline bool blockHasRun(const uint8_t* p) {
    return (p[0] == p[3] && p[1] == p[4] && p[2] == p[5]) ||
           (p[3] == p[6] && p[4] == p[7] && p[5] == p[8]);
}

#define CWB_KERNEL_TARGET
#include "PixelHistogram.inc"
#undef CWB_KERNEL_TARGET

uint32_t lumaSumPortable(const PixelRect& rect) {
    uint32_t sum = 0;
    for (uint32_t y = 0; y < rect.height; ++y) {
        const uint8_t* p = rect.base + y * rect.pitchBytes;
        for (uint32_t x = 0; x < rect.width; ++x, p += 3) {
            sum += (7u * p[0] + 23u * p[1] + 2u * p[2]) >> 5;
        }
    }
    return sum;
}

const PixelKernelSet kPortable = {"portable", lumaSumPortable, histogramRuns};

// Keeps a rounded product out of a fused multiply-add (see the top of the file).
inline double roundedProduct(double a, double b) {
    double p = a * b;
#if defined(__aarch64__)
    __asm__("" : "+w"(p));
#elif defined(__x86_64__)
    __asm__("" : "+x"(p));
#else
    volatile double stored = p;
    p = stored;
#endif
    return p;
}

// What the sampler does with each pixel while its verdicts can still change: Bands records
// the pixel in the band it falls in (black/white still possible), Full only widens the full
// range, None does nothing.
enum class Mode { None, Bands, Full };

// Ranges are kept as "code seen" flags: a plain store per channel instead of a compare chain.
// Index 0 and 1 are the two bands, 2 the pixels seen after black/white was ruled out.
struct Seen {
    uint8_t flags[3][3][256];
    unsigned used = 0;  // bit i: flags[i] has a flag set
};

// Per-channel minimum and maximum of pixels read as 4-byte words (the fourth byte, the next
// pixel's red, is ignored): two vector operations per pixel where the ISA has byte min/max.
class ChannelBounds {
  public:
#if defined(__x86_64__)
    void add(const uint8_t* p) {
        int32_t word;
        memcpy(&word, p, sizeof(word));
        const __m128i v = _mm_cvtsi32_si128(word);
        mLow = _mm_min_epu8(mLow, v);
        mHigh = _mm_max_epu8(mHigh, v);
    }
    void get(uint8_t low[16], uint8_t high[16]) const {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(low), mLow);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(high), mHigh);
    }

  private:
    __m128i mLow = _mm_set1_epi8(-1);
    __m128i mHigh = _mm_setzero_si128();
#elif defined(__aarch64__)
    void add(const uint8_t* p) {
        uint32_t word;
        memcpy(&word, p, sizeof(word));
        const uint8x8_t v = vreinterpret_u8_u32(vdup_n_u32(word));
        mLow = vmin_u8(mLow, v);
        mHigh = vmax_u8(mHigh, v);
    }
    void get(uint8_t low[16], uint8_t high[16]) const {
        vst1_u8(low, mLow);
        vst1_u8(high, mHigh);
    }

  private:
    uint8x8_t mLow = vdup_n_u8(255);
    uint8x8_t mHigh = vdup_n_u8(0);
#else
    void add(const uint8_t* p) {
        for (int c = 0; c < 3; ++c) {
            if (p[c] < mLow[c]) mLow[c] = p[c];
            if (p[c] > mHigh[c]) mHigh[c] = p[c];
        }
    }
    void get(uint8_t low[16], uint8_t high[16]) const {
        memcpy(low, mLow, 3);
        memcpy(high, mHigh, 3);
    }

  private:
    uint8_t mLow[3] = {255, 255, 255};
    uint8_t mHigh[3] = {0, 0, 0};
#endif
};

struct Walk {
    ChannelBounds bounds;
    uint32_t y = 0;
    uint32_t x = 0;
    double sum[3] = {0.0, 0.0, 0.0};
    uint32_t weightSum = 0;
    uint8_t outlier[3] = {0, 0, 0};
};

// Walks the samples from (y, x) in row-major order; in Bands mode it stops right after the
// first pixel outside both bands, with the cursor on the next sample. Returns true then.
template <Mode M, bool Weighted>
bool walk(const PixelRect& rect, const int32_t* weights, const uint8_t* bandOf, Seen& seen,
          Walk& state) {
    // Weighted passes take every pixel, the others every third one of every third row.
    constexpr uint32_t kStep = Weighted ? 1 : 3;
    const double* table = kGammaTable.data();
    double s0 = state.sum[0];
    double s1 = state.sum[1];
    double s2 = state.sum[2];
    uint32_t weightSum = state.weightSum;
    ChannelBounds bounds = state.bounds;
    unsigned used = seen.used;
    bool stopped = false;
    // Locals, not the rectangle's fields: the flag stores are byte stores, which the compiler
    // must otherwise assume may change them.
    const uint8_t* const base = rect.base;
    const size_t pitch = rect.pitchBytes;
    const uint32_t width = rect.width;
    const uint32_t height = rect.height;
    // Pointers step through a row: a loop over x would recompute each address.
    constexpr size_t kStride = 3 * kStep;
    uint32_t y = state.y;
    uint32_t x = state.x;
    for (; y < height; y += kStep, x = 0) {
        const uint8_t* const row = base + y * pitch;
        const uint8_t* const rowEnd = row + 3 * static_cast<size_t>(width);
        // A 4-byte read of a pixel before this stays inside the row.
        const uint8_t* const wordEnd = rowEnd - 3;
        const uint8_t* p = row + 3 * static_cast<size_t>(x);
        const int32_t* w = Weighted ? weights + static_cast<size_t>(y) * width + x : nullptr;
        for (; p < rowEnd; p += kStride) {
            const uint8_t r = p[0];
            const uint8_t g = p[1];
            const uint8_t b = p[2];
            if (M == Mode::Bands) {
                const unsigned band = bandOf[r] & bandOf[g] & bandOf[b];
                // The first band wins where they overlap.
                const unsigned slot = band == 0 ? 2 : (band & 1) ^ 1;
                seen.flags[slot][0][r] = 1;
                seen.flags[slot][1][g] = 1;
                seen.flags[slot][2][b] = 1;
                used |= 1u << slot;
                stopped = band == 0;
            } else if (M == Mode::Full) {
                if (p < wordEnd) {
                    bounds.add(p);
                } else {
                    seen.flags[2][0][r] = 1;
                    seen.flags[2][1][g] = 1;
                    seen.flags[2][2][b] = 1;
                    used |= 4u;
                }
            }
            if (Weighted) {
                const int32_t weight = *w++;
                weightSum += static_cast<uint32_t>(weight);
                const double wd = static_cast<double>(weight);
                s0 += roundedProduct(table[r], wd);
                s1 += roundedProduct(table[g], wd);
                s2 += roundedProduct(table[b], wd);
            } else {
                s0 += table[r];
                s1 += table[g];
                s2 += table[b];
            }
            if (M == Mode::Bands && stopped) {
                state.outlier[0] = r;
                state.outlier[1] = g;
                state.outlier[2] = b;
                break;
            }
        }
        if (stopped) {
            // Resume at the sample after the outlier.
            x = static_cast<uint32_t>((p - row) / 3) + kStep;
            if (x >= width) {
                x = 0;
                y += kStep;
            }
            break;
        }
    }
    state.y = y;
    state.x = x;
    state.sum[0] = s0;
    state.sum[1] = s1;
    state.sum[2] = s2;
    state.weightSum = weightSum;
    state.bounds = bounds;
    seen.used = used;
    return stopped;
}

// Lowest and highest flagged code of up to three flag arrays together; false when none is.
bool flaggedBounds(const uint8_t* a, const uint8_t* b, const uint8_t* c, int32_t& low,
                   int32_t& high) {
    int32_t first = -1;
    int32_t last = -1;
    for (int32_t i = 0; i < 256; i += 8) {
        uint64_t word = 0;
        for (const uint8_t* flags : {a, b, c}) {
            if (flags == nullptr) continue;
            uint64_t part;
            memcpy(&part, flags + i, sizeof(part));
            word |= part;
        }
        if (word == 0) continue;
        if (first < 0) {
            for (int32_t k = 0; k < 8; ++k) {
                if ((a != nullptr && a[i + k]) || (b != nullptr && b[i + k]) ||
                    (c != nullptr && c[i + k])) {
                    first = i + k;
                    break;
                }
            }
        }
        for (int32_t k = 7; k >= 0; --k) {
            if ((a != nullptr && a[i + k]) || (b != nullptr && b[i + k]) ||
                (c != nullptr && c[i + k])) {
                last = i + k;
                break;
            }
        }
    }
    if (first < 0) return false;
    low = first;
    high = last;
    return true;
}

// Widens a range by the flagged codes exactly as per-pixel widening would have.
void mergeRange(ColorRange& range, bool& valid, const Seen& seen, bool band0, bool band1,
                bool rest) {
    band0 = band0 && (seen.used & 1u) != 0;
    band1 = band1 && (seen.used & 2u) != 0;
    rest = rest && (seen.used & 4u) != 0;
    if (!band0 && !band1 && !rest) return;
    for (int c = 0; c < 3; ++c) {
        int32_t low = 0;
        int32_t high = 0;
        if (!flaggedBounds(band0 ? seen.flags[0][c] : nullptr, band1 ? seen.flags[1][c] : nullptr,
                           rest ? seen.flags[2][c] : nullptr, low, high)) {
            return;  // no pixel reached this range: no channel has a flag either
        }
        valid = true;
        if (low < range.min[c]) range.min[c] = low;
        if (high > range.max[c]) range.max[c] = high;
    }
}

template <bool Weighted>
LinearSums linearSums(const PixelRect& rect, const int32_t* weights, int32_t* weightSum,
                      ColorTempHelper* sampler) {
    Walk state;
    Seen seen;
    uint8_t bandOf[256];
    const bool sampling = sampler != nullptr && sampler->mEnabled;
    if (!sampling) {
        walk<Mode::None, Weighted>(rect, weights, nullptr, seen, state);
    } else {
        memset(seen.flags, 0, sizeof(seen.flags));
        const bool pure = sampler->mPure;
        if (sampler->mBlackWhite) {
            const int32_t* bands = sampler->mCtRange;
            memset(bandOf, 0, sizeof(bandOf));
            for (int band = 0; band < 2; ++band) {
                const int32_t low = std::max<int32_t>(bands[2 * band], 0);
                const int32_t high = std::min<int32_t>(bands[2 * band + 1], 255);
                for (int32_t code = low; code <= high; ++code) bandOf[code] |= 1 << band;
            }
            if (walk<Mode::Bands, Weighted>(rect, weights, bandOf, seen, state)) {
                sampler->mBlackWhite = false;
                if (sampler->mDebug.load(std::memory_order_relaxed)) {
                    ALOGD("Pixel out of range: R(%d), G(%d), B(%d)", state.outlier[0],
                          state.outlier[1], state.outlier[2]);
                }
            }
            mergeRange(sampler->mRange1, sampler->mRange1Valid, seen, true, false, false);
            mergeRange(sampler->mRange2, sampler->mRange2Valid, seen, false, true, false);
        }
        if (pure) {
            walk<Mode::Full, Weighted>(rect, weights, nullptr, seen, state);
            mergeRange(sampler->mRangeFull, sampler->mRangeFullValid, seen, true, true, true);
            uint8_t low[16];
            uint8_t high[16];
            state.bounds.get(low, high);
            // Empty bounds stay inverted (255 > 0); one pixel makes every channel's pair ordered.
            if (low[0] <= high[0]) {
                ColorRange& full = sampler->mRangeFull;
                sampler->mRangeFullValid = true;
                for (int c = 0; c < 3; ++c) {
                    if (low[c] < full.min[c]) full.min[c] = low[c];
                    if (high[c] > full.max[c]) full.max[c] = high[c];
                }
            }
        } else {
            walk<Mode::None, Weighted>(rect, weights, nullptr, seen, state);
        }
    }
    if (weightSum != nullptr) *weightSum = static_cast<int32_t>(state.weightSum);
    return LinearSums{{state.sum[0], state.sum[1], state.sum[2]}};
}

}  // namespace

const PixelKernelSet& portablePixelKernels() {
    return kPortable;
}

const PixelKernelSet& pixelKernels() {
    static const PixelKernelSet* const chosen = []() {
        if (const PixelKernelSet* neon = neonPixelKernels()) return neon;
        if (const PixelKernelSet* avx2 = avx2PixelKernels()) return avx2;
        return &kPortable;
    }();
    return *chosen;
}

LinearSums linearSumsSampled(const PixelRect& rect, ColorTempHelper* sampler) {
    return linearSums<false>(rect, nullptr, nullptr, sampler);
}

LinearSums linearSumsWeighted(const PixelRect& rect, const int32_t* weights, int32_t* weightSum,
                              ColorTempHelper* sampler) {
    return linearSums<true>(rect, weights, weightSum, sampler);
}

void zeroFill(void* dst, size_t bytes) {
    memset(dst, 0, bytes);
}

void copyRows(uint8_t* dst, size_t dstPitch, const uint8_t* src, size_t srcPitch, size_t rowBytes,
              size_t rows) {
    if (dstPitch == rowBytes && srcPitch == rowBytes) {
        memcpy(dst, src, rowBytes * rows);
        return;
    }
    for (size_t y = 0; y < rows; ++y) memcpy(dst + y * dstPitch, src + y * srcPitch, rowBytes);
}

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
