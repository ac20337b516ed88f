// Frame capture: capture buffers, the writeback request and its completion, the check and
// rotation of client rectangles, and the validity of the captured frame.
#define LOG_TAG "CwbService"
#define ATRACE_TAG ATRACE_TAG_GRAPHICS

#include <aidl/vendor/qti/hardware/display/config/DisplayType.h>
#include <aidl/vendor/qti/hardware/display/config/Rect.h>
#include <aidlcommonsupport/NativeHandle.h>
#include <android-base/thread_annotations.h>
#include <log/log.h>
#include <ui/GraphicBufferMapper.h>
#include <ui/GraphicTypes.h>
#include <ui/Rect.h>
#include <utils/Timers.h>
#include <utils/Trace.h>

#include <chrono>
#include <cstring>

#include "CwbService.h"
#include "PixelKernels.h"

namespace aidl::vendor::zarel::hardware::cwb::implementation {

namespace {

namespace dc = ::aidl::vendor::qti::hardware::display::config;

constexpr uint64_t kCaptureUsage = 0x33;  // CPU read often | CPU write often
constexpr int32_t kRgb888 = 3;

}  // namespace

// ---- Capture buffers ----

void CwbService::prepareCwbBuffer(int32_t displayId) {
    CwbBufferInfo* info = nullptr;
    native_handle const** handle = nullptr;
    if (displayId == kDisplayMain) {
        info = &mCwbBufferHandle;
        handle = &mCwbNativeHandle;
    } else if (displayId == kDisplaySecondary) {
        info = &mCwbBufferHandle_sec;
        handle = &mCwbNativeHandle_sec;
    } else {
        return;
    }
    DisplayAttributes attributes{};
    // No configuration means 0 x 0: no buffer is made.
    if (!activeAttributes(displayId, &attributes) || attributes.xRes <= 0 || attributes.yRes <= 0) {
        return;
    }
    const uint64_t width = static_cast<uint64_t>(attributes.xRes);
    const uint64_t height = static_cast<uint64_t>(attributes.yRes);
    if (info->base != nullptr && info->unaligned_width == width && info->height == height) return;
    if (info->base != nullptr) {
        mGrallocHelper->FreeBuffer(handle);
        *handle = nullptr;
        info->base = nullptr;
    }
    native_handle const* allocated = nullptr;
    mGrallocHelper->Allocate(static_cast<uint32_t>(width), static_cast<uint32_t>(height), 1,
                             kCaptureUsage, &allocated);
    if (allocated == nullptr) return;
    *handle = allocated;

    ::android::GraphicBufferMapper& mapper = ::android::GraphicBufferMapper::get();
    void* address = nullptr;
    mapper.lock(allocated, kCaptureUsage,
                ::android::Rect(0, 0, static_cast<int32_t>(width), static_cast<int32_t>(height)),
                &address);
    // The HIDL enum has no "unspecified" value: 0 stands for a format the mapper did not report.
    ::android::ui::PixelFormat format = static_cast<::android::ui::PixelFormat>(0);
    mapper.getPixelFormatRequested(allocated, &format);
    info->format = static_cast<int32_t>(format);
    mapper.getAllocationSize(allocated, &info->size);
    mapper.getWidth(allocated, &info->unaligned_width);
    mapper.getHeight(allocated, &info->height);
    if (address == nullptr) {
        // A buffer that cannot be mapped is of no use; free it now rather than leak it.
        mGrallocHelper->FreeBuffer(handle);
        *handle = nullptr;
        info->base = nullptr;
        return;
    }
    info->base = address;
    if (info->unaligned_width * info->height != info->size) {
        info->width = info->height != 0 ? info->size / info->height / 3 : 0;
    }
    if (info->format != kRgb888) {
        ALOGE("Format error.");
    }
}

void CwbService::prepareCwbBuffer() {
    std::lock_guard<TimedMutex> lock(mRequestLock);
    prepareCwbBuffer(mDisplayId);
}

void CwbService::destroyCwbBuffer() {
    std::lock_guard<TimedMutex> lock(mRequestLock);
    releaseCwbBuffer(mDisplayId);
}

void CwbService::releaseCwbBuffer(int32_t displayId) {
    if (displayId == kDisplayMain && mCwbBufferHandle.base != nullptr) {
        mGrallocHelper->FreeBuffer(&mCwbNativeHandle);
        mCwbNativeHandle = nullptr;
        mCwbBufferHandle.base = nullptr;
    } else if (displayId == kDisplaySecondary && mCwbBufferHandle_sec.base != nullptr) {
        mGrallocHelper->FreeBuffer(&mCwbNativeHandle_sec);
        mCwbNativeHandle_sec = nullptr;
        mCwbBufferHandle_sec.base = nullptr;
    }
}

bool CwbService::rectInsideBuffer(const CwbBufferInfo& info, const Rect& rect) {
    if (info.base == nullptr || rect.left < 0 || rect.top < 0 || rect.left >= rect.right ||
        rect.top >= rect.bottom) {
        return false;
    }
    // The pitch must hold a whole row and the allocation every row, or reads run past the end.
    if (info.width < info.unaligned_width || info.width * info.height * 3 > info.size) {
        return false;
    }
    return static_cast<uint64_t>(rect.right) <= info.unaligned_width &&
           static_cast<uint64_t>(rect.bottom) <= info.height;
}

// ---- Writeback ----

int CwbService::writeback(int32_t displayId, bool secondary, Rect rect, bool postProcessed) {
    std::shared_ptr<IDisplayConfig> config = displayConfig();
    if (config == nullptr) {
        if (!getDisplayAidlConfig()) return -1;
        config = displayConfig();
    }
    prepareCwbBuffer(displayId);
    CwbBufferInfo& info = secondary ? mCwbBufferHandle_sec : mCwbBufferHandle;
    native_handle const* handle = secondary ? mCwbNativeHandle_sec : mCwbNativeHandle;
    if (info.base == nullptr) {
        ALOGE(secondary ? "mCwbBufferHandle_sec.base is NULL" : "mCwbBufferHandle.base is NULL");
        return -1;
    }
    zeroFill(info.base, info.size);

    dc::Rect region{};
    if (mRoiSupport) {
        if (!secondary && mLightModeID == CWB_AI_VALUE) {
            const Rect ai = aiRect();
            region = dc::Rect{ai.left, ai.top, ai.right, ai.bottom};
            if (mDebugLog) {
                ALOGD("MORVIK_AI::mRoiSupport=%d||mLightModeID=%d||fhd_Width=%d||left=%d||top=%d||"
                      "right=%d||bottom=%d",
                      1, CWB_AI_VALUE, static_cast<int>(info.width), ai.left, ai.top, ai.right,
                      ai.bottom);
            }
        } else {
            region = dc::Rect{rect.left, rect.top, rect.right, rect.bottom};
        }
    }
    if (!mBufferCacheValid) emptyResultCaches();

    {
        // Armed before the vendor call so that a completion that beats the wait still counts.
        std::lock_guard<std::mutex> lock(mCwbMutex);
        mCwbRequestPending = true;
        mCwbRequestCompleted = false;
    }
    mStats.count(CwbStats::Counter::CaptureRequests);
    ndk::ScopedAStatus status;
    {
        auto buffer = ::android::dupToAidl(handle);
        // The vendor takes the display as an int: the DisplayType value of the panel.
        const int32_t dispId = static_cast<int32_t>(secondary ? dc::DisplayType::BUILTIN2
                                                              : dc::DisplayType::PRIMARY);
        status = config->setCWBOutputBuffer(mCwbCallback->asCallback(), dispId, region,
                                            postProcessed, buffer);
    }
    mInvalidCacheCount = 0;
    ATRACE_INT("mInvalidCacheCount", 0);
    if (!status.isOk()) {
        {
            std::lock_guard<std::mutex> lock(mCwbMutex);
            mCwbRequestPending = false;
        }
        mStats.count(CwbStats::Counter::VendorRefused);
        ALOGE("Failed to read cwb buffer.\n");
        return 1;
    }
    if (!waitDumpComplete()) return -4;
    mStats.count(CwbStats::Counter::Captures);
    mBufferCacheValid = true;
    ATRACE_INT("BufferCacheValid", 1);
    if (mDump) {
        mGrallocHelper->DumpOutputBuffer(
                static_cast<int>(info.size), info.base, -1, static_cast<int>(info.width),
                static_cast<int>(info.height), systemTime(SYSTEM_TIME_BOOTTIME));
    }
    return 0;
}

int CwbService::setCWBOutputBuffer(Rect rect, bool postProcessed) {
    std::lock_guard<TimedMutex> lock(mRequestLock);
    return writeback(mDisplayId, false, rect, postProcessed);
}

int CwbService::setCWBOutputBufferSec(Rect rect, bool postProcessed) {
    std::lock_guard<TimedMutex> lock(mRequestLock);
    return writeback(mDisplayId, true, rect, postProcessed);
}

bool CwbService::waitDumpComplete() {
    std::unique_lock<std::mutex> lock(mCwbMutex);
    ::android::base::ScopedLockAssertion assertion(mCwbMutex);
    const auto start = std::chrono::steady_clock::now();
    const auto deadline = start + std::chrono::nanoseconds(kWritebackTimeoutNs);
    // Only this request's own completion ends the wait; a success before the wait began counts.
    const bool completed = mCwbCondition.wait_until(
            lock, deadline, [this]() REQUIRES(mCwbMutex) { return mCwbRequestCompleted; });
    const bool success = completed && mCwbDone;
    mCwbRequestPending = false;
    if (success) {
        if (mDebugLog) ALOGI("DumpFinish\n");
        return true;
    }
    mStats.count(completed ? CwbStats::Counter::VendorErrors : CwbStats::Counter::Timeouts);
    ALOGI("Failed to dump data.\n");
    return false;
}

void CwbService::notifyCWBBufferDone(int error) {
    std::lock_guard<std::mutex> lock(mCwbMutex);
    if (error < 0) ALOGE("CWB Error\n");
    // A completion with no request waiting belongs to a request that already gave up.
    if (!mCwbRequestPending || mCwbRequestCompleted) return;
    if (error < 0) {
        mCwbDone = false;
    } else {
        mCwbDone = true;
        mLastCwbTime = systemTime(SYSTEM_TIME_MONOTONIC);
        mLastCwbDoneTime = systemTime(SYSTEM_TIME_BOOTTIME);
    }
    mCwbRequestCompleted = true;
    mCwbCondition.notify_one();
}

void CwbService::NotifyCWBBufferDone(int error, const native_handle_t* /*buffer*/) {
    notifyCWBBufferDone(error);
}

// ---- Rectangle check and rotation ----

bool CwbService::checkInputRect(const Rect& in, Rect& out) {
    return checkInputRect(mDisplayId, in, out);
}

bool CwbService::checkInputRect(int32_t displayId, const Rect& in, Rect& out) {
    fillConfigsIfNeeded();
    if (!mConfigInitialized) return false;

    DisplayAttributes attributes{};
    int32_t rotate = mCwbRotate;
    if (displayId == kDisplayMain) {
        rotate = mCwbRotateMain;
        activeAttributes(kDisplayMain, &attributes);
    } else if (displayId == kDisplaySecondary) {
        rotate = mCwbRotateSec;
        activeAttributes(kDisplaySecondary, &attributes);
    }
    mCwbRotate = rotate;
    const uint32_t W = static_cast<uint32_t>(attributes.xRes);
    const uint32_t H = static_cast<uint32_t>(attributes.yRes);

    int32_t left = in.left;
    int32_t top = in.top;
    int32_t right = in.right;
    int32_t bottom = in.bottom;
    if (left < 0 && top < 0 && right < 0 && bottom < 0) {
        auto fraction = [](int32_t v) {
            return static_cast<float>(static_cast<uint32_t>(v) & 0x00FFFFFFu) / 100000.0f;
        };
        const float fl = fraction(left);
        const float ft = fraction(top);
        const float fr = fraction(right);
        const float fb = fraction(bottom);
        if (mDebugLog) {
            ALOGE("Rect extracted: (%f, %f, %f, %f), mCwbRotate:%d", static_cast<double>(fl),
                  static_cast<double>(ft), static_cast<double>(fr), static_cast<double>(fb),
                  rotate);
        }
        const bool upright = rotate == 0 || rotate == 2;
        const float sx = static_cast<float>(upright ? W : H);
        const float sy = static_cast<float>(upright ? H : W);
        // Fractions up to 0xFFFFFF / 100000 times a 32-bit size fit an int32 only for real
        // panels; anything larger is clamped and then fails the bounds check below.
        auto toPixels = [](float v) {
            return v >= 2147483647.0f ? INT32_MAX : static_cast<int32_t>(v);
        };
        left = toPixels(fl * sx);
        top = toPixels(ft * sy);
        right = toPixels(fr * sx);
        bottom = toPixels(fb * sy);
    }
    if (left < 0 || top < 0 || right < 0 || bottom < 0) return false;

    const uint32_t l = static_cast<uint32_t>(left);
    const uint32_t t = static_cast<uint32_t>(top);
    const uint32_t r = static_cast<uint32_t>(right);
    const uint32_t b = static_cast<uint32_t>(bottom);
    switch (rotate) {
        case 0:
            out = Rect{left, top, right, bottom};
            break;
        case 1:
            if (b > W || t > W) return false;
            out = Rect{static_cast<int32_t>(W - b), left, static_cast<int32_t>(W - t), right};
            break;
        case 2:
            if (r > W || l > W || b > H || t > H) return false;
            out = Rect{static_cast<int32_t>(W - r), static_cast<int32_t>(H - b),
                       static_cast<int32_t>(W - l), static_cast<int32_t>(H - t)};
            break;
        case 3:
            if (l > H || r > H) return false;
            out = Rect{top, static_cast<int32_t>(H - r), bottom, static_cast<int32_t>(H - l)};
            break;
        default:
            ALOGE("Unkonwn rotation value !");
            return false;
    }
    if (mDebugLog) {
        ALOGI("Perform rotation: [%d,%d,%d,%d] to [%d,%d,%d,%d]\n", left, top, right, bottom,
              out.left, out.top, out.right, out.bottom);
    }
    if (out.left < out.right && out.top < out.bottom && static_cast<uint32_t>(out.right) <= W &&
        static_cast<uint32_t>(out.bottom) <= H) {
        return true;
    }
    ALOGE("input rect error [%d,%d,%d,%d]\n", left, top, right, bottom);
    return false;
}

// ---- Cache validity ----

void CwbService::invalidCache() {
    mStats.event(CwbStats::Event::invalidCache, 0, {});
    std::lock_guard<std::mutex> lock(mLayerChangeMutex);
    mBufferCacheValid = false;
    mScreenCountReached = false;
    const int32_t count = ++mInvalidCacheCount;
    ATRACE_INT("BufferCacheValid", 0);
    ATRACE_INT("mInvalidCacheCount", count);
    mLayerChangeCond.notify_one();
}

void CwbService::clearCache() {
    std::lock_guard<TimedMutex> lock(mRequestLock);
    emptyResultCaches();
}

void CwbService::emptyResultCaches() {
    mRgbCache.clear();
    mLumaCache.clear();
    mHistogramCache.clear();
}

Rect CwbService::aiRect() const {
    std::lock_guard<std::mutex> lock(mAiRectMutex);
    return mAiRect;
}

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
