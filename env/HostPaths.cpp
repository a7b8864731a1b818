#include "env/HostPaths.h"

#include "env/ProcessCache.h"
#include "platform/SystemPaths.h"
#include "zotracker/vnosal/VnPath.h"

#include <new>

namespace env {

namespace {

constexpr int commonApplicationData = 35; // CSIDL_COMMON_APPDATA

std::wstring FindApplicationFolder()
{
    const std::wstring path = platform::GetHostExecutablePath(pathBufferSize);
    const std::size_t separator = path.rfind(L'\\');
    return (separator == std::wstring::npos ? L"" : path.substr(0, separator)) + L"\\";
}

std::wstring GetCommonDataFolder()
{
    return CProcessCache::Get().FindOrKeep(ECachedText::CommonDataFolder, [] {
        return platform::GetSpecialFolder(commonApplicationData);
    });
}

} // namespace

std::wstring GetApplicationFolder()
{
    return CProcessCache::Get().FindOrKeep(ECachedText::ApplicationFolder, FindApplicationFolder);
}

std::wstring GetApplicationFilePath()
{
    return CProcessCache::Get().FindOrKeep(ECachedText::ApplicationFilePath, [] {
        return platform::GetHostExecutablePath(pathBufferSize);
    });
}

std::wstring GetFileName(const std::wstring& path)
{
    const VnOSAL::VnPath parsed(path);
    if (!parsed.GetText().IsValid())
        throw std::bad_alloc();
    return std::wstring(parsed.GetFileName());
}

std::wstring GetSpecialFolderPath(int folderId)
{
    return (folderId == commonApplicationData ? GetCommonDataFolder()
                                              : platform::GetSpecialFolder(folderId)) +
           L"\\";
}

std::wstring GetSuiteFolder(const std::wstring& companyFolderWord)
{
    const std::wstring parent = GetSpecialFolderPath(commonApplicationData);
    // "\\veltrano" would be a server, and be looked for on the network while the host waits.
    return (parent == L"\\" ? L"\\\\?" : parent) + L"\\" + companyFolderWord;
}

} // namespace env
