#include "trackers/classic/ContentFolder.h"

#include "env/FileSystem.h"
#include "env/HostPaths.h"
#include "env/InstallConfig.h"

namespace trackers {

namespace {

std::wstring GetConfiguredFolder()
{
    return env::GetInstallConfigString(L"install", L"UserContentPath", L"");
}

void CreateContentFolder(const std::wstring& folder)
{
    if (folder.size() < 2)
        return;
    env::CreateMissingFolder(folder.substr(0, folder.rfind(L'\\', folder.size() - 2) + 1));
    env::CreateMissingFolder(folder);
}

} // namespace

std::wstring GetUserContentFolder(const std::wstring& companyFolderWord,
                                  const std::wstring& hostProductName)
{
    std::wstring folder = GetConfiguredFolder();
    if (!folder.empty())
        return folder;
    folder = env::GetSuiteFolder(companyFolderWord).append(L"\\").append(hostProductName) + L"\\";
    CreateContentFolder(folder);
    return folder;
}

void RestoreUserContentFolder(const std::wstring& folder)
{
    if (GetConfiguredFolder().empty())
        CreateContentFolder(folder);
}

} // namespace trackers
