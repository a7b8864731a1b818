#include "vnosal/FileSystem.h"

#include "vnosal/posix/NativeName.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace VnOSAL {
namespace {

// The first number of a kind is the one that stands for it.
constexpr struct
{
    int error;
    EError kind;
} errorKinds[] = {
    {0, EError::None},
    {ENOENT, EError::NotFound},
    {ENOTDIR, EError::NotFound},
    {EEXIST, EError::Exists},
    {EACCES, EError::Denied},
    {EPERM, EError::Denied},
    {EROFS, EError::Denied},
    {EWOULDBLOCK, EError::InUse},
    {EBUSY, EError::InUse},
    {ETXTBSY, EError::InUse},
    {ENOTEMPTY, EError::NotEmpty},
    {ENOSPC, EError::NoSpace},
    {EDQUOT, EError::NoSpace},
    {EXDEV, EError::OtherVolume},
    {EINVAL, EError::BadPath},
    {ENAMETOOLONG, EError::BadPath},
    {ELOOP, EError::BadPath},
    {EBADF, EError::BadPath},
    {EFBIG, EError::TooLarge},
    {ENOTSUP, EError::NotSupported},
    {ENOSYS, EError::NotSupported},
    {ECANCELED, EError::Cancelled},
    {ENOMEM, EError::OutOfMemory},
    {EIO, EError::Other},
};

} // namespace

EError ReadErrorKind(SystemError error) noexcept
{
    for (const auto& known : errorKinds)
        if (static_cast<SystemError>(known.error) == error)
            return known.kind;
    return EError::Other;
}

SystemError NumberOf(EError kind) noexcept
{
    for (const auto& known : errorKinds)
        if (known.kind == kind)
            return static_cast<SystemError>(known.error);
    return EIO;
}

VnString ReadErrorText(SystemError error) noexcept
{
    char buffer[256] = "";
    return FromNativeName(strerror_r(static_cast<int>(error), buffer, sizeof(buffer)));
}

std::uint32_t GetProcessNumber() noexcept { return static_cast<std::uint32_t>(getpid()); }

} // namespace VnOSAL
