#include "vnosal/win32/Facts.h"

#include "vnosal/win32/NativePath.h"

namespace VnOSAL {
namespace {

constexpr std::int64_t ticksFrom1601To1970 = 116'444'736'000'000'000;

std::int64_t FromFileTime(const FILETIME& time) noexcept
{
    const auto ticks = static_cast<std::int64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
    return ticks == 0 ? noTime : ticks - ticksFrom1601To1970;
}

// Zero leaves a file's time as it is.
FILETIME ToFileTime(std::int64_t time) noexcept
{
    const auto ticks = time == noTime ? 0 : static_cast<std::uint64_t>(time) + ticksFrom1601To1970;
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

CHandle OpenForFacts(const VnString& native, DWORD access, ELinks links) noexcept
{
    const DWORD flags =
        FILE_FLAG_BACKUP_SEMANTICS | (links == ELinks::Keep ? FILE_FLAG_OPEN_REPARSE_POINT : 0);
    return CHandle(::CreateFileW(native.GetText(), access,
                                 FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                 OPEN_EXISTING, flags, nullptr));
}

std::uint64_t JoinSize(DWORD high, DWORD low) noexcept
{
    return static_cast<std::uint64_t>(high) << 32 | low;
}

template <class Data>
void TakeFacts(const Data& data, EItemKind kind, VnItemFacts& facts) noexcept
{
    facts.kind = kind;
    facts.attributes = data.dwFileAttributes;
    facts.size = kind == EItemKind::File ? JoinSize(data.nFileSizeHigh, data.nFileSizeLow) : 0;
    facts.times = {FromFileTime(data.ftCreationTime), FromFileTime(data.ftLastWriteTime),
                   FromFileTime(data.ftLastAccessTime)};
}

SystemError ReadTargetFacts(const VnString& native, VnItemFacts& facts) noexcept
{
    const CHandle item = OpenForFacts(native, FILE_READ_ATTRIBUTES, ELinks::Follow);
    BY_HANDLE_FILE_INFORMATION data;
    if (!item || !::GetFileInformationByHandle(item.Get(), &data))
        return ::GetLastError();
    TakeFacts(data, KindOf(data.dwFileAttributes & ~DWORD{FILE_ATTRIBUTE_REPARSE_POINT}, 0), facts);
    return 0;
}

// Which reparse point it is can be read from the entry in its folder.
DWORD ReadTag(const VnString& native) noexcept
{
    WIN32_FIND_DATAW data;
    const HANDLE found = ::FindFirstFileW(native.GetText(), &data);
    if (found == INVALID_HANDLE_VALUE)
        return 0;
    ::FindClose(found);
    return data.dwReserved0;
}

} // namespace

EItemKind KindOf(DWORD attributes, DWORD tag) noexcept
{
    const bool isLink =
        (attributes & FILE_ATTRIBUTE_REPARSE_POINT) && (tag == 0 || IsReparseTagNameSurrogate(tag));
    return isLink                                  ? EItemKind::Link
           : attributes & FILE_ATTRIBUTE_DIRECTORY ? EItemKind::Folder
           : attributes & FILE_ATTRIBUTE_DEVICE    ? EItemKind::Other
                                                   : EItemKind::File;
}

SystemError ReadNativeFacts(const VnString& native, ELinks links, VnItemFacts& facts) noexcept
{
    if (links == ELinks::Follow)
        return ReadTargetFacts(native, facts);
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!::GetFileAttributesExW(native.GetText(), GetFileExInfoStandard, &data))
        return ::GetLastError();
    const bool isPoint = data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT;
    TakeFacts(data, KindOf(data.dwFileAttributes, isPoint ? ReadTag(native) : 0), facts);
    return 0;
}

SystemError ReadItemFacts(const VnString& path, ELinks links, VnItemFacts& facts) noexcept
{
    return ReadNativeFacts(ToNativePath(path), links, facts);
}

SystemError WriteAttributes(const VnString& path, std::uint32_t attributes) noexcept
{
    return ErrorOf(::SetFileAttributesW(ToNativePath(path).GetText(), attributes));
}

SystemError WriteTimes(const VnString& path, const VnItemTimes& times) noexcept
{
    const CHandle item = OpenForFacts(ToNativePath(path), FILE_WRITE_ATTRIBUTES, ELinks::Follow);
    if (!item)
        return ::GetLastError();
    const FILETIME created = ToFileTime(times.created);
    const FILETIME accessed = ToFileTime(times.accessed);
    const FILETIME written = ToFileTime(times.written);
    return ErrorOf(::SetFileTime(item.Get(), &created, &accessed, &written));
}

} // namespace VnOSAL
