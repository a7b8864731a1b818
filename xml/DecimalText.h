#pragma once

#include <cstdint>
#include <string_view>

// Numbers that a text begins with; what follows them is ignored. White space and a sign may
// precede. 0 when there is no number. Any thread.
namespace xml {

// The nearest limit when the number does not fit.
std::int32_t ReadInteger(std::string_view text);
std::int64_t ReadInteger64(std::string_view text);

// Takes a decimal comma for a decimal point and an exponent into account: "3,5" is 3.5.
double ReadNumber(std::string_view text);

} // namespace xml
