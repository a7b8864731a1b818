#include "trackers/kpi/KpiUserId.h"

#include "env/RegistryValues.h"
#include "platform/Clock.h"
#include "platform/SystemFacts.h"
#include "text/Format.h"
#include "text/Units.h"

namespace trackers {

using text::FormatText;

namespace {

using platform::CRegistryKey;
using platform::ERegistryRoot;
using platform::ERegistryView;

const wchar_t* const idKey = L"CLSID\\{A3D17F52-6B0E-4C19-8E2A-5F71C03B9D64}";
const wchar_t* const idValue = L"ID";
constexpr std::size_t idLength = 32;   // units
constexpr std::size_t idBytes = 64;    // in the registry, where it has no terminator
constexpr std::size_t nameBuffer = 16; // units, terminator included
constexpr ERegistryRoot roots[] = {ERegistryRoot::ClassesRoot, ERegistryRoot::CurrentUser};

CRegistryKey OpenIdKey()
{
    CRegistryKey key;
    for (const ERegistryRoot root : roots)
        if (!key)
            key = CRegistryKey::Open(root, idKey, platform::ERegistryAccess::All,
                                     ERegistryView::View32);
    return key;
}

CRegistryKey CreateIdKey()
{
    CRegistryKey key;
    bool existed = false;
    for (const ERegistryRoot root : roots)
        if (!key)
            key = CRegistryKey::Create(root, idKey, ERegistryView::View32, existed);
    return key;
}

// Empty when there is none of the exact length.
std::wstring LoadKpiUserId()
{
    const CRegistryKey key = OpenIdKey();
    std::vector<std::uint8_t> bytes(idBytes);
    std::size_t size = 0;
    if (!key || key.Query(idValue, bytes, size) != platform::ERegistryQuery::Done ||
        size != idBytes)
        return {};
    return text::DecodeUnits(bytes);
}

std::wstring FindComputerName()
{
    std::wstring name;
    if (!platform::QueryComputerName(nameBuffer, name) || name.empty())
        name = L"5e0b7a93c1d24f68a0b3e9d71c4f2a86";
    return name;
}

} // namespace

std::wstring GetKpiUserId()
{
    std::wstring id = LoadKpiUserId();
    if (id.empty())
    {
        id = BuildKpiUserId(platform::GetTickMilliseconds(), platform::GetUnixTime(),
                            FindComputerName());
        if (CRegistryKey key = CreateIdKey())
            key.Set(idValue, platform::registrySz, text::EncodeUnits(id));
    }
    return id;
}

std::wstring BuildKpiUserId(std::uint32_t tick, std::int64_t time, std::wstring_view computerName)
{
    const std::wstring tickText = FormatText(L"%d", tick);
    std::wstring id = FormatText(L"%s%I64d", tickText, time);
    // A time text shorter than the tick text leaves a gap, filled so that no zero unit gets into a
    // request. That is so for two weeks after the tick count has turned negative.
    id.resize(2 * tickText.size(), L'0');
    for (std::size_t next = 0; id.size() < idLength && !computerName.empty(); ++next)
        text::AppendFormat(id, L"%d", computerName[next % computerName.size()]);
    id.resize(idLength, L'0');
    return id;
}

} // namespace trackers
