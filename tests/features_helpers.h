// Helpers shared by the feature tests, in their own namespace so that they cannot clash with
// another group's inline helpers of the same name.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "service_fixture.h"

namespace cwbtest::features {

constexpr int32_t kLoadingOne = 100000000;
constexpr int kE = ANDROID_LOG_ERROR;
constexpr int kI = ANDROID_LOG_INFO;
using Lines = std::vector<std::pair<int, std::string>>;

// Every captured line with its priority, so that one comparison checks both.
inline Lines logged() {
    Lines out;
    for (const auto& l : host::log::lines()) out.emplace_back(l.priority, l.text);
    return out;
}

inline void debugOn(CwbService& service) {
    Error result;
    ASSERT_TRUE(service.setDebug({1}, &result).isOk());
}

}  // namespace cwbtest::features
