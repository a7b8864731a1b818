#pragma once

#include "zotracker/vnosal/VnString.h"

#include <string_view>

namespace VnOSAL {

// At most `count` units from `position` on; empty past the end.
inline std::wstring_view Part(std::wstring_view text, std::size_t position,
                              std::size_t count = VnString::npos) noexcept
{
    if (position >= text.size())
        return {};
    const std::size_t rest = text.size() - position;
    return {text.data() + position, count < rest ? count : rest};
}

// Below, equal to or above 0.
int CompareTexts(std::wstring_view left, std::wstring_view right, ECase mode) noexcept;

bool EqualTexts(std::wstring_view left, std::wstring_view right, ECase mode) noexcept;

} // namespace VnOSAL
