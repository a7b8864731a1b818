#include "vnosal/SpecialFolders.h"

#include <windows.h>

#include <shlobj.h>

#include <memory>
#include <new>

namespace VnOSAL {

namespace {

constexpr std::size_t bufferUnits = 32'780;

} // namespace

VnString QuerySpecialFolder(int number) noexcept
{
    // The call is told of no size. What it writes counts, whatever it returns.
    const std::unique_ptr<wchar_t[]> path(new (std::nothrow) wchar_t[bufferUnits]());
    if (!path)
        return VnString();
    ::SHGetSpecialFolderPathW(nullptr, path.get(), number, FALSE);
    return VnString(path.get());
}

} // namespace VnOSAL
