#include "vnosal/SpecialFolders.h"

#include <windows.h>

#include <shlobj.h>

namespace VnOSAL {

VnString QuerySpecialFolder(int number) noexcept
{
    wchar_t path[MAX_PATH] = L"";
    return ::SHGetSpecialFolderPathW(nullptr, path, number, FALSE) ? VnString(path) : VnString();
}

} // namespace VnOSAL
