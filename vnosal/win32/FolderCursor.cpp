#include "vnosal/FolderCursor.h"

#include "vnosal/win32/Facts.h"
#include "vnosal/win32/NativePath.h"

#include <winioctl.h>

#include <new>

namespace VnOSAL {
namespace {

struct Identity
{
    DWORD volume = 0;
    std::uint64_t number = 0;
};

bool operator==(const Identity& left, const Identity& right) noexcept
{
    return left.volume == right.volume && left.number == right.number;
}

struct Level
{
    HANDLE hold; // invalid when the folder is not held
    Identity identity;
    std::size_t pathLength; // of the folder above, as it was given
    std::size_t nativeLength;
};

// Opened without leave to delete or rename, so that nobody can put a link in the folder's place.
SystemError HoldFolder(const VnString& native, EHold hold, ELinks links, Level& level) noexcept
{
    const DWORD sharing =
        FILE_SHARE_READ | FILE_SHARE_WRITE | (hold == EHold::Loose ? FILE_SHARE_DELETE : 0);
    const DWORD flags =
        FILE_FLAG_BACKUP_SEMANTICS | (links == ELinks::Keep ? FILE_FLAG_OPEN_REPARSE_POINT : 0);
    level.hold = ::CreateFileW(native.GetText(), FILE_LIST_DIRECTORY | FILE_READ_ATTRIBUTES,
                               sharing, nullptr, OPEN_EXISTING, flags, nullptr);
    BY_HANDLE_FILE_INFORMATION data;
    if (level.hold == INVALID_HANDLE_VALUE)
        return ::GetLastError();
    SystemError error = ErrorOf(::GetFileInformationByHandle(level.hold, &data));
    if (error == 0 && !(data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
        error = ERROR_DIRECTORY;
    if (error == 0 && links == ELinks::Keep)
    {
        // Asked by the path, because Wine opens what a link leads to. The path means this folder as
        // long as it is held.
        VnItemFacts facts;
        error = ReadNativeFacts(native, ELinks::Keep, facts);
        if (error == 0 && facts.kind != EItemKind::Folder)
            error = ERROR_CANT_RESOLVE_FILENAME;
    }
    if (error != 0 || hold == EHold::Loose)
    {
        ::CloseHandle(level.hold);
        level.hold = INVALID_HANDLE_VALUE;
    }
    level.identity = {data.dwVolumeSerialNumber,
                      static_cast<std::uint64_t>(data.nFileIndexHigh) << 32 | data.nFileIndexLow};
    return error;
}

bool IsDots(const wchar_t* name) noexcept
{
    return name[0] == L'.' && (name[1] == 0 || (name[1] == L'.' && name[2] == 0));
}

struct CopyProgress
{
    IByteCounter& counter;
    LONGLONG counted;
};

DWORD CALLBACK CountBytes(LARGE_INTEGER, LARGE_INTEGER transferred, LARGE_INTEGER, LARGE_INTEGER,
                          DWORD, DWORD, HANDLE, HANDLE, LPVOID context)
{
    auto& progress = *static_cast<CopyProgress*>(context);
    const LONGLONG count = transferred.QuadPart - progress.counted;
    progress.counted = transferred.QuadPart;
    return progress.counter.AddBytes(static_cast<std::uint64_t>(count)) ? PROGRESS_CONTINUE
                                                                        : PROGRESS_CANCEL;
}

VnString Below(const VnString& folder, std::wstring_view name) noexcept
{
    const wchar_t last = folder[folder.GetLength() - 1];
    const bool needsSeparator = !folder.IsEmpty() && last != L'\\' && last != L'/' && last != L':';
    return folder + (needsSeparator ? L"\\" : L"") + name;
}

// Writes the same reparse data to a new item of the same kind.
SystemError CopyReparsePoint(const VnString& from, const VnString& to, bool isFolder) noexcept
{
    constexpr DWORD flags = FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS;
    char data[MAXIMUM_REPARSE_DATA_BUFFER_SIZE];
    DWORD size = 0;
    const CHandle source(::CreateFileW(from.GetText(), FILE_READ_ATTRIBUTES,
                                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                       nullptr, OPEN_EXISTING, flags, nullptr));
    if (!source || !::DeviceIoControl(source.Get(), FSCTL_GET_REPARSE_POINT, nullptr, 0, data,
                                      sizeof(data), &size, nullptr))
        return ::GetLastError();
    if (isFolder && !::CreateDirectoryW(to.GetText(), nullptr))
        return ::GetLastError();
    const CHandle target(::CreateFileW(to.GetText(), GENERIC_WRITE, 0, nullptr,
                                       isFolder ? OPEN_EXISTING : CREATE_NEW, flags, nullptr));
    DWORD ignored = 0;
    if (!target)
        return ::GetLastError();
    return ErrorOf(::DeviceIoControl(target.Get(), FSCTL_SET_REPARSE_POINT, data, size, nullptr, 0,
                                     &ignored, nullptr));
}

} // namespace

struct CFolderCursor::State
{
    EHold holding;
    CArray<Level> levels; // the folder it started from is the first
    VnString path;
    VnString native;

    VnString NativePathOf(std::wstring_view name) const noexcept { return Below(native, name); }
    void Leave() noexcept
    {
        const Level& level = levels.GetLast();
        if (level.hold != INVALID_HANDLE_VALUE)
            ::CloseHandle(level.hold);
        path.Remove(level.pathLength);
        native.Remove(level.nativeLength);
        levels.Cut(levels.GetCount() - 1);
    }
    bool IsAbove(const Identity& identity) const noexcept
    {
        for (std::size_t i = 0; i < levels.GetCount(); ++i)
            if (levels[i].identity == identity)
                return true;
        return false;
    }
};

CFolderCursor::CFolderCursor(EHold holding) noexcept
    : state(new (std::nothrow) State{holding, {}, {}, {}})
{}

CFolderCursor::~CFolderCursor()
{
    while (state && !state->levels.IsEmpty())
        state->Leave();
    delete state;
}

SystemError CFolderCursor::Open(const VnString& path) noexcept
{
    if (!state)
        return NumberOf(EError::OutOfMemory);
    while (!state->levels.IsEmpty())
        state->Leave();
    Level level{INVALID_HANDLE_VALUE, {}, 0, 0};
    const VnString native = ToExtendedPath(path);
    const SystemError error = HoldFolder(native, state->holding, ELinks::Follow, level);
    if (error != 0)
        return error;
    state->path = path;
    state->native = native;
    return state->levels.Append(level) ? 0 : NumberOf(EError::OutOfMemory);
}

SystemError CFolderCursor::Descend(std::wstring_view name, ELinks links) noexcept
{
    const VnString next = state->NativePathOf(name);
    Level level{INVALID_HANDLE_VALUE, {}, state->path.GetLength(), state->native.GetLength()};
    SystemError error = HoldFolder(next, state->holding, links, level);
    if (error == 0 && links == ELinks::Follow && state->IsAbove(level.identity))
        error = ERROR_CANT_RESOLVE_FILENAME;
    if (error == 0 && !state->levels.Append(level))
        error = NumberOf(EError::OutOfMemory);
    if (error != 0)
    {
        if (level.hold != INVALID_HANDLE_VALUE)
            ::CloseHandle(level.hold);
        return error;
    }
    state->path = GetPathOf(name);
    state->native = next;
    return 0;
}

SystemError CFolderCursor::Ascend() noexcept
{
    state->Leave();
    return 0;
}

const VnString& CFolderCursor::GetPath() const noexcept { return state->path; }

VnString CFolderCursor::GetPathOf(std::wstring_view name) const noexcept
{
    return Below(state->path, name);
}

bool CFolderCursor::IsSame(const CFolderCursor& other) const noexcept
{
    return state->levels.GetLast().identity == other.state->levels.GetLast().identity;
}

SystemError CFolderCursor::List(CEntryList& entries) noexcept
{
    WIN32_FIND_DATAW data;
    const HANDLE found =
        ::FindFirstFileExW(state->NativePathOf(L"*").GetText(), FindExInfoBasic, &data,
                           FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH);
    if (found == INVALID_HANDLE_VALUE)
        return ::GetLastError() == ERROR_FILE_NOT_FOUND ? 0 : ::GetLastError();
    SystemError error = 0;
    do
    {
        if (!IsDots(data.cFileName) &&
            !entries.Append(data.cFileName, KindOf(data.dwFileAttributes, data.dwReserved0)))
            error = NumberOf(EError::OutOfMemory);
    } while (error == 0 && ::FindNextFileW(found, &data));
    if (error == 0 && ::GetLastError() != ERROR_NO_MORE_FILES)
        error = ::GetLastError();
    ::FindClose(found);
    return error;
}

SystemError CFolderCursor::ReadFacts(std::wstring_view name, ELinks links,
                                     VnItemFacts& facts) const noexcept
{
    return ReadNativeFacts(state->NativePathOf(name), links, facts);
}

SystemError CFolderCursor::MakeFolder(std::wstring_view name) noexcept
{
    return ErrorOf(::CreateDirectoryW(state->NativePathOf(name).GetText(), nullptr));
}

// A link is removed as a folder or as a file, according to what it leads to.
SystemError CFolderCursor::Remove(std::wstring_view name, bool) noexcept
{
    const VnString item = state->NativePathOf(name);
    const DWORD attributes = ::GetFileAttributesW(item.GetText());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return ::GetLastError();
    if ((attributes & FILE_ATTRIBUTE_READONLY) && !(attributes & FILE_ATTRIBUTE_REPARSE_POINT))
        ::SetFileAttributesW(item.GetText(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
    return ErrorOf(attributes & FILE_ATTRIBUTE_DIRECTORY ? ::RemoveDirectoryW(item.GetText())
                                                         : ::DeleteFileW(item.GetText()));
}

SystemError CFolderCursor::Replace(std::wstring_view name, std::wstring_view by) noexcept
{
    return ErrorOf(::MoveFileExW(state->NativePathOf(by).GetText(),
                                 state->NativePathOf(name).GetText(), MOVEFILE_REPLACE_EXISTING));
}

// A link that has come in the file's place is copied as a link.
SystemError CFolderCursor::CopyFileAs(std::wstring_view name, CFolderCursor& target,
                                      std::wstring_view copy, IByteCounter& counter) noexcept
{
    const VnString to = target.state->NativePathOf(copy);
    CopyProgress progress{counter, 0};
    SystemError error = ErrorOf(::CopyFileExW(state->NativePathOf(name).GetText(), to.GetText(),
                                              CountBytes, &progress, nullptr,
                                              COPY_FILE_FAIL_IF_EXISTS | COPY_FILE_COPY_SYMLINK));
    if (error != 0)
        return error;
    VnItemFacts facts; // Wine counts no bytes
    ReadNativeFacts(to, ELinks::Keep, facts);
    const auto uncounted = facts.size - static_cast<std::uint64_t>(progress.counted);
    if (facts.kind != EItemKind::File || uncounted == 0 || counter.AddBytes(uncounted))
        return 0;
    target.Remove(copy, false);
    return NumberOf(EError::Cancelled);
}

SystemError CFolderCursor::CopyLinkAs(std::wstring_view name, CFolderCursor& target,
                                      std::wstring_view copy) noexcept
{
    const VnString from = state->NativePathOf(name);
    const VnString to = target.state->NativePathOf(copy);
    const DWORD attributes = ::GetFileAttributesW(from.GetText());
    const bool isFolder = attributes & FILE_ATTRIBUTE_DIRECTORY;
    const SystemError error = CopyReparsePoint(from, to, isFolder);
    if (error != 0 && error != ERROR_ALREADY_EXISTS && error != ERROR_FILE_EXISTS)
        isFolder ? ::RemoveDirectoryW(to.GetText()) : ::DeleteFileW(to.GetText());
    return error;
}

SystemError CFolderCursor::CopyFolderFacts(std::wstring_view name, CFolderCursor& target,
                                           std::wstring_view copy) noexcept
{
    const VnString to = target.state->NativePathOf(copy);
    VnItemFacts facts;
    SystemError error = ReadFacts(name, ELinks::Keep, facts);
    if (error == 0)
        error = WriteTimes(to, facts.times);
    constexpr std::uint32_t copied =
        attributeReadOnly | attributeHidden | attributeSystem | attributeArchive;
    if (error == 0)
        error = ErrorOf(::SetFileAttributesW(to.GetText(), facts.attributes & copied));
    return error;
}

} // namespace VnOSAL
