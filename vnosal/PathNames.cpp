#include "zotracker/vnosal/VnPath.h"

#include "vnosal/PathText.h"
#include "vnosal/SpecialFolders.h"

namespace VnOSAL {
namespace {

constexpr std::wstring_view deviceNames[] = {L"CON", L"PRN", L"AUX", L"NUL", L"CONIN$", L"CONOUT$"};
constexpr std::wstring_view numberedDevices[] = {L"COM", L"LPT"};
constexpr std::wstring_view deviceNumbers = L"123456789\xB9\xB2\xB3";
constexpr std::wstring_view forbiddenUnits = L"<>:\"/\\|?*";
constexpr std::size_t longestName = 255;

} // namespace

bool VnPath::IsDeviceName(std::wstring_view name) noexcept
{
    VnString base(Part(name, 0, name.find_first_of(L".:")));
    base.TrimRight(L" ");
    for (const std::wstring_view device : deviceNames)
        if (EqualTexts(base, device, ECase::Ignore))
            return true;
    for (const std::wstring_view device : numberedDevices)
        if (base.GetLength() == 4 && base.StartsWith(device, ECase::Ignore))
            return deviceNumbers.find(base[3]) != VnString::npos;
    return false;
}

bool VnPath::IsValidFileName(std::wstring_view name) noexcept
{
    if (name.empty() || name.size() > longestName || name.back() == L'.' || name.back() == L' ')
        return false;
    for (const wchar_t unit : name)
        if (unit < L' ' || forbiddenUnits.find(unit) != VnString::npos)
            return false;
    return !IsDeviceName(name);
}

VnPath VnPath::GetSpecialFolder(int number) noexcept { return VnPath(QuerySpecialFolder(number)); }

} // namespace VnOSAL
