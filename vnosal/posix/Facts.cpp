#include "vnosal/posix/Facts.h"

#include <fcntl.h>

#include "vnosal/posix/NativeName.h"

namespace VnOSAL {
namespace {

constexpr std::int64_t ticksPerSecond = 10'000'000;
constexpr mode_t writeRights = S_IWUSR | S_IWGRP | S_IWOTH;

std::int64_t FromStamp(const statx_timestamp& stamp) noexcept
{
    return stamp.tv_sec * ticksPerSecond + stamp.tv_nsec / 100;
}

std::uint32_t AttributesOf(const struct statx& status, const std::string& name) noexcept
{
    const auto slash = name.find_last_of('/');
    const std::size_t start = slash == std::string::npos ? 0 : slash + 1;
    const bool isHidden = name.size() > start + 1 && name[start] == '.' && name[start + 1] != '.';
    std::uint32_t attributes = S_ISDIR(status.stx_mode) ? attributeFolder : 0;
    attributes |=
        (status.stx_mode & writeRights) == 0 && !S_ISLNK(status.stx_mode) ? attributeReadOnly : 0;
    attributes |= isHidden ? attributeHidden : 0;
    return attributes != 0 ? attributes : attributeNormal;
}

} // namespace

EItemKind KindOf(mode_t mode) noexcept
{
    return S_ISREG(mode)   ? EItemKind::File
           : S_ISDIR(mode) ? EItemKind::Folder
           : S_ISLNK(mode) ? EItemKind::Link
                           : EItemKind::Other;
}

timespec ToTimeSpec(std::int64_t time) noexcept
{
    if (time == noTime)
        return {0, UTIME_OMIT};
    const std::int64_t part = time % ticksPerSecond;
    const std::int64_t ticks = part < 0 ? part + ticksPerSecond : part;
    return {(time - ticks) / ticksPerSecond, ticks * 100};
}

SystemError ReadFactsAt(int folder, const std::string& name, ELinks links,
                        VnItemFacts& facts) noexcept
{
    struct statx status;
    const int flags = links == ELinks::Keep ? AT_SYMLINK_NOFOLLOW : 0;
    if (statx(folder, name.c_str(), flags, STATX_BASIC_STATS | STATX_BTIME, &status) != 0)
        return ErrorOf(-1);
    facts.kind = KindOf(status.stx_mode);
    facts.attributes = AttributesOf(status, name);
    facts.size = facts.kind == EItemKind::File ? status.stx_size : 0;
    facts.times.created = status.stx_mask & STATX_BTIME ? FromStamp(status.stx_btime) : noTime;
    facts.times.written = FromStamp(status.stx_mtime);
    facts.times.accessed = FromStamp(status.stx_atime);
    return 0;
}

SystemError ReadItemFacts(const VnString& path, ELinks links, VnItemFacts& facts) noexcept
{
    std::string native;
    return ToNativePath(path, native) ? ReadFactsAt(AT_FDCWD, native, links, facts)
                                      : NumberOf(EError::BadPath);
}

SystemError WriteAttributes(const VnString& path, std::uint32_t attributes) noexcept
{
    std::string native;
    struct stat status;
    if (!ToNativePath(path, native))
        return NumberOf(EError::BadPath);
    if ((attributes & ~(attributeReadOnly | attributeNormal)) != 0)
        return NumberOf(EError::NotSupported);
    if (stat(native.c_str(), &status) != 0)
        return ErrorOf(-1);
    const mode_t plain = status.st_mode & 07777;
    const mode_t mode = attributes & attributeReadOnly ? plain & ~writeRights : plain | S_IWUSR;
    return ErrorOf(chmod(native.c_str(), mode));
}

// The time of creation is the file system's own affair.
SystemError WriteTimes(const VnString& path, const VnItemTimes& times) noexcept
{
    std::string native;
    if (!ToNativePath(path, native))
        return NumberOf(EError::BadPath);
    const timespec stamps[] = {ToTimeSpec(times.accessed), ToTimeSpec(times.written)};
    if (utimensat(AT_FDCWD, native.c_str(), stamps, 0) != 0)
        return ErrorOf(-1);
    return times.created == noTime ? 0 : NumberOf(EError::NotSupported);
}

} // namespace VnOSAL
