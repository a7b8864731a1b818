#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

// What the fuzz targets make of their bytes, so that seeds can be written by hand.
namespace fuzz {

inline void Require(bool holds, const char* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "broken: %s\n", what);
    std::abort();
}

// The bytes as units; a byte 1 takes the two behind it as one unit of any value.
inline std::wstring ReadUnits(std::string_view bytes)
{
    std::wstring units;
    for (std::size_t i = 0; i < bytes.size(); ++i)
    {
        const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(bytes[at]); };
        const bool isPair = byte(i) == 1 && i + 2 < bytes.size();
        units += static_cast<wchar_t>(isPair ? byte(i + 1) | byte(i + 2) << 8 : byte(i));
        i += isPair ? 2 : 0;
    }
    return units;
}

// A text cut into pieces; all of them are empty at its end.
struct FuzzInput
{
    // What stands in front of the next mark, or all.
    std::string_view Take(std::string_view mark = "\n")
    {
        const std::string_view taken = rest.substr(0, rest.find(mark));
        rest.remove_prefix(std::min(rest.size(), taken.size() + mark.size()));
        return taken;
    }
    std::wstring TakeUnits() { return ReadUnits(Take()); }

    // The first byte, which chooses what is made of the others.
    unsigned char TakeByte()
    {
        const char first = rest.empty() ? '\0' : rest.front();
        rest.remove_prefix(rest.empty() ? 0 : 1);
        return static_cast<unsigned char>(first);
    }

    std::string_view rest;
};

// Each target has its own.
void Check(FuzzInput input);

} // namespace fuzz
