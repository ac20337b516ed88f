// Every pixel kernel (portable, and each instruction set this CPU runs) against
// plain loops over seeded random frames and rectangles, bit for bit. The
// weighted reference is the plain `sum += table * weight`: built without
// floating-point contraction it rounds the product first, as the kernels always
// do.
#include <ColorTempHelper.h>
#include <GammaTable.h>
#include <PixelKernels.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

namespace impl = aidl::vendor::zarel::hardware::cwb::implementation;
using impl::ColorTempHelper;
using impl::kGammaTable;
using impl::PixelKernelSet;

enum class Content { Noise, Gradient, FlatUi, Uniform };

// A frame of `pitch`-pixel rows; a rectangle of it is handed to a kernel as a
// copy that ends with the rectangle's last byte, so that a read past it is an
// out-of-bounds read.
struct Frame {
    Frame(std::mt19937& rng, Content content, int code) {
        width = 1 + static_cast<int>(rng() % 150);
        height = 1 + static_cast<int>(rng() % 40);
        pitch = width + static_cast<int>(rng() % 3 == 0 ? 0 : rng() % 9);
        bytes.resize(static_cast<size_t>(pitch) * height * 3);
        for (uint8_t& b : bytes) b = static_cast<uint8_t>(rng());
        const uint8_t palette[4][3] = {{255, 255, 255}, {0, 0, 0}, {33, 150, 243}, {250, 250, 250}};
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                uint8_t* p = &bytes[3 * (static_cast<size_t>(y) * pitch + x)];
                for (int c = 0; c < 3; ++c) {
                    switch (content) {
                        case Content::Noise:
                            break;
                        case Content::Gradient:
                            p[c] = static_cast<uint8_t>(x * 255 / width + c * y + (rng() & 3));
                            break;
                        case Content::FlatUi:
                            // Bands of colour with thin text-like strokes.
                            p[c] = palette[(y / 7 + (x % 11 == 3 && y % 5 != 0)) % 4][c];
                            break;
                        case Content::Uniform:
                            p[c] = static_cast<uint8_t>(code);
                            break;
                    }
                }
            }
        }
    }
    int width;
    int height;
    int pitch;
    std::vector<uint8_t> bytes;
};

struct Area {
    int left;
    int top;
    int width;
    int height;
};

struct View {
    View(const Frame& f, const Area& a) {
        const size_t pitchBytes = 3 * static_cast<size_t>(f.pitch);
        const size_t start = a.top * pitchBytes + 3 * static_cast<size_t>(a.left);
        bytes.assign(f.bytes.begin() + start,
                     f.bytes.begin() + start + (a.height - 1) * pitchBytes + 3 * a.width);
        rect = impl::PixelRect{bytes.data(), pitchBytes, static_cast<uint32_t>(a.width),
                               static_cast<uint32_t>(a.height)};
    }
    const uint8_t* at(int x, int y) const { return rect.base + y * rect.pitchBytes + 3 * x; }
    std::vector<uint8_t> bytes;
    impl::PixelRect rect;
};

// The whole frame, 1-pixel rectangles in every corner, strips along every edge,
// and a random one (odd widths come up often: widths are uniform).
std::vector<Area> areasOf(const Frame& f, std::mt19937& rng) {
    const int w = f.width;
    const int h = f.height;
    const int l = static_cast<int>(rng() % w);
    const int t = static_cast<int>(rng() % h);
    return {{0, 0, w, h},
            {0, 0, 1, 1},
            {w - 1, 0, 1, 1},
            {0, h - 1, 1, 1},
            {w - 1, h - 1, 1, 1},
            {0, h - 1, w, 1},
            {w - 1, 0, 1, h},
            {l, t, 1 + static_cast<int>(rng() % (w - l)), 1 + static_cast<int>(rng() % (h - t))}};
}

