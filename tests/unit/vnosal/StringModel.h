#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace vnosal_test {

// Drives VnString and std::wstring through the same operations, chosen by the script's bytes. Empty
// when they agreed all the time, otherwise what went wrong.
std::string CompareWithModel(std::span<const std::uint8_t> script);

} // namespace vnosal_test
