#pragma once

#include "zotracker/vnosal/VnPath.h"

#include "vnosal/TextView.h"

// What the operations on paths share.
namespace VnOSAL {

constexpr bool IsSeparator(wchar_t unit) noexcept { return unit == L'\\' || unit == L'/'; }

constexpr bool IsLetter(wchar_t unit) noexcept
{
    return (unit >= L'a' && unit <= L'z') || (unit >= L'A' && unit <= L'Z');
}

// The separator between the names of a path of this form.
constexpr wchar_t SeparatorOf(EPathForm form) noexcept
{
    return form >= EPathForm::FileUrl ? L'/' : L'\\';
}

constexpr bool IsSeparatorIn(EPathForm form, wchar_t unit) noexcept
{
    if (form == EPathForm::Extended || form >= EPathForm::FileUrl)
        return unit == SeparatorOf(form);
    return IsSeparator(unit);
}

inline bool IsDrive(std::wstring_view text) noexcept
{
    return text.size() >= 2 && IsLetter(text[0]) && text[1] == L':';
}

// Removes the first name of `rest`, and the separators behind it, from its front and returns it.
std::wstring_view TakeName(std::wstring_view& rest, EPathForm form) noexcept;

// The path with everything alike that makes no difference to the file system.
VnPath MakeComparable(const VnPath& path) noexcept;

} // namespace VnOSAL
