#include "platform/SystemPaths.h"

#include "text/StandardText.h"
#include "zotracker/vnosal/VnPath.h"

#include <windows.h>

#include <algorithm>

namespace platform {

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
    return text::ToStandard(VnOSAL::VnPath::GetSpecialFolder(folderId).GetText());
}

} // namespace platform
