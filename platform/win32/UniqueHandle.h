#pragma once

#include <windows.h>

#include <utility>

namespace platform {

// Sole owner of one Win32 object, closed exactly once. Not thread-safe; move it to hand the object
// over. A trait knows the object's type, its "none" values and how to close it.
template <class Traits>
class CUniqueHandle
{
public:
    using Raw = typename Traits::Raw;

    CUniqueHandle() noexcept = default;
    explicit CUniqueHandle(Raw taken) noexcept : raw(taken) {}
    CUniqueHandle(CUniqueHandle&& other) noexcept : raw(other.Release()) {}
    CUniqueHandle& operator=(CUniqueHandle&& other) noexcept
    {
        Reset(other.Release());
        return *this;
    }
    ~CUniqueHandle() { Reset(); }

    explicit operator bool() const noexcept { return Traits::IsValid(raw); }
    Raw Get() const noexcept { return raw; }

    // For calls that hand the object back through a pointer. Closes what is held first.
    Raw* Put() noexcept
    {
        Reset();
        return &raw;
    }

    // Gives the object up; the caller closes it from here on.
    [[nodiscard]] Raw Release() noexcept { return std::exchange(raw, Traits::None()); }

    // Closes what is held, then owns `next`. The thread's last error survives the close, so an
    // error path may unwind handles before it reads the code it reports.
    void Reset(Raw next = Traits::None()) noexcept
    {
        const Raw old = std::exchange(raw, next);
        if (!Traits::IsValid(old))
            return;
        const DWORD lastError = ::GetLastError();
        Traits::Close(old);
        ::SetLastError(lastError);
    }

private:
    Raw raw = Traits::None();
};

// Threads and events; creating one reports failure as null.
struct KernelHandleTraits
{
    using Raw = HANDLE;
    static Raw None() noexcept { return nullptr; }
    static bool IsValid(Raw raw) noexcept { return raw != nullptr; }
    static void Close(Raw raw) noexcept { ::CloseHandle(raw); }
};
using CKernelHandle = CUniqueHandle<KernelHandleTraits>;

} // namespace platform
