#include "text/Format.h"

#include "vnosal/NumberText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>

namespace text {

namespace {

constexpr std::size_t countLimit = 99; // of a width or a precision

struct Conversion
{
    bool zeroPadded = false;
    std::size_t width = 0;
    std::optional<std::size_t> precision;
    bool has64Bits = false;
    wchar_t letter = 0; // 0 when the format ends first
};

// Takes a prefix off the format, true when it was there.
bool Skip(std::wstring_view& format, std::wstring_view prefix)
{
    const bool found = format.starts_with(prefix);
    if (found)
        format.remove_prefix(prefix.size());
    return found;
}

std::size_t TakeCount(std::wstring_view& format)
{
    std::size_t count = 0;
    for (; !format.empty() && format[0] >= L'0' && format[0] <= L'9'; format.remove_prefix(1))
        count = std::min(count * 10 + static_cast<std::size_t>(format[0] - L'0'), countLimit);
    return count;
}

// Takes one conversion, behind its percent sign, off the format.
Conversion TakeConversion(std::wstring_view& format)
{
    Conversion conversion;
    conversion.zeroPadded = Skip(format, L"0");
    conversion.width = TakeCount(format);
    if (Skip(format, L"."))
        conversion.precision = TakeCount(format);
    conversion.has64Bits = Skip(format, L"I64");
    Skip(format, L"l");
    if (!format.empty())
    {
        conversion.letter = format[0];
        format.remove_prefix(1);
    }
    return conversion;
}

void AppendDigits(std::wstring& text, const Conversion& conversion, std::uint64_t magnitude,
                  bool negative)
{
    const bool isHexadecimal = conversion.letter == L'x' || conversion.letter == L'X';
    std::array<wchar_t, std::numeric_limits<std::uint64_t>::digits10 + 1> buffer;
    wchar_t* const end = buffer.data() + buffer.size();
    const wchar_t* const first = VnOSAL::WriteDigits(end, magnitude, isHexadecimal ? 16 : 10,
                                                     conversion.letter == L'X' ? 'A' : 'a');
    const std::wstring_view digits(first, static_cast<std::size_t>(end - first));
    const std::size_t taken = digits.size() + (negative ? 1 : 0);
    const std::size_t padding = conversion.width > taken ? conversion.width - taken : 0;
    std::size_t zeros = conversion.zeroPadded ? padding : 0;
    if (conversion.precision)
        zeros = *conversion.precision > digits.size() ? *conversion.precision - digits.size() : 0;
    text.append(padding > zeros ? padding - zeros : 0, L' ');
    if (negative)
        text += L'-';
    text.append(zeros, L'0');
    text += digits;
}

void AppendInteger(std::wstring& text, const Conversion& conversion, std::uint64_t value)
{
    if (!conversion.has64Bits)
        value = conversion.letter == L'd'
                    ? static_cast<std::uint64_t>(static_cast<std::int32_t>(value))
                    : static_cast<std::uint32_t>(value);
    const bool negative = conversion.letter == L'd' && static_cast<std::int64_t>(value) < 0;
    AppendDigits(text, conversion, negative ? 0 - value : value, negative);
}

void AppendReal(std::wstring& text, const Conversion& conversion, double value)
{
    if (std::isnan(value))
        value = std::fabs(value); // without the sign that the runtime may give it
    std::array<char, std::numeric_limits<double>::max_exponent10 + countLimit + 8> buffer;
    const int precision = static_cast<int>(conversion.precision.value_or(6));
    const std::size_t length =
        VnOSAL::WriteDouble(buffer.data(), buffer.size(), value, 'f', precision, false);
    text.append(buffer.data(), buffer.data() + length);
}

void AppendArgument(std::wstring& text, const Conversion& conversion,
                    const CFormatArgument& argument)
{
    switch (conversion.letter)
    {
    case L's':
        if (const std::wstring_view* given = argument.GetText())
            text += *given;
        break;
    case L'd':
    case L'u':
    case L'x':
    case L'X':
        if (const std::uint64_t* given = argument.GetInteger())
            AppendInteger(text, conversion, *given);
        break;
    case L'f':
        if (const double* given = argument.GetReal())
            AppendReal(text, conversion, *given);
        break;
    default:
        break;
    }
}

} // namespace

void AppendFormatted(std::wstring& text, std::wstring_view format,
                     std::initializer_list<CFormatArgument> arguments)
{
    const CFormatArgument* next = arguments.begin();
    while (!format.empty())
    {
        const std::wstring_view literal = format.substr(0, format.find(L'%'));
        text += literal;
        format.remove_prefix(literal.size());
        if (!Skip(format, L"%"))
            continue;
        if (Skip(format, L"%"))
        {
            text += L'%';
            continue;
        }
        const Conversion conversion = TakeConversion(format);
        if (next != arguments.end())
            AppendArgument(text, conversion, *next++);
    }
}

} // namespace text
