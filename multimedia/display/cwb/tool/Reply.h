// What one request answered, ready for the table or for JSON.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace cwbtool {

struct Reply {
    std::string request;  // the sub-command and its arguments as given
    // 0 for an OK binder status, else the service-specific code or the exception code. A failed
    // status carries no Error and no out-values.
    int32_t status = 0;
    std::optional<int32_t> error;
    std::vector<std::string> answer;  // lines for people
    std::string json;                 // the answer as JSON members, without braces

    // Same answer, ignoring nothing: --watch prints a reply only when this changes.
    bool operator==(const Reply& other) const {
        return status == other.status && error == other.error && answer == other.answer &&
               json == other.json;
    }
    bool operator!=(const Reply& other) const { return !(*this == other); }
};

}  // namespace cwbtool
