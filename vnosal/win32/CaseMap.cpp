#include "vnosal/CaseMap.h"

#include <windows.h>

namespace VnOSAL {
namespace {

void Map(DWORD mapping, wchar_t* units, std::size_t count) noexcept
{
    const int length = static_cast<int>(count);
    ::LCMapStringW(LOCALE_INVARIANT, mapping, units, length, units, length);
}

} // namespace

void MapUpper(wchar_t* units, std::size_t count) noexcept { Map(LCMAP_UPPERCASE, units, count); }
void MapLower(wchar_t* units, std::size_t count) noexcept { Map(LCMAP_LOWERCASE, units, count); }

} // namespace VnOSAL
