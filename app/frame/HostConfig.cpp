#include "app/frame/HostConfig.h"

#include "env/FileSystem.h"

namespace app {

std::wstring FindConfigBeside(const std::wstring& hostPath)
{
    const std::wstring path = hostPath.substr(0, hostPath.rfind(L'\\') + 1) + L"install.cfg";
    return env::PathExists(path) ? path : L"";
}

} // namespace app
