#pragma once

#include <string>
#include <string_view>

// Conversions of the module's texts: UTF-16 units inside, bytes and escapes outside. Any thread.
namespace env {

// The text's UTF-8 bytes; an unpaired surrogate becomes U+FFFD.
std::string Utf16ToUtf8(std::wstring_view text);

// The text of UTF-8 bytes, bytes that are not UTF-8 as U+FFFD. Text of exactly 65,533 units is read
// in the system's default code page instead: what was stored at that length was stored so.
std::wstring Utf8ToUtf16(std::string_view bytes);

// The text of bytes in the system's default code page.
std::wstring AnsiToUtf16(std::string_view bytes);

// Appends `text` to a query as a value: letters and digits as they stand if `keepAlphanumerics`
// says so, every other unit as "%" and its value in upper-case hexadecimal, without padding and
// without a UTF-8 step. A line feed becomes "%A", the euro sign "%20AC"; servers that decode by
// RFC 3986 do not get these back.
void AppendQueryText(std::wstring& query, std::wstring_view text, bool keepAlphanumerics);

// Appends `key` as it stands and `value` encoded, letters and digits kept.
void AppendEncoded(std::wstring& query, std::wstring_view key, std::wstring_view value);

// The encoded text as a text of its own.
std::wstring EncodeQueryText(std::wstring_view text, bool keepAlphanumerics);

// The MD5 digest of the text's UTF-8 bytes before its first zero unit, as 32 lower-case
// hexadecimal digits.
std::wstring Md5OfText(std::wstring_view text);

} // namespace env
