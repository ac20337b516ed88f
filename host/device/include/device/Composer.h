// Drives the library the way the display composer does: through CwbProxy, one call per
// composer event.
#pragma once

#include <CwbProxy.h>

#include <cstdint>
#include <memory>

namespace host::device {

class Composer {
  public:
    // Owns a proxy of its own.
    Composer();
    // Drives a proxy owned elsewhere; it must outlive the composer.
    explicit Composer(CwbProxy& proxy);

    int boot();
    void powerMode(uint64_t display, int mode);
    void layerChange();
    void configChange(uint64_t display, uint32_t config);
    void updateConfigs();
    void colorMode(uint64_t display, int mode, int intent);
    void aodLayer(bool present);
    void fodLayer(bool present);
    void status(bool enabled);

    CwbProxy& proxy() { return *mProxy; }

  private:
    std::unique_ptr<CwbProxy> mOwned;
    CwbProxy* mProxy;
};

}  // namespace host::device
