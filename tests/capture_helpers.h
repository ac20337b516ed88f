// Shared by the capture tests: single writebacks driven directly, a secondary panel, and the log
// seen as a whole.
#pragma once

#include <string>
#include <vector>

#include "service_fixture.h"

namespace cwbtest {

using Outcome = host::device::SimulatedDisplayConfig::Outcome;
using Lines = std::vector<std::string>;

// The luma pass's answer for a uniform colour: its code over full scale.
inline float lumaOf(host::device::Pixel p) {
    return static_cast<float>((7 * p.r + 23 * p.g + 2 * p.b) >> 5) / 255.0f;
}

// Names parameterised cases after their `name` member.
inline const auto caseName = [](const auto& info) { return std::string(info.param.name); };

// Every line logged since the last clear, as "<priority letter> <text>".
inline Lines logged() {
    Lines out;
    for (const auto& line : host::log::lines())
        out.push_back(std::string{"??VDIWEF"[line.priority & 7], ' '} + line.text);
    return out;
}

class CaptureTest : public ServiceTest {
  protected:
    int capture(bool sec = false, const Rect& r = rect(0, 0, 0, 0), bool postProcessed = false) {
        return sec ? service->setCWBOutputBufferSec(r, postProcessed)
                   : service->setCWBOutputBuffer(r, postProcessed);
    }
    host::device::SimulatedDisplayConfig& vendor() { return *device->displayConfig(); }
    void setDebug(const std::vector<int32_t>& values) {
        Error ignored;
        ASSERT_TRUE(service->setDebug(values, &ignored).isOk());
    }
    // A 720 x 1600 secondary panel under display id 3.
    void addSecondary() {
        setProp("ro.vendor.zarel.display.cwb.display_id_sec", "3");
        device->setPanelModes(PanelId::Secondary, {{720, 1600, kVsync60}});
    }
};

}  // namespace cwbtest
