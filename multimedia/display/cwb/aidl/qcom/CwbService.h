#pragma once

#include <aidl/vendor/qti/hardware/display/config/Attributes.h>
#include <aidl/vendor/qti/hardware/display/config/IDisplayConfig.h>
#include <aidl/vendor/zarel/hardware/cwb/BnCwbService.h>
#include <aidl/vendor/zarel/hardware/cwb/Error.h>
#include <aidl/vendor/zarel/hardware/cwb/Histogram.h>
#include <aidl/vendor/zarel/hardware/cwb/ICwbCallback.h>
#include <aidl/vendor/zarel/hardware/cwb/Rect.h>
#include <aidl/vendor/zarel/hardware/cwb/Rgb.h>
#include <android-base/thread_annotations.h>
#include <config/client_interface.h>
#include <cutils/native_handle.h>
#include <utils/StrongPointer.h>

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "ColorTempHelper.h"
#include "CwbConstants.h"
#include "CwbStats.h"
#include "GrallocHelper.h"
#include "ResultCache.h"
#include "SharedMemoryRegion.h"
#include "TimedMutex.h"

namespace aidl::vendor::zarel::hardware::cwb::implementation {

// Capture mode: CWB_LEGACY_VALUE or CWB_AI_VALUE.
extern std::atomic<int32_t> mLightModeID;

// Record of one mapped capture buffer; pixels RGB_888, rows `width` pixels apart.
struct CwbBufferInfo {
    void* base = nullptr;
    int32_t format = 0;
    uint64_t size = 0;
    uint64_t width = 0;
    uint64_t unaligned_width = 0;
    uint64_t height = 0;
};

// Receives writeback completions from the display-config callback object.
class CwbBufferDoneListener {
  public:
    virtual void notifyCWBBufferDone(int error) = 0;

