#include "vnosal/NumberText.h"

#include "vnosal/RuntimeNumbers.h"

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace VnOSAL {
namespace {

// What the runtime's locale puts between the whole and the broken part; may be several bytes.
const char* LocalPoint() noexcept { return std::localeconv()->decimal_point; }

std::size_t WriteSpecial(char* buffer, std::size_t size, double value, bool capitals) noexcept
{
    const char* text = std::isnan(value) ? (capitals ? "NAN" : "nan") : (capitals ? "INF" : "inf");
    const std::size_t sign = std::signbit(value) ? 1 : 0;
    if (size > sign + 3)
    {
        buffer[0] = '-';
        std::memcpy(buffer + sign, text, 4);
    }
    return sign + 3;
}

// Replaces the locale's decimal point in `buffer`.
std::size_t NormalisePoint(char* buffer, std::size_t length) noexcept
{
    const char* const local = LocalPoint();
    char* const found = std::strstr(buffer, local);
    if (!found || std::strcmp(local, ".") == 0)
        return length;
    const std::size_t localLength = std::strlen(local);
    *found = '.';
    std::memmove(found + 1, found + localLength, std::strlen(found + localLength) + 1);
    return length - localLength + 1;
}

// Some runtimes write three digits of exponent where two suffice.
std::size_t NormaliseExponent(char* buffer, std::size_t length) noexcept
{
    char* const exponent = std::strpbrk(buffer, "eE");
    if (!exponent || std::strlen(exponent) != 5 || exponent[2] != '0')
        return length;
    std::memmove(exponent + 2, exponent + 3, 3);
    return length - 1;
}

} // namespace

wchar_t* WriteDigits(wchar_t* end, std::uint64_t value, unsigned radix, char firstLetter) noexcept
{
    do
    {
        const auto digit = static_cast<unsigned>(value % radix);
        *--end = static_cast<wchar_t>(digit < 10 ? L'0' + digit
                                                 : static_cast<unsigned>(firstLetter) + digit - 10);
        value /= radix;
    } while (value != 0);
    return end;
}

std::size_t WriteDouble(char* buffer, std::size_t size, double value, char conversion,
                        int precision, bool alternate) noexcept
{
    if (!std::isfinite(value))
        return WriteSpecial(buffer, size, value, conversion < 'a');
    const std::size_t length = PrintDouble(buffer, size, value, conversion, precision, alternate);
    if (length >= size)
        return length;
    const std::size_t pointed = NormalisePoint(buffer, length);
    return NormaliseExponent(buffer, pointed);
}

double ReadDouble(const char* text) noexcept
{
    char* end = nullptr;
    const double value = ScanDouble(text, end);
    if (*end == '\0') // the locale's decimal point is the point, or there is none
        return value;
    const char* const local = LocalPoint();
    const std::size_t localLength = std::strlen(local);
    const std::size_t length = std::strlen(text);
    const char* const point = std::strchr(text, '.');
    auto* const copy = static_cast<char*>(std::malloc(length + localLength));
    if (!point || !copy)
        return std::free(copy), value;
    const auto whole = static_cast<std::size_t>(point - text);
    std::memcpy(copy, text, whole);
    std::memcpy(copy + whole, local, localLength);
    std::memcpy(copy + whole + localLength, point + 1, length - whole);
    const double read = ScanDouble(copy, end);
    std::free(copy);
    return read;
}

} // namespace VnOSAL