std::vector<const PixelKernelSet*> kernelSets() {
    std::vector<const PixelKernelSet*> sets = {&impl::portablePixelKernels(),
                                               &impl::pixelKernels()};
    if (impl::avx2PixelKernels() != nullptr) sets.push_back(impl::avx2PixelKernels());
    if (impl::neonPixelKernels() != nullptr) sets.push_back(impl::neonPixelKernels());
    return sets;
}

struct Sums {
    double sum[3] = {0.0, 0.0, 0.0};
    int32_t weightSum = 0;
};

Sums referenceSampled(const View& v, ColorTempHelper& sampler) {
    Sums s;
    for (uint32_t y = 0; y < v.rect.height; y += 3) {
        for (uint32_t x = 0; x < v.rect.width; x += 3) {
            const uint8_t* p = v.at(x, y);
            sampler.addSample(p[0], p[1], p[2]);
            for (int c = 0; c < 3; ++c) s.sum[c] += kGammaTable[p[c]];
        }
    }
    return s;
}

Sums referenceWeighted(const View& v, const int32_t* w, ColorTempHelper& sampler) {
    Sums s;
    uint32_t total = 0;
    for (uint32_t y = 0; y < v.rect.height; ++y) {
        for (uint32_t x = 0; x < v.rect.width; ++x, ++w) {
            const uint8_t* p = v.at(x, y);
            sampler.addSample(p[0], p[1], p[2]);
            total += static_cast<uint32_t>(*w);
            for (int c = 0; c < 3; ++c) s.sum[c] += kGammaTable[p[c]] * static_cast<double>(*w);
        }
    }
    s.weightSum = static_cast<int32_t>(total);
    return s;
}

std::string describe(const ColorTempHelper& s) {
    std::string out = "pure " + std::to_string(s.mPure) + " bw " + std::to_string(s.mBlackWhite);
    const impl::ColorRange* ranges[3] = {&s.mRangeFull, &s.mRange1, &s.mRange2};
    const bool valid[3] = {s.mRangeFullValid, s.mRange1Valid, s.mRange2Valid};
    for (int i = 0; i < 3; ++i) {
        out += " | " + std::to_string(valid[i]);
        for (int c = 0; c < 3; ++c) {
            out += " " + std::to_string(ranges[i]->min[c]) + ".." +
                   std::to_string(ranges[i]->max[c]);
        }
    }
    return out;
}

void expectSameBits(const Sums& want, const impl::LinearSums& got, const std::string& where) {
    for (int c = 0; c < 3; ++c) {
        EXPECT_EQ(0, memcmp(&want.sum[c], &got.sum[c], sizeof(double)))
                << where << " channel " << c << ": " << want.sum[c] << " vs " << got.sum[c];
    }
}

// Disjoint bands, overlapping ones (the first wins), nested, identical,
// inverted (empty), limits beyond the codes, a single-code band, and a sampler
// left disabled.
const char* const kBandLayouts[] = {"0,10,245,255", "0,200,100,255",  "0,255,20,40",   "5,5,5,5",
                                    "40,20,0,255",  "-50,30,200,900", "128,128,0,127", "0,10,245"};

// Random weights, a zero total, all negative, and the int32 extremes (their
// total wraps).
enum class Weights { Random, ZeroSum, Negative, Large };

std::vector<int32_t> makeWeights(std::mt19937& rng, Weights kind, size_t n) {
    std::vector<int32_t> w(n);
    for (size_t i = 0; i < n; ++i) {
        switch (kind) {
            case Weights::Random:
                w[i] = static_cast<int32_t>(rng() % 2001) - 1000;
                break;
            case Weights::ZeroSum:
                w[i] = i + 1 == n ? 0 : static_cast<int32_t>(rng() % 100) - 50;
                break;
            case Weights::Negative:
                w[i] = -1 - static_cast<int32_t>(rng() % 70000);
                break;
            case Weights::Large:
                w[i] = rng() & 1 ? std::numeric_limits<int32_t>::max() - static_cast<int32_t>(i)
                                 : std::numeric_limits<int32_t>::min() + static_cast<int32_t>(i);
                break;
        }
    }
    if (kind == Weights::ZeroSum && n > 1) {
        int64_t total = 0;
        for (size_t i = 0; i + 1 < n; ++i) total += w[i];
        w[n - 1] = static_cast<int32_t>(-total);
    }
    return w;
}

