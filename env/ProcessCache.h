#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <string>

namespace env {

// The texts that are found out once per process.
enum class ECachedText : std::size_t
{
    ApplicationFolder,
    ApplicationFilePath,
    CommonDataFolder,
    ComputerId,
    ProductUserId,
    ProductVersion,
    Count
};

// What the process found out about itself and its machine; filled on first use, then constant.
//
// Threads: any. No lock is involved, so a thread that is ended in the middle, as at the exit of
// the process, cannot keep the others from reading.
class CProcessCache
{
public:
    // The process's cache. It is there before any constructor runs and after every destructor.
    static CProcessCache& Get() noexcept;

    constexpr CProcessCache() noexcept = default;
    CProcessCache(const CProcessCache&) = delete;
    CProcessCache& operator=(const CProcessCache&) = delete;

    // A copy of the cached text; empty when it has not been found out yet.
    std::wstring Find(ECachedText which) const;

    // Caches a text unless it is empty or another thread was faster; the first one stays. Returns
    // the text to go on with, so that all threads agree.
    std::wstring Keep(ECachedText which, std::wstring found);

    // The cached text, or else what `find` finds, which is kept.
    template <class Finder>
    std::wstring FindOrKeep(ECachedText which, Finder&& find)
    {
        std::wstring text = Find(which);
        return text.empty() ? Keep(which, find()) : text;
    }

    // Forgets everything and frees it. While no other thread uses the cache.
    void Reset() noexcept;

    // Whether the native processor is an x64: 0 yes, 1 no, negative when not found out yet.
    std::atomic<int> nativeX64State = -1;

    // Set while a thread computes a product user identifier.
    std::atomic<bool> productUserIdBusy = false;

private:
    std::array<std::atomic<const std::wstring*>, static_cast<std::size_t>(ECachedText::Count)>
        texts = {};
};

// Frees what the cache holds when the module goes; the next look-up starts afresh.
void ResetProcessCache() noexcept;

} // namespace env
