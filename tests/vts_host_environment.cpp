// Host side of the interface tests in interface/vts: before each of them, boots the service on a
// simulated phone with its main display on, where they find it through the service manager as on
// a device, from a client process of their own; afterwards takes the phone down again.
#include <host/binder_process.h>

#include <memory>
#include <string>

#include "service_fixture.h"

namespace cwbtest {
namespace {

// The service tests' own phone, driven from a listener instead of a fixture.
class Phone : public ServiceTest {
  public:
    void up() {
        SetUp();
        device->setFrame(PanelId::Main, FrameKind::Mixer,
                         host::device::Frame::filled(1080, 2400, 90, 120, 150));
        bootOn();  // a failed boot fails the test that is starting
    }
    void down() { TearDown(); }
    void TestBody() override {}
};

class SimulatedPhoneForInterfaceTests : public ::testing::EmptyTestEventListener {
  public:
    void OnTestStart(const ::testing::TestInfo& test) override {
        if (std::string(test.test_suite_name()).find("CwbServiceAidl") == std::string::npos) {
            return;
        }
        mPhone = std::make_unique<Phone>();
        mPhone->up();
        mClient = std::make_unique<host::binder::ProcessScope>(host::binder::newProcess("vts"));
    }

    void OnTestEnd(const ::testing::TestInfo& /*test*/) override {
        if (mPhone == nullptr) return;
        mClient.reset();
        mPhone->down();
        mPhone.reset();
    }

  private:
    std::unique_ptr<Phone> mPhone;
    std::unique_ptr<host::binder::ProcessScope> mClient;
};

// gtest owns and deletes the listener.
const bool kRegistered = [] {
    ::testing::UnitTest::GetInstance()->listeners().Append(new SimulatedPhoneForInterfaceTests);
    return true;
}();

}  // namespace
}  // namespace cwbtest
