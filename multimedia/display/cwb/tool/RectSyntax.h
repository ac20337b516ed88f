// The rectangle and number syntax shared by the cwb command and the cwb-sim session files:
// "L,T,R,B", each field decimal with an optional sign or 0x hexadecimal, where hexadecimal gives
// the field's 32-bit pattern (0x8000c350 is the fraction 0.5).
#pragma once

#include <aidl/vendor/zarel/hardware/cwb/Rect.h>

#include <cstdint>
#include <string>
#include <vector>

namespace cwbtool {

// What a bad rectangle should have looked like, for error messages.
constexpr const char* kRectSyntax = "L,T,R,B, each decimal or 0x hexadecimal";

// The pieces of s between separators; an empty s gives one empty piece.
std::vector<std::string> split(const std::string& s, char sep);

// Decimal with an optional sign, or 0x hexadecimal, the whole token, within [min, max]. When max
// fits an int32, hexadecimal above INT32_MAX reads as the int32 with that bit pattern.
bool parseInt(const std::string& s, int64_t min, int64_t max, int64_t* out);

// Four int32 fields separated by commas.
bool parseRect(const std::string& s, ::aidl::vendor::zarel::hardware::cwb::Rect* out);

}  // namespace cwbtool
