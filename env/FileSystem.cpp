#include "env/FileSystem.h"

#include "env/HostPaths.h"
#include "env/SystemDescription.h"
#include "platform/Files.h"
#include "text/Case.h"

#include <string_view>
#include <utility>

namespace env {

namespace {

constexpr std::size_t longPathLength = 261; // from here on the system wants the prefix
constexpr std::wstring_view longPathPrefix = L"\\\\?\\";

// The path in upper case with every SYSTEM32 replaced; empty when there was none to replace.
std::wstring FormNativeSystemPath(std::wstring path)
{
    static constexpr std::wstring_view redirected = L"SYSTEM32";
    text::MakeUpper(path);

    std::wstring native;
    std::size_t copied = 0;
    std::size_t found = path.find(redirected);
    if (found == std::wstring::npos)
        return native;
    for (; found != std::wstring::npos; found = path.find(redirected, copied))
    {
        native.append(path, copied, found - copied).append(L"SYSNATIVE");
        copied = found + redirected.size();
    }
    return native.append(path, copied);
}

} // namespace

bool PathExists(const std::wstring& path)
{
    if (path.empty())
        return false;
    std::wstring full = path;
    if (full.size() >= longPathLength && !full.starts_with(longPathPrefix))
        full.insert(0, longPathPrefix);
    std::wstring expanded;
    if (full.find(L'%') != std::wstring::npos &&
        platform::ExpandEnvironment(full, pathBufferSize, expanded))
        full = std::move(expanded);
    if (platform::FileSystemItemExists(full))
        return true;
    if (!Is64BitWindows())
        return false;
    const std::wstring native = FormNativeSystemPath(std::move(full));
    return !native.empty() && platform::FileSystemItemExists(native);
}

void CreateMissingFolder(const std::wstring& path)
{
    if (!PathExists(path))
        platform::CreateFolder(path);
}

} // namespace env
