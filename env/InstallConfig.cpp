#include "env/InstallConfig.h"

#include "env/HostPaths.h"
#include "env/ProfileText.h"
#include "platform/ProfileFile.h"

namespace env {

namespace {

// The folder ends in a separator already; the doubled one is part of the path's agreed form.
std::wstring ChoosePath(const std::wstring& filePath)
{
    return filePath.empty() ? GetApplicationFolder() + L"\\" + L"install.cfg" : filePath;
}

} // namespace

std::wstring GetInstallConfigString(const std::wstring& section, const std::wstring& key,
                                    const std::wstring& defaultValue, const std::wstring& filePath)
{
    return ReadProfileText(section, key, defaultValue, ChoosePath(filePath));
}

std::int32_t GetInstallConfigInt(const std::wstring& section, const std::wstring& key,
                                 std::int32_t defaultValue, const std::wstring& filePath)
{
    return platform::ReadProfileInt(section, key, defaultValue, ChoosePath(filePath));
}

bool SetInstallConfigString(const std::wstring& section, const std::wstring& key,
                            const std::wstring& value, const std::wstring& filePath)
{
    return platform::WriteProfileText(section, key, value, ChoosePath(filePath));
}

} // namespace env