  protected:
    virtual ~CwbBufferDoneListener() = default;
};

// Base of the display-config callback object; the service detaches itself on destruction so that
// a completion arriving late from the vendor never reaches a destroyed service.
class CwbCallbackBase {
  public:
    virtual ~CwbCallbackBase() = default;
    virtual void detach() = 0;
    virtual std::shared_ptr<::aidl::vendor::qti::hardware::display::config::IDisplayConfigCallback>
    asCallback() = 0;
};

// Rectangles each result cache holds. A light-sensor client asks for a handful per frame; a
// client walking new rectangles over a static screen stops here (the histogram cache then holds
// 64 x 3 KiB).
constexpr size_t kResultCacheCap = 64;

class CwbService : public BnCwbService,
                   public ::DisplayConfig::ConfigCallback,
                   public CwbBufferDoneListener {
  public:
    using DisplayAttributes = ::aidl::vendor::qti::hardware::display::config::Attributes;
    using IDisplayConfig = ::aidl::vendor::qti::hardware::display::config::IDisplayConfig;

    CwbService();
    ~CwbService() override;

    static std::shared_ptr<CwbService> initialize();

    // ---- ICwbService ----
    // Analysis requests sample mDisplayId's screen (RGB) or the main screen (luma, histogram).
    // Each checks the rectangle (INVALID_ARGUMENT), answers FAILED when the service is disabled,
    // no display is selected, the previous request holds mRequestLock for 50 ms, the 50 ms
    // capture gate is closed or the capture fails, and SCREEN_OFF by its screen-off rule. The
    // request holds mRequestLock from the cache lookup to the answer, and mCwbMutex briefly.
    // Results are cached per rectangle until a layer changes (invalidCache).

    // Mean colour of the rectangle, gamma-correct; the result word's high 16 bits carry the
    // pure (0x1) and black/white (0x2) verdicts. SCREEN_OFF when off or in doze-suspend, or on
    // a forbidden AOD layer after three captures. In doze-suspend the cache still answers.
    ndk::ScopedAStatus getRGBValue(const Rect& rect, Rgb* rgb, Error* _aidl_return) override;
    // Appends the mean luma in [0, 1] of the main screen without post-processing. SCREEN_OFF
    // when off or on any forbidden AOD layer.
    ndk::ScopedAStatus getLumasValue(const Rect& rect, std::vector<float>* lumas,
                                     Error* _aidl_return) override;
    // Per-level counts of the three channels of the post-processed main screen; all zero on an
    // error. Same screen-off rule as the luma.
    ndk::ScopedAStatus getHistogramValue(const Rect& rect, Histogram* histogram,
                                         Error* _aidl_return) override;
    // Whether RGB captures are taken after post-processing; no lock.
    ndk::ScopedAStatus getCwbPostProcessStatus(bool* _aidl_return) override;
    ndk::ScopedAStatus setCwbPostProcessStatus(bool status, Error* _aidl_return) override;
    // Adds a client (a null one is ignored) under mCallbackMutex and tells it the current
    // status outside the lock. Always NONE.
    ndk::ScopedAStatus registerCallback(const std::shared_ptr<ICwbCallback>& callback,
                                        Error* _aidl_return) override;
    // Removes every registration of the client under mCallbackMutex. Always NONE.
    ndk::ScopedAStatus unregisterCallback(const std::shared_ptr<ICwbCallback>& callback,
                                          Error* _aidl_return) override;
    // Switch the service on or off and tell every client, outside mCallbackMutex. Answer true.
    ndk::ScopedAStatus enable(bool* _aidl_return) override;
    ndk::ScopedAStatus disable(bool* _aidl_return) override;
    // [debug log, buffer dump, post-processing off]; -1 or a missing entry keeps a switch.
    // Always NONE.
    ndk::ScopedAStatus setDebug(const std::vector<int32_t>& debug, Error* _aidl_return) override;
    // CWB_RGB_VALUE, CWB_LUMAS_VALUE or CWB_RGB_VALUE_SEC through the analysis frame, then the
    // frame's start and end times (high, low words) and the panel loading. INVALID_ARGUMENT for
    // an id outside 1..14 or an unconfigured secondary display; other ids answer no values and
    // leave the result unset.
    // Waits up to 50 ms for a layer change on mLayerChangeMutex after the request.
    ndk::ScopedAStatus getCwbValue(int32_t featureId, const Rect& rect,
                                   std::vector<int32_t>* values, Error* _aidl_return) override;
    ndk::ScopedAStatus reserved(int32_t arg0, int32_t arg1) override;
    // Maps the client's region of size bytes under mSharedMemoryMutex, replacing an older one;
    // the same descriptor again is NONE. Service-specific error -1 for a bad descriptor or a
    // region that cannot be mapped whole.
    ndk::ScopedAStatus initializeSharedMemory(int32_t id, int32_t size,
                                              const ndk::ScopedFileDescriptor& fd,
                                              Error* _aidl_return) override;
    // Checks the rectangle (INVALID_ARGUMENT), keeps it as the AI capture region and answers
    // [paused, width, height, screen width, screen height]. CWB_LEGACY_VALUE and CWB_AI_VALUE
    // select the capture mode; CWB_AI_BUFFER_VALUE copies the crop into the shared region
    // (INVALID_ARGUMENT and service-specific -1 when refused). Holds mSharedMemoryMutex, then
    // mRequestLock for the copy.
    ndk::ScopedAStatus getSharedData(int32_t featureId, const Rect& rect,
                                     const ndk::ScopedFileDescriptor& fd, int32_t bufferSize,
                                     std::vector<int32_t>* values, Error* _aidl_return) override;
    // [height, pitch] of the main capture buffer, 0 x 0 before the first capture; mRequestLock.
    ndk::ScopedAStatus getScreenResolution(int32_t id, std::vector<int32_t>* values,
                                           Error* _aidl_return) override;
    // Unmaps the client's region under mSharedMemoryMutex. Always NONE.
    ndk::ScopedAStatus releaseSharedMemory(int32_t id, int32_t flags, Error* _aidl_return) override;
    // dumpsys: never waits behind a capture in flight for more than a few milliseconds.
    binder_status_t dump(int fd, const char** args, uint32_t numArgs) override;
    // dump() with "--session": what the service has seen, as a cwb-sim session.
    std::string sessionDump();

    // Writeback completions: the AIDL callback object and the vendor's legacy callback. Under
    // mCwbMutex; a completion nobody waits for is dropped.
    void notifyCWBBufferDone(int error) override;
    void NotifyCWBBufferDone(int error, const native_handle_t* buffer) override;
    // Panel loading of the selected display (100000000 = 1.0) from the panel APL and the
    // qservice's UirState and PanelNit, or the main display's render intent; always OK and always
    // written. Not part of the AIDL interface. No lock.
    virtual ndk::ScopedAStatus getDisplayPanelLoading(int* loading);

    // ---- Operations exported to the host besides CwbProxy's events. Each works on the display
    // selected by mDisplayId and takes what it needs of mRequestLock -> mCwbMutex or of
    // mConfigMutex itself, so the caller holds no service lock. ----
    // Unmaps the client's shared-memory region, if any, under mSharedMemoryMutex; the munmap
    // result, or 0 when nothing was mapped.
    int release() EXCLUDES(mSharedMemoryMutex);
    // The next client cookie: 0, 1, 2, ... in call order, under mCallbackMutex.
    uint64_t generateCookie() EXCLUDES(mCallbackMutex);
    // Active resolution of the selected display; a selection other than the main or secondary
    // display leaves both outputs untouched, an empty configuration list gives 0 x 0.
    void getResolution(uint32_t& width, uint32_t& height);
    // Empties the RGB, luma and histogram caches, so that the next request captures anew; waits
    // for a request in flight (mRequestLock).
    void clearCache() EXCLUDES(mRequestLock);
    // Frees the selected display's capture buffer, if it has one; the other display's stays.
    void destroyCwbBuffer() EXCLUDES(mRequestLock);
    // Makes the selected display's capture buffer exist at its current resolution, mapped.
    void prepareCwbBuffer() EXCLUDES(mRequestLock);
    // Checks a client rectangle (pixels, or fractions of 1/100000 when all four fields are
    // negative) against the selected display and rotates it into buffer pixels; false when it
    // does not fit. May read the configuration lists (mConfigMutex).
    bool checkInputRect(const Rect& in, Rect& out) EXCLUDES(mConfigMutex);
    // One writeback of the main (or secondary) display into its capture buffer, rect in buffer
    // pixels: 0 done, -1 no vendor or no buffer, 1 the vendor refused, -4 no successful
    // completion within 1 s. Prepares the selected display's buffer first.
    int setCWBOutputBuffer(Rect rect, bool postProcessed) EXCLUDES(mRequestLock);
    int setCWBOutputBufferSec(Rect rect, bool postProcessed) EXCLUDES(mRequestLock);

    // ---- Host events, forwarded by CwbProxy on composer threads; none blocks on a client ----
    // The composer's own CWB status; tells every client.
    void updateCwbStatus(bool status);
    // A layer changed: the captured frame and cached results no longer answer, a paused copy
    // resumes and a waiting getCwbValue wakes. Takes mLayerChangeMutex; allocates nothing.
    void invalidCache() EXCLUDES(mLayerChangeMutex);
    // Power mode of the main or secondary display; powering off ends a debug post-processing
    // switch-off.
    void setPowerMode(uint64_t display, int mode);
    // Active configuration of a display, folded into the list read at set-up.
    void notifyConfigChange(uint64_t display, uint32_t config);
    // Reads the configuration lists once, under mConfigMutex.
    void updateAvailableConfigs() EXCLUDES(mConfigMutex);
    // Colour mode and render intent of a display, kept unless post-processing is switched off.
    void notifyColorModeChange(uint64_t display, int mode, int intent);
    // Overlay layers: a forbidden AOD layer refuses captures, a forbidden FOD layer turns the
    // clients' status off (and tells them).
    void aodLayerExist(bool exist);
    void fodLayerExist(bool exist);

  protected:
    // Internals. Nothing derives from the service on a device; host-side inspection names these
    // through a derived class.
    void notifyCwbStatus() EXCLUDES(mCallbackMutex);
    void disablePostProcessed(bool disable);
    bool getDisplayAidlConfig() EXCLUDES(mDisplayConfigMutex);
    bool captureScreenAllowed() EXCLUDES(mCwbMutex);
    bool waitDumpComplete() EXCLUDES(mCwbMutex);
    void GetCwbWeightsPos(char* path, int* count, std::vector<int>& weights);
    int getDisplayPanelAplValue(std::vector<unsigned int>& values);
    void calcPixelsRGB(void* buffer, unsigned int stride, Rect rect,
                       std::array<unsigned char, 3>& rgb, unsigned short& state)
            REQUIRES(mRequestLock);
    float calcPixelsLumas(void* buffer, unsigned int stride, Rect rect);
    void calcPixelsHistogram(void* buffer, unsigned int stride, Rect rect, unsigned int (*bins)[3]);
    // Frees a display selection's capture buffer, if it has one.
    void releaseCwbBuffer(int32_t displayId) REQUIRES(mRequestLock);

    // The requests for one display chosen by the caller: the dispatcher's own choice, or one
    // read of mDisplayId by the public methods. That choice drives the rectangle check, the power
    // mode, the capture buffer and the weights, whatever another thread stores meanwhile.
    ndk::ScopedAStatus getRGBValue(int32_t displayId, const Rect& rect, Rgb* rgb,
                                   Error* _aidl_return) EXCLUDES(mRequestLock);
    // The luma request without its output vector, so that getCwbValue needs none either.
    Error lumaRequest(int32_t displayId, const Rect& rect, float* luma) EXCLUDES(mRequestLock);
    ndk::ScopedAStatus getHistogramValue(int32_t displayId, const Rect& rect, Histogram* histogram,
                                         Error* _aidl_return) EXCLUDES(mRequestLock);
    bool checkInputRect(int32_t displayId, const Rect& in, Rect& out) EXCLUDES(mConfigMutex);
    void prepareCwbBuffer(int32_t displayId) REQUIRES(mRequestLock);
    void panelLoading(int32_t displayId, int* loading);
    bool setupAvailableConfigs() REQUIRES(mConfigMutex);
    // Appends the main or secondary display's configurations and publishes the list's size;
    // false when the display reports none. count and record carry over from the display read
    // before, as a vendor that leaves them unwritten would find them.
    bool readConfigs(IDisplayConfig& config, bool secondary, int32_t* count,
                     DisplayAttributes* record) REQUIRES(mConfigMutex);
    void fillConfigsIfNeeded() EXCLUDES(mConfigMutex);
    // Active (width, height, vsync) of a display selection; false for an unknown display, a
    // list not read yet or an empty list.
    bool activeAttributes(int32_t displayId, DisplayAttributes* out) const;
    bool matchesMain(uint64_t display) const;
    bool matchesSec(uint64_t display) const;
    bool serviceStatus() const;
    // enable()/disable(): stores the switch and tells every client.
    ndk::ScopedAStatus switchCwb(bool enabled, bool* _aidl_return);
    // Captures the main or the secondary display into its buffer; displayId is the request's
    // display, whose capture buffer is prepared.
    int writeback(int32_t displayId, bool secondary, Rect rect, bool postProcessed)
            REQUIRES(mRequestLock);
    void emptyResultCaches() REQUIRES(mRequestLock);
    void selectPowerMode(int32_t displayId) REQUIRES(mRequestLock);
    // What one analysis request states about its capture: the rest of the frame is shared.
    struct AnalysisKind {
        const char* name;    // trace name and the "resource busy" line
        bool secondary;      // capture the secondary display into its own buffer
        bool postProcessed;  // capture after the display's post-processing
    };
    // The frame shared by the RGB, luma and histogram requests; returns the result word. Each
    // callable runs under mRequestLock: cached(work, &result) answers from the cache,
    // screenOff() applies the request's screen-off rule, failed(ret) logs a failed capture and
    // pass(buffer, work) analyses the captured rectangle.
    template <typename Cached, typename ScreenOff, typename Failed, typename Pass>
    int32_t analyse(int32_t displayId, const Rect& rect, const AnalysisKind& kind, Cached cached,
                    ScreenOff screenOff, Failed failed, Pass pass) EXCLUDES(mRequestLock);
    bool offOrAodForbidden() REQUIRES(mRequestLock);
    // The capture buffer holds the whole rectangle at a sane pitch.
    static bool rectInsideBuffer(const CwbBufferInfo& info, const Rect& rect);
    int getAiBufferFromCwb(int id, const Rect& rect, int bufferSize, std::vector<int>* values)
            REQUIRES(mSharedMemoryMutex) EXCLUDES(mRequestLock);
    // Logs the release line and unmaps the client region if one is mapped; the munmap result.
    int releaseSharedMemoryLocked() REQUIRES(mSharedMemoryMutex);
    std::shared_ptr<IDisplayConfig> displayConfig() EXCLUDES(mDisplayConfigMutex);
    int32_t sendQServiceQuery(int32_t displayId, uint32_t command);
    Rect aiRect() const EXCLUDES(mAiRectMutex);

    // The client's region: its descriptor number (`mSharedMemoryFd`), mapping and length.
    SharedMemoryRegion mSharedMemory GUARDED_BY(mSharedMemoryMutex);
    std::atomic<int32_t> mPanelApl{0};
    std::atomic<bool> mRgbCacheHit{false};
    bool mAplReadSupport = false;
    TimedMutex mRequestLock;
    std::atomic<bool> mDebugLog{false};
    std::atomic<bool> mDump{false};
    std::atomic<bool> mDisablePostProcessed{false};
    std::mutex mDisplayConfigMutex;  // leaf: publishes the connection across threads
    std::shared_ptr<IDisplayConfig> mDisplayConfigAidl GUARDED_BY(mDisplayConfigMutex);
    bool mCwbDone GUARDED_BY(mCwbMutex) = false;
    // The writeback request waiting for its completion, and what its completion said.
    bool mCwbRequestPending GUARDED_BY(mCwbMutex) = false;
    bool mCwbRequestCompleted GUARDED_BY(mCwbMutex) = false;
    std::mutex mCwbMutex;
    std::condition_variable mCwbCondition;
    std::mutex mLayerChangeMutex;
    std::condition_variable mLayerChangeCond;
    ::android::sp<GrallocHelper> mGrallocHelper;
    // Filled under mConfigMutex while mConfigInitialized is false, never changed afterwards;
    // readers look at them only once mConfigInitialized is true.
    std::vector<DisplayAttributes> mConfigs;
    std::vector<DisplayAttributes> mConfigsSec;
    // Each list's size once its fill loop is done, for readers that may not wait for the set-up.
    std::atomic<size_t> mConfigsSize{0};
    std::atomic<size_t> mConfigsSecSize{0};
    std::atomic<uint32_t> mActiveConfig{0};
    std::atomic<uint32_t> mActiveConfigSec{0};
    std::atomic<bool> mPostProcess{false};
    bool mRoiSupport = false;
    bool mAodForbidden = false;
    bool mFodForbidden = false;
    std::atomic<int32_t> mDisplayId{0};
    // Display of the request holding mRequestLock, kNoDisplay outside one: its weights are that
    // display's. A pass run on its own weighs for mDisplayId.
    int32_t mRequestDisplayId GUARDED_BY(mRequestLock) = kNoDisplay;
    int32_t mDisplayIdMain = kNoDisplay;
    int32_t mDisplayIdSec = kNoDisplay;
    std::vector<int32_t> weightspos;
    int32_t weightspos_count = 0;
    std::vector<int32_t> weightspos_sec;
    int32_t weightspos_count_sec = 0;
    mutable std::mutex mAiRectMutex;  // leaf: mAiRect is always read and written whole
    Rect mAiRect GUARDED_BY(mAiRectMutex);
    uint64_t mCookie GUARDED_BY(mCallbackMutex) = 0;
    std::mutex mCallbackMutex;
    std::map<uint64_t, std::shared_ptr<ICwbCallback>> mCallbacks GUARDED_BY(mCallbackMutex);
    std::atomic<bool> mCwbStatus{true};
    std::atomic<bool> mCwbEnabled{true};
    std::mutex mSharedMemoryMutex;
    std::atomic<bool> mBufferCacheValid{false};
    std::atomic<int32_t> mInvalidCacheCount{0};
    std::atomic<bool> mScreenCountReached{false};
    int32_t mCurrentScreenCount GUARDED_BY(mSharedMemoryMutex) = 0;
    const int32_t mScreenCountLimit = 6;
    int32_t mPowerMode GUARDED_BY(mRequestLock) = 0;
    std::atomic<int32_t> mCachePowerMode{0};
    std::atomic<int32_t> mPowerModeMain{0};
    std::atomic<int32_t> mPowerModeSec{0};
    int32_t mAodForbiddenCnt GUARDED_BY(mRequestLock) = 0;
    std::atomic<int32_t> mColorModeMain{kColorModeNative};
    std::atomic<int32_t> mColorModeSec{kColorModeNative};
    std::atomic<int32_t> mRenderIntentMain{0};
    std::atomic<int32_t> mRenderIntentSec{0};
    std::atomic<bool> mAodLayerExist{false};
    std::atomic<bool> mFodLayerExist{false};
    // Result caches of the current frame; kResultCacheCap rectangles each, oldest evicted.
    ResultCache<std::pair<std::array<uint8_t, 3>, uint16_t>, kResultCacheCap> mRgbCache
            GUARDED_BY(mRequestLock);
    ResultCache<float, kResultCacheCap> mLumaCache GUARDED_BY(mRequestLock);
    ResultCache<Histogram, kResultCacheCap> mHistogramCache GUARDED_BY(mRequestLock);
    int64_t mLastCwbDoneTime GUARDED_BY(mCwbMutex) = 0;
    // Driven only by calcPixelsRGB under mRequestLock; its mDebug switch is atomic.
    ColorTempHelper mColorTempHelper;
    std::atomic<bool> mConfigInitialized{false};
    std::mutex mConfigMutex;
    std::atomic<int32_t> mCwbRotate{0};
    int32_t mCwbRotateMain = 0;
    int32_t mCwbRotateSec = 0;
    CwbBufferInfo mCwbBufferHandle GUARDED_BY(mRequestLock);
    CwbBufferInfo mCwbBufferHandle_sec GUARDED_BY(mRequestLock);
    native_handle const* mCwbNativeHandle GUARDED_BY(mRequestLock) = nullptr;
    native_handle const* mCwbNativeHandle_sec GUARDED_BY(mRequestLock) = nullptr;
    int64_t mLastCwbTime GUARDED_BY(mCwbMutex) = 0;
    std::shared_ptr<CwbCallbackBase> mCwbCallback;
    CwbStats mStats;  // counters and last requests for dump(); lock-free
};

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
