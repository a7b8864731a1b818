#include "env/SystemDescription.h"

#include "env/LanguageTable.h"
#include "env/ProcessCache.h"
#include "platform/SystemFacts.h"
#include "text/Format.h"
#include "text/StandardText.h"

namespace env {

namespace {

constexpr std::uint16_t x64Architecture = 9; // PROCESSOR_ARCHITECTURE_AMD64

bool QueryIsX64()
{
    std::uint16_t architecture = 0;
    return platform::QueryNativeArchitecture(architecture) && architecture == x64Architecture;
}

} // namespace

std::wstring GetOsVersionString()
{
    platform::SystemVersion version = {};
    if (!platform::QueryVersionEx(version))
    {
        const std::uint32_t packed = platform::QueryPackedVersion();
        version = {packed & 0xFF, (packed >> 8) & 0xFF};
    }
    return text::FormatText(L"%lu.%lu", version.major, version.minor);
}

bool Is64BitWindows()
{
    std::atomic<int>& state = CProcessCache::Get().nativeX64State;
    if (state < 0)
        state = QueryIsX64() ? 0 : 1;
    return state == 0;
}

std::wstring GetUserLanguageCode()
{
    return text::ToStandard(GetLanguageCode(platform::GetUserDefaultLanguageId()));
}

std::wstring DescribeSystem()
{
    return text::FormatText(L"Windows NT %s", GetOsVersionString()) +
           (Is64BitWindows() ? L"; WOW64" : L"");
}

} // namespace env
