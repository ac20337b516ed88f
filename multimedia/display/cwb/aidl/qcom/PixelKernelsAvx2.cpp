// Luma and histogram passes with AVX2, chosen at run time on x86-64 CPUs that have it. The
// rest of the library keeps the compiler's default target.
#include "PixelKernels.h"

#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace aidl::vendor::zarel::hardware::cwb::implementation {

#if defined(__x86_64__)

namespace {

#define CWB_KERNEL_TARGET __attribute__((target("avx2")))

CWB_KERNEL_TARGET inline size_t matchingBytes(const uint8_t* p, size_t n) {
    size_t i = 0;
    for (; i + 32 <= n; i += 32) {
        const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + i));
        const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + i + 3));
        const uint32_t equal = static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(a, b)));
        if (equal != 0xFFFFFFFFu) return i + static_cast<size_t>(__builtin_ctz(~equal));
    }
    while (i < n && p[i] == p[i + 3]) ++i;
    return i;
}

// Ten pixels per block: bytes p .. p + 31 against p + 3 .. p + 34; pixel k matches its
// successor when bits 3k .. 3k + 2 of the byte mask are all set.
constexpr int kBlockPixels = 10;
constexpr ptrdiff_t kBlockReach = 35;

CWB_KERNEL_TARGET inline bool blockHasRun(const uint8_t* p) {
    const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 3));
    const uint32_t equal = static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(a, b)));
    return (equal & equal >> 1 & equal >> 2 & 0x09249249u) != 0;
}

#include "PixelHistogram.inc"

CWB_KERNEL_TARGET inline uint32_t lumaOf(const uint8_t* p) {
    return (7u * p[0] + 23u * p[1] + 2u * p[2]) >> 5;
}

// Weighs eight pixels, four per 128-bit lane, after `spread` moves each to a 4-byte slot.
CWB_KERNEL_TARGET inline __m256i weighEight(__m256i v, __m256i spread) {
    const __m256i weights = _mm256_setr_epi8(7, 23, 2, 0, 7, 23, 2, 0, 7, 23, 2, 0, 7, 23, 2, 0, 7,
                                             23, 2, 0, 7, 23, 2, 0, 7, 23, 2, 0, 7, 23, 2, 0);
    v = _mm256_shuffle_epi8(v, spread);
    v = _mm256_maddubs_epi16(v, weights);
    v = _mm256_madd_epi16(v, _mm256_set1_epi16(1));
    return _mm256_srli_epi32(v, 5);
}

// Eight pixels at `at` from a 32-byte load taken 4 bytes before them, so that each lane holds
// four whole pixels: lane 0 in its bytes 4..15, lane 1 in its bytes 0..11.
CWB_KERNEL_TARGET inline __m256i eightLumas(const uint8_t* at) {
    const __m256i spread =
            _mm256_setr_epi8(4, 5, 6, -1, 7, 8, 9, -1, 10, 11, 12, -1, 13, 14, 15, -1, 0, 1, 2, -1,
                             3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
    return weighEight(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(at - 4)), spread);
}

// Eight pixels from a 32-byte load at `from` whose 4-byte words are moved so that each lane
// holds four whole pixels in its bytes 0..11.
CWB_KERNEL_TARGET inline __m256i eightLumasPermuted(const uint8_t* from, __m256i words) {
    const __m256i spread = _mm256_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1, 0,
                                            1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
    const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
    return weighEight(_mm256_permutevar8x32_epi32(v, words), spread);
}

CWB_KERNEL_TARGET uint32_t lumaSumAvx2(const PixelRect& rect) {
    // First eight pixels of a row: bytes 0..23; last eight: the last 24 bytes of a 32-byte load.
    const __m256i headWords = _mm256_setr_epi32(0, 1, 2, 3, 3, 4, 5, 6);
    const __m256i tailWords = _mm256_setr_epi32(2, 3, 4, 5, 5, 6, 7, 7);
    // Lane j of the last block is kept when j >= 8 - k, k pixels being left.
    alignas(32) static const int32_t kTailKeep[16] = {0,  0,  0,  0,  0,  0,  0,  0,
                                                      -1, -1, -1, -1, -1, -1, -1, -1};
    uint32_t sum = 0;
    __m256i acc0 = _mm256_setzero_si256();
    __m256i acc1 = _mm256_setzero_si256();
    const size_t rowBytes = 3 * static_cast<size_t>(rect.width);
    for (uint32_t y = 0; y < rect.height; ++y) {
        const uint8_t* row = rect.base + y * rect.pitchBytes;
        if (rowBytes < 32) {
            for (size_t i = 0; i < rowBytes; i += 3) sum += lumaOf(row + i);
            continue;
        }
        acc0 = _mm256_add_epi32(acc0, eightLumasPermuted(row, headWords));
        size_t i = 24;
        // A block at i reads bytes i - 4 .. i + 27.
        for (; i + 24 + 28 <= rowBytes; i += 48) {
            acc0 = _mm256_add_epi32(acc0, eightLumas(row + i));
            acc1 = _mm256_add_epi32(acc1, eightLumas(row + i + 24));
        }
        for (; i + 28 <= rowBytes; i += 24) acc0 = _mm256_add_epi32(acc0, eightLumas(row + i));
        for (; rowBytes - i > 24; i += 3) sum += lumaOf(row + i);
        const size_t left = (rowBytes - i) / 3;
        const __m256i keep = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(kTailKeep + left));
        acc1 = _mm256_add_epi32(
                acc1, _mm256_and_si256(keep, eightLumasPermuted(row + rowBytes - 32, tailWords)));
    }
    const __m256i acc = _mm256_add_epi32(acc0, acc1);
    __m128i half = _mm_add_epi32(_mm256_castsi256_si128(acc), _mm256_extracti128_si256(acc, 1));
    half = _mm_add_epi32(half, _mm_shuffle_epi32(half, 0x4E));
    half = _mm_add_epi32(half, _mm_shuffle_epi32(half, 0xB1));
    return sum + static_cast<uint32_t>(_mm_cvtsi128_si32(half));
}

const PixelKernelSet kAvx2 = {"avx2", lumaSumAvx2, histogramRuns};

}  // namespace

const PixelKernelSet* avx2PixelKernels() {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2") ? &kAvx2 : nullptr;
}

#else

const PixelKernelSet* avx2PixelKernels() {
    return nullptr;
}

#endif

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
