// libbinder stand-in as the service uses it for qservice: the service manager, interface casts
// that refuse other interfaces, and Parcel reads that stop at the end. The NDK binder between
// processes: one proxy per process, oneway order, refused parcels, death.
#include <IQService.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <binder/IServiceManager.h>
#include <binder/Parcel.h>
#include <gtest/gtest.h>
#include <host/binder_process.h>
#include <host/binder_registry.h>

#include <atomic>
#include <cstring>

#include "skeleton_helpers.h"

namespace {

using android::OK;
using android::Parcel;
using android::sp;
using android::String16;

class FakeQService : public qService::BnQService {
  public:
    android::status_t dispatch(uint32_t command, const Parcel* in, Parcel* out) override {
        out->writeInt32(static_cast<int32_t>(command) + in->readInt32());
        return OK;
    }
};

class OtherInterface : public android::IInterface {
  public:
    static const String16 descriptor;
};
const String16 OtherInterface::descriptor("other.Interface");
class BnOther : public android::BnInterface<OtherInterface> {};

TEST(PlatformBinderTest, ServiceManagerAndInterfaceCast) {
    host::binder::resetRegistry();
    sp<android::IServiceManager> sm = android::defaultServiceManager();
    ASSERT_NE(sm, nullptr);
    EXPECT_EQ(sm->checkService(String16("display.qservice")), nullptr);
    sp<FakeQService> service = sp<FakeQService>::make();
    ASSERT_EQ(sm->addService(String16("display.qservice"), service), OK);
    EXPECT_EQ(sm->addService(String16("null"), nullptr), android::BAD_VALUE);
    ASSERT_EQ(sm->addService(String16("other"), sp<BnOther>::make()), OK);
    sp<qService::IQService> q =
            qService::IQService::asInterface(sm->checkService(String16("display.qservice")));
    ASSERT_EQ(q.get(), service.get());
    EXPECT_EQ(qService::IQService::asInterface(sm->checkService(String16("other"))), nullptr);
    EXPECT_EQ(qService::IQService::asInterface(nullptr), nullptr);
    Parcel in, out;
    in.writeInt32(5);
    in.setDataPosition(0);
    ASSERT_EQ(q->dispatch(10, &in, &out), OK);
    out.setDataPosition(0);
    EXPECT_EQ(out.readInt32(), 15);
    EXPECT_EQ(out.readInt32(), 0);  // an answer shorter than expected reads as 0
    host::binder::resetRegistry();
    EXPECT_EQ(sm->checkService(String16("display.qservice")), nullptr);
}

}  // namespace

namespace {

using aidl::vendor::zarel::hardware::cwb::ICwbCallback;
using cwbtest::RecordingCallback;
using host::binder::ProcessScope;

constexpr char kName[] = "test.callback";

// A client process serving one callback under kName; the test thread stays in the composer.
class NdkBinderTest : public ::testing::Test {
  protected:
    void SetUp() override {
        host::binder::resetRegistry();
        ProcessScope in(client);
        ASSERT_EQ(EX_NONE, AServiceManager_addService(callback->asBinder().get(), kName));
    }
    void TearDown() override { host::binder::resetRegistry(); }
    static ndk::SpAIBinder lookup() { return ndk::SpAIBinder(AServiceManager_checkService(kName)); }
    // A transaction of code carrying token, as a client that writes its own parcel sends it.
    static binder_status_t send(AIBinder* binder, transaction_code_t code, const char* token) {
        ndk::ScopedAParcel in(AParcel_create()), out;
        AParcel_writeString(in.get(), token, static_cast<int32_t>(strlen(token)));
        return AIBinder_transact(binder, code, in.getR(), out.getR(), 0);
    }

