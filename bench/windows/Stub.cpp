// A module that imports the same system libraries as ours and does nothing: what loading any such
// module costs.
// clang-format off
#include <winsock2.h>
#include <windows.h>
#include <iphlpapi.h>
#include <shlobj.h>
#include <wininet.h>
// clang-format on

#include <new>

extern "C" __declspec(dllexport) void* GetNothing(bool never)
{
    if (never)
    {
        ::GetAdaptersInfo(nullptr, nullptr);
        ::SHGetSpecialFolderPathW(nullptr, nullptr, 0, FALSE);
        ::GetFileVersionInfoSizeW(nullptr, nullptr);
        ::InternetCloseHandle(nullptr);
        ::RegCloseKey(nullptr);
        ::GetSystemMetrics(0);
        ::CoTaskMemFree(nullptr);
    }
    return new (std::nothrow) int(0);
}
