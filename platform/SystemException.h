#pragma once

#include <cstdint>
#include <exception>

namespace platform {

// A system service that the module cannot work without has failed, or an object was found in a
// state that only a fault can explain.
//
// Never crosses the module's boundary: the exports turn it into "no tracker".
class CSystemException : public std::exception
{
public:
    explicit CSystemException(std::uint32_t raised) noexcept : status(raised) {}
    const char* what() const noexcept override { return "system exception"; }

    const std::uint32_t status; // an HRESULT or one of the status codes below
};

// The status codes of <ntstatus.h> for faults that the worker's thread object detects.
inline constexpr std::uint32_t statusAccessViolation = 0xC0000005;
inline constexpr std::uint32_t statusInvalidParameter = 0xC000000D;
inline constexpr std::uint32_t statusInvalidDisposition = 0xC0000026;

// The HRESULT of a Win32 error code: the code in the Win32 facility, 0 stays 0.
constexpr std::uint32_t HresultFromWin32(std::uint32_t error) noexcept
{
    return error == 0 ? 0 : (error & 0xFFFF) | 0x80070000;
}

} // namespace platform
