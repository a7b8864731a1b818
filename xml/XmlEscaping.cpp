#include "xml/XmlEscaping.h"

#include "text/Units.h"

#include <algorithm>
#include <cstdint>

namespace xml {

namespace {

std::string_view EntityOf(wchar_t unit)
{
    switch (unit)
    {
    case L'&':
        return "&amp;";
    case L'"':
        return "&quot;";
    case L'<':
        return "&lt;";
    case L'>':
        return "&gt;";
    case L'\'':
        return "&apos;";
    default:
        return {};
    }
}

template <class TChar>
std::basic_string<TChar> Escape(std::basic_string_view<TChar> text)
{
    std::basic_string<TChar> escaped;
    escaped.reserve(text.size());
    for (const TChar unit : text)
    {
        const std::string_view entity = EntityOf(static_cast<wchar_t>(unit));
        if (entity.empty())
            escaped += unit;
        else
            escaped.append(entity.begin(), entity.end());
    }
    return escaped;
}

void ReplaceEntity(std::wstring& text, std::wstring_view entity, wchar_t unit)
{
    std::size_t written = 0;
    for (std::size_t read = 0; read < text.size();)
    {
        const bool matches = std::wstring_view(text).substr(read).starts_with(entity);
        text[written++] = matches ? unit : text[read];
        read += matches ? entity.size() : 1;
    }
    text.resize(written);
}

constexpr std::uint32_t lastCodePoint = 0x10FFFF;

// The value of a digit, or `base` when the unit is none.
std::uint32_t DigitOf(wchar_t unit, std::uint32_t base)
{
    const std::wstring_view digits = L"0123456789abcdef";
    const wchar_t lower = unit >= L'A' && unit <= L'F' ? static_cast<wchar_t>(unit + 32) : unit;
    const std::size_t value = digits.find(lower);
    return value < base ? static_cast<std::uint32_t>(value) : base;
}

// A character reference at the front of `text`: its code point and its length, 0 for none.
struct Reference
{
    std::uint32_t codePoint = 0;
    std::size_t length = 0;
};

Reference ReadReference(std::wstring_view text)
{
    if (!text.starts_with(L"&#"))
        return {};
    const bool isHexadecimal = text.substr(2).starts_with(L'x') || text.substr(2).starts_with(L'X');
    const std::uint32_t base = isHexadecimal ? 16 : 10;
    std::size_t length = isHexadecimal ? 3 : 2;
    std::uint32_t codePoint = 0;
    for (; length < text.size() && DigitOf(text[length], base) < base; ++length)
        codePoint = std::min(codePoint * base + DigitOf(text[length], base), lastCodePoint + 1);
    const bool isSurrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
    if (!text.substr(length).starts_with(L';') || codePoint == 0 || codePoint > lastCodePoint ||
        isSurrogate)
        return {};
    return {codePoint, length + 1};
}

std::wstring ReplaceReferences(std::wstring_view text)
{
    std::wstring replaced;
    while (!text.empty())
    {
        const Reference reference = ReadReference(text);
        if (reference.length == 0)
            replaced += text.front();
        else
            text::AppendCharacter(replaced, reference.codePoint);
        text.remove_prefix(std::max<std::size_t>(reference.length, 1));
    }
    return replaced;
}

} // namespace

std::string EscapeXml(std::string_view text) { return Escape(text); }

std::wstring EscapeXml(std::wstring_view text)
{
    std::wstring escaped = Escape(text);
    std::replace(escaped.begin(), escaped.end(), L'\v', L' ');
    return escaped;
}

std::wstring UnescapeXml(std::wstring text)
{
    if (text.find(L'&') == text.npos)
        return text;
    ReplaceEntity(text, L"&quot;", L'"');
    ReplaceEntity(text, L"&lt;", L'<');
    ReplaceEntity(text, L"&gt;", L'>');
    ReplaceEntity(text, L"&amp;", L'&');
    ReplaceEntity(text, L"&apos;", L'\'');
    return ReplaceReferences(text);
}

} // namespace xml
