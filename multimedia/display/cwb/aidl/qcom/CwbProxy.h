#pragma once

#include <memory>
#include <mutex>

namespace aidl::vendor::zarel::hardware::cwb::implementation {
class CwbService;
}

// Entry point through which the composer creates the service and forwards display events.
class CwbProxy {
  public:
    int initialize();
    void updateCwbStatus(bool status);
    void invalidCache();
    void setPowerMode(unsigned long display, int mode);
    void notifyConfigChange(unsigned long display, unsigned int config);
    void updateAvailableConfigs();
    void notifyColorModeChange(unsigned long display, int mode, int intent);
    void aodLayerExist(bool exist);
    void fodLayerExist(bool exist);

    std::shared_ptr<aidl::vendor::zarel::hardware::cwb::implementation::CwbService> service()
            const {
        return mCwbService;
    }

    // Exported with the class for the composer, which may keep its instance here and serialise
    // its own use of it; no operation of the facade reads mCwbProxy or takes mMutex.
    static CwbProxy* mCwbProxy;
    static std::mutex mMutex;

  private:
    std::shared_ptr<aidl::vendor::zarel::hardware::cwb::implementation::CwbService> mCwbService;
};