    std::shared_ptr<host::binder::Process> client = host::binder::newProcess("client");
    std::shared_ptr<RecordingCallback> callback = RecordingCallback::make();
};

TEST_F(NdkBinderTest, OneProxyPerProcessAndTheObjectAtHome) {
    const ndk::SpAIBinder proxy = lookup();
    ASSERT_TRUE(AIBinder_isRemote(proxy.get()));
    EXPECT_EQ(proxy, lookup());
    std::shared_ptr<ICwbCallback> remote = ICwbCallback::fromBinder(proxy);
    ASSERT_TRUE(remote != nullptr && remote->isRemote());
    EXPECT_EQ(proxy, remote->asBinder());
    {
        ProcessScope in(host::binder::newProcess("other"));
        EXPECT_NE(proxy, lookup());
    }
    ProcessScope in(client);
    EXPECT_EQ(callback->asBinder(), lookup());
    EXPECT_EQ(callback, ICwbCallback::fromBinder(lookup()));
}

TEST_F(NdkBinderTest, OnewayCallsArriveInOrderOnTheClientsThreads) {
    std::shared_ptr<ICwbCallback> remote = ICwbCallback::fromBinder(lookup());
    {
        ProcessScope in(client);
        ABinderProcess_setThreadPoolMaxThreadCount(4);
    }
    std::vector<bool> sent;
    for (int i = 0; i < 300; ++i) {
        sent.push_back(i % 3 == 0);
        ASSERT_TRUE(remote->notifyCwbStatus(sent.back()).isOk());
    }
    ASSERT_TRUE(host::binder::waitIdle(*client));
    EXPECT_EQ(sent, callback->statuses());
    EXPECT_GE(host::binder::poolThreads(*client), 1u);
}

TEST_F(NdkBinderTest, ParcelsTheStubRefuses) {
    const ndk::SpAIBinder proxy = lookup();
    ICwbCallback::fromBinder(proxy);  // associates the class, so the proxy can prepare parcels
    const transaction_code_t version = FIRST_CALL_TRANSACTION + 16777214;
    EXPECT_EQ(STATUS_BAD_TYPE, send(proxy.get(), version, "other.Interface"));
    EXPECT_EQ(STATUS_OK, send(proxy.get(), version, ICwbCallback::descriptor));
    EXPECT_EQ(STATUS_UNKNOWN_TRANSACTION, send(proxy.get(), 77, ICwbCallback::descriptor));
    EXPECT_EQ(STATUS_UNKNOWN_TRANSACTION, send(proxy.get(), LAST_CALL_TRANSACTION + 1, ""));
    EXPECT_TRUE(callback->statuses().empty());
}

TEST_F(NdkBinderTest, DeathAnswersDeadObjectAndNotifiesInTheHoldersProcess) {
    const ndk::SpAIBinder proxy = lookup();
    static std::atomic<int> died{0};
    static std::shared_ptr<host::binder::Process> where;
    died = 0;
    ndk::ScopedAIBinder_DeathRecipient recipient(AIBinder_DeathRecipient_new([](void* cookie) {
        where = host::binder::currentProcess();
        died += *static_cast<int*>(cookie);
    }));
    int cookie = 1;
    ASSERT_EQ(STATUS_OK, AIBinder_linkToDeath(proxy.get(), recipient.get(), &cookie));
    EXPECT_EQ(STATUS_INVALID_OPERATION,
              AIBinder_linkToDeath(callback->asBinder().get(), recipient.get(), &cookie));
    host::binder::kill(*client);
    ASSERT_TRUE(host::binder::waitIdle(*host::binder::mainProcess()));
    EXPECT_EQ(1, died.load());
    EXPECT_EQ(host::binder::mainProcess(), where);
    where.reset();
    EXPECT_FALSE(AIBinder_isAlive(proxy.get()));
    EXPECT_EQ(STATUS_DEAD_OBJECT,
              ICwbCallback::fromBinder(proxy)->notifyCwbStatus(true).getStatus());
    EXPECT_EQ(nullptr, lookup().get());
    EXPECT_EQ(STATUS_DEAD_OBJECT, AIBinder_linkToDeath(proxy.get(), recipient.get(), &cookie));
}

}  // namespace
