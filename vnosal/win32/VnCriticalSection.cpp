#include "zotracker/vnosal/VnCriticalSection.h"

#include <windows.h>

#include <new>

namespace VnOSAL {
namespace {

CRITICAL_SECTION* Native(std::byte* storage) noexcept
{
    return std::launder(reinterpret_cast<CRITICAL_SECTION*>(storage));
}

} // namespace

VnCriticalSection::VnCriticalSection() noexcept
{
    static_assert(sizeof(storage) >= sizeof(CRITICAL_SECTION));
    ::InitializeCriticalSection(new (storage) CRITICAL_SECTION);
}

VnCriticalSection::~VnCriticalSection() { ::DeleteCriticalSection(Native(storage)); }
void VnCriticalSection::Enter() noexcept { ::EnterCriticalSection(Native(storage)); }
bool VnCriticalSection::TryEnter() noexcept { return ::TryEnterCriticalSection(Native(storage)); }
void VnCriticalSection::Leave() noexcept { ::LeaveCriticalSection(Native(storage)); }

} // namespace VnOSAL
