// dumpsys output: settings, state, display configurations, capture buffers, caches and the
// request statistics. A capture in flight holds the request lock for up to a second; dump waits
// for it a few milliseconds at most and otherwise leaves out what that lock guards.
#define LOG_TAG "CwbService"

#include <unistd.h>
#include <utils/Timers.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <string>

#include "CwbService.h"
#include "DumpText.h"

namespace aidl::vendor::zarel::hardware::cwb::implementation {

namespace {

constexpr auto kDumpLockWait = std::chrono::milliseconds(5);

template <typename Attributes>
void appendConfigs(std::string* out, const char* name, const std::vector<Attributes>& configs,
                   uint32_t active) {
    if (configs.empty()) {
        appendf<512>(out, "  %s: none\n", name);
        return;
    }
    appendf<512>(out, "  %s: %zu, active %u\n", name, configs.size(), active);
    for (size_t i = 0; i < configs.size(); ++i) {
        appendf<512>(out, "    %c%zu: %dx%d, vsync %d ns\n",
                     i == active % configs.size() ? '*' : ' ', i, configs[i].xRes, configs[i].yRes,
                     configs[i].vsyncPeriod);
    }
}

void appendBuffer(std::string* out, const char* name, const CwbBufferInfo& info) {
    if (info.base == nullptr) {
        appendf<512>(out, "  %s: none\n", name);
        return;
    }
    appendf<512>(out, "  %s: %llux%llu, pitch %llu px, %llu bytes, format %d\n", name,
                 static_cast<unsigned long long>(info.unaligned_width),
                 static_cast<unsigned long long>(info.height),
                 static_cast<unsigned long long>(info.width),
                 static_cast<unsigned long long>(info.size), info.format);
}

bool writeAll(int fd, const std::string& text) {
    size_t done = 0;
    while (done < text.size()) {
        const ssize_t n = write(fd, text.data() + done, text.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        done += static_cast<size_t>(n);
    }
    return true;
}

}  // namespace

binder_status_t CwbService::dump(int fd, const char** /*args*/, uint32_t /*numArgs*/) {
    const nsecs_t now = systemTime(SYSTEM_TIME_MONOTONIC);
    std::string out;
    appendf<512>(&out, "%s/default, interface version %d\n", ICwbService::descriptor,
                 ICwbService::version);

    out.append("Settings:\n");
    appendf<512>(&out, "  rotate: %d (main %d, sec %d)\n", mCwbRotate.load(), mCwbRotateMain,
                 mCwbRotateSec);
    appendf<512>(&out, "  roi: %d, aod forbidden: %d, fod forbidden: %d, apl read: %d\n",
                 mRoiSupport, mAodForbidden, mFodForbidden, mAplReadSupport);
    appendf<512>(&out, "  weights: main %d (%zu values), sec %d (%zu values)\n", weightspos_count,
                 weightspos.size(), weightspos_count_sec, weightspos_sec.size());
    const ColorTempHelper& sampler = mColorTempHelper;
    appendf<512>(&out, "  sampler: %s, ct_range %d,%d,%d,%d\n", sampler.mEnabled ? "on" : "off",
                 sampler.mCtRange[0], sampler.mCtRange[1], sampler.mCtRange[2],
                 sampler.mCtRange[3]);

    out.append("Status:\n");
    appendf<512>(&out, "  cwb status: %d, enabled: %d, serving: %d\n", mCwbStatus.load(),
                 mCwbEnabled.load(), serviceStatus());
    appendf<512>(&out,
                 "  post process: %d, debug log: %d, dump: %d, post processing disabled: %d\n",
                 mPostProcess.load(), mDebugLog.load(), mDump.load(), mDisablePostProcessed.load());
    appendf<512>(&out, "  power mode: main %d, sec %d, cached %d\n", mPowerModeMain.load(),
                 mPowerModeSec.load(), mCachePowerMode.load());
    appendf<512>(&out, "  colour mode: main %d intent %d, sec %d intent %d\n",
                 mColorModeMain.load(), mRenderIntentMain.load(), mColorModeSec.load(),
                 mRenderIntentSec.load());
    appendf<512>(&out, "  aod layer: %d, fod layer: %d, panel apl: %d\n", mAodLayerExist.load(),
                 mFodLayerExist.load(), mPanelApl.load());
    appendf<512>(&out, "  frame current: %d, layer changes since capture: %d\n",
                 mBufferCacheValid.load(), mInvalidCacheCount.load());
    const int32_t mode = mLightModeID;
    appendf<512>(&out, "  capture mode: %d (%s)\n", mode,
                 mode == CWB_LEGACY_VALUE ? "legacy"
                 : mode == CWB_AI_VALUE   ? "AI"
                                          : "unknown");

    out.append("Displays:\n");
    appendf<512>(&out, "  serving: %d, main id: %d, secondary id: %d\n", mDisplayId.load(),
                 mDisplayIdMain, mDisplayIdSec);
    if (mConfigInitialized) {
        appendConfigs(&out, "main configurations", mConfigs, mActiveConfig);
        appendConfigs(&out, "secondary configurations", mConfigsSec, mActiveConfigSec);
    } else {
        out.append("  configurations: not read yet\n");
    }

    {
        std::lock_guard<std::mutex> lock(mCallbackMutex);  // leaf, never held across a call
        appendf<512>(&out, "Callbacks: %zu\n", mCallbacks.size());
    }
    {
        std::lock_guard<std::mutex> lock(mCwbMutex);  // held only briefly, never while waiting
        appendf<512>(&out, "Last completion: %s", mLastCwbTime == 0 ? "none\n" : "");
        if (mLastCwbTime != 0) {
            appendf<512>(&out, "%.3f s ago, %s\n", static_cast<double>(now - mLastCwbTime) / 1e9,
                         mCwbRequestPending ? "a request is waiting" : "none waiting");
        }
    }

    // A crop holds this lock while it waits for the request lock: never block on it.
    if (mSharedMemoryMutex.try_lock()) {
        appendf<512>(&out, "Shared memory: %zu bytes mapped%s, copies since pause %d, paused %d\n",
                     mSharedMemory.length(), mSharedMemory.sealed() ? " (sealed)" : "",
                     mCurrentScreenCount, mScreenCountReached.load());
        mSharedMemoryMutex.unlock();
    } else {
        appendf<512>(&out, "Shared memory: busy, paused %d\n", mScreenCountReached.load());
    }

    if (mRequestLock.try_lock_for(kDumpLockWait)) {
        AdoptedLock lock(mRequestLock);
        out.append("Capture buffers:\n");
        appendBuffer(&out, "main", mCwbBufferHandle);
        appendBuffer(&out, "secondary", mCwbBufferHandle_sec);
        appendf<512>(&out, "Caches: rgb %zu, luma %zu, histogram %zu\n", mRgbCache.size(),
                     mLumaCache.size(), mHistogramCache.size());
        appendf<512>(&out,
                     "Request state: power mode %d, aod captures %d, last verdicts pure %d, "
                     "black/white %d\n",
                     mPowerMode, mAodForbiddenCnt, sampler.mPure, sampler.mBlackWhite);
    } else {
        out.append(
                "Request lock busy (capture in flight): capture buffers, caches and request "
                "state not shown\n");
    }

    mStats.print(&out, now);
    return writeAll(fd, out) ? STATUS_OK : STATUS_UNKNOWN_ERROR;
}

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
