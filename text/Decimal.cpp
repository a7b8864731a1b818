#include "text/Decimal.h"

#include "vnosal/NumberText.h"

#include <algorithm>
#include <limits>

namespace text {

namespace {

constexpr bool IsWhiteSpace(std::uint32_t unit)
{
    return unit == ' ' || (unit >= '\t' && unit <= '\r');
}

// Reads between the limits of `Integer`.
template <class Integer, class Unit>
Integer ReadLeading(std::basic_string_view<Unit> number) noexcept
{
    constexpr std::uint64_t largest = std::numeric_limits<Integer>::max();
    while (!number.empty() && IsWhiteSpace(static_cast<std::uint32_t>(number.front())))
        number.remove_prefix(1);
    const bool negative = number.starts_with('-');
    if (negative || number.starts_with('+'))
        number.remove_prefix(1);

    const std::uint64_t limit = negative ? largest + 1 : largest;
    std::uint64_t magnitude = 0;
    for (; !number.empty() && number[0] >= '0' && number[0] <= '9'; number.remove_prefix(1))
    {
        const auto digit = static_cast<std::uint64_t>(number[0] - '0');
        magnitude = magnitude > (limit - digit) / 10 ? limit : magnitude * 10 + digit;
    }
    return static_cast<Integer>(negative ? 0 - magnitude : magnitude);
}

} // namespace

std::int32_t ReadDecimal(std::wstring_view number) noexcept
{
    return ReadLeading<std::int32_t>(number);
}

std::int32_t ReadDecimal(std::string_view number) noexcept
{
    return ReadLeading<std::int32_t>(number);
}

std::int64_t ReadDecimal64(std::wstring_view number) noexcept
{
    return ReadLeading<std::int64_t>(number);
}

std::int64_t ReadDecimal64(std::string_view number) noexcept
{
    return ReadLeading<std::int64_t>(number);
}

double ReadDouble(const char* number) noexcept { return VnOSAL::ReadDouble(number); }

} // namespace text
