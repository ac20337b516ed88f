// Host-only inspection of a live CwbService; ships nothing.
#pragma once

#include <CwbService.h>

#include <array>
#include <cstdint>
#include <mutex>
#include <vector>

namespace aidl::vendor::zarel::hardware::cwb::implementation {

// The one way host code (tests, benchmarks, fuzzers, the simulator) reaches the service's
// internals: state for assertions, and internal operations under the locks their callers would
// hold. It names the protected members through a derived class that is never instantiated, so
// the product header declares nothing for it.
class CwbServiceTestPeer {
    struct In : CwbService {
        In() = delete;
        friend class CwbServiceTestPeer;
    };

  public:
    explicit CwbServiceTestPeer(CwbService& s) : s(s) {}

    int32_t displayId() const { return at(&In::mDisplayId); }
    void setDisplayId(int32_t id) { at(&In::mDisplayId) = id; }
    int32_t displayIdMain() const { return at(&In::mDisplayIdMain); }
    int32_t displayIdSec() const { return at(&In::mDisplayIdSec); }
    int32_t cwbRotate() const { return at(&In::mCwbRotate); }
    int32_t cwbRotateMain() const { return at(&In::mCwbRotateMain); }
    int32_t cwbRotateSec() const { return at(&In::mCwbRotateSec); }
    bool postProcess() const { return at(&In::mPostProcess); }
    bool roiSupport() const { return at(&In::mRoiSupport); }
    bool aodForbidden() const { return at(&In::mAodForbidden); }
    bool fodForbidden() const { return at(&In::mFodForbidden); }
    bool aplReadSupport() const { return at(&In::mAplReadSupport); }
    bool debugLog() const { return at(&In::mDebugLog); }
    bool dump() const { return at(&In::mDump); }
    bool disablePostProcessedFlag() const { return at(&In::mDisablePostProcessed); }
    const ColorTempHelper& colorTemp() const { return at(&In::mColorTempHelper); }
    int32_t weightsCount(bool sec) const {
        return sec ? at(&In::weightspos_count_sec) : at(&In::weightspos_count);
    }
    std::vector<int32_t> weights(bool sec) const {
        return sec ? at(&In::weightspos_sec) : at(&In::weightspos);
    }

    bool configInitialized() const { return at(&In::mConfigInitialized); }
    size_t configCount(bool sec) const {
        return sec ? at(&In::mConfigsSec).size() : at(&In::mConfigs).size();
    }
    uint32_t activeConfig(bool sec) const {
        return sec ? at(&In::mActiveConfigSec) : at(&In::mActiveConfig);
    }

    int32_t powerModeMain() const { return at(&In::mPowerModeMain); }
    int32_t powerModeSec() const { return at(&In::mPowerModeSec); }
    int32_t cachePowerMode() const { return at(&In::mCachePowerMode); }
    int32_t colorModeMain() const { return at(&In::mColorModeMain); }
    int32_t colorModeSec() const { return at(&In::mColorModeSec); }
    int32_t renderIntentMain() const { return at(&In::mRenderIntentMain); }
    int32_t renderIntentSec() const { return at(&In::mRenderIntentSec); }
    bool aodLayerExist() const { return at(&In::mAodLayerExist); }
    bool fodLayerExist() const { return at(&In::mFodLayerExist); }
    bool cwbStatus() const { return at(&In::mCwbStatus); }
    bool cwbEnabled() const { return at(&In::mCwbEnabled); }

    bool bufferCacheValid() const { return at(&In::mBufferCacheValid); }
    void setBufferCacheValid(bool valid) { at(&In::mBufferCacheValid) = valid; }
    int32_t invalidCacheCount() const { return at(&In::mInvalidCacheCount); }
    bool rgbCacheHit() const { return at(&In::mRgbCacheHit); }
    void setRgbCacheHit(bool hit) { at(&In::mRgbCacheHit) = hit; }
    int32_t panelApl() const { return at(&In::mPanelApl); }
    void setPanelApl(int32_t apl) { at(&In::mPanelApl) = apl; }
    bool screenCountReached() const { return at(&In::mScreenCountReached); }
    Rect aiRect() const { return (s.*&In::aiRect)(); }
    void setAiRect(const Rect& r) {
        std::lock_guard<std::mutex> lock(at(&In::mAiRectMutex));
        at(&In::mAiRect) = r;
    }

