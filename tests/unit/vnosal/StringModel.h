#pragma once

#include "tests/fuzz/FuzzInput.h"

namespace vnosal_test {

// Drives VnString and std::wstring through the same operations, chosen by the script's bytes. Empty
// when they agreed all the time, otherwise what went wrong.
std::string CompareWithModel(fuzz::FuzzInput script);

} // namespace vnosal_test
