#include "vnosal/win32/NativePath.h"

namespace VnOSAL {
namespace {

constexpr std::size_t longestPlainFolder = 247; // a folder leaves room for a short file name

VnString ReadFullPath(const VnString& path) noexcept
{
    VnString full;
    DWORD room = MAX_PATH;
    for (;;) // the current folder may become longer between two calls
    {
        wchar_t* const units = full.OpenBuffer(room);
        const DWORD length =
            units ? ::GetFullPathNameW(path.GetText(), room + 1, units, nullptr) : 0;
        if (length <= room)
        {
            if (units)
                full.CloseBuffer(length);
            return full;
        }
        room = length;
    }
}

} // namespace

VnString ToExtendedPath(const VnString& path) noexcept
{
    const VnPath parsed(path);
    if (parsed.GetForm() == EPathForm::Extended)
        return path;
    if (parsed.IsUrl())
        return {};
    const VnString full = ReadFullPath(path.IsEmpty() ? VnString(L".") : path);
    const VnPath complete(full);
    const bool isPlain =
        complete.GetForm() == EPathForm::DriveAbsolute || complete.GetForm() == EPathForm::Unc;
    return isPlain ? VnPath(full).MakeExtended().GetText() : full;
}

VnString ToNativePath(const VnString& path) noexcept
{
    if (path.IsEmpty() || VnPath(path).IsUrl())
        return {};
    return path.GetLength() > longestPlainFolder ? ToExtendedPath(path) : path;
}

VnString CleanPath(const VnString& path) noexcept { return VnPath(path).Normalise().GetText(); }

} // namespace VnOSAL