    int32_t aodForbiddenCnt() {
        std::lock_guard<TimedMutex> lock(at(&In::mRequestLock));
        return at(&In::mAodForbiddenCnt);
    }
    int32_t currentScreenCount() {
        std::lock_guard<std::mutex> lock(at(&In::mSharedMemoryMutex));
        return at(&In::mCurrentScreenCount);
    }
    size_t callbackCount() {
        std::lock_guard<std::mutex> lock(at(&In::mCallbackMutex));
        return at(&In::mCallbacks).size();
    }
    size_t cacheSize(int which) {  // 0 RGB, 1 luma, 2 histogram
        std::lock_guard<TimedMutex> lock(at(&In::mRequestLock));
        return which == 0   ? at(&In::mRgbCache).size()
               : which == 1 ? at(&In::mLumaCache).size()
                            : at(&In::mHistogramCache).size();
    }
    CwbBufferInfo buffer(bool sec) {
        std::lock_guard<TimedMutex> lock(at(&In::mRequestLock));
        return sec ? at(&In::mCwbBufferHandle_sec) : at(&In::mCwbBufferHandle);
    }
    int64_t lastCwbTime() {
        std::lock_guard<std::mutex> lock(at(&In::mCwbMutex));
        return at(&In::mLastCwbTime);
    }
    int64_t lastCwbDoneTime() {
        std::lock_guard<std::mutex> lock(at(&In::mCwbMutex));
        return at(&In::mLastCwbDoneTime);
    }
    bool sharedMemoryMapped() {
        std::lock_guard<std::mutex> lock(at(&In::mSharedMemoryMutex));
        return at(&In::mSharedMemory).mapped();
    }
    bool sharedMemorySealed() {
        std::lock_guard<std::mutex> lock(at(&In::mSharedMemoryMutex));
        return at(&In::mSharedMemory).sealed();
    }

    static bool rectInsideBuffer(const CwbBufferInfo& info, const Rect& r) {
        return In::rectInsideBuffer(info, r);
    }
    bool captureScreenAllowed() { return (s.*&In::captureScreenAllowed)(); }
    void GetCwbWeightsPos(char* path, int* count, std::vector<int>& weights) {
        (s.*&In::GetCwbWeightsPos)(path, count, weights);
    }
    int getDisplayPanelAplValue(std::vector<unsigned int>& values) {
        return (s.*&In::getDisplayPanelAplValue)(values);
    }
    float calcPixelsLumas(void* buffer, unsigned int stride, Rect rect) {
        return (s.*&In::calcPixelsLumas)(buffer, stride, rect);
    }
    void calcPixelsHistogram(void* buffer, unsigned int stride, Rect rect,
                             unsigned int (*bins)[3]) {
        (s.*&In::calcPixelsHistogram)(buffer, stride, rect, bins);
    }
    void calcPixelsRGB(void* buffer, unsigned int stride, Rect rect,
                       std::array<unsigned char, 3>& rgb, unsigned short& state) {
        std::lock_guard<TimedMutex> lock(at(&In::mRequestLock));
        (s.*&In::calcPixelsRGB)(buffer, stride, rect, rgb, state);
    }
    // Holds the request lock until release() or destruction, as a long request would.
    void holdRequestLock() { at(&In::mRequestLock).lock(); }
    void releaseRequestLock() NO_THREAD_SAFETY_ANALYSIS { at(&In::mRequestLock).unlock(); }

  private:
    template <typename T>
    T& at(T CwbService::*member) const {
        return s.*member;
    }

    CwbService& s;
};

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
