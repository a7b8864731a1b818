#include "frame/HostConfig.h"

#include "env/FileSystem.h"

namespace frame {

std::wstring GetConfigPathBeside(const std::wstring& hostPath)
{
    return hostPath.substr(0, hostPath.rfind(L'\\') + 1) + L"install.cfg";
}

std::wstring FindConfigBeside(const std::wstring& hostPath)
{
    const std::wstring path = GetConfigPathBeside(hostPath);
    return env::PathExists(path) ? path : L"";
}

} // namespace frame
