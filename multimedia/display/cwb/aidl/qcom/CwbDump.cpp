// dumpsys output: settings, state, display configurations, capture buffers, caches and the
// request statistics. A capture in flight holds the request lock for up to a second; dump waits
// for it a few milliseconds at most and otherwise leaves out what that lock guards. With
// "--session" it prints what the service has seen as a cwb-sim session instead, so that a field
// report can be played again on a desk.
#define LOG_TAG "CwbService"

#include <cutils/properties.h>
#include <unistd.h>
#include <utils/Timers.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
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

// The settings the constructor reads; read-only properties, so reading them again gives the same.
constexpr const char* kSettings[] = {
        "rotate",           "rotate_main",   "rotate_sec", "postprocess",    "roi",
        "aod_forbidden",    "fod_forbidden", "display_id", "display_id_sec", "ct_range",
        "apl_read_support",
};

// WxH@HZ with the rate written precisely enough that cwb-sim gets the same vsync period back.
template <typename Attributes>
void appendPanel(std::string* out, const char* name, const std::vector<Attributes>& configs) {
    appendf<64>(out, "panel %s", name);
    if (configs.empty()) out->append(" none");
    for (const Attributes& c : configs) {
        const double hz = c.vsyncPeriod > 0 ? 1e9 / c.vsyncPeriod : 60.0;
        char rate[32] = "60";
        for (int digits = 2; digits <= 17; ++digits) {
            snprintf(rate, sizeof(rate), "%.*g", digits, hz);
            if (static_cast<int32_t>(1e9 / strtod(rate, nullptr)) == c.vsyncPeriod) break;
        }
        appendf<96>(out, " %dx%d@%s", c.xRes, c.yRes, rate);
    }
    out->append("\n");
}

void appendWeights(std::string* out, const char* panel, int32_t count,
                   const std::vector<int32_t>& weights) {
    if (count == 0 && weights.empty()) return;
    appendf<96>(out, "file weights %s json {\"count\":%d,\"Weights\":[", panel, count);
    for (size_t i = 0; i < weights.size(); ++i) {
        appendf<16>(out, "%s%d", i == 0 ? "" : ",", weights[i]);
    }
    out->append("]}\n");
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

binder_status_t CwbService::dump(int fd, const char** args, uint32_t numArgs) {
    for (uint32_t i = 0; i < numArgs; ++i) {
        if (args[i] != nullptr && strcmp(args[i], "--session") == 0) {
            return writeAll(fd, sessionDump()) ? STATUS_OK : STATUS_UNKNOWN_ERROR;
        }
    }
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

std::string CwbService::sessionDump() {
    std::string out;
    out.append("# cwb-sim session from ").append(ICwbService::descriptor);
    out.append(
            "/default: the settings it read, both displays and what it was last asked, each\n"
            "# answer as the device gave it (expect). Play it with a screenshot of the moment:\n"
            "#   cwb-sim SESSION --frame SCREENSHOT.png\n");
    for (const char* setting : kSettings) {
        const std::string name = std::string("ro.vendor.zarel.display.cwb.") + setting;
        char value[PROPERTY_VALUE_MAX] = {};
        if (property_get(name.c_str(), value, "") > 0) {
            appendf<256>(&out, "prop %s %s\n", name.c_str(), value);
        }
    }
    const bool configs = mConfigInitialized;
    if (configs) {
        appendPanel(&out, "main", mConfigs);
        appendPanel(&out, "sec", mConfigsSec);
    } else {
        out.append("# display configurations not read yet: the simulator's panels apply\n");
    }
    appendWeights(&out, "main", weightspos_count, weightspos);
    appendWeights(&out, "sec", weightspos_count_sec, weightspos_sec);
    out.append("boot\n");

    // The state before the oldest kept event: as the oldest event of each kind found it, or as
    // it is now where no event of that kind is kept.
    CwbStats::Record records[CwbStats::kHistory];
    const size_t n = mStats.history(records, CwbStats::kHistory);
    auto oldest = [&](CwbStats::Event event) -> const CwbStats::Record* {
        for (size_t k = n; k-- > 0;) {
            if (records[k].method == CwbStats::kEventBase + static_cast<int32_t>(event)) {
                return &records[k];
            }
        }
        return nullptr;
    };
    const CwbStats::Record* power = oldest(CwbStats::Event::setPowerMode);
    const int32_t powerMain = power != nullptr ? power->values[1] : mPowerModeMain.load();
    const int32_t powerSec = power != nullptr ? power->values[2] : mPowerModeSec.load();
    const bool colours = oldest(CwbStats::Event::notifyColorModeChange) == nullptr;
    const bool active = oldest(CwbStats::Event::notifyConfigChange) == nullptr;
    const struct {
        int32_t display;
        int32_t power;
        uint32_t config;
        int32_t mode;
        int32_t intent;
    } displays[] = {
            {mDisplayIdMain, powerMain, mActiveConfig, mColorModeMain, mRenderIntentMain},
            {mDisplayIdSec, powerSec, mActiveConfigSec, mColorModeSec, mRenderIntentSec},
    };
    for (const auto& d : displays) {
        if (d.display == kNoDisplay) continue;
        if (configs && active && d.config != 0) {
            appendf<96>(&out, "host notifyConfigChange %d %u\n", d.display, d.config);
        }
        if (d.power != kPowerOff)
            appendf<96>(&out, "host setPowerMode %d %d\n", d.display, d.power);
        if (colours && (d.mode != kColorModeNative || d.intent != 0)) {
            appendf<96>(&out, "host notifyColorModeChange %d %d %d\n", d.display, d.mode, d.intent);
        }
    }
    if (oldest(CwbStats::Event::aodLayerExist) == nullptr && mAodLayerExist) {
        out.append("host aodLayerExist 1\n");
    }
    if (oldest(CwbStats::Event::fodLayerExist) == nullptr && mFodLayerExist) {
        out.append("host fodLayerExist 1\n");
    }
    if (oldest(CwbStats::Event::updateCwbStatus) == nullptr && !mCwbStatus) {
        out.append("host updateCwbStatus 0\n");
    }
    mStats.printSession(&out);
    return out;
}

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
