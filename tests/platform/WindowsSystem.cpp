#include "tests/platform/System.h"

#include <windows.h>

#include <filesystem>

namespace contract {

void Clean()
{
    std::filesystem::remove_all(folder);
    ::SetEnvironmentVariableW(L"ZO_CONTRACT", L"va%lue");
    for (const REGSAM view : {KEY_WOW64_32KEY, KEY_WOW64_64KEY})
    {
        ::RegDeleteKeyExW(HKEY_CLASSES_ROOT, classKey.c_str(), view, 0);
        for (const std::wstring& key : {classKey, otherKey})
            ::RegDeleteKeyExW(HKEY_CURRENT_USER, key.c_str(), view, 0);
    }
}

} // namespace contract
