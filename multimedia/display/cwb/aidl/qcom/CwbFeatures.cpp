// Feature dispatch with its time interval, the shared-memory crop export, the panel APL reading
// and the panel loading estimate.
#define LOG_TAG "CwbService"
#define ATRACE_TAG ATRACE_TAG_GRAPHICS

#include <IQService.h>
#include <binder/Parcel.h>
#include <fcntl.h>
#include <log/log.h>
#include <sys/mman.h>
#include <unistd.h>
#include <utils/Timers.h>
#include <utils/Trace.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <sstream>
#include <thread>

#include "CwbService.h"
#include "PixelKernels.h"

namespace aidl::vendor::zarel::hardware::cwb::implementation {

::android::sp<qService::IQService> getBinder();

namespace {

constexpr int32_t kLoadingOne = 100000000;
constexpr const char* kAplPath = "/sys/kernel/zarel_display/panel_apl_value";
constexpr size_t kAplTextSize = 128;
constexpr int kAplAttempts = 5;
constexpr auto kAplRetryDelay = std::chrono::milliseconds(2);

void appendTime(std::vector<int32_t>* values, int64_t time) {
    values->push_back(static_cast<int32_t>(static_cast<uint64_t>(time) >> 32));
    values->push_back(static_cast<int32_t>(static_cast<uint64_t>(time) & 0xFFFFFFFFu));
}

}  // namespace

// ---- Feature dispatcher ----

ndk::ScopedAStatus CwbService::getCwbValue(int32_t featureId, const Rect& rect,
                                           std::vector<int32_t>* values, Error* _aidl_return) {
    // The nested request counts the result word of the analysis it runs.
    CwbStats::Request request(mStats, CwbStats::Method::getCwbValue, &rect, nullptr, featureId);
    request.watch(values);
    // Across binder the out-array arrives as zeros of the client's length: it is never input.
    values->clear();
    if (featureId < kFeatureIdFirst || featureId > kFeatureIdLast) {
        ALOGE("%s error ID = %d", "getCwbValue", featureId);
        *_aidl_return = Error::INVALID_ARGUMENT;
        return ndk::ScopedAStatus::ok();
    }
    // The display this request serves, chosen once; mDisplayId keeps the choice for later calls.
    int32_t displayId = mDisplayId;
    auto rgbStep = [&]() {
        Rgb rgb;
        Error word = Error::NONE;
        getRGBValue(displayId, rect, &rgb, &word);
        const uint32_t w = static_cast<uint32_t>(word);
        *_aidl_return = static_cast<Error>(w & 0xFFFF);
        values->push_back(rgb.r);
        values->push_back(rgb.g);
        values->push_back(rgb.b);
        values->push_back(static_cast<int32_t>(w >> 16));
        if (mDebugLog) {
            ALOGE("rgb:[%d %d %d], rgb_state = %d, *_aidl_return:%d", (*values)[0], (*values)[1],
                  (*values)[2], static_cast<int>(w >> 16), static_cast<int>(*_aidl_return));
        }
    };
    switch (featureId) {
        case CWB_RGB_VALUE:
            displayId = kDisplayMain;
            mDisplayId = displayId;
            rgbStep();
            break;
        case CWB_LUMAS_VALUE: {
            ALOGI("MORVIK_AI::CWB_LUMAS_VALUE::in_featureId=%d", featureId);
            float luma = 0.0f;
            *_aidl_return = lumaRequest(displayId, rect, &luma);
            values->push_back(static_cast<int32_t>(luma * 10000.0f));
            if (mDebugLog) {
                ALOGI("lumas:%d, _aidl_return = %d", (*values)[0], static_cast<int>(*_aidl_return));
            }
            break;
        }
        case CWB_RGB_VALUE_SEC:
            ALOGI("MORVIK_AI::CWB_RGB_VALUE_SEC::in_featureId=%d", featureId);
            if (mDisplayIdSec == kNoDisplay) {
                ALOGE("%s error ID = %d", "getCwbValue", kNoDisplay);
                *_aidl_return = Error::INVALID_ARGUMENT;
                return ndk::ScopedAStatus::ok();
            }
            displayId = mDisplayIdSec;
            mDisplayId = displayId;
            rgbStep();
            break;
        default:
            // An id in range with no feature behind it: refused like an id out of range, so that
            // the client never receives the stub's uninitialised result.
            ALOGE("%s default, no choice!", "getCwbValue");
            *_aidl_return = Error::INVALID_ARGUMENT;
            break;
    }
    if (values->empty()) {
        ALOGE("getCwbValue failed FeatureId = %d, _aidl_return = %d", featureId,
              static_cast<int>(*_aidl_return));
        return ndk::ScopedAStatus::ok();
    }

    int loading = kLoadingOne;
    int64_t starttime = 0;
    {
        ATRACE_NAME("starttime");
        std::lock_guard<std::mutex> lock(mCwbMutex);
        starttime = mLastCwbDoneTime;
    }
    {
        std::unique_lock<std::mutex> lock(mLayerChangeMutex);
        const int32_t changes = mInvalidCacheCount;
        if (mDebugLog) ALOGI("getCwbValue mInvalidCacheCount = %d\n", changes);
        if (changes >= 2) {
            if (mDebugLog) ALOGI("LayerChange mInvalidCacheCount = %d\n", changes);
        } else {
            // One wait, no predicate: the next layer change (or the bound) ends it.
            const auto start = std::chrono::steady_clock::now();
            mLayerChangeCond.wait_for(lock, kLayerChangeWait);
            if (std::chrono::steady_clock::now() - start >= kLayerChangeWait && mDebugLog) {
                ALOGI("WaitForLayerChange timeout\n");
            }
        }
    }
    int64_t endtime = 0;
    {
        ATRACE_NAME("endtime");
        endtime = systemTime(SYSTEM_TIME_BOOTTIME);
        DisplayAttributes attributes{};
        if (activeAttributes(displayId, &attributes)) {
            const int64_t vsync = attributes.vsyncPeriod;
            if (endtime - starttime < vsync) starttime = endtime - vsync;
        }
        if (mDebugLog) {
            ALOGI("getCwbValue starttime = %lld, endtime = %lld, diff = %lld",
                  static_cast<long long>(starttime), static_cast<long long>(endtime),
                  static_cast<long long>(endtime - starttime));
        }
        if (mAplReadSupport) panelLoading(displayId, &loading);
    }
    appendTime(values, starttime);
    appendTime(values, endtime);
    values->push_back(loading);
    return ndk::ScopedAStatus::ok();
}

// ---- Panel APL and loading ----

int CwbService::getDisplayPanelAplValue(std::vector<unsigned int>& values) {
    char text[kAplTextSize + 1] = {};
    values.clear();
    int bytes = -1;
    const int fd = open(kAplPath, O_RDONLY);
    if (fd < 0) {
        ALOGE("failed to open %s, errno=%d", kAplPath, errno);
    } else {
        const ssize_t n = read(fd, text, kAplTextSize);
        if (n <= 0) {
            ALOGE("failed to read %s, errno=%d", kAplPath, errno);
        } else {
            bytes = static_cast<int>(n);
        }
        close(fd);
    }
    if (bytes < 0) {
        ALOGE("%s error ret = %d", "getDisplayPanelAplValue", -1);
        return -1;
    }
    // The zero bytes after the text end the parse like any non-hexadecimal character.
    std::istringstream stream(std::string(text, kAplTextSize));
    unsigned int value = 0;
    while (stream >> std::hex >> value) values.push_back(value);
    if (mDebugLog) {
        for (size_t i = 0; i < values.size(); ++i) {
            ALOGE("%s value[%zu]= [%x]", "getDisplayPanelAplValue", i, values[i]);
        }
    }
    return bytes;
}

int32_t CwbService::sendQServiceQuery(int32_t displayId, uint32_t command) {
    ::android::sp<qService::IQService> binder = getBinder();
    ::android::Parcel in;
    ::android::Parcel out;
    in.writeInt32(displayId);
    if (binder != nullptr) binder->dispatch(command, &in, &out);
    out.setDataPosition(0);
    return out.readInt32();
}

ndk::ScopedAStatus CwbService::getDisplayPanelLoading(int* loading) {
    panelLoading(mDisplayId, loading);
    return ndk::ScopedAStatus::ok();
}

void CwbService::panelLoading(int32_t displayId, int* loading) {
    std::vector<unsigned int> apl = {0, 0, 0};
    int32_t panelApl = 0;
    bool readFailed = false;
    if (mRgbCacheHit) {
        panelApl = mPanelApl;
    } else {
        bool ok = false;
        for (int attempt = 0; attempt < kAplAttempts && !ok; ++attempt) {
            ok = getDisplayPanelAplValue(apl) >= 1 && !apl.empty();
            if (!ok) std::this_thread::sleep_for(kAplRetryDelay);
        }
        const unsigned int high = apl.size() > 0 ? apl[0] : 0;
        const unsigned int low = apl.size() > 1 ? apl[1] : 0;
        panelApl = static_cast<int32_t>(((high << 8) | low) & 0xFFF);
        mPanelApl = panelApl;
        readFailed = !ok;
    }
    const int32_t uirState = sendQServiceQuery(displayId, kQServiceUirState);
    const int32_t panelNit = sendQServiceQuery(displayId, kQServicePanelNit);
    if (readFailed) {
        *loading = kLoadingOne;
        ALOGE("Panel not support apl read or getDisplayPanelAplValue timeout %dms.\n", 10);
        return;
    }
    const int32_t renderIntent = mRenderIntentMain;
    int32_t result = kLoadingOne;
    if (uirState != 0 && panelNit >= 1250) {
        const int32_t t = (250000 / panelNit) * 1000000;
        result = t + panelApl * ((kLoadingOne - t) / 4095);
    } else if (uirState != 0 && panelNit >= 800) {
        result = 200000000 - 24420 * panelApl;
    } else if (renderIntent == 307 || renderIntent == 308) {
        result = 122000000 - 5372 * panelApl;
    } else if (renderIntent == 303 || renderIntent == 304) {
        result = 105000000 - 1221 * panelApl;
    }
    *loading = result;
    if (mDebugLog) {
        ALOGI("PanelLoading[%d] RenderIntent[%d] UirState[%d] PanelNit[%d]\n", result, renderIntent,
              uirState, panelNit);
    }
}

// ---- Shared-memory crop export ----

ndk::ScopedAStatus CwbService::initializeSharedMemory(int32_t /*id*/, int32_t size,
                                                      const ndk::ScopedFileDescriptor& fd,
                                                      Error* _aidl_return) {
    CwbStats::Request request(mStats, CwbStats::Method::initializeSharedMemory, nullptr, nullptr,
                              size);
    std::lock_guard<std::mutex> lock(mSharedMemoryMutex);
    ALOGE("MORVIK_AI::initializeSharedMemory Initial shared memory");
    const int descriptor = fd.get();
    if (descriptor == -1) {
        ALOGE("MORVIK_AI::Invalid in_fd received");
        return ndk::ScopedAStatus::fromServiceSpecificError(-1);
    }
    // The same region is the same file: the descriptor is the stub's duplicate, its number
    // reused from call to call.
    if (mSharedMemory.mapped() && mSharedMemory.maps(descriptor)) {
        *_aidl_return = Error::NONE;
        return ndk::ScopedAStatus::ok();
    }
    if (mSharedMemory.mapped()) {
        ALOGE("MORVIK_AI::Release the old mapping");
        const int oldFd = mSharedMemory.fd();
        if (mSharedMemory.unmap() != 0) ALOGW("MORVIK_AI::munmap failed for fd=%d", oldFd);
    }
    ALOGE("MORVIK_AI::CwbService Create shared memory");
    // A file smaller than the size declared, or one that cannot be sized, is refused like a
    // failed mapping: touching the missing pages later would kill the composer.
    const int error = size > 0 ? mSharedMemory.map(descriptor, static_cast<size_t>(size)) : EINVAL;
    if (error != 0) {
        ALOGE("MORVIK_AI::mmap failed for fd=%d: %s", descriptor, strerror(error));
        return ndk::ScopedAStatus::fromServiceSpecificError(-1);
    }
    ALOGI("MORVIK_AI::mmap success at %p for fd=%d", mSharedMemory.address(), descriptor);
    *_aidl_return = Error::NONE;
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus CwbService::getSharedData(int32_t featureId, const Rect& rect,
                                             const ndk::ScopedFileDescriptor& /*fd*/,
                                             int32_t bufferSize, std::vector<int32_t>* values,
                                             Error* _aidl_return) {
    CwbStats::Request request(mStats, CwbStats::Method::getSharedData, &rect, _aidl_return,
                              featureId);
    request.watch(values);
    std::lock_guard<std::mutex> lock(mSharedMemoryMutex);
    if (mDebugLog) ALOGD("MORVIK_AI::CwbService::getSharedData-in_FeatureId = %d", featureId);
    const int32_t displayId = mDisplayId;
    Rect checked{};
    if (!checkInputRect(displayId, rect, checked)) {
        ALOGE("Invalid input rectangle");
        *_aidl_return = Error::INVALID_ARGUMENT;
        return ndk::ScopedAStatus::ok();
    }
    {
        std::lock_guard<std::mutex> aiLock(mAiRectMutex);
        mAiRect = checked;
    }
    const bool reached = mScreenCountReached;
    values->clear();
    values->push_back(reached ? 1 : 0);
    values->push_back(checked.right - checked.left);
    values->push_back(checked.bottom - checked.top);
    DisplayAttributes attributes{};
    activeAttributes(displayId, &attributes);
    values->push_back(attributes.xRes);
    values->push_back(attributes.yRes);

    if (reached) {
        if (featureId == CWB_LEGACY_VALUE || featureId == CWB_AI_VALUE) mLightModeID = featureId;
    } else if (featureId == CWB_LEGACY_VALUE || featureId == CWB_AI_VALUE) {
        if (mLightModeID != featureId) {
            ALOGI(featureId == CWB_LEGACY_VALUE
                          ? "MORVIK_AI::CwbService::mBufferCacheValid CWB_LEGACY_VALUE updated to "
                            "%d"
                          : "MORVIK_AI::CwbService::mBufferCacheValid CWB_AI_VALUE updated to %d",
                  mBufferCacheValid.load());
            mBufferCacheValid = false;
        }
        mLightModeID = featureId;
    } else if (featureId == CWB_AI_BUFFER_VALUE) {
        const int ret = getAiBufferFromCwb(0, rect, bufferSize, nullptr);
        if (ret == -1) {
            ALOGE("MORVIK_AI::CwbService::Error ret=%d", ret);
            *_aidl_return = Error::INVALID_ARGUMENT;
            return ndk::ScopedAStatus::fromServiceSpecificError(-1);
        }
    }
    *_aidl_return = Error::NONE;
    return ndk::ScopedAStatus::ok();
}

int CwbService::getAiBufferFromCwb(int /*id*/, const Rect& rect, int bufferSize,
                                   std::vector<int>* /*values*/) {
    if (!mSharedMemory.mapped()) {
        ALOGE("MORVIK_AI::The shared space has not been initialized yet");
        mStats.count(CwbStats::Counter::CopyRefusals);
        return -1;
    }
    // The capture buffer must not be replaced or freed while the crop reads it.
    std::lock_guard<TimedMutex> requestLock(mRequestLock);
    const CwbBufferInfo& info = mCwbBufferHandle;
    if (info.base == nullptr) {
        ALOGE("MORVIK_AI::The screenshot data is empty mCwbBufferHandle.base%d", 0);
        mStats.count(CwbStats::Counter::CopyRefusals);
        return -1;
    }
    const int64_t timestamp = systemTime(SYSTEM_TIME_BOOTTIME);
    const size_t mapped = mSharedMemory.length();
    // An unsealed file may have been shrunk since it was mapped: write only what it still backs.
    const size_t backed = mSharedMemory.backedLength();
    if (backed >= sizeof(timestamp)) mSharedMemory.write(0, &timestamp, sizeof(timestamp));
    ++mCurrentScreenCount;
    // Counted attempts can reach the limit without a completed copy; test after each of them.
    auto countLimit = [this]() REQUIRES(mSharedMemoryMutex) {
        if (mCurrentScreenCount < mScreenCountLimit) return;
        if (mDebugLog) ALOGE("MORVIK_AI::mCurrentScreenCount=%d", mCurrentScreenCount);
        mCurrentScreenCount = 0;
        mScreenCountReached = true;
        mStats.count(CwbStats::Counter::Pauses);
    };

    if (mDebugLog) {
        ALOGD("MORVIK_AI::CwbService::BufferHandle[unaligned_width=%d, height=%d, width=%d] || "
              "Rect[right=%d, left=%d, bottom=%d, top=%d]",
              static_cast<int>(info.unaligned_width), static_cast<int>(info.height),
              static_cast<int>(info.width), rect.right, rect.left, rect.bottom, rect.top);
    }
    if (!rectInsideBuffer(info, rect)) {
        ALOGE("MORVIK_AI::crop [%d,%d,%d,%d] lies outside the %dx%d capture buffer", rect.left,
              rect.top, rect.right, rect.bottom, static_cast<int>(info.unaligned_width),
              static_cast<int>(info.height));
        mStats.count(CwbStats::Counter::CopyRefusals);
        countLimit();
        return -1;
    }
    // Only now is the client's rectangle known to lie in the buffer, so its extent cannot overflow.
    const int32_t W = rect.right - rect.left;
    const int32_t H = rect.bottom - rect.top;
    const int64_t crop = static_cast<int64_t>(H) * W * 3;
    const int64_t total = crop + static_cast<int64_t>(kRecordOverhead);
    if (bufferSize < 0 || total > bufferSize || static_cast<uint64_t>(total) > mapped) {
        ALOGE("MORVIK_AI::total data size %zu (crop %zu + timestamp %zu + id %zu) > buffer size %d",
              static_cast<size_t>(total), static_cast<size_t>(crop), sizeof(int64_t),
              sizeof(uint32_t), bufferSize);
        mStats.count(CwbStats::Counter::CopyRefusals);
        countLimit();
        return -1;
    }
    if (static_cast<uint64_t>(total) > backed) {
        ALOGE("MORVIK_AI::shared memory fd=%d holds %zu of %zu mapped bytes; record of %zu refused",
              mSharedMemory.fd(), backed, mapped, static_cast<size_t>(total));
        countLimit();
        return -1;
    }
    const auto* base = static_cast<const uint8_t*>(info.base);
    const size_t rowBytes = static_cast<size_t>(W) * 3;
    const size_t origin =
            (static_cast<size_t>(rect.top) * info.width + static_cast<size_t>(rect.left)) * 3;
    if (!mSharedMemory.writeRows(kRecordPixelsOffset, base + origin,
                                 static_cast<size_t>(info.width) * 3, rowBytes,
                                 static_cast<size_t>(H)) ||
        !mSharedMemory.write(kRecordPixelsOffset + static_cast<size_t>(crop), &kRecordMarker,
                             sizeof(kRecordMarker))) {
        ALOGE("MORVIK_AI::shared memory fd=%d write of %zu bytes failed: errno %d",
              mSharedMemory.fd(), static_cast<size_t>(total), errno);
        countLimit();
        return -1;
    }
    if (mDebugLog) ALOGD("MORVIK_AI::CwbService::display The screen is sliding - Copy screenshot");
    msync(mSharedMemory.address(), static_cast<size_t>(total), MS_SYNC);
    mStats.count(CwbStats::Counter::Copies);
    countLimit();
    return 1;
}

ndk::ScopedAStatus CwbService::getScreenResolution(int32_t /*id*/, std::vector<int32_t>* values,
                                                   Error* _aidl_return) {
    CwbStats::Request request(mStats, CwbStats::Method::getScreenResolution, nullptr, _aidl_return);
    request.watch(values);
    int32_t height = 0;
    int32_t width = 0;
    {
        std::lock_guard<TimedMutex> lock(mRequestLock);
        // Before the first capture there is no buffer: report 0 x 0.
        if (mCwbBufferHandle.base != nullptr) {
            height = static_cast<int32_t>(mCwbBufferHandle.height);
            width = static_cast<int32_t>(mCwbBufferHandle.width);
        }
    }
    values->assign({height, width});
    ALOGI("MORVIK_AI::CwbService::getScreenResolution resolution height=%d || width=%d", height,
          width);
    *_aidl_return = Error::NONE;
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus CwbService::releaseSharedMemory(int32_t /*id*/, int32_t /*flags*/,
                                                   Error* _aidl_return) {
    CwbStats::Request request(mStats, CwbStats::Method::releaseSharedMemory, nullptr, _aidl_return);
    std::lock_guard<std::mutex> lock(mSharedMemoryMutex);
    releaseSharedMemoryLocked();
    *_aidl_return = Error::NONE;
    return ndk::ScopedAStatus::ok();
}

int CwbService::releaseSharedMemoryLocked() {
    ALOGE("MORVIK_AI::CwbService Release shared memory");
    return mSharedMemory.unmap();
}

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
