#include "vnosal/win32/NativePath.h"

#include <algorithm>

namespace VnOSAL {
namespace {

constexpr std::size_t largestPart = 0x40000000; // one call's length has 32 bits

HANDLE Native(std::intptr_t file) noexcept { return reinterpret_cast<HANDLE>(file); }

DWORD CreationOf(EOpen mode) noexcept
{
    switch (mode)
    {
    case EOpen::New:
        return CREATE_NEW;
    case EOpen::OpenOrCreate:
    case EOpen::Truncate:
        return OPEN_ALWAYS;
    default:
        return OPEN_EXISTING;
    }
}

template <class Flags>
bool Has(Flags flags, Flags one) noexcept
{
    return (static_cast<unsigned>(flags) & static_cast<unsigned>(one)) != 0;
}

} // namespace

// An existing file is cut once it is open, so that its attributes stay as they are.
SystemError OpenFile(const VnString& path, EAccess access, EOpen mode, ESharing sharing,
                     std::intptr_t& file) noexcept
{
    const DWORD rights = (Has(access, EAccess::Read) ? GENERIC_READ : 0) |
                         (Has(access, EAccess::Write) ? GENERIC_WRITE : 0);
    const DWORD shared = (Has(sharing, ESharing::Read) ? FILE_SHARE_READ : 0) |
                         (Has(sharing, ESharing::Write) ? FILE_SHARE_WRITE : 0);
    const HANDLE opened = ::CreateFileW(ToNativePath(path).GetText(), rights, shared, nullptr,
                                        CreationOf(mode), FILE_ATTRIBUTE_NORMAL, nullptr);
    if (opened == INVALID_HANDLE_VALUE)
        return ::GetLastError();
    const SystemError error = mode == EOpen::Truncate ? ErrorOf(::SetEndOfFile(opened)) : 0;
    if (error != 0)
        ::CloseHandle(opened);
    else
        file = reinterpret_cast<std::intptr_t>(opened);
    return error;
}

void CloseFile(std::intptr_t file) noexcept { ::CloseHandle(Native(file)); }

SystemError ReadFile(std::intptr_t file, void* buffer, std::size_t size, std::size_t& done) noexcept
{
    DWORD count = 0;
    const BOOL read = ::ReadFile(Native(file), buffer,
                                 static_cast<DWORD>(std::min(size, largestPart)), &count, nullptr);
    done = count;
    return ErrorOf(read);
}

SystemError WriteFile(std::intptr_t file, const void* bytes, std::size_t size,
                      std::size_t& done) noexcept
{
    DWORD count = 0;
    const BOOL written = ::WriteFile(
        Native(file), bytes, static_cast<DWORD>(std::min(size, largestPart)), &count, nullptr);
    done = count;
    return ErrorOf(written);
}

SystemError SeekFile(std::intptr_t file, std::int64_t offset, ESeek origin,
                     std::uint64_t& position) noexcept
{
    LARGE_INTEGER distance;
    LARGE_INTEGER reached;
    distance.QuadPart = offset;
    const DWORD method = origin == ESeek::Begin     ? FILE_BEGIN
                         : origin == ESeek::Current ? FILE_CURRENT
                                                    : FILE_END;
    if (!::SetFilePointerEx(Native(file), distance, &reached, method))
        return ::GetLastError();
    position = static_cast<std::uint64_t>(reached.QuadPart);
    return 0;
}

SystemError ReadFileSize(std::intptr_t file, std::uint64_t& size) noexcept
{
    LARGE_INTEGER length;
    if (!::GetFileSizeEx(Native(file), &length))
        return ::GetLastError();
    size = static_cast<std::uint64_t>(length.QuadPart);
    return 0;
}

SystemError SetFileSize(std::intptr_t file, std::uint64_t size) noexcept
{
    std::uint64_t before = 0;
    std::uint64_t ignored = 0;
    SystemError error = SeekFile(file, 0, ESeek::Current, before);
    if (error == 0)
        error = SeekFile(file, static_cast<std::int64_t>(size), ESeek::Begin, ignored);
    if (error == 0)
        error = ErrorOf(::SetEndOfFile(Native(file)));
    const SystemError back =
        SeekFile(file, static_cast<std::int64_t>(before), ESeek::Begin, ignored);
    return error != 0 ? error : back;
}

SystemError FlushFile(std::intptr_t file) noexcept
{
    return ErrorOf(::FlushFileBuffers(Native(file)));
}

} // namespace VnOSAL
