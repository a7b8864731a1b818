#include "env/ModuleVersion.h"

#include "env/HostPaths.h"
#include "env/ProcessCache.h"
#include "platform/VersionResource.h"
#include "text/Format.h"

namespace env {

namespace {

std::wstring ReadVersionEntry(const std::wstring& filePath, std::wstring_view entry)
{
    const platform::CVersionResource resource(filePath);
    std::uint16_t language = 0;
    std::uint16_t codePage = 0;
    if (resource.IsEmpty() || !resource.QueryFirstTranslation(language, codePage))
        return {};
    return resource.QueryText(
        text::FormatText(L"\\StringFileInfo\\%4.4x%4.4x\\%s", language, codePage, entry));
}

} // namespace

std::wstring GetFileProductName(const std::wstring& filePath)
{
    return ReadVersionEntry(filePath, L"ProductName");
}

std::wstring GetFileProductVersion(const std::wstring& filePath)
{
    return ReadVersionEntry(filePath, L"ProductVersion");
}

std::wstring GetApplicationProductName() { return GetFileProductName(GetApplicationFilePath()); }

std::wstring GetApplicationProductVersion()
{
    return CProcessCache::Get().FindOrKeep(ECachedText::ProductVersion, [] {
        return GetFileProductVersion(GetApplicationFilePath());
    });
}

} // namespace env
