#include "tests/platform/System.h"

#include <windows.h>

#include <algorithm>

namespace contract {

void BeginCase() {}

std::vector<std::wstring> ListFiles(const std::wstring& folder)
{
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW found = {};
    const HANDLE search = ::FindFirstFileW((folder + L"\\*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return names;
    do
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
            names.emplace_back(found.cFileName);
    while (::FindNextFileW(search, &found) != 0);
    ::FindClose(search);
    std::sort(names.begin(), names.end());
    return names;
}

void RemoveFolder(const std::wstring& folder)
{
    for (const std::wstring& name : ListFiles(folder))
        ::DeleteFileW((folder + L"\\" + name).c_str());
    ::RemoveDirectoryW(folder.c_str());
}

void SetReadOnly(const std::wstring& path, bool readOnly)
{
    ::SetFileAttributesW(path.c_str(), readOnly ? FILE_ATTRIBUTE_READONLY : FILE_ATTRIBUTE_NORMAL);
}

void SetEnvironmentText(const std::wstring& name, const std::wstring& value)
{
    ::SetEnvironmentVariableW(name.c_str(), value.c_str());
}

void RemoveKey(platform::ERegistryRoot root, const std::wstring& subKey,
               platform::ERegistryView view)
{
    const bool isView32 = view == platform::ERegistryView::View32;
    ::RegDeleteKeyExW(root == platform::ERegistryRoot::ClassesRoot ? HKEY_CLASSES_ROOT
                                                                   : HKEY_CURRENT_USER,
                      subKey.c_str(), isView32 ? KEY_WOW64_32KEY : KEY_WOW64_64KEY, 0);
}

} // namespace contract
