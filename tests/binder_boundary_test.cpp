// The service as a client in another process reaches it: through the generated proxy and stub,
// with callbacks, descriptors and out-values crossing a marshalling binder.
#include <android/binder_manager.h>
#include <host/binder_process.h>
#include <sys/mman.h>
#include <unistd.h>

#include "skeleton_helpers.h"

namespace cwbtest {
namespace {

using aidl::vendor::zarel::hardware::cwb::ICwbService;
using host::binder::ProcessScope;

class BinderBoundaryTest : public ServiceTest {
  protected:
    void TearDown() override {
        client.reset();
        ServiceTest::TearDown();
    }
    // The service as the client process gets it from the service manager.
    std::shared_ptr<ICwbService> connect() {
        ProcessScope in(client);
        return ICwbService::fromBinder(ndk::SpAIBinder(
                AServiceManager_checkService("vendor.zarel.hardware.cwb.ICwbService/default")));
    }
    // A sealable memfd of the client's, with its first 8 bytes zeroed.
    static ndk::ScopedFileDescriptor region(size_t size) {
        ndk::ScopedFileDescriptor fd(memfd_create("cwb_boundary", MFD_CLOEXEC | MFD_ALLOW_SEALING));
        EXPECT_EQ(0, ftruncate(fd.get(), static_cast<off_t>(size)));
        return fd;
    }
    static int64_t stamp(const ndk::ScopedFileDescriptor& fd) {
        int64_t t = 0;
        EXPECT_EQ(static_cast<ssize_t>(sizeof(t)), pread(fd.get(), &t, sizeof(t), 0));
        return t;
    }
    std::shared_ptr<host::binder::Process> client = host::binder::newProcess("client");
};

// The stub makes a new proxy object for every incoming callback; the binder is what stays.
TEST_F(BinderBoundaryTest, UnregisterMatchesTheCallbacksBinder) {
    boot();
    auto callback = RecordingCallback::make();
    {
        ProcessScope in(client);
        std::shared_ptr<ICwbService> proxy = connect();
        ASSERT_TRUE(proxy != nullptr && proxy->isRemote());
        Error error = Error::FAILED;
        ASSERT_TRUE(proxy->registerCallback(callback, &error).isOk());
        ASSERT_TRUE(proxy->registerCallback(RecordingCallback::make(), &error).isOk());
        ASSERT_EQ(2u, peer->callbackCount());
        ASSERT_TRUE(proxy->unregisterCallback(callback, &error).isOk());
        EXPECT_EQ(Error::NONE, error);
    }
    EXPECT_EQ(1u, peer->callbackCount());
    service->updateCwbStatus(false);
    ASSERT_TRUE(host::binder::waitIdle(*client));
    EXPECT_EQ(std::vector<bool>{true}, callback->statuses());  // its registration's notice only
}

// A client that dies leaves its registration behind, answering DEAD_OBJECT to each broadcast.
TEST_F(BinderBoundaryTest, DeadClientIsStale) {
    boot();
    {
        ProcessScope in(client);
        Error error = Error::FAILED;
        ASSERT_TRUE(connect()->registerCallback(RecordingCallback::make(), &error).isOk());
    }
    host::binder::kill(*client);
    host::log::clear();
    service->updateCwbStatus(false);
    EXPECT_EQ(1u, logCount(ANDROID_LOG_WARN, "Stale client connection!"));
    EXPECT_EQ(1u, peer->callbackCount());
}

// The service sees the stub's duplicate, whose number repeats from call to call: a second file
// is a new region, the same file under another number is the region it has.
TEST_F(BinderBoundaryTest, RegionIsTheFileNotTheDescriptorNumber) {
    bootOn();
    ASSERT_TRUE(gateOpen());
    ASSERT_EQ(0, rgb(rect(0, 0, 10, 10)).first & 0xFFFF);  // a capture buffer to copy from
    ProcessScope in(client);
    std::shared_ptr<ICwbService> proxy = connect();
    constexpr int32_t kSize = 4096;
    ndk::ScopedFileDescriptor first = region(kSize), second = region(kSize);
    Error error = Error::FAILED;
    std::vector<int32_t> values;
    ASSERT_TRUE(proxy->initializeSharedMemory(0, kSize, first, &error).isOk());
    ASSERT_TRUE(proxy->initializeSharedMemory(0, kSize, second, &error).isOk());
    ASSERT_TRUE(proxy->getSharedData(5, rect(0, 0, 4, 2), second, kSize, &values, &error).isOk());
    EXPECT_EQ(Error::NONE, error);
    EXPECT_NE(0, stamp(second));
    EXPECT_EQ(0, stamp(first));
    host::log::clear();
    ASSERT_TRUE(proxy->initializeSharedMemory(0, kSize, second.dup(), &error).isOk());
    EXPECT_EQ(0u, logCount(ANDROID_LOG_ERROR, "MORVIK_AI::Release the old mapping"));
}

// Out-arrays arrive as zeros of the client's length and the result word uninitialised: neither
// may leak into what the client receives.
TEST_F(BinderBoundaryTest, ResultsAreDefinedWhateverTheClientSent) {
    bootOn();
    ProcessScope in(client);
    std::shared_ptr<ICwbService> proxy = connect();
    for (int32_t id : {4, 9, 14}) {
        SCOPED_TRACE(id);
        std::vector<int32_t> values{7, 8, 9};
        Error error = Error::NONE;
        ASSERT_TRUE(proxy->getCwbValue(id, rect(0, 0, 10, 10), &values, &error).isOk());
        EXPECT_EQ(Error::INVALID_ARGUMENT, error);
        EXPECT_TRUE(values.empty());
    }
    ASSERT_TRUE(gateOpen());
    std::vector<float> lumas{0.5f, 0.5f};
    Error error = Error::FAILED;
    ASSERT_TRUE(proxy->getLumasValue(rect(0, 0, 10, 10), &lumas, &error).isOk());
    EXPECT_EQ(1u, lumas.size());
    std::vector<int32_t> resolution{1, 2, 3};
    ASSERT_TRUE(proxy->getScreenResolution(0, &resolution, &error).isOk());
    EXPECT_EQ(2u, resolution.size());
    // A non-nullable descriptor of -1 never leaves the client.
    const ndk::ScopedAStatus status =
            proxy->initializeSharedMemory(0, 4096, ndk::ScopedFileDescriptor(), &error);
    EXPECT_EQ(STATUS_UNEXPECTED_NULL, status.getStatus());
}

}  // namespace
}  // namespace cwbtest
