#include "tests/simulated/HostPaths.h"

#include "platform/HostPaths.h"

#include <map>
#include <mutex>

namespace simulated {

namespace {

struct HostPaths
{
    std::wstring executable = L"C:\\Host\\Host.exe";
    std::map<int, std::wstring> specialFolders = {{35, L"C:\\ProgramData"}};
};

std::mutex mutex;
HostPaths paths; // guarded by `mutex`

} // namespace

void SetHostExecutablePath(const std::wstring& path)
{
    const std::scoped_lock lock(mutex);
    paths.executable = path;
}

void SetSpecialFolder(int folderId, const std::wstring& path)
{
    const std::scoped_lock lock(mutex);
    paths.specialFolders[folderId] = path;
}

void ResetHostPaths()
{
    const std::scoped_lock lock(mutex);
    paths = {};
}

} // namespace simulated

namespace platform {

std::wstring GetHostExecutablePath(std::size_t limit)
{
    const std::scoped_lock lock(simulated::mutex);
    return limit == 0 ? std::wstring() : simulated::paths.executable.substr(0, limit - 1);
}

std::wstring GetSpecialFolder(int folderId)
{
    const std::scoped_lock lock(simulated::mutex);
    const auto found = simulated::paths.specialFolders.find(folderId);
    return found == simulated::paths.specialFolders.end() ? std::wstring() : found->second;
}

} // namespace platform
