// The vendor display-config stand-in must behave as generated NDK code does for the library:
// objects made with SharedRefBase::make are reachable through their binder, and a binder of
// one interface is never handed out as another.
#include <aidl/vendor/qti/hardware/display/config/BnDisplayConfig.h>
#include <aidl/vendor/qti/hardware/display/config/BnDisplayConfigCallback.h>
#include <config/client_interface.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using ::aidl::android::hardware::common::NativeHandle;
using ::aidl::vendor::qti::hardware::display::config::Attributes;
using ::aidl::vendor::qti::hardware::display::config::BnDisplayConfig;
using ::aidl::vendor::qti::hardware::display::config::BnDisplayConfigCallback;
using ::aidl::vendor::qti::hardware::display::config::CameraSmoothOp;
using ::aidl::vendor::qti::hardware::display::config::Concurrency;
using ::aidl::vendor::qti::hardware::display::config::DisplayType;
using ::aidl::vendor::qti::hardware::display::config::IDisplayConfig;
using ::aidl::vendor::qti::hardware::display::config::IDisplayConfigCallback;
using ::aidl::vendor::qti::hardware::display::config::Rect;
using ::aidl::vendor::qti::hardware::display::config::TUIEventType;
using ::ndk::ScopedAStatus;

class RecordingCallback : public BnDisplayConfigCallback {
  public:
    ScopedAStatus notifyCWBBufferDone(int32_t error, const NativeHandle& buffer) override {
        errors.push_back(error);
        fdCounts.push_back(buffer.fds.size());
        ints = buffer.ints;
        return ScopedAStatus::ok();
    }
    ScopedAStatus notifyQsyncChange(bool, int32_t, int32_t) override { return ScopedAStatus::ok(); }
    ScopedAStatus notifyIdleStatus(bool) override { return ScopedAStatus::ok(); }
    ScopedAStatus notifyCameraSmoothInfo(CameraSmoothOp, int32_t) override {
        return ScopedAStatus::ok();
    }
    ScopedAStatus notifyResolutionChange(int32_t, const Attributes&) override {
        return ScopedAStatus::ok();
    }
    ScopedAStatus notifyFpsMitigation(int32_t, const Attributes&, Concurrency) override {
        return ScopedAStatus::ok();
    }
    ScopedAStatus notifyTUIEventDone(int32_t, DisplayType, TUIEventType) override {
        return ScopedAStatus::ok();
    }

    std::vector<int32_t> errors;
    std::vector<size_t> fdCounts;
    std::vector<int32_t> ints;
};

class OnePanel : public BnDisplayConfig {
  public:
    ScopedAStatus getConfigCount(DisplayType dpy, int32_t* count) override {
        *count = dpy == DisplayType::PRIMARY ? 1 : 0;
        return ScopedAStatus::ok();
    }
    ScopedAStatus getDisplayAttributes(int32_t index, DisplayType dpy, Attributes* attr) override {
        if (index != 0 || dpy != DisplayType::PRIMARY) {
            return ScopedAStatus::fromExceptionCode(EX_ILLEGAL_ARGUMENT);
        }
        attr->xRes = 1080;
        attr->yRes = 2400;
        return ScopedAStatus::ok();
    }
    ScopedAStatus setCWBOutputBuffer(const std::shared_ptr<IDisplayConfigCallback>& callback,
                                     DisplayType, const Rect& rect, bool,
                                     const NativeHandle& buffer) override {
        lastRect = rect;
        // The composer answers once the frame is written back.
        return callback->notifyCWBBufferDone(0, buffer);
    }
    Rect lastRect;
};

TEST(AidlDisplayConfigTest, CallbackReachableThroughItsBinder) {
    auto callback = ::ndk::SharedRefBase::make<RecordingCallback>();
    ::ndk::SpAIBinder binder = callback->asBinder();
    std::shared_ptr<IDisplayConfigCallback> remote = IDisplayConfigCallback::fromBinder(binder);
    ASSERT_EQ(remote, callback);
    EXPECT_EQ(std::string(binder.get()->descriptor),
              "vendor.qti.hardware.display.config.IDisplayConfigCallback");
    EXPECT_EQ(IDisplayConfig::fromBinder(binder), nullptr);
    EXPECT_EQ(IDisplayConfigCallback::fromBinder(::ndk::SpAIBinder()), nullptr);

    int32_t version = 0;
    EXPECT_TRUE(remote->getInterfaceVersion(&version).isOk());
    EXPECT_EQ(version, 13);
}

TEST(AidlDisplayConfigTest, WritebackRequestCarriesHandleToCallback) {
    auto config = ::ndk::SharedRefBase::make<OnePanel>();
    std::shared_ptr<IDisplayConfig> remote = IDisplayConfig::fromBinder(config->asBinder());
    ASSERT_EQ(remote, config);
    EXPECT_EQ(IDisplayConfigCallback::fromBinder(config->asBinder()), nullptr);

    int32_t count = -1;
    Attributes attr;
    EXPECT_TRUE(remote->getConfigCount(DisplayType::PRIMARY, &count).isOk());
    EXPECT_EQ(count, 1);
    EXPECT_TRUE(remote->getDisplayAttributes(0, DisplayType::PRIMARY, &attr).isOk());
    EXPECT_EQ(attr.xRes, 1080);
    EXPECT_EQ(attr.yRes, 2400);
    EXPECT_EQ(attr.panelType,
              ::aidl::vendor::qti::hardware::display::config::DisplayPortType::DEFAULT);
    ScopedAStatus bad = remote->getDisplayAttributes(1, DisplayType::PRIMARY, &attr);
    EXPECT_EQ(bad.getExceptionCode(), EX_ILLEGAL_ARGUMENT);

    auto callback = ::ndk::SharedRefBase::make<RecordingCallback>();
    NativeHandle buffer;
    buffer.fds.emplace_back(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    buffer.ints = {4096, 7};
    const Rect rect{0, 0, 1080, 2400};
    EXPECT_TRUE(remote->setCWBOutputBuffer(IDisplayConfigCallback::fromBinder(callback->asBinder()),
                                           DisplayType::PRIMARY, rect, true, buffer)
                        .isOk());
    EXPECT_EQ(config->lastRect, rect);
    EXPECT_NE(config->lastRect, (Rect{0, 0, 1080, 2399}));
    EXPECT_EQ(callback->errors, std::vector<int32_t>{0});
    EXPECT_EQ(callback->fdCounts, std::vector<size_t>{1});
    EXPECT_EQ(callback->ints, (std::vector<int32_t>{4096, 7}));
}

class QsyncOnly : public DisplayConfig::ConfigCallback {
  public:
    void NotifyQsyncChange(bool enabled, int32_t rate, int32_t qsyncRate) override {
        calls.emplace_back(enabled, rate + qsyncRate);
    }
    std::vector<std::pair<bool, int32_t>> calls;
};

TEST(AidlDisplayConfigTest, LegacyCallbackDefaultsIgnoreOtherEvents) {
    QsyncOnly impl;
    DisplayConfig::ConfigCallback& base = impl;
    base.NotifyCWBBufferDone(0, nullptr);
    base.NotifyIdleStatus(true);
    base.NotifyCameraSmoothInfo(1, 30);
    base.NotifyQsyncChange(true, 120, 60);
    EXPECT_EQ(impl.calls, (std::vector<std::pair<bool, int32_t>>{{true, 180}}));
}

}  // namespace
