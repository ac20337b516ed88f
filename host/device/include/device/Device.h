// The simulated phone the CWB library runs against on a host: the vendor display-config service,
// the display qservice, and the device files, all inside a sandbox folder.
#pragma once

#include <device/Frame.h>
#include <device/SimulatedDisplayConfig.h>
#include <device/SimulatedQService.h>
#include <utils/StrongPointer.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace host::device {

class Device {
  public:
    static constexpr const char* kWeightsMain = "/odm/etc/display/cwb_weightspos.json";
    static constexpr const char* kWeightsSecondary = "/odm/etc/display/cwb_weightspos_sec.json";
    static constexpr const char* kAplFile = "/sys/kernel/zarel_display/panel_apl_value";
    static constexpr const char* kDumpDir = "/data/vendor/display/frame_dump_disp_id_cwb";

    // sandboxRoot: folder that stands for the device's file system; by default a fresh temporary
    // one, removed again by the destructor. Either way it becomes the process's sandbox root for
    // the lifetime of the device. registerServices: publish both services now.
    explicit Device(std::optional<std::string> sandboxRoot = std::nullopt,
                    bool registerServices = true);
    ~Device();
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    void setPanelModes(PanelId panel, std::vector<PanelMode> modes);
    bool setActiveMode(PanelId panel, uint32_t index);
    void setFrame(PanelId panel, FrameKind kind, Frame frame);
    void setLatency(std::optional<std::chrono::nanoseconds> latency);

    // Publish or withdraw a service, as a vendor process that starts or dies. False when the
    // registry refused it.
    bool setVendorPresent(bool present);
    bool setQServicePresent(bool present);
    bool vendorPresent() const { return mVendorPresent; }
    bool qservicePresent() const { return mQServicePresent; }

    const std::shared_ptr<SimulatedDisplayConfig>& displayConfig() const { return mConfig; }
    const android::sp<SimulatedQService>& qservice() const { return mQService; }

    void writeWeights(PanelId panel, const std::string& text);
    // nullopt removes the file, as on a kernel without the node.
    void setAplFile(const std::optional<std::string>& text);
    // Sorted file names in kDumpDir; empty when it does not exist.
    std::vector<std::string> dumpFiles() const;
    std::string hostPath(const std::string& devicePath) const;
    const std::string& root() const { return mRoot; }

  private:
    void writeFile(const std::string& devicePath, const std::string& text);

    std::string mRoot;
    bool mOwnsRoot = false;
    std::string mPreviousRoot;
    std::shared_ptr<SimulatedDisplayConfig> mConfig;
    android::sp<SimulatedQService> mQService;
    bool mVendorPresent = false;
    bool mQServicePresent = false;
};

}  // namespace host::device
