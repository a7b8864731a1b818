#include "vnosal/FileSystem.h"

#include "vnosal/posix/NativeName.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace VnOSAL {
namespace {

int FlagsOf(EAccess access, EOpen mode) noexcept
{
    const int rights = access == EAccess::Read    ? O_RDONLY
                       : access == EAccess::Write ? O_WRONLY
                                                  : O_RDWR;
    const int creation = mode == EOpen::Existing ? 0
                         : mode == EOpen::New    ? O_CREAT | O_EXCL
                                                 : O_CREAT;
    return rights | creation | O_CLOEXEC | O_NONBLOCK;
}

// Nobody else, readers only, or no rule. A reader that lets others read holds the same lock as they
// do.
SystemError Lock(int file, EAccess access, ESharing sharing) noexcept
{
    if (sharing == ESharing::ReadWrite || sharing == ESharing::Write)
        return 0;
    const bool shared = sharing == ESharing::Read && access == EAccess::Read;
    return ErrorOf(flock(file, (shared ? LOCK_SH : LOCK_EX) | LOCK_NB));
}

// A folder or a device is no file.
SystemError CheckKind(int file) noexcept
{
    struct stat status;
    if (fstat(file, &status) != 0)
        return ErrorOf(-1);
    return S_ISREG(status.st_mode) ? 0 : NumberOf(EError::Denied);
}

} // namespace

SystemError OpenFile(const VnString& path, EAccess access, EOpen mode, ESharing sharing,
                     std::intptr_t& file) noexcept
{
    std::string native;
    if (!ToNativePath(path, native))
        return NumberOf(EError::BadPath);
    const int opened = open(native.c_str(), FlagsOf(access, mode), 0666);
    SystemError error = ErrorOf(opened);
    if (error == 0)
        error = CheckKind(opened);
    if (error == 0)
        error = Lock(opened, access, sharing);
    if (error == 0 && mode == EOpen::Truncate)
        error = ErrorOf(ftruncate(opened, 0));
    if (error == 0)
        file = opened;
    else if (opened != -1)
        close(opened);
    return error;
}

void CloseFile(std::intptr_t file) noexcept { close(static_cast<int>(file)); }

SystemError ReadFile(std::intptr_t file, void* buffer, std::size_t size, std::size_t& done) noexcept
{
    const ssize_t count = read(static_cast<int>(file), buffer, size);
    done = count > 0 ? static_cast<std::size_t>(count) : 0;
    return ErrorOf(count);
}

SystemError WriteFile(std::intptr_t file, const void* bytes, std::size_t size,
                      std::size_t& done) noexcept
{
    const ssize_t count = write(static_cast<int>(file), bytes, size);
    done = count > 0 ? static_cast<std::size_t>(count) : 0;
    return ErrorOf(count);
}

SystemError SeekFile(std::intptr_t file, std::int64_t offset, ESeek origin,
                     std::uint64_t& position) noexcept
{
    const int whence = origin == ESeek::Begin     ? SEEK_SET
                       : origin == ESeek::Current ? SEEK_CUR
                                                  : SEEK_END;
    const off_t reached = lseek(static_cast<int>(file), offset, whence);
    position = reached >= 0 ? static_cast<std::uint64_t>(reached) : position;
    return ErrorOf(reached);
}

SystemError ReadFileSize(std::intptr_t file, std::uint64_t& size) noexcept
{
    struct stat status;
    if (fstat(static_cast<int>(file), &status) != 0)
        return ErrorOf(-1);
    size = static_cast<std::uint64_t>(status.st_size);
    return 0;
}

SystemError SetFileSize(std::intptr_t file, std::uint64_t size) noexcept
{
    return ErrorOf(ftruncate(static_cast<int>(file), static_cast<off_t>(size)));
}

SystemError FlushFile(std::intptr_t file) noexcept
{
    return ErrorOf(fsync(static_cast<int>(file)));
}

} // namespace VnOSAL
