#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace collector {

// Runs the program, found as a shell finds it, without standard input and with these additions to
// the environment ("NAME=VALUE"), until it ends. Its exit code, 128 + N when signal N ended it;
// nothing when it still ran at the timeout (0: none) and was killed with what it had started.
// Throws std::runtime_error when it cannot be started.
std::optional<int> RunHost(const std::vector<std::string>& arguments,
                           const std::vector<std::string>& environment,
                           std::chrono::seconds timeout);

} // namespace collector
