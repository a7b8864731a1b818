#include "env/ProcessCache.h"

#include <memory>

namespace env {

namespace {

constinit CProcessCache cache;

} // namespace

CProcessCache& CProcessCache::Get() noexcept { return cache; }

std::wstring CProcessCache::Find(ECachedText which) const
{
    const std::wstring* text = texts[static_cast<std::size_t>(which)].load();
    return text ? *text : std::wstring();
}

std::wstring CProcessCache::Keep(ECachedText which, std::wstring found)
{
    if (found.empty())
        return found;
    auto kept = std::make_unique<const std::wstring>(std::move(found));
    const std::wstring* first = nullptr;
    if (texts[static_cast<std::size_t>(which)].compare_exchange_strong(first, kept.get()))
        first = kept.release();
    return *first;
}

void CProcessCache::Reset() noexcept
{
    for (std::atomic<const std::wstring*>& text : texts)
        delete text.exchange(nullptr);
    nativeX64State = -1;
    productUserIdBusy = false;
}

void ResetProcessCache() noexcept { cache.Reset(); }

} // namespace env
