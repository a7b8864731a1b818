#include "vnosal/FileSystem.h"

#include <windows.h>

namespace VnOSAL {
namespace {

// The first number of a kind is the one that stands for it.
constexpr struct
{
    DWORD error;
    EError kind;
} errorKinds[] = {
    {ERROR_SUCCESS, EError::None},
    {ERROR_FILE_NOT_FOUND, EError::NotFound},
    {ERROR_PATH_NOT_FOUND, EError::NotFound},
    {ERROR_BAD_NETPATH, EError::NotFound},
    {ERROR_BAD_NET_NAME, EError::NotFound},
    {ERROR_DIRECTORY, EError::NotFound},
    {ERROR_NOT_READY, EError::NotFound},
    {ERROR_ALREADY_EXISTS, EError::Exists},
    {ERROR_FILE_EXISTS, EError::Exists},
    {ERROR_ACCESS_DENIED, EError::Denied},
    {ERROR_WRITE_PROTECT, EError::Denied},
    {ERROR_PRIVILEGE_NOT_HELD, EError::Denied},
    {ERROR_SHARING_VIOLATION, EError::InUse},
    {ERROR_LOCK_VIOLATION, EError::InUse},
    {ERROR_DIR_NOT_EMPTY, EError::NotEmpty},
    {ERROR_DISK_FULL, EError::NoSpace},
    {ERROR_HANDLE_DISK_FULL, EError::NoSpace},
    {ERROR_NOT_SAME_DEVICE, EError::OtherVolume},
    {ERROR_INVALID_NAME, EError::BadPath},
    {ERROR_BAD_PATHNAME, EError::BadPath},
    {ERROR_FILENAME_EXCED_RANGE, EError::BadPath},
    {ERROR_INVALID_HANDLE, EError::BadPath},
    {ERROR_CANT_RESOLVE_FILENAME, EError::BadPath},
    {ERROR_FILE_TOO_LARGE, EError::TooLarge},
    {ERROR_NOT_SUPPORTED, EError::NotSupported},
    {ERROR_CALL_NOT_IMPLEMENTED, EError::NotSupported},
    {ERROR_CANCELLED, EError::Cancelled},
    {ERROR_REQUEST_ABORTED, EError::Cancelled},
    {ERROR_NOT_ENOUGH_MEMORY, EError::OutOfMemory},
    {ERROR_OUTOFMEMORY, EError::OutOfMemory},
    {ERROR_GEN_FAILURE, EError::Other},
};

} // namespace

EError ReadErrorKind(SystemError error) noexcept
{
    for (const auto& known : errorKinds)
        if (known.error == error)
            return known.kind;
    return EError::Other;
}

SystemError NumberOf(EError kind) noexcept
{
    for (const auto& known : errorKinds)
        if (known.kind == kind)
            return known.error;
    return ERROR_GEN_FAILURE;
}

VnString ReadErrorText(SystemError error) noexcept
{
    wchar_t text[512] = L"";
    const DWORD length =
        ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error,
                         0, text, ARRAYSIZE(text), nullptr);
    return length != 0 ? VnString(text).TrimRight() : VnString::Format(L"error %u", error);
}

std::uint32_t GetProcessNumber() noexcept { return ::GetCurrentProcessId(); }

} // namespace VnOSAL
