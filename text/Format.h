#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

// Formatting in the manner of printf, but safe and the same in every locale of the host. It stands
// beside VnString::Format, which takes what a C call hands over: here the compiler sends the kind
// of each argument along, so that a wrong format prints nothing instead of reading what is not
// there.
namespace text {

// One value of a FormatText call. Refers to text that must outlive the call.
class CFormatArgument
{
public:
    CFormatArgument(std::wstring_view given) noexcept : kind(EKind::Text), text(given) {}
    CFormatArgument(const std::wstring& given) noexcept : kind(EKind::Text), text(given) {}
    CFormatArgument(const wchar_t* given) noexcept
        : kind(EKind::Text), text(given ? std::wstring_view(given) : std::wstring_view())
    {}
    template <std::integral Integer>
    CFormatArgument(Integer given) noexcept
        : kind(EKind::Integer), integer(static_cast<std::uint64_t>(given))
    {}
    CFormatArgument(double given) noexcept : kind(EKind::Real), real(given) {}

    // The value if it is of the asked kind, else null.
    const std::wstring_view* GetText() const noexcept
    {
        return kind == EKind::Text ? &text : nullptr;
    }
    const std::uint64_t* GetInteger() const noexcept
    {
        return kind == EKind::Integer ? &integer : nullptr;
    }
    const double* GetReal() const noexcept { return kind == EKind::Real ? &real : nullptr; }

private:
    enum class EKind
    {
        Text,
        Integer,
        Real
    };

    EKind kind;
    union
    {
        std::wstring_view text;
        std::uint64_t integer; // signed values are sign-extended
        double real;
    };
};

// Appends `format` to `text` with the arguments in place of its conversions, in order:
//
//   %s             text
//   %d %u %x %X    the low 32 bits of an integer: signed, unsigned, hexadecimal
//   %ld %lu %lx    the same; a long has 32 bits
//   %I64d %I64u    all 64 bits
//   %f             a number with a decimal point in every locale, rounded as the C runtime does;
//                  "inf", "-inf" or "nan" when it is not finite
//   %%             a percent sign
//
// Integers take the flag 0, a width and a precision, %f takes a precision, each at most 99. A
// conversion that is unknown, or whose argument is missing or of another kind, renders as nothing.
void AppendFormatted(std::wstring& text, std::wstring_view format,
                     std::initializer_list<CFormatArgument> arguments);

template <class... Values>
void AppendFormat(std::wstring& text, std::wstring_view format, const Values&... values)
{
    AppendFormatted(text, format, {CFormatArgument(values)...});
}

template <class... Values>
std::wstring FormatText(std::wstring_view format, const Values&... values)
{
    std::wstring text;
    AppendFormatted(text, format, {CFormatArgument(values)...});
    return text;
}

} // namespace text
