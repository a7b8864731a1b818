#include "tests/simulated/ProfileFile.h"

#include "platform/Files.h"
#include "platform/ProfileFile.h"
#include "tests/simulated/Files.h"
#include "tests/simulated/State.h"
#include "tests/simulated/SystemFacts.h"
#include "tests/simulated/UpperCase.h"
#include "text/StandardText.h"

#include <algorithm>
#include <cwctype>
#include <optional>
#include <utility>

namespace simulated {

namespace {

// Held during a whole call, so that two writers do not lose each other's lines.
CState<std::vector<ProfileCall>> calls;

constexpr std::string_view utf16Mark = "\xFF\xFE";

using Lines = std::vector<std::wstring>;

std::wstring Trim(const std::wstring& text)
{
    const auto isBlank = [](wchar_t unit) { return unit <= L' '; };
    const auto first = std::find_if_not(text.begin(), text.end(), isBlank);
    const auto last = std::find_if_not(text.rbegin(), text.rend(), isBlank).base();
    return first < last ? std::wstring(first, last) : std::wstring();
}

std::wstring FoldName(const std::wstring& name) { return UpperCase(Trim(name)); }

bool IsUtf16(const std::string& bytes) { return bytes.starts_with(utf16Mark); }

std::wstring DecodeProfile(const std::string& bytes)
{
    if (!IsUtf16(bytes))
        return text::ToStandard(VnOSAL::VnAString::FromBytes(bytes, ansiCodePage).ToString());
    std::wstring text;
    for (std::size_t i = utf16Mark.size(); i + 1 < bytes.size(); i += 2)
        text += static_cast<wchar_t>(static_cast<unsigned char>(bytes[i]) |
                                     static_cast<unsigned char>(bytes[i + 1]) << 8);
    return text;
}

std::string EncodeProfile(const std::wstring& text, bool asUtf16)
{
    if (!asUtf16)
        return text::ToStandard(VnOSAL::VnAString(text, ansiCodePage));
    std::string bytes(utf16Mark);
    for (const wchar_t unit : text)
    {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8 & 0xFF);
    }
    return bytes;
}

Lines SplitLines(const std::wstring& text)
{
    Lines lines;
    std::size_t begin = 0;
    while (begin < text.size())
    {
        const std::size_t end = std::min(text.find_first_of(L"\r\n", begin), text.size());
        lines.push_back(text.substr(begin, end - begin));
        begin = end + (text.compare(end, 2, L"\r\n") == 0 ? 2 : 1);
    }
    return lines;
}

std::wstring JoinLines(const Lines& lines)
{
    std::wstring text;
    for (const std::wstring& line : lines)
        text += line + L"\r\n";
    return text;
}

// The folded name of the section that a line opens.
std::optional<std::wstring> SectionOf(const std::wstring& line)
{
    const std::wstring trimmed = Trim(line);
    const std::size_t end = trimmed.rfind(L']');
    if (!trimmed.starts_with(L'[') || end == trimmed.npos)
        return std::nullopt;
    return FoldName(trimmed.substr(1, end - 1));
}

// The range of the lines below the first section of that name.
using Range = std::pair<std::size_t, std::size_t>;
std::optional<Range> FindSection(const Lines& lines, const std::wstring& section)
{
    std::size_t begin = 0;
    while (begin < lines.size() && SectionOf(lines[begin]) != FoldName(section))
        ++begin;
    if (begin == lines.size())
        return std::nullopt;
    std::size_t end = ++begin;
    while (end < lines.size() && !SectionOf(lines[end]))
        ++end;
    return Range(begin, end);
}

// The index of the first line in a range that gives the key a value; the range's end when there is
// none.
std::size_t FindKey(const Lines& lines, Range range, const std::wstring& key)
{
    const auto sets = [&key](const std::wstring& line) {
        const std::size_t sign = line.find(L'=');
        return sign != line.npos && FoldName(line.substr(0, sign)) == FoldName(key);
    };
    while (range.first < range.second && !sets(lines[range.first]))
        ++range.first;
    return range.first;
}

std::wstring Unquote(const std::wstring& value)
{
    const bool quoted = value.size() >= 2 && (value.front() == L'"' || value.front() == L'\'') &&
                        value.front() == value.back();
    return quoted ? value.substr(1, value.size() - 2) : value;
}

std::optional<std::wstring> FindValue(const std::wstring& section, const std::wstring& key,
                                      const std::wstring& path)
{
    const auto bytes = ReadFileBytes(path);
    if (!bytes)
        return std::nullopt;
    const Lines lines = SplitLines(DecodeProfile(*bytes));
    const auto range = FindSection(lines, section);
    if (!range)
        return std::nullopt;
    const std::size_t found = FindKey(lines, *range, key);
    if (found == range->second)
        return std::nullopt;
    return Unquote(Trim(lines[found].substr(lines[found].find(L'=') + 1)));
}

void SetValue(Lines& lines, const std::wstring& section, const std::wstring& key,
              const std::wstring& value)
{
    const std::wstring line = Trim(key) + L"=" + value;
    const auto range = FindSection(lines, section);
    if (!range)
    {
        lines.insert(lines.end(), {L"[" + Trim(section) + L"]", line});
        return;
    }
    const std::size_t found = FindKey(lines, *range, key);
    if (found < range->second)
        lines[found] = line;
    else
        lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(found), line);
}

