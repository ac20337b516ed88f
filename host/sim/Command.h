// One parsed line of a session file, checked and converted so that playing it cannot fail on
// syntax.
#pragma once

#include <aidl/vendor/zarel/hardware/cwb/Rect.h>
#include <device/Frame.h>
#include <device/SimulatedDisplayConfig.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace cwbsim {

enum class Op {
    Prop,              // str = name, str2 = value
    Panel,             // panel, modes (empty for "none")
    FileWeights,       // panel, str = host path
    FileApl,           // present, str = file text
    Frame,             // panel, kind, frame, str = path / pattern, rect + colour for paint
    VendorLatency,     // present: nums[0] = milliseconds; else one vsync
    VendorNext,        // outcome, nums[0] = error code for Error
    VendorPresence,    // present
    QServiceAnswer,    // nums[0] = command code, nums[1] = answer
    QServicePresence,  // present
    Sleep,             // nums[0] = milliseconds
    Boot,
    Host,         // verb = operation, nums = its arguments
    ClientState,  // str = client name, present = alive
    Call,         // verb = method (or readShared), see SessionParser for the fields used
    Snapshot,     // panel, str = output path
    Plot,         // str = output path, verb = histogram or answers
    Expect,       // list of words KEY=VALUE in expects: what the device answered the last call
};

enum class FrameSource { Fill, Png, Pattern, Paint };

struct Command {
    int line = 0;
    Op op = Op::Boot;
    std::string text;  // the line's tokens joined by one blank, for echoing
    std::string verb;
    std::string str;
    std::string str2;
    std::vector<int64_t> nums;
    std::vector<int32_t> list;  // setDebug values
    bool present = true;
    bool hasRect = false;
    aidl::vendor::zarel::hardware::cwb::Rect rect;
    host::device::Pixel colour;
    host::device::PanelId panel = host::device::PanelId::Main;
    host::device::FrameKind kind = host::device::FrameKind::Mixer;
    FrameSource frame = FrameSource::Fill;
    host::device::SimulatedDisplayConfig::Outcome outcome =
            host::device::SimulatedDisplayConfig::Outcome::Ok;
    std::vector<host::device::PanelMode> modes;
    std::vector<std::pair<std::string, std::string>> expects;
};

}  // namespace cwbsim
