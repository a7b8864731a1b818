#include "vnosal/FileSystem.h"

#include "vnosal/SpecialFolders.h"
#include "vnosal/posix/NativeName.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace VnOSAL {
namespace {

SystemError MoveWithoutReplacing(const std::string& from, const std::string& to) noexcept
{
    const SystemError error =
        ErrorOf(renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE));
    if (error != ENOSYS && error != EINVAL)
        return error;
    // This file system cannot do it in one step.
    struct stat status;
    if (lstat(to.c_str(), &status) == 0)
        return EEXIST;
    return ErrorOf(std::rename(from.c_str(), to.c_str()));
}

} // namespace

SystemError MakeFolder(const VnString& path) noexcept
{
    std::string native;
    return ToNativePath(path, native) ? ErrorOf(mkdir(native.c_str(), 0777))
                                      : NumberOf(EError::BadPath);
}

SystemError RemoveItem(const VnString& path) noexcept
{
    std::string native;
    return ToNativePath(path, native) ? ErrorOf(std::remove(native.c_str()))
                                      : NumberOf(EError::BadPath);
}

SystemError MoveItem(const VnString& from, const VnString& to, EReplace replace) noexcept
{
    std::string source;
    std::string target;
    if (!ToNativePath(from, source) || !ToNativePath(to, target))
        return NumberOf(EError::BadPath);
    return replace == EReplace::Existing ? ErrorOf(std::rename(source.c_str(), target.c_str()))
                                         : MoveWithoutReplacing(source, target);
}

// What belongs to the Windows shell has no counterpart here.

SystemError RecycleItem(const VnString&) noexcept { return NumberOf(EError::NotSupported); }

ESignature VerifySignature(const VnString&) noexcept { return ESignature::CannotVerify; }

VnString ResolveKnownFolder(const VnString&) noexcept { return {}; }

VnString QuerySpecialFolder(int) noexcept { return {}; }

} // namespace VnOSAL
