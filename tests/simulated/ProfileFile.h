#pragma once

#include "tests/simulated/Simulated.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

// Profile files are files of the model's disk; see Files.h for setting them up.
namespace simulated {

// One call of a profile function, as it was made.
struct ProfileCall
{
    std::wstring path;
    std::size_t bufferSize; // units; 0 unless a string is read
};
extern CState<std::vector<ProfileCall>> profileCalls;

// All calls since the last take, in order.
inline std::vector<ProfileCall> TakeProfileCalls()
{
    return std::exchange(*profileCalls.Hold(), {});
}

} // namespace simulated
