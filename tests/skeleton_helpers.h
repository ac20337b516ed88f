// Shared by the skeleton tests: setting names and named table cases.
#pragma once

#include <algorithm>
#include <functional>
#include <ostream>
#include <string>

#include "service_fixture.h"

namespace cwbtest {

inline std::string prop(const char* name) {
    return std::string("ro.vendor.zarel.display.cwb.") + name;
}

// Unnamed, like the cases of each test file: argument-dependent lookup only finds the printer in
// the namespace the case types live in.
namespace {

template <typename Case>
auto operator<<(std::ostream& os, const Case& c) -> decltype(c.name, os) {
    return os << c.name;
}
template <typename Case>
std::string caseName(const ::testing::TestParamInfo<Case>& info) {
    return info.param.name;
}

}  // namespace
}  // namespace cwbtest
