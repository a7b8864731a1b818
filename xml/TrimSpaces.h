#pragma once

#include <string_view>

namespace xml {

// The text without the spaces (and nothing but spaces) at its ends.
inline std::string_view TrimSpaces(std::string_view text)
{
    const std::size_t begin = text.find_first_not_of(' ');
    const std::size_t last = text.find_last_not_of(' ');
    return begin == text.npos ? std::string_view() : text.substr(begin, last + 1 - begin);
}

} // namespace xml
