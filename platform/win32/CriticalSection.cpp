#include "platform/CriticalSection.h"

#include "platform/SystemException.h"

#include <windows.h>

#include <new>

namespace platform {

namespace {

// Spins before the first wait: the locks of this module are held for a few moves of text.
constexpr DWORD spinCount = 400;

CRITICAL_SECTION* GetNative(std::byte* storage) noexcept
{
    return std::launder(reinterpret_cast<CRITICAL_SECTION*>(storage));
}

} // namespace

CCriticalSection::CCriticalSection()
{
    static_assert(sizeof(CRITICAL_SECTION) <= sizeof(storage));
    if (!::InitializeCriticalSectionAndSpinCount(new (storage) CRITICAL_SECTION, spinCount))
        throw CSystemException(HresultFromWin32(::GetLastError()));
}

CCriticalSection::~CCriticalSection() { ::DeleteCriticalSection(GetNative(storage)); }

void CCriticalSection::Enter() noexcept { ::EnterCriticalSection(GetNative(storage)); }

bool CCriticalSection::TryEnter() noexcept
{
    return ::TryEnterCriticalSection(GetNative(storage)) != FALSE;
}

void CCriticalSection::Leave() noexcept { ::LeaveCriticalSection(GetNative(storage)); }

} // namespace platform
