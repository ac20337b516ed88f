// libbinder stand-in as the service uses it for qservice: the service manager, interface casts
// that refuse other interfaces, and Parcel reads that stop at the end.
#include <IQService.h>
#include <binder/IServiceManager.h>
#include <binder/Parcel.h>
#include <gtest/gtest.h>
#include <host/binder_registry.h>

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
