#include "trackers/classic/ContentFolder.h"

#include "env/FileSystem.h"
#include "env/HostPaths.h"
#include "env/InstallConfig.h"

namespace trackers {

std::wstring GetUserContentFolder(const std::wstring& companyFolderWord,
                                  const std::wstring& hostProductName)
{
    std::wstring configured = env::GetInstallConfigString(L"install", L"UserContentPath", L"");
    if (!configured.empty())
        return configured;
    std::wstring folder = env::GetSuiteFolder(companyFolderWord) + L"\\";
    env::CreateMissingFolder(folder);
    folder.append(hostProductName).append(L"\\");
    env::CreateMissingFolder(folder);
    return folder;
}

} // namespace trackers
