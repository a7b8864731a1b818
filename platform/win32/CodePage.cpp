#include "platform/CodePage.h"

#include <windows.h>

#include <climits>
#include <cwctype>

namespace platform {

namespace {

// The system's conversions count in int.
int LengthOf(std::size_t length) { return length <= INT_MAX ? static_cast<int>(length) : 0; }

// Bytes of a code page to UTF-16. Returns the number of units; 0, with `text` unchanged, on
// failure.
std::size_t Decode(UINT codePage, std::string_view bytes, std::wstring& text)
{
    const int length = LengthOf(bytes.size());
    const int units = ::MultiByteToWideChar(codePage, 0, bytes.data(), length, nullptr, 0);
    if (units <= 0)
        return 0;
    std::wstring converted(static_cast<std::size_t>(units), L'\0');
    if (::MultiByteToWideChar(codePage, 0, bytes.data(), length, converted.data(), units) != units)
        return 0;
    text = std::move(converted);
    return text.size();
}

wchar_t MapCase(DWORD mapping, wchar_t unit)
{
    wchar_t mapped = unit;
    return ::LCMapStringW(LOCALE_INVARIANT, mapping, &unit, 1, &mapped, 1) == 1 ? mapped : unit;
}

} // namespace

std::string EncodeUtf8(std::wstring_view text)
{
    const int length = LengthOf(text.size());
    const int count =
        ::WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    if (count <= 0)
        return {};
    std::string bytes(static_cast<std::size_t>(count), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(), count, nullptr, nullptr);
    return bytes;
}

std::size_t DecodeUtf8(std::string_view bytes, std::wstring& text)
{
    return Decode(CP_UTF8, bytes, text);
}

std::wstring DecodeAnsi(std::string_view bytes)
{
    std::wstring text;
    Decode(CP_ACP, bytes, text);
    return text;
}

bool IsAlphanumeric(wchar_t unit) { return std::iswalnum(unit) != 0; }

wchar_t ToUpper(wchar_t unit) { return MapCase(LCMAP_UPPERCASE, unit); }

wchar_t ToLower(wchar_t unit) { return MapCase(LCMAP_LOWERCASE, unit); }

} // namespace platform
