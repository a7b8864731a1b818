#pragma once

#include "vnosal/FileSystem.h"

#include <windows.h>

namespace VnOSAL {

// The path in the form that the system's calls take at any length: completed and with \\?\ in front
// where it is long. An address or an empty path is none: the system then reports a bad name.
VnString ToNativePath(const VnString& path) noexcept;

// The same with \\?\ in front at any length, so that names in it mean themselves.
VnString ToExtendedPath(const VnString& path) noexcept;

// The result of a call that returns FALSE on failure.
inline SystemError ErrorOf(BOOL succeeded) noexcept { return succeeded ? 0 : ::GetLastError(); }

// Sole owner of an open file or folder.
class CHandle
{
public:
    explicit CHandle(HANDLE taken) noexcept : raw(taken) {}
    CHandle(const CHandle&) = delete;
    CHandle& operator=(const CHandle&) = delete;
    ~CHandle()
    {
        if (*this)
            ::CloseHandle(raw);
    }
    HANDLE Get() const noexcept { return raw; }
    explicit operator bool() const noexcept { return raw != INVALID_HANDLE_VALUE; }

private:
    const HANDLE raw;
};

} // namespace VnOSAL
