#include "zotracker/vnosal/VnString.h"
#include "zotracker/vnosal/VnStringList.h"

#include "vnosal/CaseMap.h"
#include "vnosal/TextView.h"

#include <algorithm>
#include <cwchar>

namespace VnOSAL {
namespace {

bool Holds(std::wstring_view set, wchar_t unit) noexcept
{
    return std::find(set.begin(), set.end(), unit) != set.end();
}

std::size_t FindMember(std::wstring_view text, std::wstring_view set, std::size_t from,
                       bool wanted) noexcept
{
    for (std::size_t i = from; i < text.size(); ++i)
        if (Holds(set, text[i]) == wanted)
            return i;
    return VnString::npos;
}

std::size_t FindLastMember(std::wstring_view text, std::wstring_view set, std::size_t from,
                           bool wanted) noexcept
{
    for (std::size_t i = from < text.size() ? from + 1 : text.size(); i-- > 0;)
        if (Holds(set, text[i]) == wanted)
            return i;
    return VnString::npos;
}

} // namespace

int CompareTexts(std::wstring_view left, std::wstring_view right, ECase mode) noexcept
{
    const std::size_t common = std::min(left.size(), right.size());
    for (std::size_t i = 0; i < common; ++i)
        if (left[i] != right[i])
        {
            const wchar_t a = mode == ECase::Ignore ? FoldUnit(left[i]) : left[i];
            const wchar_t b = mode == ECase::Ignore ? FoldUnit(right[i]) : right[i];
            if (a != b)
                return a < b ? -1 : 1;
        }
    return left.size() == right.size() ? 0 : left.size() < right.size() ? -1 : 1;
}

bool EqualTexts(std::wstring_view left, std::wstring_view right, ECase mode) noexcept
{
    return left.size() == right.size() && CompareTexts(left, right, mode) == 0;
}

int VnString::Compare(std::wstring_view other, ECase mode) const noexcept
{
    return CompareTexts(*this, other, mode);
}

bool VnString::StartsWith(std::wstring_view what, ECase mode) const noexcept
{
    return EqualTexts(Part(*this, 0, what.size()), what, mode);
}

bool VnString::EndsWith(std::wstring_view what, ECase mode) const noexcept
{
    return what.size() <= GetLength() &&
           EqualTexts(Part(*this, GetLength() - what.size()), what, mode);
}

bool VnString::Contains(std::wstring_view what, ECase mode) const noexcept
{
    return Find(what, 0, mode) != npos;
}

std::size_t VnString::Find(std::wstring_view what, std::size_t from, ECase mode) const noexcept
{
    const std::wstring_view text = *this;
    if (mode == ECase::Respect)
        return text.find(what, from);
    for (std::size_t i = from; i <= text.size() && what.size() <= text.size() - i; ++i)
        if (EqualTexts(Part(text, i, what.size()), what, mode))
            return i;
    return npos;
}

std::size_t VnString::FindLast(std::wstring_view what, std::size_t from, ECase mode) const noexcept
{
    const std::wstring_view text = *this;
    if (what.size() > text.size())
        return npos;
    for (std::size_t i = std::min(from, text.size() - what.size()) + 1; i-- > 0;)
        if (EqualTexts(Part(text, i, what.size()), what, mode))
            return i;
    return npos;
}

std::size_t VnString::FindAnyOf(std::wstring_view set, std::size_t from) const noexcept
{
    return FindMember(*this, set, from, true);
}

std::size_t VnString::FindLastAnyOf(std::wstring_view set, std::size_t from) const noexcept
{
    return FindLastMember(*this, set, from, true);
}

std::size_t VnString::FindNoneOf(std::wstring_view set, std::size_t from) const noexcept
{
    return FindMember(*this, set, from, false);
}

std::size_t VnString::FindLastNoneOf(std::wstring_view set, std::size_t from) const noexcept
{
    return FindLastMember(*this, set, from, false);
}

// Builds the result beside the text, so that many replacements cost one pass.
std::size_t VnString::ReplaceAll(std::wstring_view what, std::wstring_view with,
                                 ECase mode) noexcept
{
    std::size_t found = what.empty() ? npos : Find(what, 0, mode);
    if (found == npos)
        return 0;
    VnString result;
    std::size_t count = 0;
    std::size_t done = 0;
    for (; found != npos; found = Find(what, done, mode), ++count)
    {
        result.Append(Part(*this, done, found - done)).Append(with);
        done = found + what.size();
    }
    result.Append(Part(*this, done));
    *this = static_cast<VnString&&>(result);
    return count;
}

VnStringList VnString::Split(std::wstring_view separator) const noexcept
{
    VnStringList parts;
    std::size_t start = 0;
    for (;;)
    {
        const std::size_t found = separator.empty() ? npos : Find(separator, start);
        parts.Append(GetMid(start, found == npos ? npos : found - start));
        if (found == npos)
            return parts;
        start = found + separator.size();
    }
}

// FNV-1a with 64 bits over the units.
std::uint64_t VnString::GetHash(ECase mode) const noexcept
{
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const wchar_t unit : *this)
    {
        const wchar_t compared = mode == ECase::Ignore ? FoldUnit(unit) : unit;
        hash = (hash ^ static_cast<std::uint64_t>(compared)) * 0x100000001B3;
    }
    return hash;
}

} // namespace VnOSAL
