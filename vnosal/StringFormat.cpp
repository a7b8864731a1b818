#include "zotracker/vnosal/VnAString.h"
#include "zotracker/vnosal/VnString.h"

#include "vnosal/NumberText.h"
#include "vnosal/TextView.h"

#include <algorithm>
#include <cstring>
#include <cwchar>

// The whole of printf, for arguments of a C call. The module formats by text::FormatText, which
// knows the kind of each argument; what the two share are the digits of numbers (NumberText.h).
namespace VnOSAL {
namespace {

enum class ESize : std::uint8_t
{
    Char,
    Short,
    Int,
    Long,
    LongLong,
    LongDouble
};

// One conversion between "%" and its letter.
struct Directive
{
    bool left = false;
    bool plus = false;
    bool space = false;
    bool alternate = false;
    bool zero = false;
    int width = 0;
    int precision = -1;
    ESize size = ESize::Int;
    wchar_t letter = 0;
};

// The arguments by reference, whatever va_list is.
struct Arguments
{
    std::va_list list;
};

constexpr int maxField = 0xFFFFFF; // wider fields and precisions count as this

const wchar_t* ReadFlags(const wchar_t* at, Directive& directive) noexcept
{
    for (;; ++at)
        switch (*at)
        {
        case L'-':
            directive.left = true;
            break;
        case L'+':
            directive.plus = true;
            break;
        case L' ':
            directive.space = true;
            break;
        case L'#':
            directive.alternate = true;
            break;
        case L'0':
            directive.zero = true;
            break;
        default:
            return at;
        }
}

const wchar_t* ReadNumber(const wchar_t* at, Arguments& arguments, int& number) noexcept
{
    number = 0;
    if (*at == L'*')
    {
        number = std::clamp(va_arg(arguments.list, int), -maxField, maxField);
        return at + 1;
    }
    for (; *at >= L'0' && *at <= L'9'; ++at)
        number = std::min(number * 10 + static_cast<int>(*at - L'0'), maxField);
    return at;
}

const wchar_t* ReadSize(const wchar_t* at, ESize& size) noexcept
{
    static constexpr struct
    {
        std::wstring_view text;
        ESize size;
    } sizes[] = {{L"hh", ESize::Char},    {L"h", ESize::Short},      {L"ll", ESize::LongLong},
                 {L"l", ESize::Long},     {L"j", ESize::LongLong},   {L"z", ESize::LongLong},
                 {L"t", ESize::LongLong}, {L"L", ESize::LongDouble}, {L"I64", ESize::LongLong},
                 {L"I32", ESize::Int}};
    for (const auto& known : sizes)
        if (std::wcsncmp(at, known.text.data(), known.text.size()) == 0)
        {
            size = known.size;
            return at + known.text.size();
        }
    return at;
}

// Returns the position of the conversion's letter.
const wchar_t* ReadDirective(const wchar_t* at, Arguments& arguments, Directive& directive) noexcept
{
    at = ReadNumber(ReadFlags(at, directive), arguments, directive.width);
    if (directive.width < 0)
    {
        directive.left = true;
        directive.width = -directive.width;
    }
    if (*at == L'.')
        at = ReadNumber(at + 1, arguments, directive.precision);
    directive.precision = std::max(directive.precision, -1);
    at = ReadSize(at, directive.size);
    directive.letter = *at;
    return at;
}

// Appends sign or base, zeros and digits within the field's width.
void AppendField(VnString& result, const Directive& directive, std::wstring_view prefix,
                 std::size_t zeros, std::wstring_view body) noexcept
{
    const std::size_t used = prefix.size() + zeros + body.size();
    const auto width = static_cast<std::size_t>(directive.width);
    std::size_t padding = width > used ? width - used : 0;
    if (directive.zero && !directive.left)
    {
        zeros += padding;
        padding = 0;
    }
    if (!directive.left)
        result.Append(VnString(padding, L' '));
    result.Append(prefix).Append(VnString(zeros, L'0')).Append(body);
    if (directive.left)
        result.Append(VnString(padding, L' '));
}

std::wstring_view SignPrefix(const Directive& directive, bool negative) noexcept
{
    return negative ? L"-" : directive.plus ? L"+" : directive.space ? L" " : L"";
}

std::int64_t TakeSigned(Arguments& arguments, ESize size) noexcept
{
    switch (size)
    {
    case ESize::Char:
        return static_cast<signed char>(va_arg(arguments.list, int));
    case ESize::Short:
        return static_cast<short>(va_arg(arguments.list, int));
    case ESize::Long:
        return va_arg(arguments.list, long);
    case ESize::LongLong:
        return va_arg(arguments.list, long long);
    default:
        return va_arg(arguments.list, int);
    }
}

std::uint64_t TakeUnsigned(Arguments& arguments, ESize size) noexcept
{
    switch (size)
    {
    case ESize::Char:
        return static_cast<unsigned char>(va_arg(arguments.list, unsigned));
    case ESize::Short:
        return static_cast<unsigned short>(va_arg(arguments.list, unsigned));
    case ESize::Long:
        return va_arg(arguments.list, unsigned long);
    case ESize::LongLong:
        return va_arg(arguments.list, unsigned long long);
    default:
        return va_arg(arguments.list, unsigned);
    }
}

void AppendInteger(VnString& result, Directive directive, std::uint64_t value,
                   std::wstring_view prefix) noexcept
{
    const bool hexadecimal = directive.letter == L'x' || directive.letter == L'X';
    const unsigned radix = hexadecimal ? 16 : directive.letter == L'o' ? 8 : 10;
    wchar_t digits[64];
    wchar_t* const end = digits + 64;
    wchar_t* const begin =
        value == 0 && directive.precision == 0
            ? end
            : WriteDigits(end, value, radix, directive.letter == L'X' ? 'A' : 'a');
    const auto count = static_cast<std::size_t>(end - begin);
    std::size_t zeros = 0;
    if (directive.precision >= 0)
    {
        directive.zero = false;
        const auto precision = static_cast<std::size_t>(directive.precision);
        zeros = precision > count ? precision - count : 0;
    }
    if (directive.alternate && hexadecimal && value != 0)
        prefix = directive.letter == L'x' ? L"0x" : L"0X";
    if (directive.alternate && radix == 8 && zeros == 0 && (count == 0 || *begin != L'0'))
        zeros = 1;
    AppendField(result, directive, prefix, zeros, {begin, count});
}

void AppendDouble(VnString& result, Directive directive, double value) noexcept
{
    char small[128];
    const char letter = static_cast<char>(directive.letter);
    char* text = small;
    std::size_t length =
        WriteDouble(text, sizeof(small), value, letter, directive.precision, directive.alternate);
    VnString large; // its units serve as bytes
    if (length >= sizeof(small))
    {
        // The longest finite number has 309 digits before the point.
        const std::size_t room = static_cast<std::size_t>(std::max(directive.precision, 6)) + 400;
        text = reinterpret_cast<char*>(large.OpenBuffer(room));
        if (!text)
            return;
        length = WriteDouble(text, room, value, letter, directive.precision, directive.alternate);
    }
    const bool negative = *text == '-';
    const VnAString digits =
        VnAString::FromBytes({text + negative, length - negative}, codePageUtf8);
    const VnString body = digits.ToString();
    const bool special = body[0] > L'9';
    directive.zero = directive.zero && !special;
    AppendField(result, directive, SignPrefix(directive, negative), 0, body);
}

void AppendText(VnString& result, Directive directive, std::wstring_view text) noexcept
{
    if (directive.precision >= 0)
        text = Part(text, 0, static_cast<std::size_t>(directive.precision));
    directive.zero = false;
    AppendField(result, directive, {}, 0, text);
}

// A text may lack its terminator when the precision says where it ends.
template <class Unit>
std::size_t MeasureText(const Unit* text, int precision) noexcept
{
    std::size_t length = 0;
    while ((precision < 0 || length < static_cast<std::size_t>(precision)) && text[length] != 0)
        ++length;
    return length;
}

void AppendTextArgument(VnString& result, Directive directive, Arguments& arguments) noexcept
{
    const void* const text = va_arg(arguments.list, const void*);
    if (!text)
        return AppendText(result, directive, L"(null)");
    if (directive.size != ESize::Short)
    {
        const auto* const wide = static_cast<const wchar_t*>(text);
        return AppendText(result, directive, {wide, MeasureText(wide, directive.precision)});
    }
    const auto* const narrow = static_cast<const char*>(text);
    const std::size_t length = MeasureText(narrow, directive.precision);
    AppendText(result, directive, VnAString::FromBytes({narrow, length}, codePageUtf8).ToString());
}

void AppendUnit(VnString& result, Directive directive, Arguments& arguments) noexcept
{
    const auto unit = static_cast<wchar_t>(va_arg(arguments.list, int));
    directive.precision = -1;
    AppendText(result, directive, {&unit, 1});
}

// False when the letter is no conversion.
bool AppendConversion(VnString& result, Directive directive, Arguments& arguments) noexcept
{
    switch (directive.letter)
    {
    case L'd':
    case L'i': {
        const std::int64_t value = TakeSigned(arguments, directive.size);
        const auto magnitude = static_cast<std::uint64_t>(value);
        AppendInteger(result, directive, value < 0 ? 0 - magnitude : magnitude,
                      SignPrefix(directive, value < 0));
        return true;
    }
    case L'u':
    case L'o':
    case L'x':
    case L'X':
        AppendInteger(result, directive, TakeUnsigned(arguments, directive.size), {});
        return true;
    case L'p':
        directive.precision = 16;
        directive.letter = L'X';
        AppendInteger(result, directive,
                      reinterpret_cast<std::uintptr_t>(va_arg(arguments.list, void*)), {});
        return true;
    case L'c':
        AppendUnit(result, directive, arguments);
        return true;
    case L's':
        AppendTextArgument(result, directive, arguments);
        return true;
    case L'f':
    case L'F':
    case L'e':
    case L'E':
    case L'g':
    case L'G':
        AppendDouble(result, directive,
                     directive.size == ESize::LongDouble
                         ? static_cast<double>(va_arg(arguments.list, long double))
                         : va_arg(arguments.list, double));
        return true;
    case L'%':
        result.Append(L'%');
        return true;
    default:
        return false;
    }
}

} // namespace

VnString VnString::FormatV(const wchar_t* format, std::va_list arguments) noexcept
{
    VnString result;
    Arguments taken;
    va_copy(taken.list, arguments);
    while (format && *format)
    {
        const std::size_t plain = std::wcscspn(format, L"%");
        result.Append(std::wstring_view(format, plain));
        format += plain;
        if (*format == 0)
            break;
        Directive directive;
        const wchar_t* const letter = ReadDirective(format + 1, taken, directive);
        if (AppendConversion(result, directive, taken))
            format = letter + 1;
        else
            result.Append(*format++);
    }
    va_end(taken.list);
    return result;
}

VnString VnString::Format(const wchar_t* format, ...) noexcept
{
    std::va_list arguments;
    va_start(arguments, format);
    VnString result = FormatV(format, arguments);
    va_end(arguments);
    return result;
}

VnString& VnString::AppendFormat(const wchar_t* format, ...) noexcept
{
    std::va_list arguments;
    va_start(arguments, format);
    const VnString formatted = FormatV(format, arguments);
    va_end(arguments);
    return formatted.IsValid() ? Append(formatted) : *this = formatted;
}

} // namespace VnOSAL