struct Trial {
    Content content;
    int code;
    uint32_t seed;
};

// Seeded frames of each content kind, plus a uniform frame of every code (which
// holds the gamma traps 53 and 187); fn sees each area of each frame with the
// frame's generator.
template <typename Fn>
void forEachView(uint32_t seedFactor, Fn fn) {
    std::vector<Trial> trials;
    for (uint32_t seed = 1; seed <= 24; ++seed) {
        for (Content c : {Content::Noise, Content::Gradient, Content::FlatUi}) {
            trials.push_back({c, 0, seed});
        }
    }
    for (int code = 0; code < 256; ++code) trials.push_back({Content::Uniform, code, 1000u + code});
    for (const Trial& trial : trials) {
        std::mt19937 rng(trial.seed * seedFactor);
        const Frame frame(rng, trial.content, trial.code);
        for (const Area& a : areasOf(frame, rng)) fn(trial, a, View(frame, a), rng);
    }
}

TEST(PixelKernels, LumaAndHistogramMatchThePlainLoopsOnEverySet) {
    forEachView(1, [](const Trial& trial, const Area& a, const View& v, std::mt19937&) {
        uint32_t luma = 0;
        std::vector<unsigned int> bins(256 * 3, 7u);  // kernels add to what is there
        for (uint32_t y = 0; y < v.rect.height; ++y) {
            for (uint32_t x = 0; x < v.rect.width; ++x) {
                const uint8_t* p = v.at(x, y);
                luma += (7u * p[0] + 23u * p[1] + 2u * p[2]) >> 5;
                for (int c = 0; c < 3; ++c) ++bins[p[c] * 3 + c];
            }
        }
        for (const PixelKernelSet* set : kernelSets()) {
            const std::string where = std::string(set->name) + " seed " +
                                      std::to_string(trial.seed) + " area " +
                                      std::to_string(a.left) + "," + std::to_string(a.top) + " " +
                                      std::to_string(a.width) + "x" + std::to_string(a.height);
            EXPECT_EQ(luma, set->lumaSum(v.rect)) << where;
            std::vector<unsigned int> got(256 * 3, 7u);
            set->histogram(v.rect, reinterpret_cast<unsigned int(*)[3]>(got.data()));
            EXPECT_EQ(bins, got) << where;
        }
    });
}

TEST(PixelKernels, RgbSumsAndSamplerMatchThePlainLoopsBitForBit) {
    int layout = 0;
    forEachView(7919u, [&](const Trial& trial, const Area& a, const View& v, std::mt19937& rng) {
        const char* bands = kBandLayouts[layout++ % std::size(kBandLayouts)];
        const Weights kind = static_cast<Weights>(rng() % 4);
        const std::vector<int32_t> w = makeWeights(rng, kind, v.rect.width * v.rect.height);
        const std::string where = std::string("seed ") + std::to_string(trial.seed) + " bands " +
                                  bands + " weights " + std::to_string(static_cast<int>(kind)) +
                                  " area " + std::to_string(a.width) + "x" +
                                  std::to_string(a.height);
        for (bool weighted : {false, true}) {
            ColorTempHelper want;
            ColorTempHelper got;
            want.configure(bands);
            got.configure(bands);
            const Sums ref =
                    weighted ? referenceWeighted(v, w.data(), want) : referenceSampled(v, want);
            int32_t weightSum = 0;
            const impl::LinearSums sums =
                    weighted ? impl::linearSumsWeighted(v.rect, w.data(), &weightSum, &got)
                             : impl::linearSumsSampled(v.rect, &got);
            expectSameBits(ref, sums, where + (weighted ? " weighted" : " sampled"));
            EXPECT_EQ(ref.weightSum, weighted ? weightSum : 0) << where;
            EXPECT_EQ(describe(want), describe(got)) << where;
        }
    });
}

}  // namespace
