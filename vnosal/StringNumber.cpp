#include "zotracker/vnosal/VnString.h"

#include "vnosal/NumberText.h"
#include "vnosal/TextView.h"

#include <cmath>
#include <cstdlib>
#include <limits>

namespace VnOSAL {
namespace {

constexpr unsigned noDigit = 255;

unsigned DigitValue(wchar_t unit) noexcept
{
    if (unit >= L'0' && unit <= L'9')
        return static_cast<unsigned>(unit - L'0');
    const auto letter = static_cast<unsigned>(unit) | 0x20;
    return letter >= 'a' && letter <= 'z' ? letter - 'a' + 10 : noDigit;
}

bool TakeSign(std::wstring_view& text) noexcept
{
    const bool negative = !text.empty() && text[0] == L'-';
    if (negative || (!text.empty() && text[0] == L'+'))
        text.remove_prefix(1);
    return negative;
}

bool ReadMagnitude(std::wstring_view digits, unsigned radix, std::uint64_t& value) noexcept
{
    constexpr std::uint64_t limit = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t sum = 0;
    if (digits.empty() || radix < 2 || radix > 36)
        return false;
    for (const wchar_t unit : digits)
    {
        const unsigned digit = DigitValue(unit);
        if (digit >= radix || sum > (limit - digit) / radix)
            return false;
        sum = sum * radix + digit;
    }
    value = sum;
    return true;
}

std::size_t CountDigits(std::wstring_view text) noexcept
{
    std::size_t count = 0;
    while (count < text.size() && DigitValue(text[count]) < 10)
        ++count;
    return count;
}

// [digits][.digits][(e|E)[sign]digits], with a digit before or behind the point.
bool IsDecimal(std::wstring_view text) noexcept
{
    const std::size_t whole = CountDigits(text);
    text.remove_prefix(whole);
    std::size_t broken = 0;
    if (!text.empty() && text[0] == L'.')
    {
        text.remove_prefix(1);
        broken = CountDigits(text);
        text.remove_prefix(broken);
    }
    if (whole + broken == 0)
        return false;
    if (!text.empty() && (text[0] == L'e' || text[0] == L'E'))
    {
        text.remove_prefix(1);
        TakeSign(text);
        return !text.empty() && CountDigits(text) == text.size();
    }
    return text.empty();
}

double ReadAscii(std::wstring_view text) noexcept
{
    auto* const bytes = static_cast<char*>(std::malloc(text.size() + 1));
    if (!bytes)
        return std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < text.size(); ++i)
        bytes[i] = static_cast<char>(text[i]);
    bytes[text.size()] = '\0';
    const double value = ReadDouble(bytes);
    std::free(bytes);
    return value;
}

} // namespace

VnString VnString::FromUInt64(std::uint64_t value, unsigned radix) noexcept
{
    if (radix < 2 || radix > 36)
        return {};
    wchar_t digits[64];
    wchar_t* const end = digits + 64;
    const wchar_t* const begin = WriteDigits(end, value, radix);
    return std::wstring_view(begin, static_cast<std::size_t>(end - begin));
}

VnString VnString::FromInt64(std::int64_t value, unsigned radix) noexcept
{
    const auto magnitude = static_cast<std::uint64_t>(value);
    VnString text = FromUInt64(value < 0 ? 0 - magnitude : magnitude, radix);
    return value < 0 && !text.IsEmpty() ? text.Insert(0, L"-") : text;
}

VnString VnString::FromDouble(double value) noexcept
{
    char bytes[32];
    std::size_t length = 0;
    for (int precision = 15; precision <= 17; ++precision)
    {
        length = WriteDouble(bytes, sizeof(bytes), value, 'g', precision, false);
        if (!std::isfinite(value) || ReadDouble(bytes) == value)
            break;
    }
    VnString text;
    for (std::size_t i = 0; i < length; ++i)
        text.Append(static_cast<wchar_t>(bytes[i]));
    return text;
}

bool VnString::ToUInt64(std::uint64_t& value, unsigned radix) const noexcept
{
    const VnString trimmed = VnString(*this).Trim();
    std::wstring_view digits = trimmed;
    std::uint64_t magnitude = 0;
    const bool negative = TakeSign(digits);
    if (!ReadMagnitude(digits, radix, magnitude) || (negative && magnitude != 0))
        return false;
    value = magnitude;
    return true;
}

bool VnString::ToInt64(std::int64_t& value, unsigned radix) const noexcept
{
    constexpr std::uint64_t largest = std::numeric_limits<std::int64_t>::max();
    const VnString trimmed = VnString(*this).Trim();
    std::wstring_view digits = trimmed;
    std::uint64_t magnitude = 0;
    const bool negative = TakeSign(digits);
    if (!ReadMagnitude(digits, radix, magnitude) || magnitude > largest + (negative ? 1 : 0))
        return false;
    value = static_cast<std::int64_t>(negative ? 0 - magnitude : magnitude);
    return true;
}

bool VnString::ToDouble(double& value) const noexcept
{
    const VnString trimmed = VnString(*this).Trim();
    std::wstring_view digits = trimmed;
    const bool negative = TakeSign(digits);
    if (!IsDecimal(digits))
        return false;
    const double read = ReadAscii(digits);
    if (!std::isfinite(read))
        return false;
    value = negative ? -read : read;
    return true;
}

} // namespace VnOSAL
