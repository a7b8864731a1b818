#pragma once

#include "zotracker/vnosal/VnString.h"

namespace VnOSAL {

// Strings in the order in which they were appended.
//
// Errors: nothing throws; Append tells whether there was memory.
//
// Threads: one at a time for one list.
class ZO_VNOSAL_API VnStringList
{
public:
    constexpr VnStringList() noexcept = default;
    VnStringList(const VnStringList& other) noexcept;
    VnStringList(VnStringList&& other) noexcept;
    VnStringList& operator=(VnStringList other) noexcept;
    ~VnStringList();

    bool Append(VnString text) noexcept;
    void RemoveLast() noexcept;
    void Clear() noexcept;

    std::size_t GetCount() const noexcept { return count; }
    bool IsEmpty() const noexcept { return count == 0; }

    // `index` is below GetCount().
    const VnString& operator[](std::size_t index) const noexcept { return items[index]; }
    const VnString* begin() const noexcept { return items; }
    const VnString* end() const noexcept { return items + count; }

    // All strings with `separator` between them.
    VnString Join(std::wstring_view separator) const noexcept;

private:
    void Swap(VnStringList& other) noexcept;
    bool Grow() noexcept;

    VnString* items = nullptr;
    std::size_t count = 0;
    std::size_t capacity = 0;
};

} // namespace VnOSAL
