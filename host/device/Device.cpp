#include <device/Device.h>

#include <android/binder_manager.h>
#include <binder/IServiceManager.h>
#include <host/binder_registry.h>
#include <host/sandbox.h>
#include <utils/String16.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace host::device {

namespace fs = std::filesystem;

Device::Device(std::optional<std::string> sandboxRoot, bool registerServices)
    : mPreviousRoot(host::sandbox::root()),
      mConfig(ndk::SharedRefBase::make<SimulatedDisplayConfig>()),
      mQService(android::sp<SimulatedQService>::make()) {
    if (sandboxRoot) {
        mRoot = *sandboxRoot;
        host::sandbox::setRoot(mRoot);
    } else {
        mRoot = host::sandbox::makeTempRoot();
        mOwnsRoot = true;
    }
    // Folders every device has, whether or not the files in them exist.
    std::error_code ec;
    for (const char* dir : {"/odm/etc/display", "/data/vendor/display", "/sys/kernel"}) {
        fs::create_directories(hostPath(dir), ec);
    }
    if (registerServices) {
        setVendorPresent(true);
        setQServicePresent(true);
    }
}

Device::~Device() {
    // No completion may reach the library once the device is gone.
    mConfig->shutdown();
    setVendorPresent(false);
    setQServicePresent(false);
    host::sandbox::setRoot(mPreviousRoot);
    if (mOwnsRoot) {
        std::error_code ec;
        fs::remove_all(mRoot, ec);
    }
}

void Device::setPanelModes(PanelId panel, std::vector<PanelMode> modes) {
    mConfig->setPanelModes(panel, std::move(modes));
}

bool Device::setActiveMode(PanelId panel, uint32_t index) {
    return mConfig->setActiveMode(panel, index);
}

void Device::setFrame(PanelId panel, FrameKind kind, Frame frame) {
    mConfig->setFrame(panel, kind, std::move(frame));
}

void Device::setLatency(std::optional<std::chrono::nanoseconds> latency) {
    mConfig->setLatency(latency);
}

bool Device::setVendorPresent(bool present) {
    if (present) {
        ndk::SpAIBinder binder = mConfig->asBinder();
        if (AServiceManager_addService(binder.get(), SimulatedDisplayConfig::kInstance) !=
            EX_NONE) {
            return false;
        }
    } else if (mVendorPresent) {
        // Leave alone whatever someone else registered in our place.
        ndk::SpAIBinder current = host::binder::lookup(SimulatedDisplayConfig::kInstance);
        if (current.get() != nullptr && current == mConfig->asBinder()) {
            host::binder::removeService(SimulatedDisplayConfig::kInstance);
        }
    }
    mVendorPresent = present;
    return true;
}

bool Device::setQServicePresent(bool present) {
    const android::String16 name(SimulatedQService::kName);
    if (present) {
        if (android::defaultServiceManager()->addService(name, mQService) != android::OK) {
            return false;
        }
    } else if (mQServicePresent) {
        android::sp<android::IBinder> current =
                android::defaultServiceManager()->checkService(name);
        if (current.get() == static_cast<android::IBinder*>(mQService.get())) {
            host::binder::removeLegacyService(SimulatedQService::kName);
        }
    }
    mQServicePresent = present;
    return true;
}

void Device::writeFile(const std::string& devicePath, const std::string& text) {
    const fs::path path = hostPath(devicePath);
    std::error_code ec;
    fs::create_directories(path.parent_path(), ec);
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}

void Device::writeWeights(PanelId panel, const std::string& text) {
    writeFile(panel == PanelId::Main ? kWeightsMain : kWeightsSecondary, text);
}

void Device::setAplFile(const std::optional<std::string>& text) {
    if (text) {
        writeFile(kAplFile, *text);
    } else {
        std::error_code ec;
        fs::remove(hostPath(kAplFile), ec);
    }
}

std::vector<std::string> Device::dumpFiles() const {
    std::vector<std::string> names;
    std::error_code ec;
    for (fs::directory_iterator it(hostPath(kDumpDir), ec), end; !ec && it != end;
         it.increment(ec)) {
        names.push_back(it->path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string Device::hostPath(const std::string& devicePath) const {
    return mRoot + devicePath;
}

}  // namespace host::device
