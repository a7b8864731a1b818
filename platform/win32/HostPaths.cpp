#include "platform/HostPaths.h"

#include <windows.h>

#include <shlobj.h>

#include <algorithm>

namespace platform {

namespace {

// Far beyond MAX_PATH, which the shell keeps to in the folders that it knows.
constexpr std::size_t folderUnits = 32780;

} // namespace

std::wstring GetHostExecutablePath(std::size_t limit)
{
    std::wstring path(limit, L'\0');
    const DWORD length =
        limit == 0 ? 0 : ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(limit));
    // A path that is cut is reported with the full size of the buffer.
    path.resize(limit == 0 ? 0 : std::min<std::size_t>(length, limit - 1));
    return path;
}

std::wstring GetSpecialFolder(int folderId)
{
    std::wstring path(folderUnits, L'\0');
    ::SHGetSpecialFolderPathW(nullptr, path.data(), folderId, FALSE);
    path.resize(std::min(path.find(L'\0'), path.size()));
    return path;
}

} // namespace platform