// A number as the system's RtlUnicodeStringToInteger reads it: blanks, a sign, a prefix for the
// base 2, 8 or 16, digits; it wraps at 32 bits.
std::int32_t ParseInteger(const std::wstring& value)
{
    std::wstring text = Trim(value);
    const bool negative = text.starts_with(L'-');
    if (negative || text.starts_with(L'+'))
        text.erase(0, 1);
    int base = 10;
    if (text.starts_with(L"0x") || text.starts_with(L"0o") || text.starts_with(L"0b"))
    {
        base = text[1] == L'x' ? 16 : text[1] == L'o' ? 8 : 2;
        text.erase(0, 2);
    }
    const bool hasDigits = std::iswxdigit(static_cast<std::wint_t>(text[0])) != 0;
    const auto number =
        static_cast<std::int64_t>(hasDigits ? std::wcstoull(text.c_str(), nullptr, base) : 0);
    return static_cast<std::int32_t>(negative ? -number : number);
}

} // namespace

std::vector<ProfileCall> TakeProfileCalls() { return std::exchange(*calls.Hold(), {}); }

} // namespace simulated

namespace platform {

using namespace simulated;

std::size_t CopyProfileText(const std::wstring& section, const std::wstring& key,
                            const std::wstring& defaultValue, std::span<wchar_t> buffer,
                            const std::wstring& path)
{
    const auto held = calls.Hold();
    held->push_back({path, buffer.size()});
    if (buffer.empty())
        return 0;
    std::wstring value = defaultValue;
    value.erase(value.find_last_not_of(L' ') + 1); // npos + 1 is 0
    value = FindValue(section, key, path).value_or(value);
    const std::size_t length = value.copy(buffer.data(), buffer.size() - 1);
    buffer[length] = 0;
    return length;
}

std::int32_t ReadProfileInt(const std::wstring& section, const std::wstring& key,
                            std::int32_t defaultValue, const std::wstring& path)
{
    const auto held = calls.Hold();
    held->push_back({path, 0});
    const std::wstring value = FindValue(section, key, path).value_or(L"");
    return value.empty() ? defaultValue : ParseInteger(value);
}

bool WriteProfileText(const std::wstring& section, const std::wstring& key,
                      const std::wstring& value, const std::wstring& path)
{
    const auto held = calls.Hold();
    held->push_back({path, 0});
    const std::string bytes = ReadFileBytes(path).value_or("");
    Lines lines = SplitLines(DecodeProfile(bytes));
    SetValue(lines, section, key, value);
    return ReplaceFileContents(path, EncodeProfile(JoinLines(lines), IsUtf16(bytes)));
}

} // namespace platform
