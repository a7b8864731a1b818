#pragma once

#include <cstddef>

// Upper-case and lower-case forms of single UTF-16 units in the system's invariant table. Any
// thread.
namespace VnOSAL {

void MapUpper(wchar_t* units, std::size_t count) noexcept;
void MapLower(wchar_t* units, std::size_t count) noexcept;

// What case-insensitive comparison compares.
inline wchar_t FoldUnit(wchar_t unit) noexcept
{
    if (unit < 0x80)
        return unit >= L'a' && unit <= L'z' ? static_cast<wchar_t>(unit - 0x20) : unit;
    MapUpper(&unit, 1);
    return unit;
}

} // namespace VnOSAL
