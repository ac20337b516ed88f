// libbinder stand-in: RefBase/sp lifetime, service manager, IQService casts and Parcel.
#include <IQService.h>
#include <binder/IServiceManager.h>
#include <binder/Parcel.h>
#include <gtest/gtest.h>
#include <host/binder_registry.h>
#include <utils/RefBase.h>
#include <utils/StrongPointer.h>

#include <atomic>
#include <vector>

namespace {

using android::OK;
using android::Parcel;
using android::sp;
using android::String16;

struct Tracked : public android::RefBase {
    explicit Tracked(std::atomic<int>* deaths) : deaths(deaths) {}
    ~Tracked() override { deaths->fetch_add(1); }
    void onFirstRef() override { ++firstRefs; }
    std::atomic<int>* deaths;
    int firstRefs = 0;
};

TEST(PlatformRefBaseTest, LastStrongReferenceDeletesOnce) {
    std::atomic<int> deaths{0};
    {
        sp<Tracked> a = sp<Tracked>::make(&deaths);
        EXPECT_EQ(a->getStrongCount(), 1);
        EXPECT_EQ(a->firstRefs, 1);
        sp<android::RefBase> base = a;  // converting copy
        sp<Tracked> moved = std::move(a);
        EXPECT_EQ(a, nullptr);
        EXPECT_EQ(moved->getStrongCount(), 2);
        base = moved;  // same object assigned onto itself through another pointer
        EXPECT_EQ(moved->getStrongCount(), 2);

        { sp<Tracked> copy = moved; }
        EXPECT_EQ(moved->firstRefs, 1);
        EXPECT_EQ(deaths.load(), 0);
    }
    EXPECT_EQ(deaths.load(), 1);
}

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

    sp<qService::IQService> q = android::interface_cast<qService::IQService>(
            sm->getService(String16("display.qservice")));
    ASSERT_NE(q, nullptr);
    EXPECT_EQ(q.get(), service.get());
    EXPECT_EQ(android::IInterface::asBinder(q), sm->checkService(String16("display.qservice")));
    EXPECT_EQ(qService::IQService::asInterface(sm->checkService(String16("other"))), nullptr);
    EXPECT_EQ(qService::IQService::asInterface(nullptr), nullptr);

    Parcel in;
    Parcel out;
    in.writeInt32(5);
    in.setDataPosition(0);
    ASSERT_EQ(q->dispatch(10, &in, &out), OK);
    out.setDataPosition(0);
    EXPECT_EQ(out.readInt32(), 15);

    host::binder::removeLegacyService("other");
    EXPECT_EQ(sm->checkService(String16("other")), nullptr);
    const int32_t countWithRegistry = service->getStrongCount();
    host::binder::resetRegistry();
    EXPECT_EQ(sm->checkService(String16("display.qservice")), nullptr);
    EXPECT_EQ(service->getStrongCount(), countWithRegistry - 1);
}

TEST(PlatformParcelTest, ValuesComeBackInOrderAndReadsStopAtTheEnd) {
    Parcel p;
    EXPECT_EQ(p.writeInt32(-7), OK);
    EXPECT_EQ(p.writeInt64(int64_t{1} << 40), OK);
    EXPECT_EQ(p.writeUint32(0xFFFFFFFFu), OK);
    EXPECT_EQ(p.writeFloat(1.5f), OK);
    EXPECT_EQ(p.writeBool(true), OK);
    EXPECT_EQ(p.dataSize(), 24u);
    EXPECT_EQ(p.dataPosition(), 24u);
    EXPECT_EQ(p.host_ints(), (std::vector<int32_t>{-7, 0, 256, -1, 0x3FC00000, 1}));

    p.setDataPosition(0);
    EXPECT_EQ(p.readInt32(), -7);
    EXPECT_EQ(p.readInt64(), int64_t{1} << 40);
    EXPECT_EQ(p.readUint32(), 0xFFFFFFFFu);
    EXPECT_EQ(p.readFloat(), 1.5f);
    EXPECT_TRUE(p.readBool());
    int32_t out = 42;
    EXPECT_EQ(p.readInt32(&out), android::NOT_ENOUGH_DATA);
    EXPECT_EQ(out, 42);
    EXPECT_EQ(p.readInt32(), 0);
    EXPECT_EQ(p.dataPosition(), 24u);

    // A write at an earlier position overwrites in place, like libbinder.
    p.setDataPosition(4);
    EXPECT_EQ(p.writeInt32(9), OK);
    EXPECT_EQ(p.dataSize(), 24u);
    p.setDataPosition(4);
    EXPECT_EQ(p.readInt32(), 9);
    p.setDataPosition(22);  // half a value left
    EXPECT_EQ(p.readInt32(&out), android::NOT_ENOUGH_DATA);
    p.setDataPosition(1000);
    EXPECT_EQ(p.readInt32(), 0);
}

}  // namespace
