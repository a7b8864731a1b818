#include "zotracker/vnosal/VnCriticalSection.h"

#include <windows.h>

#include <new>

namespace VnOSAL {
namespace {

// Spins before the first wait: such locks are held for a few moves of text.
constexpr DWORD spinCount = 400;

CRITICAL_SECTION* Native(std::byte* storage) noexcept
{
    return std::launder(reinterpret_cast<CRITICAL_SECTION*>(storage));
}

} // namespace

VnCriticalSection::VnCriticalSection() noexcept
{
    static_assert(sizeof(storage) >= sizeof(CRITICAL_SECTION));
    ::InitializeCriticalSectionAndSpinCount(new (storage) CRITICAL_SECTION, spinCount);
}

VnCriticalSection::~VnCriticalSection() { ::DeleteCriticalSection(Native(storage)); }
void VnCriticalSection::Enter() noexcept { ::EnterCriticalSection(Native(storage)); }
bool VnCriticalSection::TryEnter() noexcept { return ::TryEnterCriticalSection(Native(storage)); }
void VnCriticalSection::Leave() noexcept { ::LeaveCriticalSection(Native(storage)); }

} // namespace VnOSAL
