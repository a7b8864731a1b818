#include "env/Text.h"

#include "net/Md5.h"
#include "platform/SystemFacts.h"
#include "text/CodePages.h"
#include "zotracker/vnosal/VnAString.h"

namespace env {

namespace {

bool IsKept(wchar_t unit)
{
    if (unit >= 0x80)
        return platform::IsAlphanumeric(unit);
    return (unit >= L'0' && unit <= L'9') || (unit >= L'A' && unit <= L'Z') ||
           (unit >= L'a' && unit <= L'z');
}

void AppendEscape(std::wstring& query, std::uint16_t unit)
{
    query += L'%';
    int shift = 12;
    while (shift > 0 && unit >> shift == 0)
        shift -= 4;
    for (; shift >= 0; shift -= 4)
        query += L"0123456789ABCDEF"[(unit >> shift) & 0xF];
}

} // namespace

std::string Utf16ToUtf8(std::wstring_view text)
{
    return text::EncodeBytes(text, VnOSAL::codePageUtf8);
}

std::wstring Utf8ToUtf16(std::string_view bytes)
{
    constexpr std::size_t refusedLength = 65'533;
    std::wstring text = text::DecodeBytes(bytes, VnOSAL::codePageUtf8);
    return text.size() == refusedLength ? AnsiToUtf16(bytes) : text;
}

std::wstring AnsiToUtf16(std::string_view bytes)
{
    return text::DecodeBytes(bytes, platform::GetAnsiCodePage());
}

void AppendQueryText(std::wstring& query, std::wstring_view text, bool keepAlphanumerics)
{
    for (const wchar_t unit : text)
        if (keepAlphanumerics && IsKept(unit))
            query += unit;
        else
            AppendEscape(query, static_cast<std::uint16_t>(unit));
}

void AppendEncoded(std::wstring& query, std::wstring_view key, std::wstring_view value)
{
    query += key;
    AppendQueryText(query, value, true);
}

std::wstring EncodeQueryText(std::wstring_view text, bool keepAlphanumerics)
{
    std::wstring query;
    query.reserve(text.size() + text.size() / 2);
    AppendQueryText(query, text, keepAlphanumerics);
    return query;
}

std::wstring Md5OfText(std::wstring_view text) { return net::Md5Hex(Utf16ToUtf8(text).c_str()); }

} // namespace env
