#pragma once

#include "zotracker/vnosal/VnString.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

// Drives VnString and std::wstring through the same operations, chosen by a stream of bytes.
namespace vnosal_test {

class CStringModel
{
public:
    explicit CStringModel(std::span<const std::uint8_t> script) : rest(script) {}

    // Empty when all strings agreed all the time, otherwise what went wrong.
    std::string Run();

private:
    static constexpr std::size_t slots = 4;

    bool Step();
    bool Check(std::size_t slot) const;
    std::uint8_t TakeByte();
    std::size_t TakePosition(); // around the edges of short texts and of the pools' blocks
    std::wstring TakeText();

    std::span<const std::uint8_t> rest;
    VnOSAL::VnString tested[slots];
    std::wstring model[slots];
    int operation = -1;
};

} // namespace vnosal_test
