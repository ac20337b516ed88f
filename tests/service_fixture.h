// Shared harness of the service tests: a simulated phone, the composer, a booted service and a
// peer that reads the service's state the way a debugger would.
#pragma once

#include <CwbProxy.h>
#include <CwbService.h>
#include <device/Composer.h>
#include <device/Device.h>
#include <gtest/gtest.h>
#include <host/binder_registry.h>
#include <host/gralloc_control.h>
#include <host/log_capture.h>
#include <host/properties.h>
#include <host/sandbox.h>
#include <host/trace_recorder.h>
#include <log/log.h>

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace aidl::vendor::zarel::hardware::cwb::implementation {

// Friend of CwbService: state for assertions, and the internal operations under the locks their
// callers would hold.
class CwbServiceTestPeer {
  public:
    explicit CwbServiceTestPeer(CwbService& s) : s(s) {}

    int32_t displayId() const { return s.mDisplayId; }
    void setDisplayId(int32_t id) { s.mDisplayId = id; }
    int32_t displayIdMain() const { return s.mDisplayIdMain; }
    int32_t displayIdSec() const { return s.mDisplayIdSec; }
    int32_t cwbRotate() const { return s.mCwbRotate; }
    int32_t cwbRotateMain() const { return s.mCwbRotateMain; }
    int32_t cwbRotateSec() const { return s.mCwbRotateSec; }
    bool postProcess() const { return s.mPostProcess; }
    bool roiSupport() const { return s.mRoiSupport; }
    bool aodForbidden() const { return s.mAodForbidden; }
    bool fodForbidden() const { return s.mFodForbidden; }
    bool aplReadSupport() const { return s.mAplReadSupport; }
    bool debugLog() const { return s.mDebugLog; }
    bool dump() const { return s.mDump; }
    bool disablePostProcessedFlag() const { return s.mDisablePostProcessed; }
    const ColorTempHelper& colorTemp() const { return s.mColorTempHelper; }
    int32_t weightsCount(bool sec) const {
        return sec ? s.weightspos_count_sec : s.weightspos_count;
    }
    std::vector<int32_t> weights(bool sec) const { return sec ? s.weightspos_sec : s.weightspos; }

    bool configInitialized() const { return s.mConfigInitialized; }
    size_t configCount(bool sec) const { return sec ? s.mConfigsSec.size() : s.mConfigs.size(); }
    uint32_t activeConfig(bool sec) const { return sec ? s.mActiveConfigSec : s.mActiveConfig; }

    int32_t powerModeMain() const { return s.mPowerModeMain; }
    int32_t powerModeSec() const { return s.mPowerModeSec; }
    int32_t cachePowerMode() const { return s.mCachePowerMode; }
    int32_t colorModeMain() const { return s.mColorModeMain; }
    int32_t colorModeSec() const { return s.mColorModeSec; }
    int32_t renderIntentMain() const { return s.mRenderIntentMain; }
    int32_t renderIntentSec() const { return s.mRenderIntentSec; }
    bool aodLayerExist() const { return s.mAodLayerExist; }
    bool fodLayerExist() const { return s.mFodLayerExist; }
    bool cwbStatus() const { return s.mCwbStatus; }
    bool cwbEnabled() const { return s.mCwbEnabled; }

    bool bufferCacheValid() const { return s.mBufferCacheValid; }
    void setBufferCacheValid(bool valid) { s.mBufferCacheValid = valid; }
    int32_t invalidCacheCount() const { return s.mInvalidCacheCount; }
    bool rgbCacheHit() const { return s.mRgbCacheHit; }
    void setRgbCacheHit(bool hit) { s.mRgbCacheHit = hit; }
    int32_t panelApl() const { return s.mPanelApl; }
    void setPanelApl(int32_t apl) { s.mPanelApl = apl; }
    bool screenCountReached() const { return s.mScreenCountReached; }
    Rect aiRect() const { return s.aiRect(); }
    void setAiRect(const Rect& r) {
        std::lock_guard<std::mutex> lock(s.mAiRectMutex);
        s.mAiRect = r;
    }

    int32_t aodForbiddenCnt() {
        std::lock_guard<TimedMutex> lock(s.mRequestLock);
        return s.mAodForbiddenCnt;
    }
    int32_t currentScreenCount() {
        std::lock_guard<std::mutex> lock(s.mSharedMemoryMutex);
        return s.mCurrentScreenCount;
    }
    size_t callbackCount() {
        std::lock_guard<std::mutex> lock(s.mCallbackMutex);
        return s.mCallbacks.size();
    }
    size_t cacheSize(int which) {  // 0 RGB, 1 luma, 2 histogram
        std::lock_guard<TimedMutex> lock(s.mRequestLock);
        return which == 0   ? s.mRgbCache.size()
               : which == 1 ? s.mLumaCache.size()
                            : s.mHistogramCache.size();
    }
    CwbBufferInfo buffer(bool sec) {
        std::lock_guard<TimedMutex> lock(s.mRequestLock);
        return sec ? s.mCwbBufferHandle_sec : s.mCwbBufferHandle;
    }
    static bool rectInsideBuffer(const CwbBufferInfo& info, const Rect& r) {
        return CwbService::rectInsideBuffer(info, r);
    }
    int64_t lastCwbTime() {
        std::lock_guard<std::mutex> lock(s.mCwbMutex);
        return s.mLastCwbTime;
    }
    int64_t lastCwbDoneTime() {
        std::lock_guard<std::mutex> lock(s.mCwbMutex);
        return s.mLastCwbDoneTime;
    }
    bool sharedMemoryMapped() {
        std::lock_guard<std::mutex> lock(s.mSharedMemoryMutex);
        return s.mSharedMemory.mapped();
    }
    bool sharedMemorySealed() {
        std::lock_guard<std::mutex> lock(s.mSharedMemoryMutex);
        return s.mSharedMemory.sealed();
    }

    void prepareCwbBuffer() {
        std::lock_guard<TimedMutex> lock(s.mRequestLock);
        s.prepareCwbBuffer();
    }
    void destroyCwbBuffer() {
        std::lock_guard<TimedMutex> lock(s.mRequestLock);
        s.destroyCwbBuffer();
    }
    int setCWBOutputBuffer(const Rect& rect, bool postProcessed, bool sec = false) {
        std::lock_guard<TimedMutex> lock(s.mRequestLock);
        return sec ? s.setCWBOutputBufferSec(rect, postProcessed)
                   : s.setCWBOutputBuffer(rect, postProcessed);
    }
    void calcPixelsRGB(void* buffer, unsigned int stride, Rect rect,
                       std::array<unsigned char, 3>& rgb, unsigned short& state) {
        std::lock_guard<TimedMutex> lock(s.mRequestLock);
        s.calcPixelsRGB(buffer, stride, rect, rgb, state);
    }
    // Holds the request lock until release() or destruction, as a long request would.
    void holdRequestLock() { s.mRequestLock.lock(); }
    void releaseRequestLock() NO_THREAD_SAFETY_ANALYSIS { s.mRequestLock.unlock(); }

  private:
    CwbService& s;
};

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation

namespace cwbtest {

using aidl::vendor::zarel::hardware::cwb::Error;
using aidl::vendor::zarel::hardware::cwb::Histogram;
using aidl::vendor::zarel::hardware::cwb::ICwbCallback;
using aidl::vendor::zarel::hardware::cwb::Rect;
using aidl::vendor::zarel::hardware::cwb::Rgb;
using aidl::vendor::zarel::hardware::cwb::implementation::CwbService;
using aidl::vendor::zarel::hardware::cwb::implementation::CwbServiceTestPeer;
using host::device::FrameKind;
using host::device::PanelId;
using host::device::PanelMode;

constexpr int32_t kVsync60 = 16666666;

inline Rect rect(int32_t l, int32_t t, int32_t r, int32_t b) {
    Rect out;
    out.left = l;
    out.top = t;
    out.right = r;
    out.bottom = b;
    return out;
}

// A fraction field: low 24 bits in units of 1/100000, bit 31 set.
inline int32_t frac(int32_t units) {
    return static_cast<int32_t>(0x80000000u | static_cast<uint32_t>(units));
}

// Waits for cond with a bounded timeout; true when it held in time.
template <typename Cond>
bool waitFor(Cond cond, std::chrono::milliseconds timeout = std::chrono::milliseconds(2000)) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (!cond()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// A phone with a 1080 x 2400 main panel at 60 Hz, display id 0, and a composer ready to boot
// the service. Tests set properties and device state before boot().
class ServiceTest : public ::testing::Test {
  protected:
    void SetUp() override {
        host::log::clear();
        host::properties::clear();
        host::trace::clear();
        host::trace::setEnabledTags(0);
        host::gralloc::reset();
        host::binder::resetRegistry();
        host::sandbox::resetCounts();
        aidl::vendor::zarel::hardware::cwb::implementation::mLightModeID = 2;
        device = std::make_unique<host::device::Device>();
        device->setPanelModes(PanelId::Main, {{1080, 2400, kVsync60}});
        device->setLatency(std::chrono::milliseconds(1));
        setProp("ro.vendor.zarel.display.cwb.display_id", "0");
    }

    void TearDown() override {
        composer.reset();
        service.reset();
        host::binder::resetRegistry();
        device.reset();
        host::properties::clear();
    }

    void setProp(const std::string& key, const std::string& value) {
        host::properties::set(key, value);
    }

    // Starts the service the way the composer does.
    void boot() {
        composer = std::make_unique<host::device::Composer>();
        ASSERT_EQ(0, composer->boot());
        service = composer->proxy().service();
        ASSERT_NE(nullptr, service);
        peer = std::make_unique<CwbServiceTestPeer>(*service);
    }

    // Boots and switches the main display on.
    void bootOn() {
        boot();
        composer->powerMode(0, 2);
    }

    // The 50 ms capture gate is open again (bounded wait, never a blind sleep).
    bool gateOpen() {
        return waitFor([this] { return service->captureScreenAllowed(); });
    }

    std::pair<int32_t, Rgb> rgb(const Rect& r) {
        Rgb out;
        Error word = Error::NONE;
        EXPECT_TRUE(service->getRGBValue(r, &out, &word).isOk());
        return {static_cast<int32_t>(word), out};
    }

    std::pair<Error, float> luma(const Rect& r) {
        std::vector<float> out;
        Error result = Error::NONE;
        EXPECT_TRUE(service->getLumasValue(r, &out, &result).isOk());
        EXPECT_EQ(1u, out.size());
        return {result, out.empty() ? -1.0f : out[0]};
    }

    std::pair<Error, Histogram> histogram(const Rect& r) {
        Histogram out;
        Error result = Error::NONE;
        EXPECT_TRUE(service->getHistogramValue(r, &out, &result).isOk());
        return {result, out};
    }

    size_t logCount(int priority, const std::string& text) {
        return host::log::count(priority, text);
    }

    std::unique_ptr<host::device::Device> device;
    std::unique_ptr<host::device::Composer> composer;
    std::shared_ptr<CwbService> service;
    std::unique_ptr<CwbServiceTestPeer> peer;
};

}  // namespace cwbtest
