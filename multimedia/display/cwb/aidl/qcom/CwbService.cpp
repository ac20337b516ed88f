// Service object: construction and settings, client callbacks, debug and post-processing
// controls, display configurations, power, colour-mode and overlay-layer state.
#define LOG_TAG "CwbService"
#define ATRACE_TAG ATRACE_TAG_GRAPHICS

#include "CwbService.h"

#include <IQService.h>
#include <aidl/vendor/qti/hardware/display/config/BnDisplayConfigCallback.h>
#include <aidl/vendor/qti/hardware/display/config/DisplayType.h>
#include <android/binder_manager.h>
#include <binder/IServiceManager.h>
#include <binder/Parcel.h>
#include <cutils/properties.h>
#include <log/log.h>
#include <utils/String16.h>
#include <utils/Timers.h>
#include <utils/Trace.h>

#include <cstdlib>
#include <mutex>
#include <string>

namespace aidl::vendor::zarel::hardware::cwb::implementation {

std::atomic<int32_t> mLightModeID{CWB_LEGACY_VALUE};

namespace {

namespace dc = ::aidl::vendor::qti::hardware::display::config;
using ::aidl::android::hardware::common::NativeHandle;

constexpr const char* kDisplayConfigInstance =
        "vendor.qti.hardware.display.config.IDisplayConfig/default";

// Forwards the vendor's writeback completions to the service for as long as the service lives.
// It builds against every frozen version of the vendor interface: notifyContentFps exists from
// version 12 on and overrides nothing before. No method says `override`, so that neither version
// mixes marked and unmarked overrides (-Winconsistent-missing-override); every one of them still
// overrides a pure virtual of its base where that base declares it.
class CwbCallback : public dc::BnDisplayConfigCallback, public CwbCallbackBase {
  public:
    explicit CwbCallback(CwbBufferDoneListener* listener) : mListener(listener) {}

