// One sub-command of cwb: its arguments, checked once, and the request it makes on the service,
// which --watch may repeat.
#pragma once

#include <aidl/vendor/zarel/hardware/cwb/ICwbService.h>
#include <aidl/vendor/zarel/hardware/cwb/Rect.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Reply.h"

namespace cwbtool {

class CwbRequest {
  public:
    // words: the sub-command and its arguments. False with a message when they are malformed.
    bool parse(const std::vector<std::string>& words, std::string* error);

    // Makes the request. False with a message when this side could not do its part (no shared
    // memory to hand over); whatever the service answered is a reply.
    bool run(::aidl::vendor::zarel::hardware::cwb::ICwbService& service, Reply* reply,
             std::string* error) const;

    const std::string& method() const { return mMethod; }

    // One line per sub-command, for --help.
    static std::string usage();

  private:
    bool sharedData(::aidl::vendor::zarel::hardware::cwb::ICwbService& service, Reply* reply,
                    std::string* error) const;

    std::string mMethod;
    std::string mText;  // the sub-command and its arguments as given
    ::aidl::vendor::zarel::hardware::cwb::Rect mRect;
    std::vector<int64_t> mNums;
    std::vector<int32_t> mList;
};

}  // namespace cwbtool
