// Frame analysis: RGB with classification, luma and histogram requests, their pixel passes and
// the weight-positions file.
#define LOG_TAG "CwbService"
#define ATRACE_TAG ATRACE_TAG_GRAPHICS

#include <log/log.h>
#include <utils/Trace.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "CwbService.h"
#include "GammaTable.h"
#include "ParseInt.h"
#include "PixelKernels.h"

namespace aidl::vendor::zarel::hardware::cwb::implementation {

namespace {

constexpr int kAodCaptureLimit = 3;

// An empty rectangle (right <= left or bottom <= top) gives zero width or height.
PixelRect pixelRect(const void* buffer, unsigned int stride, const Rect& rect) {
    PixelRect area;
    area.base = static_cast<const uint8_t*>(buffer) +
                3 * (static_cast<size_t>(rect.left) +
                     static_cast<size_t>(stride) * static_cast<size_t>(rect.top));
    area.pitchBytes = 3 * static_cast<size_t>(stride);
    area.width = rect.right > rect.left ? static_cast<uint32_t>(rect.right - rect.left) : 0;
    area.height = rect.bottom > rect.top ? static_cast<uint32_t>(rect.bottom - rect.top) : 0;
    return area;
}

// Names the display an RGB request serves for the pass it runs, while it holds the request lock.
class ServedDisplay {
  public:
    ServedDisplay(int32_t& slot, int32_t displayId) : mSlot(slot) { mSlot = displayId; }
    ~ServedDisplay() { mSlot = kNoDisplay; }
    ServedDisplay(const ServedDisplay&) = delete;
    ServedDisplay& operator=(const ServedDisplay&) = delete;

