#pragma once

#include "zotracker/vnosal/VnString.h"

namespace VnOSAL {

// What callers treat differently; every other system error is Other.
enum class EError : std::uint8_t
{
    None,
    NotFound,
    Exists,
    Denied,
    InUse, // open elsewhere without sharing
    NotEmpty,
    NoSpace,
    OtherVolume,
    BadPath,  // no path that the system could look for, or a target that lies in its source
    TooLarge, // more than the caller's limit
    NotSupported,
    Cancelled,
    OutOfMemory,
    Other
};

// How an operation on the file system ended: whether it failed, on which item, and with which
// system error (the Win32 error number, elsewhere errno). Threads: as VnString.
class ZO_VNOSAL_API VnResult
{
public:
    VnResult() noexcept = default;
    VnResult(std::uint32_t error, VnString failedItem) noexcept; // 0 is success
    VnResult(EError error, VnString failedItem) noexcept;

    explicit operator bool() const noexcept { return kind == EError::None; } // true on success
    EError GetKind() const noexcept { return kind; }
    std::uint32_t GetSystemError() const noexcept { return systemError; }
    const VnString& GetItem() const noexcept { return item; }

    // The item and the system's words for the error; empty on success.
    VnString GetText() const noexcept;

private:
    VnString item;
    std::uint32_t systemError = 0;
    EError kind = EError::None;
};

} // namespace VnOSAL
