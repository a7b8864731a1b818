#include "tests/simulated/SystemPaths.h"

#include "platform/SystemPaths.h"

namespace simulated {

CState<SystemPaths> paths;

} // namespace simulated

namespace platform {

std::wstring GetHostExecutablePath(std::size_t limit)
{
    return limit == 0 ? std::wstring() : simulated::paths->executable.substr(0, limit - 1);
}

std::wstring GetSpecialFolder(int folderId) { return simulated::paths->specialFolders[folderId]; }

} // namespace platform
