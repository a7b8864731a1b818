#include "vnosal/FolderCursor.h"

#include "vnosal/posix/Facts.h"
#include "vnosal/posix/NativeName.h"

#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <new>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace VnOSAL {
namespace {

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

// Sole owner of an open file or folder.
class CDescriptor
{
public:
    explicit CDescriptor(int taken = -1) noexcept : raw(taken) {}
    CDescriptor(CDescriptor&& other) noexcept : raw(std::exchange(other.raw, -1)) {}
    CDescriptor& operator=(CDescriptor&& other) noexcept
    {
        std::swap(raw, other.raw);
        return *this;
    }
    ~CDescriptor()
    {
        if (raw != -1)
            close(raw);
    }
    int Get() const noexcept { return raw; }
    explicit operator bool() const noexcept { return raw != -1; }

private:
    int raw;
};

struct Identity
{
    dev_t device = 0;
    ino_t number = 0;
    bool operator==(const Identity&) const = default;
};

SystemError ReadIdentity(const CDescriptor& folder, Identity& identity) noexcept
{
    struct stat status;
    if (fstat(folder.Get(), &status) != 0)
        return ErrorOf(-1);
    identity = {status.st_dev, status.st_ino};
    return 0;
}

struct Level
{
    Identity identity;
    std::string name;       // in the folder above
    std::size_t pathLength; // of the folder above
    bool isLink;
};

EItemKind KindOfEntry(int folder, const dirent& entry) noexcept
{
    switch (entry.d_type)
    {
    case DT_REG:
        return EItemKind::File;
    case DT_DIR:
        return EItemKind::Folder;
    case DT_LNK:
        return EItemKind::Link;
    case DT_UNKNOWN:
        break;
    default:
        return EItemKind::Other;
    }
    struct stat status;
    return fstatat(folder, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 ? KindOf(status.st_mode)
                                                                            : EItemKind::None;
}

bool IsDots(const char* name) noexcept
{
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

SystemError CopyBytes(int from, int to, IByteCounter& counter)
{
    std::vector<char> buffer(262'144);
    for (;;)
    {
        const ssize_t count = read(from, buffer.data(), buffer.size());
        if (count <= 0)
            return ErrorOf(count);
        for (ssize_t written = 0; written < count;)
        {
            const ssize_t part =
                write(to, buffer.data() + written, static_cast<std::size_t>(count - written));
            if (part == -1)
                return ErrorOf(-1);
            written += part;
        }
        if (!counter.AddBytes(static_cast<std::uint64_t>(count)))
            return NumberOf(EError::Cancelled);
    }
}

SystemError CopyFacts(int from, int to) noexcept
{
    struct stat status;
    if (fstat(from, &status) != 0 || fchmod(to, status.st_mode & 0777) != 0)
        return ErrorOf(-1);
    const timespec stamps[] = {status.st_atim, status.st_mtim};
    return ErrorOf(futimens(to, stamps));
}

} // namespace

// Only the folder it started from and the one it is at are open.
struct CFolderCursor::State
{
    CDescriptor start;
    CDescriptor current;
    Identity startIdentity;
    std::vector<Level> levels;
    VnString path;

    const Identity& GetIdentity() const noexcept
    {
        return levels.empty() ? startIdentity : levels.back().identity;
    }
    bool IsAbove(const Identity& identity) const noexcept
    {
        for (const Level& level : levels)
            if (level.identity == identity)
                return true;
        return startIdentity == identity;
    }

    // The way down from the start again: what ".." means behind a link.
    CDescriptor Reopen() const
    {
        CDescriptor folder(openat(start.Get(), ".", folderFlags));
        for (const Level& level : levels)
            folder = CDescriptor(openat(folder.Get(), level.name.c_str(),
                                        folderFlags | (level.isLink ? 0 : O_NOFOLLOW)));
        return folder;
    }
};

CFolderCursor::CFolderCursor(EHold) noexcept : state(new (std::nothrow) State) {}
CFolderCursor::~CFolderCursor() { delete state; }

SystemError CFolderCursor::Open(const VnString& path) noexcept
{
    std::string native;
    if (!state)
        return NumberOf(EError::OutOfMemory);
    if (!ToNativePath(path.IsEmpty() ? VnString(L".") : path, native))
        return NumberOf(EError::BadPath);
    state->start = CDescriptor(open(native.c_str(), folderFlags));
    if (!state->start)
        return ErrorOf(-1);
    state->current = CDescriptor(openat(state->start.Get(), ".", folderFlags));
    state->levels.clear();
    state->path = path;
    return state->current ? ReadIdentity(state->start, state->startIdentity) : ErrorOf(-1);
}

SystemError CFolderCursor::Descend(std::wstring_view name, ELinks links) noexcept
{
    Level level{{}, ToNativeName(name), state->path.GetLength(), links == ELinks::Follow};
    CDescriptor next(openat(state->current.Get(), level.name.c_str(),
                            folderFlags | (level.isLink ? 0 : O_NOFOLLOW)));
    if (!next)
        return ErrorOf(-1);
    const SystemError error = ReadIdentity(next, level.identity);
    if (error != 0)
        return error;
    if (level.isLink && state->IsAbove(level.identity))
        return ELOOP;
    state->path = GetPathOf(name);
    state->current = std::move(next);
    state->levels.push_back(std::move(level));
    return 0;
}

SystemError CFolderCursor::Ascend() noexcept
{
    state->path.Remove(state->levels.back().pathLength);
    state->levels.pop_back();
    Identity identity;
    CDescriptor above(openat(state->current.Get(), "..", folderFlags));
    if (!above || ReadIdentity(above, identity) != 0 || identity != state->GetIdentity())
        above = state->Reopen();
    if (!above)
        return ErrorOf(-1);
    const SystemError error = ReadIdentity(above, identity);
    if (error == 0 && identity != state->GetIdentity())
        return ENOENT; // somebody has moved the tree
    state->current = std::move(above);
    return error;
}

const VnString& CFolderCursor::GetPath() const noexcept { return state->path; }

VnString CFolderCursor::GetPathOf(std::wstring_view name) const noexcept
{
    const VnString& path = state->path;
    const wchar_t last = path[path.GetLength() - 1];
    return path + (path.IsEmpty() || last == L'/' || last == L'\\' ? L"" : L"/") + name;
}

bool CFolderCursor::IsSame(const CFolderCursor& other) const noexcept
{
    return state->GetIdentity() == other.state->GetIdentity();
}

SystemError CFolderCursor::List(CEntryList& entries) noexcept
{
    const int copy = openat(state->current.Get(), ".", folderFlags);
    DIR* const stream = copy == -1 ? nullptr : fdopendir(copy);
    if (!stream)
        return ErrorOf(-1);
    SystemError error = 0;
    for (;;)
    {
        errno = 0;
        const dirent* const entry = readdir(stream);
        if (!entry)
        {
            error = static_cast<SystemError>(errno);
            break;
        }
        if (IsDots(entry->d_name))
            continue;
        if (!entries.Append(FromNativeName(entry->d_name),
                            KindOfEntry(state->current.Get(), *entry)))
        {
            error = ENOMEM;
            break;
        }
    }
    closedir(stream);
    return error;
}

SystemError CFolderCursor::ReadFacts(std::wstring_view name, ELinks links,
                                     VnItemFacts& facts) const noexcept
{
    return ReadFactsAt(state->current.Get(), ToNativeName(name), links, facts);
}

SystemError CFolderCursor::MakeFolder(std::wstring_view name) noexcept
{
    return ErrorOf(mkdirat(state->current.Get(), ToNativeName(name).c_str(), 0700));
}

SystemError CFolderCursor::Remove(std::wstring_view name, bool isFolder) noexcept
{
    return ErrorOf(
        unlinkat(state->current.Get(), ToNativeName(name).c_str(), isFolder ? AT_REMOVEDIR : 0));
}

SystemError CFolderCursor::Replace(std::wstring_view name, std::wstring_view by) noexcept
{
    const int folder = state->current.Get();
    return ErrorOf(renameat(folder, ToNativeName(by).c_str(), folder, ToNativeName(name).c_str()));
}

SystemError CFolderCursor::CopyFileAs(std::wstring_view name, CFolderCursor& target,
                                      std::wstring_view copy, IByteCounter& counter) noexcept
{
    const CDescriptor from(openat(state->current.Get(), ToNativeName(name).c_str(),
                                  O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!from)
        return ErrorOf(-1);
    const int folder = target.state->current.Get();
    const std::string copyName = ToNativeName(copy);
    const CDescriptor to(
        openat(folder, copyName.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!to)
        return ErrorOf(-1);
    SystemError error = CopyBytes(from.Get(), to.Get(), counter);
    if (error == 0)
        error = CopyFacts(from.Get(), to.Get());
    if (error != 0)
        unlinkat(folder, copyName.c_str(), 0);
    return error;
}

SystemError CFolderCursor::CopyLinkAs(std::wstring_view name, CFolderCursor& target,
                                      std::wstring_view copy) noexcept
{
    std::string destination(4096, '\0');
    const ssize_t length = readlinkat(state->current.Get(), ToNativeName(name).c_str(),
                                      destination.data(), destination.size() - 1);
    if (length == -1)
        return ErrorOf(-1);
    destination.resize(static_cast<std::size_t>(length));
    return ErrorOf(
        symlinkat(destination.c_str(), target.state->current.Get(), ToNativeName(copy).c_str()));
}

SystemError CFolderCursor::CopyFolderFacts(std::wstring_view name, CFolderCursor& target,
                                           std::wstring_view copy) noexcept
{
    const CDescriptor from(
        openat(state->current.Get(), ToNativeName(name).c_str(), folderFlags | O_NOFOLLOW));
    const CDescriptor to(
        openat(target.state->current.Get(), ToNativeName(copy).c_str(), folderFlags | O_NOFOLLOW));
    return from && to ? CopyFacts(from.Get(), to.Get()) : ErrorOf(-1);
}

} // namespace VnOSAL