  private:
    int32_t& mSlot;
};

// The cached result for work, counted as a hit, when the frame it came from may still answer.
template <typename Value, size_t Capacity>
const Value* currentHit(bool usable, const ResultCache<Value, Capacity>& cache, const Rect& work,
                        CwbStats& stats, CwbStats::Counter hits) {
    const Value* hit = usable ? cache.find(work) : nullptr;
    if (hit != nullptr) stats.count(hits);
    return hit;
}

bool spreadWithin(const ColorRange& range, int limit) {
    for (int c = 0; c < 3; ++c) {
        if (range.max[c] - range.min[c] > limit) return false;
    }
    return true;
}

}  // namespace

// The power mode of the display being sampled; other ids keep the last one.
void CwbService::selectPowerMode(int32_t displayId) {
    if (displayId == kDisplayMain) {
        mPowerMode = mPowerModeMain;
    } else if (displayId == kDisplaySecondary) {
        mPowerMode = mPowerModeSec;
    }
}

// ---- The analysis request frame ----

// Status, display, rectangle, request lock, power mode, cache, screen-off rule, capture gate and
// writeback, in that order, for every analysis request. The request supplies what differs: its
// cache lookup, its screen-off rule, the failure line and its pass, each run under the lock.
template <typename Cached, typename ScreenOff, typename Failed, typename Pass>
int32_t CwbService::analyse(int32_t displayId, const Rect& rect, const AnalysisKind& kind,
                            Cached cached, ScreenOff screenOff, Failed failed, Pass pass) {
    if (!mCwbStatus || !mCwbEnabled) {
        mStats.count(CwbStats::Counter::RefusedDisabled);
        return static_cast<int32_t>(Error::FAILED);
    }
    if (displayId < 0) {
        ALOGE("No valid display ID specified");
        mStats.count(CwbStats::Counter::RefusedNoDisplay);
        return static_cast<int32_t>(Error::FAILED);
    }
    Rect work{};
    if (!checkInputRect(displayId, rect, work))
        return static_cast<int32_t>(Error::INVALID_ARGUMENT);
    if (!mRequestLock.try_lock_for(kRequestLockTimeout)) {
        ALOGI("%s: resource busy\n", kind.name);
        mStats.count(CwbStats::Counter::RefusedBusy);
        return static_cast<int32_t>(Error::FAILED);
    }
    AdoptedLock lock(mRequestLock);
    ServedDisplay served(mRequestDisplayId, displayId);

    selectPowerMode(displayId);
    int32_t result = 0;
    if (cached(work, &result)) return result;
    if (screenOff()) {
        mStats.count(CwbStats::Counter::RefusedScreenOff);
        return static_cast<int32_t>(Error::SCREEN_OFF);
    }
    if (!captureScreenAllowed()) return static_cast<int32_t>(Error::FAILED);
    const int ret = writeback(displayId, kind.secondary, work, kind.postProcessed);
    const CwbBufferInfo& buffer = kind.secondary ? mCwbBufferHandle_sec : mCwbBufferHandle;
    // The rectangle was checked against the configuration; the buffer must hold it too.
    if (ret != 0 || !rectInsideBuffer(buffer, work)) {
        failed(ret);
        mStats.count(CwbStats::Counter::CaptureFailed);
        return static_cast<int32_t>(Error::FAILED);
    }
    return pass(buffer, work);
}

// ---- RGB ----

ndk::ScopedAStatus CwbService::getRGBValue(const Rect& rect, Rgb* rgb, Error* _aidl_return) {
    CwbStats::Request request(mStats, CwbStats::Method::getRGBValue, &rect, _aidl_return);
    request.watch(rgb);
    return getRGBValue(mDisplayId, rect, rgb, _aidl_return);
}

ndk::ScopedAStatus CwbService::getRGBValue(int32_t displayId, const Rect& rect, Rgb* rgb,
                                           Error* _aidl_return) {
    ATRACE_NAME("getRGBValue");
    if (mDebugLog) {
        ALOGD("getRGBValue [%d, %d, %d, %d] PowerMode[%d %d] DisplayId[%d]\n", rect.left, rect.top,
              rect.right, rect.bottom, mPowerModeMain.load(), mPowerModeSec.load(), displayId);
    }
    std::array<unsigned char, 3> codes = {0, 0, 0};
    // Either display, with its post-processing as configured; a frame kept for the doze-suspend
    // screen still answers.
    const AnalysisKind kind{"getRGBValue", displayId == kDisplaySecondary, mPostProcess};
    auto cached = [&](const Rect& work, int32_t* result) REQUIRES(mRequestLock) {
        const auto* hit = currentHit(mBufferCacheValid || mPowerMode == kPowerDozeSuspend,
                                     mRgbCache, work, mStats, CwbStats::Counter::RgbCacheHits);
        if (hit == nullptr) return false;
        codes = hit->first;
        mRgbCacheHit = true;
        if (mDebugLog) ALOGD("cache Screen RGB value: %d, %d, %d\n", codes[0], codes[1], codes[2]);
        *result = static_cast<int32_t>(hit->second) << 16;
        return true;
    };
    // Off and doze-suspend screens refuse; on a forbidden AOD layer a few captures pass first.
    auto screenOff = [&]() REQUIRES(mRequestLock) {
        if (mDebugLog) {
            ALOGD("mCachePowerMode %d, mPowerMode %d, mAodForbiddenCnt %d\n",
                  mCachePowerMode.load(), mPowerMode, mAodForbiddenCnt);
        }
        if (mPowerMode == kPowerDoze && !(mCachePowerMode == kPowerDoze && mBufferCacheValid)) {
            mAodForbiddenCnt = 0;
            if (mDebugLog) ALOGD("doze reset mAodForbiddenCnt %d", 0);
        }
        mCachePowerMode = mPowerMode;
        if (mPowerMode == kPowerOff || mPowerMode == kPowerDozeSuspend ||
            (mAodForbidden && mAodLayerExist && mAodForbiddenCnt >= kAodCaptureLimit)) {
            if (mDebugLog) {
                ALOGD("Screen power off and status: %d %d %d %d\n", mPowerMode, displayId,
                      mAodForbidden, mAodLayerExist.load());
            }
            return true;
        }
        return false;
    };
    auto captured = [&]() REQUIRES(mRequestLock) {
        mRgbCacheHit = false;
        if (mAodForbiddenCnt < kAodCaptureLimit) ++mAodForbiddenCnt;
    };
    auto failed = [&](int ret) REQUIRES(mRequestLock) {
        captured();
        if (mDebugLog) {
            ALOGD("getRGBValue faild ret = %d, mCwbBufferHandle = %p, mCwbBufferHandle_sec = %p",
                  ret, mCwbBufferHandle.base, mCwbBufferHandle_sec.base);
        }
    };
    auto pass = [&](const CwbBufferInfo& buffer, const Rect& work) REQUIRES(mRequestLock) {
        captured();
        unsigned short state = 0;
        calcPixelsRGB(buffer.base, static_cast<unsigned int>(buffer.width), work, codes, state);
        if (mDebugLog) {
            ALOGD("Screen RGB value: %d, %d, %d. state: %x\n", codes[0], codes[1], codes[2], state);
        }
        mRgbCache.put(work, {codes, state});
        return static_cast<int32_t>(state) << 16;
    };
    const int32_t result = analyse(displayId, rect, kind, cached, screenOff, failed, pass);
    rgb->r = codes[0];
    rgb->g = codes[1];
    rgb->b = codes[2];
    rgb->extra.clear();
    *_aidl_return = static_cast<Error>(result);
    return ndk::ScopedAStatus::ok();
}

void CwbService::calcPixelsRGB(void* buffer, unsigned int stride, Rect rect,
                               std::array<unsigned char, 3>& rgb, unsigned short& state) {
    ATRACE_CALL();
    ColorTempHelper& sampler = mColorTempHelper;
    sampler.reset();
    const int32_t displayId = mRequestDisplayId >= 0 ? mRequestDisplayId : mDisplayId.load();
    const int32_t width = rect.right - rect.left;
    const int32_t height = rect.bottom - rect.top;
    const uint32_t pixelCount = static_cast<uint32_t>(width) * static_cast<uint32_t>(height);
    const std::vector<int32_t>* weights = nullptr;
    if (displayId == kDisplaySecondary &&
        static_cast<uint32_t>(weightspos_count_sec) == pixelCount) {
        weights = &weightspos_sec;
    } else if (displayId == kDisplayMain && static_cast<uint32_t>(weightspos_count) == pixelCount) {
        weights = &weightspos;
    }
    const bool needWeights = weights != nullptr && weights->size() >= pixelCount;
    if (mDebugLog) {
        ALOGI("mDisplayId = %d, weightspos_count = %d, weightspos_count_sec = %d, pixel_count = "
              "%d, need_weights_calc = %u",
              displayId, weightspos_count, weightspos_count_sec, static_cast<int>(pixelCount),
              needWeights ? 1u : 0u);
    }

    const PixelRect area = pixelRect(buffer, stride, rect);
    double sum[3] = {0.0, 0.0, 0.0};
    uint64_t count = 0;
    if (!needWeights) {
        const LinearSums sums = linearSumsSampled(area, &sampler);
        for (int c = 0; c < 3; ++c) sum[c] = sums.sum[c];
        count = static_cast<uint64_t>((area.width + 2) / 3) * ((area.height + 2) / 3);
    } else {
        int32_t weightSum = 0;
        const LinearSums sums = linearSumsWeighted(area, weights->data(), &weightSum, &sampler);
        for (int c = 0; c < 3; ++c) sum[c] = sums.sum[c];
        count = pixelCount;
        if (weightSum != 0) {
            for (double& s : sum) s = s / weightSum * static_cast<double>(count);
        }
    }
    if (count == 0) {
        rgb = {128, 128, 128};
    } else {
        for (int c = 0; c < 3; ++c) rgb[c] = linearToCode(sum[c] / static_cast<double>(count));
    }

    if (!sampler.mEnabled) return;
    const bool debug = sampler.mDebug;
    const ColorRange& full = sampler.mRangeFull;
    if (debug) {
        ALOGD("exceedTolerance(%d): range valid: %d, R (%d), G(%d), B(%d).", 0,
              sampler.mRangeFullValid, full.max[0] - full.min[0] > 3, full.max[1] - full.min[1] > 3,
              full.max[2] - full.min[2] > 3);
    }
    sampler.mPure = sampler.mRangeFullValid && spreadWithin(full, 3);
    if (debug) {
        ALOGD("Range Full min(%d, %d, %d), max(%d, %d, %d), mPure = %d", full.min[0], full.min[1],
              full.min[2], full.max[0], full.max[1], full.max[2], sampler.mPure);
    }
    if (sampler.mPure) state |= 0x1;
    const ColorRange& r1 = sampler.mRange1;
    const ColorRange& r2 = sampler.mRange2;
    if (sampler.mBlackWhite) {
        if (debug) {
            ALOGD("exceedTolerance(%d): range valid: %d, R (%d), G(%d), B(%d).", 1,
                  sampler.mRange1Valid, r1.max[0] - r1.min[0] > 3, r1.max[1] - r1.min[1] > 3,
                  r1.max[2] - r1.min[2] > 3);
        }
        sampler.mBlackWhite = sampler.mRange1Valid && spreadWithin(r1, 3) && sampler.mRange2Valid;
    }
    if (debug) {
        ALOGD("Range 1 min(%d, %d, %d), max(%d, %d, %d), Range 2 min(%d, %d, %d), max(%d, %d, "
              "%d), mBlackWhite = %d",
              r1.min[0], r1.min[1], r1.min[2], r1.max[0], r1.max[1], r1.max[2], r2.min[0],
              r2.min[1], r2.min[2], r2.max[0], r2.max[1], r2.max[2], sampler.mBlackWhite);
    }
    if (sampler.mBlackWhite) state |= 0x2;
}

// ---- Luma ----

ndk::ScopedAStatus CwbService::getLumasValue(const Rect& rect, std::vector<float>* lumas,
                                             Error* _aidl_return) {
    CwbStats::Request request(mStats, CwbStats::Method::getLumasValue, &rect, _aidl_return);
    request.watch(lumas);
    float luma = 0.0f;
    *_aidl_return = lumaRequest(mDisplayId, rect, &luma);
    lumas->assign(1, luma);
    return ndk::ScopedAStatus::ok();
}

Error CwbService::lumaRequest(int32_t displayId, const Rect& rect, float* luma) {
    ATRACE_NAME("getLumasValue");
    if (mDebugLog) {
        ALOGD("getLumasValue [%d,%d,%d,%d]\n", rect.left, rect.top, rect.right, rect.bottom);
    }
    float value = 0.0f;
    // The luma always comes from the main display, without post-processing.
    const AnalysisKind kind{"getLumasValue", false, false};
    auto cached = [&](const Rect& work, int32_t* result) REQUIRES(mRequestLock) {
        const float* hit = currentHit(mBufferCacheValid, mLumaCache, work, mStats,
                                      CwbStats::Counter::LumaCacheHits);
        if (hit == nullptr) return false;
        value = *hit;
        *result = static_cast<int32_t>(Error::NONE);
        return true;
    };
    auto screenOff = [&]() REQUIRES(mRequestLock) { return offOrAodForbidden(); };
    auto failed = [](int /*ret*/) { ALOGD("Get Luma error\n"); };
    auto pass = [&](const CwbBufferInfo& buffer, const Rect& work) REQUIRES(mRequestLock) {
        value = calcPixelsLumas(buffer.base, static_cast<unsigned int>(buffer.width), work);
        if (mDebugLog) ALOGD("Screen Luma value: %f.\n", static_cast<double>(value));
        mLumaCache.put(work, value);
        return static_cast<int32_t>(Error::NONE);
    };
    const int32_t result = analyse(displayId, rect, kind, cached, screenOff, failed, pass);
    *luma = value;
    return static_cast<Error>(result);
}

float CwbService::calcPixelsLumas(void* buffer, unsigned int stride, Rect rect) {
    ATRACE_CALL();
    if (rect.right <= rect.left || rect.bottom <= rect.top) return 0.0f;
    const uint32_t sum = pixelKernels().lumaSum(pixelRect(buffer, stride, rect));
    const uint32_t n = static_cast<uint32_t>(rect.bottom - rect.top) *
                       static_cast<uint32_t>(rect.right - rect.left);
    return static_cast<float>(sum) / (static_cast<float>(n) * 255.0f);
}

// ---- Histogram ----

ndk::ScopedAStatus CwbService::getHistogramValue(const Rect& rect, Histogram* histogram,
                                                 Error* _aidl_return) {
    CwbStats::Request request(mStats, CwbStats::Method::getHistogramValue, &rect, _aidl_return);
    request.watch(histogram);
    return getHistogramValue(mDisplayId, rect, histogram, _aidl_return);
}

ndk::ScopedAStatus CwbService::getHistogramValue(int32_t displayId, const Rect& rect,
                                                 Histogram* histogram, Error* _aidl_return) {
    ATRACE_NAME("getHistogramValue");
    if (mDebugLog) {
        ALOGD("getHistogramValue [%d, %d, %d, %d]\n", rect.left, rect.top, rect.right, rect.bottom);
    }
    // The main display, after its post-processing.
    const AnalysisKind kind{"getHistogramValue", false, true};
    auto cached = [&](const Rect& work, int32_t* result) REQUIRES(mRequestLock) {
        const Histogram* hit = currentHit(mBufferCacheValid, mHistogramCache, work, mStats,
                                          CwbStats::Counter::HistogramCacheHits);
        if (hit == nullptr) return false;
        *histogram = *hit;
        *result = static_cast<int32_t>(Error::NONE);
        return true;
    };
    auto screenOff = [&]() REQUIRES(mRequestLock) { return offOrAodForbidden(); };
    auto failed = [](int /*ret*/) { ALOGD("Get Histogram error\n"); };
    auto pass = [&](const CwbBufferInfo& buffer, const Rect& work) REQUIRES(mRequestLock) {
        unsigned int bins[256][3] = {};
        calcPixelsHistogram(buffer.base, static_cast<unsigned int>(buffer.width), work, bins);
        static_assert(sizeof(bins) == sizeof(Histogram{}.counts), "level-major 256 x 3 counters");
        Histogram result;
        memcpy(result.counts.data(), bins, sizeof(bins));
        mHistogramCache.put(work, result);
        *histogram = result;
        return static_cast<int32_t>(Error::NONE);
    };
    const int32_t result = analyse(displayId, rect, kind, cached, screenOff, failed, pass);
    if (result != static_cast<int32_t>(Error::NONE)) histogram->counts.fill(0);
    *_aidl_return = static_cast<Error>(result);
    return ndk::ScopedAStatus::ok();
}

// The screen-off rule of the luma and histogram requests: an off screen, or any forbidden AOD
// layer.
bool CwbService::offOrAodForbidden() {
    if (mPowerMode == kPowerOff || (mAodForbidden && mAodLayerExist)) {
        if (mDebugLog) ALOGD("Screen power off\n");
        return true;
    }
    return false;
}

void CwbService::calcPixelsHistogram(void* buffer, unsigned int stride, Rect rect,
                                     unsigned int (*bins)[3]) {
    ATRACE_CALL();
    if (rect.right <= rect.left || rect.bottom <= rect.top) return;
    pixelKernels().histogram(pixelRect(buffer, stride, rect), bins);
}

// ---- Weight-positions file ----

void CwbService::GetCwbWeightsPos(char* path, int* count, std::vector<int>& weights) {
    FILE* file = fopen(path, "r");
    if (file == nullptr) {
        ALOGE("%s fail to open %s", "GetCwbWeightsPos", path);
        return;
    }
    std::string text;
    for (int c = fgetc(file); c != EOF; c = fgetc(file)) text.push_back(static_cast<char>(c));
    fclose(file);

    bool valid = true;
    int32_t parsedCount = *count;
    std::vector<int> parsed;
    const size_t countKey = text.size() >= 8 ? text.find("\"count\":") : std::string::npos;
    if (countKey != std::string::npos) {
        const size_t colon = text.find(':', countKey);
        const size_t comma = text.find(',', countKey);
        if (colon != std::string::npos && comma != std::string::npos) {
            const std::string value =
                    comma > colon ? text.substr(colon + 1, comma - colon - 1) : std::string();
            valid = parseInt32(value, &parsedCount);
        }
    }
    const size_t weightsKey = text.size() >= 10 ? text.find("\"Weights\":") : std::string::npos;
    if (valid && weightsKey != std::string::npos) {
        const size_t open = text.find('[', weightsKey);
        const size_t close = text.find(']', weightsKey);
        if (open != std::string::npos && close != std::string::npos) {
            const std::string list =
                    close > open ? text.substr(open + 1, close - open - 1) : text.substr(open + 1);
            size_t pos = 0;
            while (valid) {
                const size_t comma = list.find(',', pos);
                const std::string piece = list.substr(
                        pos, comma == std::string::npos ? std::string::npos : comma - pos);
                int32_t weight = 0;
                valid = parseInt32(piece, &weight);
                if (valid) parsed.push_back(weight);
                if (comma == std::string::npos) break;
                pos = comma + 1;
            }
        }
    }
    if (!valid) {
        ALOGE("%s %s: a value is not a decimal int32, weights ignored", "GetCwbWeightsPos", path);
        parsedCount = 0;
        parsed.clear();
    } else if (parsedCount > 0 && parsed.size() < static_cast<size_t>(parsedCount)) {
        // The weighted pass reads count entries; a shorter list must never reach it.
        ALOGE("%s %s: %zu weights for a count of %d, weights ignored", "GetCwbWeightsPos", path,
              parsed.size(), parsedCount);
        parsedCount = 0;
        parsed.clear();
    }
    *count = parsedCount;
    weights.insert(weights.end(), parsed.begin(), parsed.end());
    ALOGI("%s Count: %d", "GetCwbWeightsPos", *count);
    ALOGI("%s Weights.size: %d", "GetCwbWeightsPos", static_cast<int>(weights.size()));
    if (mDebugLog) {
        for (int weight : weights) ALOGI("%s weight: %d", "GetCwbWeightsPos", weight);
    }
}

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