    ndk::ScopedAStatus notifyCWBBufferDone(int32_t error, const NativeHandle& /*buffer*/) {
        std::lock_guard<std::mutex> lock(mMutex);
        if (mListener != nullptr) mListener->notifyCWBBufferDone(error);
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus notifyQsyncChange(bool, int32_t, int32_t) {
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus notifyIdleStatus(bool) { return ndk::ScopedAStatus::ok(); }
    ndk::ScopedAStatus notifyCameraSmoothInfo(dc::CameraSmoothOp, int32_t) {
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus notifyResolutionChange(int32_t, const dc::Attributes&) {
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus notifyFpsMitigation(int32_t, const dc::Attributes&, dc::Concurrency) {
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus notifyTUIEventDone(int32_t, dc::DisplayType, dc::TUIEventType) {
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus notifyContentFps(const std::string&, int32_t) {
        return ndk::ScopedAStatus::ok();
    }

    void detach() {
        std::lock_guard<std::mutex> lock(mMutex);
        mListener = nullptr;
    }
    std::shared_ptr<dc::IDisplayConfigCallback> asCallback() {
        return ref<dc::IDisplayConfigCallback>();
    }

  private:
    std::mutex mMutex;
    CwbBufferDoneListener* mListener GUARDED_BY(mMutex);
};

int readIntProperty(const char* key, const char* defaultValue) {
    char value[PROPERTY_VALUE_MAX] = {};
    property_get(key, value, defaultValue);
    return atoi(value);
}

}  // namespace

::android::sp<qService::IQService> getBinder() {
    ::android::sp<::android::IServiceManager> sm = ::android::defaultServiceManager();
    ::android::sp<qService::IQService> binder;
    if (sm != nullptr) {
        binder = qService::IQService::asInterface(
                sm->checkService(::android::String16("display.qservice")));
    }
    if (binder == nullptr) {
        ALOGE("%s: invalid binder object", "getBinder");
    }
    return binder;
}

void setColorMode(int display, int mode, int intent) {
    ::android::sp<qService::IQService> binder = getBinder();
    ::android::Parcel in;
    ::android::Parcel out;
    in.writeInt32(display);
    in.writeInt32(mode);
    in.writeInt32(intent);
    if (binder != nullptr) {
        binder->dispatch(kQServiceSetColorMode, &in, &out);
    }
}

CwbService::CwbService() {
    mCwbCallback = ndk::SharedRefBase::make<CwbCallback>(this);
    mGrallocHelper = new GrallocHelper();

    mCwbRotate = readIntProperty("ro.vendor.zarel.display.cwb.rotate", "0");
    mCwbRotateMain = readIntProperty("ro.vendor.zarel.display.cwb.rotate_main", "0");
    mCwbRotateSec = readIntProperty("ro.vendor.zarel.display.cwb.rotate_sec", "0");
    mPostProcess = readIntProperty("ro.vendor.zarel.display.cwb.postprocess", "0") != 0;
    mRoiSupport = readIntProperty("ro.vendor.zarel.display.cwb.roi", "0") != 0;
    mAodForbidden = readIntProperty("ro.vendor.zarel.display.cwb.aod_forbidden", "0") != 0;
    mFodForbidden = readIntProperty("ro.vendor.zarel.display.cwb.fod_forbidden", "0") != 0;
    mDisplayIdMain = readIntProperty("ro.vendor.zarel.display.cwb.display_id", "-1");
    mDisplayIdSec = readIntProperty("ro.vendor.zarel.display.cwb.display_id_sec", "-1");
    char ctRange[PROPERTY_VALUE_MAX] = {};
    property_get("ro.vendor.zarel.display.cwb.ct_range", ctRange, "");
    mColorTempHelper.configure(ctRange);
    mAplReadSupport = readIntProperty("ro.vendor.zarel.display.cwb.apl_read_support", "0") != 0;

    ALOGI("debug status: debug log: %d, dump: %d, rotation: %d, post process: %d, roi support: "
          "%d, aod_forbidden: %d, fod_forbidden: %d, display_id: %d\n",
          mDebugLog.load(), mDump.load(), mCwbRotate.load(), mPostProcess.load(), mRoiSupport,
          mAodForbidden, mFodForbidden, mDisplayIdMain);

    mDisplayId = mDisplayIdMain;
    fillConfigsIfNeeded();

    char mainWeights[] = "/odm/etc/display/cwb_weightspos.json";
    char secWeights[] = "/odm/etc/display/cwb_weightspos_sec.json";
    GetCwbWeightsPos(mainWeights, &weightspos_count, weightspos);
    GetCwbWeightsPos(secWeights, &weightspos_count_sec, weightspos_sec);
}

CwbService::~CwbService() NO_THREAD_SAFETY_ANALYSIS {
    // No completion may reach this object any more, whatever the vendor still holds.
    mCwbCallback->detach();
    // Both displays' buffers go: the one not selected now would otherwise leak.
    releaseCwbBuffer(kDisplayMain);
    releaseCwbBuffer(kDisplaySecondary);
    release();
}

std::shared_ptr<CwbService> CwbService::initialize() {
    return ndk::SharedRefBase::make<CwbService>();
}

int CwbService::release() {
    std::lock_guard<std::mutex> lock(mSharedMemoryMutex);
    return releaseSharedMemoryLocked();
}

uint64_t CwbService::generateCookie() {
    std::lock_guard<std::mutex> lock(mCallbackMutex);
    return mCookie++;
}

// ---- Client callbacks and service status ----

bool CwbService::serviceStatus() const {
    return mCwbStatus && mCwbEnabled && (!mFodForbidden || !mFodLayerExist);
}

ndk::ScopedAStatus CwbService::registerCallback(const std::shared_ptr<ICwbCallback>& callback,
                                                Error* _aidl_return) {
    CwbStats::Request request(mStats, CwbStats::Method::registerCallback, nullptr, _aidl_return);
    *_aidl_return = Error::NONE;
    if (callback == nullptr) return ndk::ScopedAStatus::ok();
    const uint64_t cookie = generateCookie();
    {
        std::lock_guard<std::mutex> lock(mCallbackMutex);
        mCallbacks.emplace(cookie, callback);
    }
    // Outside the lock: a client may call back into the service from its notification.
    callback->notifyCwbStatus(mCwbStatus);
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus CwbService::unregisterCallback(const std::shared_ptr<ICwbCallback>& callback,
                                                  Error* _aidl_return) {
    CwbStats::Request request(mStats, CwbStats::Method::unregisterCallback, nullptr, _aidl_return);
    std::vector<std::shared_ptr<ICwbCallback>> removed;  // released after the lock
    // A callback is its binder: the stub makes a new proxy object for each call, while the
    // binder a client's callback arrives as is the same every time within this process.
    const ndk::SpAIBinder binder = callback != nullptr ? callback->asBinder() : ndk::SpAIBinder();
    {
        std::lock_guard<std::mutex> lock(mCallbackMutex);
        for (auto it = mCallbacks.begin(); it != mCallbacks.end();) {
            if (it->second == callback ||
                (binder.get() != nullptr && it->second->asBinder().get() == binder.get())) {
                removed.push_back(std::move(it->second));
                it = mCallbacks.erase(it);
            } else {
                ++it;
            }
        }
    }
    *_aidl_return = Error::NONE;
    return ndk::ScopedAStatus::ok();
}

void CwbService::notifyCwbStatus() {
    std::vector<std::shared_ptr<ICwbCallback>> snapshot;
    {
        std::lock_guard<std::mutex> lock(mCallbackMutex);
        snapshot.reserve(mCallbacks.size());
        for (const auto& [cookie, callback] : mCallbacks) snapshot.push_back(callback);
    }
    // Clients are called outside the lock, in cookie order; a host thread never waits on one
    // while holding it.
    for (const auto& callback : snapshot) {
        const bool status = serviceStatus();
        if (callback->notifyCwbStatus(status).isOk()) {
            ALOGI("Notify CWB status: %d", status ? 1 : 0);
        } else {
            ALOGW("Stale client connection!");
        }
    }
}

void CwbService::updateCwbStatus(bool status) {
    ALOGE("CwbService::updateCwbStatus: %d", status);
    mStats.event(CwbStats::Event::updateCwbStatus, 0, {status ? 1 : 0});
    mCwbStatus = status;
    notifyCwbStatus();
}

ndk::ScopedAStatus CwbService::enable(bool* _aidl_return) {
    CwbStats::Request request(mStats, CwbStats::Method::enable, _aidl_return);
    ALOGI("Enable Cwb function.");
    return switchCwb(true, _aidl_return);
}

ndk::ScopedAStatus CwbService::disable(bool* _aidl_return) {
    CwbStats::Request request(mStats, CwbStats::Method::disable, _aidl_return);
    ALOGI("Disable Cwb function.");
    return switchCwb(false, _aidl_return);
}

ndk::ScopedAStatus CwbService::switchCwb(bool enabled, bool* _aidl_return) {
    mCwbEnabled = enabled;
    notifyCwbStatus();
    *_aidl_return = true;
    return ndk::ScopedAStatus::ok();
}

// ---- Debug and post-processing controls ----

ndk::ScopedAStatus CwbService::setDebug(const std::vector<int32_t>& debug, Error* _aidl_return) {
    CwbStats::Request request(mStats, CwbStats::Method::setDebug, nullptr, _aidl_return);
    request.watch(&debug);
    if (debug.size() >= 1 && debug[0] != -1) mDebugLog = debug[0] > 0;
    if (debug.size() >= 2 && debug[1] != -1) mDump = debug[1] > 0;
    if (debug.size() >= 3 && debug[2] != -1) {
        mDisablePostProcessed = debug[2] > 0;
        disablePostProcessed(mDisablePostProcessed);
    }
    mColorTempHelper.mDebug = mDebugLog.load();
    ALOGI("CwbService::setDebug(): debug log: %d, dump: %d, disable post processed: %d\n",
          mDebugLog.load(), mDump.load(), mDisablePostProcessed.load());
    *_aidl_return = Error::NONE;
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus CwbService::getCwbPostProcessStatus(bool* _aidl_return) {
    CwbStats::Request request(mStats, CwbStats::Method::getCwbPostProcessStatus, _aidl_return);
    *_aidl_return = mPostProcess;
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus CwbService::setCwbPostProcessStatus(bool status, Error* _aidl_return) {
    CwbStats::Request request(mStats, CwbStats::Method::setCwbPostProcessStatus, nullptr,
                              _aidl_return, status ? 1 : 0);
    mPostProcess = status;
    *_aidl_return = Error::NONE;
    return ndk::ScopedAStatus::ok();
}

void CwbService::disablePostProcessed(bool disable) {
    if (readIntProperty("ro.vendor.zarel.display.cwb.postprocess", "0") == 0) return;
    ALOGI("%s post processed effect in AP side.\n", disable ? "Disable" : "Enable");
    if (disable) {
        setColorMode(mDisplayIdMain, kColorModeNative, kRenderIntentNoPostProcess);
        setColorMode(mDisplayIdSec, kColorModeNative, kRenderIntentNoPostProcess);
    } else {
        setColorMode(mDisplayIdMain, mColorModeMain, mRenderIntentMain);
        setColorMode(mDisplayIdSec, mColorModeSec, mRenderIntentSec);
    }
}

ndk::ScopedAStatus CwbService::reserved(int32_t /*arg0*/, int32_t /*arg1*/) {
    CwbStats::Request request(mStats, CwbStats::Method::reserved);
    return ndk::ScopedAStatus::ok();
}

// ---- Display-config connection ----

std::shared_ptr<CwbService::IDisplayConfig> CwbService::displayConfig() {
    std::lock_guard<std::mutex> lock(mDisplayConfigMutex);
    return mDisplayConfigAidl;
}

bool CwbService::getDisplayAidlConfig() {
    ndk::SpAIBinder binder(AServiceManager_checkService(kDisplayConfigInstance));
    if (binder.get() == nullptr) {
        ALOGE("DisplayConfig AIDL is not present");
        return false;
    }
    std::shared_ptr<IDisplayConfig> config = IDisplayConfig::fromBinder(binder);
    if (config == nullptr) {
        ALOGE("Failed to retrieve DisplayConfig AIDL binder");
        return false;
    }
    std::lock_guard<std::mutex> lock(mDisplayConfigMutex);
    // Once connected the connection is kept for the service's lifetime.
    if (mDisplayConfigAidl == nullptr) mDisplayConfigAidl = config;
    ALOGI("Initialized DisplayConfig AIDL %p successfully", mDisplayConfigAidl.get());
    return true;
}

// ---- Display configurations and resolution ----

void CwbService::fillConfigsIfNeeded() {
    if (mConfigInitialized) return;
    std::lock_guard<std::mutex> lock(mConfigMutex);
    if (!mConfigInitialized) mConfigInitialized = setupAvailableConfigs();
}

bool CwbService::setupAvailableConfigs() {
    std::shared_ptr<IDisplayConfig> config = displayConfig();
    if (config == nullptr) {
        if (!getDisplayAidlConfig()) return false;
        config = displayConfig();
    }
    int32_t count = 0;
    DisplayAttributes record{};
    if (!readConfigs(*config, false, &count, &record)) return false;
    if (mActiveConfig >= mConfigs.size()) {
        ALOGI("CwbService::setupAvailableConfigs: mActiveConfig:%u, size:%zu", mActiveConfig.load(),
              mConfigs.size());
        mActiveConfig = mActiveConfig % mConfigs.size();
    }
    if (mDisplayIdSec != kNoDisplay && !readConfigs(*config, true, &count, &record)) return false;
    if (mAplReadSupport) {
        ::android::sp<qService::IQService> binder = getBinder();
        if (binder != nullptr) {
            ::android::Parcel in;
            ::android::Parcel out;
            in.writeInt32(mDisplayId);
            in.writeInt32(1);
            binder->dispatch(kQServiceAplSetup, &in, &out);
        }
    }
    return true;
}

bool CwbService::readConfigs(IDisplayConfig& config, bool secondary, int32_t* count,
                             DisplayAttributes* record) {
    const dc::DisplayType type = secondary ? dc::DisplayType::BUILTIN2 : dc::DisplayType::PRIMARY;
    std::vector<DisplayAttributes>& list = secondary ? mConfigsSec : mConfigs;
    config.getConfigCount(type, count);
    if (*count <= 0) return false;
    for (int32_t i = 0; i < *count; ++i) {
        config.getDisplayAttributes(i, type, record);
        list.push_back(*record);
    }
    (secondary ? mConfigsSecSize : mConfigsSize).store(list.size(), std::memory_order_release);
    for (size_t i = 0; i < list.size(); ++i) {
        ALOGI("ConfigID %s%d: vsync_period = %d, width = %d, height = %d.",
              secondary ? "mDisplayIdSec:" : "", static_cast<int>(i), list[i].vsyncPeriod,
              list[i].xRes, list[i].yRes);
    }
    return true;
}

void CwbService::updateAvailableConfigs() {
    ALOGI("CwbService updateAvailableConfigs: mConfigInitialized=%d", mConfigInitialized.load());
    fillConfigsIfNeeded();
}

bool CwbService::matchesMain(uint64_t display) const {
    return display == static_cast<uint64_t>(static_cast<int64_t>(mDisplayIdMain));
}

bool CwbService::matchesSec(uint64_t display) const {
    return display == static_cast<uint64_t>(static_cast<int64_t>(mDisplayIdSec));
}

void CwbService::notifyConfigChange(uint64_t display, uint32_t config) {
    // Sizes as last published by a finished fill: another thread may be appending right now.
    const size_t mainSize = mConfigsSize.load(std::memory_order_acquire);
    const size_t secSize = mConfigsSecSize.load(std::memory_order_acquire);
    ALOGI("CwbService::notifyConfigChange: display:%d, config:%d size:%d, sec.size():%d",
          static_cast<int>(display), static_cast<int>(config), static_cast<int>(mainSize),
          static_cast<int>(secSize));
    mStats.event(CwbStats::Event::notifyConfigChange, static_cast<int64_t>(display),
                 {static_cast<int32_t>(config)});
    if (matchesMain(display)) {
        if (mainSize != 0 && mainSize <= config) config %= mainSize;
        mActiveConfig = config;
    }
    if (matchesSec(display)) {
        if (secSize != 0 && secSize <= config) config %= secSize;
        mActiveConfigSec = config;
    }
}

bool CwbService::activeAttributes(int32_t displayId, DisplayAttributes* out) const {
    if (!mConfigInitialized) return false;
    const std::vector<DisplayAttributes>* list = nullptr;
    uint32_t index = 0;
    if (displayId == kDisplayMain) {
        list = &mConfigs;
        index = mActiveConfig;
    } else if (displayId == kDisplaySecondary) {
        list = &mConfigsSec;
        index = mActiveConfigSec;
    }
    // An empty list means 0 x 0; an index the lists never held is folded in, never read past.
    if (list == nullptr || list->empty()) return false;
    *out = (*list)[index % list->size()];
    return true;
}

void CwbService::getResolution(uint32_t& width, uint32_t& height) {
    const int32_t displayId = mDisplayId;
    if (displayId != kDisplayMain && displayId != kDisplaySecondary) return;
    DisplayAttributes attributes{};  // stays 0 x 0 for a list not read or empty
    activeAttributes(displayId, &attributes);
    width = static_cast<uint32_t>(attributes.xRes);
    height = static_cast<uint32_t>(attributes.yRes);
}

// ---- Power, colour mode and overlay-layer state ----

void CwbService::setPowerMode(uint64_t display, int mode) {
    mStats.event(CwbStats::Event::setPowerMode, static_cast<int64_t>(display),
                 {mode, mPowerModeMain.load(), mPowerModeSec.load()});
    if (matchesMain(display)) {
        ALOGI("CwbService::setPowerMode(): display %d, mode: %d", static_cast<int>(display), mode);
        mPowerModeMain = mode;
    }
    if (matchesSec(display)) {
        ALOGI("CwbService::setPowerMode(): display %d, mode: %d", static_cast<int>(display), mode);
        mPowerModeSec = mode;
    }
    if (mode != kPowerDoze) {
        if (mode == kPowerOff && mDisablePostProcessed) {
            mDisablePostProcessed = false;
            disablePostProcessed(false);
        }
        mCachePowerMode = mode;
    }
}

void CwbService::notifyColorModeChange(uint64_t display, int mode, int intent) {
    mStats.event(CwbStats::Event::notifyColorModeChange, static_cast<int64_t>(display),
                 {mode, intent});
    if (mDisablePostProcessed) return;
    if (matchesMain(display)) {
        ALOGI("CwbService::notifyColorModeChange: display: %d, mode = %d, render intent = %d",
              static_cast<int>(display), mode, intent);
        mColorModeMain = mode;
        mRenderIntentMain = intent;
    }
    if (matchesSec(display)) {
        ALOGI("CwbService::notifyColorModeChange: display: %d, mode = %d, render intent = %d",
              static_cast<int>(display), mode, intent);
        mColorModeSec = mode;
        mRenderIntentSec = intent;
    }
}

void CwbService::aodLayerExist(bool exist) {
    mStats.event(CwbStats::Event::aodLayerExist, 0, {exist ? 1 : 0});
    mAodLayerExist = exist;
}

void CwbService::fodLayerExist(bool exist) {
    mStats.event(CwbStats::Event::fodLayerExist, 0, {exist ? 1 : 0});
    if (mFodLayerExist.exchange(exist) == exist) return;
    if (mFodForbidden) notifyCwbStatus();
}

bool CwbService::captureScreenAllowed() {
    const nsecs_t now = systemTime(SYSTEM_TIME_MONOTONIC);
    std::lock_guard<std::mutex> lock(mCwbMutex);
    const bool allowed = mLastCwbTime + kCaptureGateNs < now;
    if (!allowed && mDebugLog) ALOGD("no need capturescreen\n");
    if (!allowed) mStats.count(CwbStats::Counter::RefusedGate);
    return allowed;
}

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
