// What one client call answered, as the printers show it.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace cwbsim {

struct CallRecord {
    std::string name;
    int line = 0;
    std::string request;  // the session line, for the table
    // 0 for an OK binder status, else the service-specific code (or the exception code). A
    // failed status carries no Error and no out-values, as over a real binder.
    int32_t status = 0;
    std::optional<int32_t> error;
    std::optional<std::array<int32_t, 3>> rgb;
    std::optional<std::vector<float>> lumas;
    std::optional<std::array<int32_t, 768>> histogram;
    std::optional<std::vector<int32_t>> values;
    std::optional<bool> result;
    std::optional<std::vector<uint8_t>> bytes;
    std::optional<std::string> client;
    int32_t feature = 0;  // getCwbValue / getSharedData feature id
    int64_t offset = 0;   // readShared
};

}  // namespace cwbsim
