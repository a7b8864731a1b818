#include "vnosal/CaseMap.h"

#include <clocale>
#include <cwctype>

namespace VnOSAL {
namespace {

// The locale whose tables are Unicode's own, whatever the process has set; without it only ASCII
// letters have a case.
locale_t UnicodeLocale() noexcept
{
    static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", locale_t{});
    return unicode;
}

// Maps by `convert`; ASCII letters, which begin with `first`, without asking the locale.
template <class Convert>
void Map(wchar_t* units, std::size_t count, wchar_t first, Convert convert) noexcept
{
    const locale_t unicode = UnicodeLocale();
    for (wchar_t* unit = units; unit != units + count; ++unit)
    {
        if (*unit < 0x80)
        {
            if (*unit >= first && *unit < first + 26)
                *unit ^= 0x20;
            continue;
        }
        const wint_t mapped = convert(static_cast<wint_t>(*unit), unicode);
        if (mapped <= 0xFFFF)
            *unit = static_cast<wchar_t>(mapped);
    }
}

} // namespace

void MapUpper(wchar_t* units, std::size_t count) noexcept
{
    Map(units, count, L'a', [](wint_t unit, locale_t unicode) {
        return unicode ? towupper_l(unit, unicode) : towupper(unit);
    });
}

void MapLower(wchar_t* units, std::size_t count) noexcept
{
    Map(units, count, L'A', [](wint_t unit, locale_t unicode) {
        return unicode ? towlower_l(unit, unicode) : towlower(unit);
    });
}

} // namespace VnOSAL
