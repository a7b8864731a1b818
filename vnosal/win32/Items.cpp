#include "vnosal/FileSystem.h"

#include "vnosal/win32/NativePath.h"

#include <objbase.h>
#include <shellapi.h>
#include <shlobj.h>

#include <cstring>

namespace VnOSAL {

SystemError MakeFolder(const VnString& path) noexcept
{
    return ErrorOf(::CreateDirectoryW(ToNativePath(path).GetText(), nullptr));
}

SystemError RemoveItem(const VnString& path) noexcept
{
    const VnString native = ToNativePath(path);
    const DWORD attributes = ::GetFileAttributesW(native.GetText());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return ::GetLastError();
    return ErrorOf(attributes & FILE_ATTRIBUTE_DIRECTORY ? ::RemoveDirectoryW(native.GetText())
                                                         : ::DeleteFileW(native.GetText()));
}

SystemError MoveItem(const VnString& from, const VnString& to, EReplace replace) noexcept
{
    return ErrorOf(::MoveFileExW(ToNativePath(from).GetText(), ToNativePath(to).GetText(),
                                 replace == EReplace::Existing ? MOVEFILE_REPLACE_EXISTING : 0));
}

// The shell takes no long paths, and a list of them with a zero behind each.
SystemError RecycleItem(const VnString& path) noexcept
{
    VnString list = VnPath(ToExtendedPath(path)).RemoveExtended().GetText();
    if (::GetFileAttributesW(list.GetText()) == INVALID_FILE_ATTRIBUTES)
        return ::GetLastError();
    if (list.GetLength() >= MAX_PATH)
        return NumberOf(EError::NotSupported);
    list.Append(L'\0');
    SHFILEOPSTRUCTW operation = {};
    operation.wFunc = FO_DELETE;
    operation.pFrom = list.GetText();
    operation.fFlags = FOF_ALLOWUNDO | FOF_NOCONFIRMATION | FOF_NOERRORUI | FOF_SILENT;
    const int result = ::SHFileOperationW(&operation);
    if (result == 0 && operation.fAnyOperationsAborted)
        return NumberOf(EError::Cancelled);
    return static_cast<SystemError>(result);
}

VnString ResolveKnownFolder(const VnString& identifier) noexcept
{
    GUID folder;
    wchar_t* found = nullptr;
    if (FAILED(::IIDFromString(identifier.GetText(), &folder)))
        return {};
    const HRESULT result = ::SHGetKnownFolderPath(folder, 0, nullptr, &found);
    const VnString path = SUCCEEDED(result) ? VnString(found) : VnString();
    ::CoTaskMemFree(found);
    return path;
}

} // namespace VnOSAL
