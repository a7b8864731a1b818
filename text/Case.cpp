#include "text/Case.h"

#include "vnosal/CaseMap.h"
#include "vnosal/TextView.h"

namespace text {

void MakeUpper(std::span<wchar_t> units) noexcept { VnOSAL::MapUpper(units.data(), units.size()); }

void MakeLower(std::span<wchar_t> units) noexcept { VnOSAL::MapLower(units.data(), units.size()); }

bool EqualIgnoringCase(std::wstring_view one, std::wstring_view other) noexcept
{
    return VnOSAL::EqualTexts(one, other, VnOSAL::ECase::Ignore);
}

} // namespace text
