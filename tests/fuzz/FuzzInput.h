#pragma once

#include <cstddef>
#include <cstdint>
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

// A text cut into pieces.
class CFuzzInput
{
public:
    CFuzzInput(const std::uint8_t* data, std::size_t size)
        : rest(reinterpret_cast<const char*>(data), size)
    {}

    bool IsEmpty() const { return rest.empty(); }

    // What stands in front of the next mark, or all.
    std::string_view Take(std::string_view mark = "\n")
    {
        const std::size_t end = rest.find(mark);
        const std::string_view taken = rest.substr(0, end);
        rest.remove_prefix(end == rest.npos ? rest.size() : end + mark.size());
        return taken;
    }
    std::wstring TakeUnits() { return ReadUnits(Take()); }

private:
    std::string_view rest;
};

} // namespace fuzz
