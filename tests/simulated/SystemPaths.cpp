#include "tests/simulated/SystemPaths.h"

#include "platform/SystemPaths.h"
#include "tests/simulated/State.h"

#include <map>

namespace simulated {

namespace {

struct HostPaths
{
    std::wstring executable = L"C:\\Host\\Host.exe";
    std::map<int, std::wstring> specialFolders = {{35, L"C:\\ProgramData"}};
};

CState<HostPaths> paths;

} // namespace

void SetHostExecutablePath(const std::wstring& path) { paths->executable = path; }

void SetSpecialFolder(int folderId, const std::wstring& path)
{
    paths->specialFolders[folderId] = path;
}

} // namespace simulated

namespace platform {

std::wstring GetHostExecutablePath(std::size_t limit)
{
    return limit == 0 ? std::wstring() : simulated::paths->executable.substr(0, limit - 1);
}

std::wstring GetSpecialFolder(int folderId) { return simulated::paths->specialFolders[folderId]; }

} // namespace platform
