#include "frame/HostConfig.h"

#include "env/FileSystem.h"

#include <algorithm>

namespace frame {

std::wstring GetConfigPathBeside(const std::wstring& hostPath)
{
    std::wstring path = hostPath;
    // A path without a backslash would be one in the folder of Windows for the profile functions.
    std::replace(path.begin(), path.end(), L'/', L'\\');
    const std::size_t end = path.rfind(L'\\');
    return path.substr(0, end == path.npos ? 0 : end) + L"\\install.cfg";
}

std::wstring FindConfigBeside(const std::wstring& hostPath)
{
    const std::wstring path = GetConfigPathBeside(hostPath);
    return env::PathExists(path) ? path : L"";
}

} // namespace frame
