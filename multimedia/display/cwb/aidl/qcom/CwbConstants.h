// The service's vocabulary: display selections, power modes, qservice commands, feature ids,
// capture modes, the shared-memory record layout and the time constants. Named once, here.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace aidl::vendor::zarel::hardware::cwb::implementation {

// Display selections (`mDisplayId`): which panel a request samples.
constexpr int32_t kDisplayMain = 0;
constexpr int32_t kDisplaySecondary = 3;
constexpr int32_t kNoDisplay = -1;

// Power modes as the composer reports them.
constexpr int kPowerOff = 0;
constexpr int kPowerDoze = 1;
constexpr int kPowerDozeSuspend = 3;

// qservice transaction codes.
constexpr uint32_t kQServiceSetColorMode = 39;
constexpr uint32_t kQServiceAplSetup = 302;
constexpr uint32_t kQServiceUirState = 303;
constexpr uint32_t kQServicePanelNit = 304;

// Colour mode and render intent that switch the display's post-processing off; the mode is
// also every display's colour mode until the composer reports one.
constexpr int32_t kColorModeNative = 7;
constexpr int32_t kRenderIntentNoPostProcess = 300;

// getCwbValue feature ids; ids outside [kFeatureIdFirst, kFeatureIdLast] are refused.
constexpr int32_t CWB_RGB_VALUE = 1;
constexpr int32_t CWB_LUMAS_VALUE = 2;
constexpr int32_t CWB_RGB_VALUE_SEC = 3;
constexpr int32_t kFeatureIdFirst = 1;
constexpr int32_t kFeatureIdLast = 14;

// getSharedData feature ids: the two capture modes (`mLightModeID`) and the crop copy.
constexpr int32_t CWB_LEGACY_VALUE = 2;  // the writeback covers the analysed rectangle
constexpr int32_t CWB_AI_VALUE = 3;      // it covers the rectangle last given to getSharedData
constexpr int32_t CWB_AI_BUFFER_VALUE = 5;

// Shared-memory record: boot-time timestamp, RGB_888 crop rows, then the end marker.
constexpr size_t kRecordPixelsOffset = sizeof(int64_t);
constexpr uint32_t kRecordMarker = 0xDEADBEEF;
constexpr size_t kRecordOverhead = kRecordPixelsOffset + sizeof(kRecordMarker);

// A request waits this long for the one before it, then answers busy.
constexpr auto kRequestLockTimeout = std::chrono::milliseconds(50);
// Captures closer together than this are refused (the capture gate).
constexpr int64_t kCaptureGateNs = 50000000;
// The dispatcher waits this long for the next layer change.
constexpr auto kLayerChangeWait = std::chrono::milliseconds(50);
// A writeback that has not completed after this long has failed.
constexpr int64_t kWritebackTimeoutNs = 1000000000;

}  // namespace aidl::vendor::zarel::hardware::cwb::implementation
