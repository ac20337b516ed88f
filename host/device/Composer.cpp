#include <device/Composer.h>

namespace host::device {

Composer::Composer() : mOwned(std::make_unique<CwbProxy>()), mProxy(mOwned.get()) {}

Composer::Composer(CwbProxy& proxy) : mProxy(&proxy) {}

int Composer::boot() {
    return mProxy->initialize();
}

void Composer::powerMode(uint64_t display, int mode) {
    mProxy->setPowerMode(static_cast<unsigned long>(display), mode);
}

void Composer::layerChange() {
    mProxy->invalidCache();
}

void Composer::configChange(uint64_t display, uint32_t config) {
    mProxy->notifyConfigChange(static_cast<unsigned long>(display), config);
}

void Composer::updateConfigs() {
    mProxy->updateAvailableConfigs();
}

void Composer::colorMode(uint64_t display, int mode, int intent) {
    mProxy->notifyColorModeChange(static_cast<unsigned long>(display), mode, intent);
}

void Composer::aodLayer(bool present) {
    mProxy->aodLayerExist(present);
}

void Composer::fodLayer(bool present) {
    mProxy->fodLayerExist(present);
}

void Composer::status(bool enabled) {
    mProxy->updateCwbStatus(enabled);
}

}  // namespace host::device
