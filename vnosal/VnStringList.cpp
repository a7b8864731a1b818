#include "zotracker/vnosal/VnStringList.h"

#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

namespace VnOSAL {

VnStringList::VnStringList(const VnStringList& other) noexcept
{
    for (const VnString& text : other)
        Append(text);
}

VnStringList::VnStringList(VnStringList&& other) noexcept { Swap(other); }

VnStringList& VnStringList::operator=(VnStringList other) noexcept
{
    Swap(other);
    return *this;
}

VnStringList::~VnStringList() { Clear(); }

void VnStringList::Swap(VnStringList& other) noexcept
{
    std::swap(items, other.items);
    std::swap(count, other.count);
    std::swap(capacity, other.capacity);
}

bool VnStringList::Grow() noexcept
{
    const std::size_t wanted = capacity == 0 ? 4 : capacity * 2;
    auto* const next = static_cast<VnString*>(std::malloc(wanted * sizeof(VnString)));
    if (!next)
        return false;
    std::uninitialized_move_n(items, count, next);
    std::destroy_n(items, count);
    std::free(items);
    items = next;
    capacity = wanted;
    return true;
}

bool VnStringList::Append(VnString text) noexcept
{
    if (count == capacity && !Grow())
        return false;
    new (items + count) VnString(std::move(text));
    ++count;
    return true;
}

void VnStringList::RemoveLast() noexcept
{
    if (count != 0)
        items[--count].~VnString();
}

void VnStringList::Clear() noexcept
{
    std::destroy_n(items, count);
    std::free(items);
    items = nullptr;
    count = capacity = 0;
}

VnString VnStringList::Join(std::wstring_view separator) const noexcept
{
    VnString joined;
    for (std::size_t i = 0; i < count; ++i)
    {
        if (i != 0)
            joined.Append(separator);
        joined.Append(items[i]);
    }
    return joined;
}

} // namespace VnOSAL
