#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

// UTF-16 text on its way into the module: a pointer and a length, which every 64-bit Windows
// compiler passes alike. Borrows the caller's text for one call; the module copies what it keeps
// before the operation returns.
class TrackerText
{
public:
    constexpr TrackerText() noexcept : data(nullptr), length(0) {}

    // Zero-terminated text; null is empty.
    constexpr TrackerText(const wchar_t* text) noexcept
        : data(text), length(text == nullptr ? 0 : std::char_traits<wchar_t>::length(text))
    {}
    constexpr TrackerText(std::wstring_view text) noexcept : data(text.data()), length(text.size())
    {}
    TrackerText(const std::wstring& text) noexcept : data(text.data()), length(text.size()) {}

    // The text; empty when there is no data, whatever the length says.
    constexpr std::wstring_view View() const noexcept
    {
        return data == nullptr ? std::wstring_view() : std::wstring_view(data, length);
    }

private:
    const wchar_t* data; // need not be zero-terminated; may be null when `length` is 0
    std::size_t length;  // UTF-16 units
};

static_assert(std::is_trivially_copyable_v<TrackerText>);
static_assert(std::is_standard_layout_v<TrackerText>);
static_assert(sizeof(TrackerText) == 2 * sizeof(void*));
