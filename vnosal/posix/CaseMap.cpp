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

bool IsMapped(wint_t mapped) noexcept { return mapped <= 0xFFFF; }

} // namespace

void MapUpper(wchar_t* units, std::size_t count) noexcept
{
    const locale_t unicode = UnicodeLocale();
    for (wchar_t* unit = units; unit != units + count; ++unit)
    {
        if (*unit < 0x80)
        {
            *unit = FoldUnit(*unit);
            continue;
        }
        const auto from = static_cast<wint_t>(*unit);
        const wint_t mapped = unicode ? towupper_l(from, unicode) : towupper(from);
        if (IsMapped(mapped))
            *unit = static_cast<wchar_t>(mapped);
    }
}

void MapLower(wchar_t* units, std::size_t count) noexcept
{
    const locale_t unicode = UnicodeLocale();
    for (wchar_t* unit = units; unit != units + count; ++unit)
    {
        const auto from = static_cast<wint_t>(*unit);
        const wint_t mapped = unicode ? towlower_l(from, unicode) : towlower(from);
        if (IsMapped(mapped))
            *unit = static_cast<wchar_t>(mapped);
    }
}

} // namespace VnOSAL
