#define LOG_TAG "CwbService"

#include "CwbProxy.h"

#include <android-base/logging.h>
#include <android/binder_manager.h>
#include <log/log.h>
#include <utils/Errors.h>

#include <string>

#include "CwbService.h"

using aidl::vendor::zarel::hardware::cwb::implementation::CwbService;

CwbProxy* CwbProxy::mCwbProxy = nullptr;
std::mutex CwbProxy::mMutex;

namespace {

// Events that arrive before initialize() are dropped with one line each. The host must not send
// the unguarded ones early either; ignoring them the same way keeps the composer alive if it does.
template <typename Op>
void forward(const std::shared_ptr<CwbService>& service, Op&& op) {
    if (service == nullptr) {
        ALOGE("CwbService AIDL not enabled yet. Ignore");
        return;
    }
    op(*service);
}

}  // namespace

int CwbProxy::initialize() {
    ALOGE("CwbProxy::initialize() get called.");
    mCwbService = CwbService::initialize();
    if (mCwbService == nullptr) {
        ALOGE("Failed to initialize CWB AIDL service");
        return android::UNKNOWN_ERROR;
    }
    const std::string instance = std::string(CwbService::descriptor) + "/default";
    binder_status_t status =
            AServiceManager_addService(mCwbService->asBinder().get(), instance.c_str());
    CHECK(status == STATUS_OK);
    ALOGI("Registered CWB AIDL Service");
    return 0;
}

void CwbProxy::updateCwbStatus(bool status) {
    forward(mCwbService, [&](CwbService& s) { s.updateCwbStatus(status); });
}

void CwbProxy::invalidCache() {
    forward(mCwbService, [&](CwbService& s) { s.invalidCache(); });
}

void CwbProxy::setPowerMode(unsigned long display, int mode) {
    forward(mCwbService, [&](CwbService& s) { s.setPowerMode(display, mode); });
}

void CwbProxy::notifyConfigChange(unsigned long display, unsigned int config) {
    forward(mCwbService, [&](CwbService& s) { s.notifyConfigChange(display, config); });
}

void CwbProxy::updateAvailableConfigs() {
    forward(mCwbService, [&](CwbService& s) { s.updateAvailableConfigs(); });
}

void CwbProxy::notifyColorModeChange(unsigned long display, int mode, int intent) {
    forward(mCwbService, [&](CwbService& s) { s.notifyColorModeChange(display, mode, intent); });
}

void CwbProxy::aodLayerExist(bool exist) {
    forward(mCwbService, [&](CwbService& s) { s.aodLayerExist(exist); });
}

void CwbProxy::fodLayerExist(bool exist) {
    forward(mCwbService, [&](CwbService& s) { s.fodLayerExist(exist); });
}
