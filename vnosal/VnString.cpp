#include "zotracker/vnosal/VnString.h"

#include "vnosal/BlockPools.h"
#include "vnosal/CaseMap.h"

#include <algorithm>
#include <cstring>

namespace VnOSAL {
namespace {

// What every invalid string points to. Its count never returns to 1, so it is never written to and
// never given back.
struct InvalidBlock
{
    VnStringBlock header;
    wchar_t terminator;
};
constinit InvalidBlock invalid = {{0x40000000, 0, 0, 0}, L'\0'};

void CopyUnits(wchar_t* to, const wchar_t* from, std::size_t count) noexcept
{
    if (count != 0)
        std::memcpy(to, from, count * sizeof(wchar_t));
}

} // namespace

// Hosts that import the class look for its constants in the module.
constexpr std::size_t VnString::npos;
constexpr std::size_t VnString::maxLength;

VnString::VnString(const wchar_t* text) noexcept
{
    if (text)
        Assign(text);
}

VnString::VnString(std::wstring_view text) noexcept { Assign(text); }

VnString::VnString(std::size_t count, wchar_t unit) noexcept
{
    if (wchar_t* const units = OpenBuffer(count))
    {
        std::fill_n(units, count, unit);
        CloseBuffer(count);
    }
}

bool VnString::IsValid() const noexcept { return block != &invalid.header; }

void VnString::Recycle(VnStringBlock* unused) noexcept { GiveBlock(unused); }

void VnString::Clear() noexcept
{
    Drop(block);
    block = nullptr;
}

void VnString::Invalidate() noexcept
{
    Drop(block);
    block = Share(&invalid.header);
}

bool VnString::HoldsPartOf(std::wstring_view text) const noexcept
{
    return block && !text.empty() && !std::less<>()(text.data(), Units(block)) &&
           !std::less<>()(Units(block) + block->capacity, text.data());
}

// Moves the text, as far as it fits, to a block of its own.
bool VnString::Regrow(std::size_t capacity) noexcept
{
    VnStringBlock* const next = capacity <= maxLength ? TakeBlock(capacity) : nullptr;
    if (!next)
        return false;
    const std::size_t kept = std::min<std::size_t>(GetLength(), next->capacity);
    CopyUnits(Units(next), GetText(), kept);
    Drop(block);
    block = next;
    SetLength(kept);
    return true;
}

bool VnString::Reserve(std::size_t capacity) noexcept
{
    const std::size_t wanted = std::max(capacity, GetLength());
    return IsWritable(wanted) || (IsValid() && Regrow(wanted));
}

wchar_t* VnString::OpenBuffer(std::size_t length) noexcept
{
    if (IsWritable(length) || (IsValid() && Regrow(length)))
        return Units(block);
    Invalidate();
    return nullptr;
}

void VnString::CloseBuffer(std::size_t length) noexcept
{
    if (length == 0)
        Clear();
    else
        SetLength(length);
}

VnString& VnString::SetAt(std::size_t position, wchar_t unit) noexcept
{
    const std::size_t length = GetLength();
    if (position < length)
        if (wchar_t* const units = OpenBuffer(length))
            units[position] = unit;
    return *this;
}

VnString& VnString::Assign(std::wstring_view text) noexcept
{
    if (HoldsPartOf(text))
        return *this = VnString(*this).Replace(0, npos, text);
    if (!IsWritable(text.size()))
    {
        Clear();
        return Append(text);
    }
    CopyUnits(Units(block), text.data(), text.size());
    CloseBuffer(text.size());
    return *this;
}

VnString& VnString::Append(std::wstring_view text) noexcept
{
    const std::size_t length = GetLength();
    if (!IsWritable(length + text.size()))
        return Replace(length, 0, text);
    CopyUnits(Units(block) + length, text.data(), text.size());
    SetLength(length + text.size());
    return *this;
}

VnString& VnString::Insert(std::size_t position, std::wstring_view text) noexcept
{
    return Replace(position, 0, text);
}

VnString& VnString::Remove(std::size_t position, std::size_t count) noexcept
{
    return Replace(position, count, {});
}

// Every change of length ends here. A second owner keeps a text alive that is part of this string:
// the change then happens in another block.
VnString& VnString::Replace(std::size_t position, std::size_t count,
                            std::wstring_view text) noexcept
{
    const std::size_t length = GetLength();
    const std::size_t start = std::min(position, length);
    const std::size_t removed = std::min(count, length - start);
    if (!IsValid() || (removed == 0 && text.empty()))
        return *this;
    if (text.size() > maxLength - (length - removed))
    {
        Invalidate();
        return *this;
    }

    const VnString before = HoldsPartOf(text) ? *this : VnString();
    const std::size_t newLength = length - removed + text.size();
    if (!IsWritable(newLength))
    {
        const std::size_t roomy = newLength > GetCapacity() ? GetCapacity() * 2 : 0;
        const std::size_t capacity = std::max(newLength, std::min(roomy, maxLength));
        const VnString kept = *this;
        Clear();
        if (!Regrow(capacity))
        {
            Invalidate();
            return *this;
        }
        CopyUnits(Units(block), kept.GetText(), start);
        CopyUnits(Units(block) + start + text.size(), kept.GetText() + start + removed,
                  length - start - removed);
    }
    else
        std::memmove(Units(block) + start + text.size(), Units(block) + start + removed,
                     (length - start - removed) * sizeof(wchar_t));
    CopyUnits(Units(block) + start, text.data(), text.size());
    CloseBuffer(newLength);
    return *this;
}

VnString VnString::GetMid(std::size_t position, std::size_t count) const noexcept
{
    const std::size_t start = std::min(position, GetLength());
    const std::size_t taken = std::min(count, GetLength() - start);
    return taken == GetLength() ? *this : VnString(std::wstring_view(GetText() + start, taken));
}

VnString VnString::GetRight(std::size_t count) const noexcept
{
    return GetMid(GetLength() - std::min(count, GetLength()));
}

VnString& VnString::Trim(std::wstring_view set) noexcept { return TrimRight(set).TrimLeft(set); }

VnString& VnString::TrimLeft(std::wstring_view set) noexcept
{
    return Remove(0, std::min(FindNoneOf(set), GetLength()));
}

VnString& VnString::TrimRight(std::wstring_view set) noexcept
{
    return Remove(FindLastNoneOf(set) + 1); // npos + 1 is 0: nothing is left
}

VnString& VnString::MakeUpper() noexcept
{
    const std::size_t length = GetLength();
    if (length != 0)
        if (wchar_t* const units = OpenBuffer(length))
            MapUpper(units, length);
    return *this;
}

VnString& VnString::MakeLower() noexcept
{
    const std::size_t length = GetLength();
    if (length != 0)
        if (wchar_t* const units = OpenBuffer(length))
            MapLower(units, length);
    return *this;
}

} // namespace VnOSAL
