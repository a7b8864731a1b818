#include "tests/simulated/ProfileFile.h"

#include "platform/Files.h"
#include "platform/ProfileFile.h"
#include "platform/ProfileSection.h"
#include "tests/simulated/Files.h"
#include "tests/simulated/SystemFacts.h"
#include "text/Case.h"
#include "text/CodePages.h"
#include "text/Units.h"

#include <algorithm>
#include <cwctype>
#include <optional>
#include <utility>

namespace simulated {

// Held during a whole call, so that two writers do not lose each other's lines.
CState<std::vector<ProfileCall>> profileCalls;

namespace {

constexpr std::string_view utf16Mark = "\xFF\xFE";

using Lines = std::vector<std::wstring>;

std::string EncodeProfile(const std::wstring& text, bool asUtf16)
{
    if (!asUtf16)
        return text::EncodeBytes(text, ansiCodePage);
    const auto units = text::EncodeUnits(text);
    return std::string(utf16Mark).append(units.begin(), units.end());
}

Lines SplitLines(const std::wstring& text)
{
    Lines lines;
    for (std::size_t begin = 0; begin < text.size();)
    {
        const std::size_t end = std::min(text.find_first_of(L"\r\n", begin), text.size());
        lines.push_back(text.substr(begin, end - begin));
        begin = end + (text.compare(end, 2, L"\r\n") == 0 ? 2 : 1);
    }
    return lines;
}

bool Begins(const std::wstring& line, const std::wstring& section)
{
    const auto name = platform::ReadProfileHeader(line);
    return name && text::EqualIgnoringCase(*name, section);
}

bool Sets(const std::wstring& line, const std::wstring& key)
{
    std::wstring_view name;
    std::wstring_view value;
    return platform::ReadProfileEntry(line, name, value) && text::EqualIgnoringCase(name, key);
}

std::wstring Trim(const std::wstring& name)
{
    return std::wstring(*platform::ReadProfileHeader(L"[" + name + L"]"));
}

std::optional<std::wstring> FindValue(const std::wstring& section, const std::wstring& key,
                                      const std::wstring& path)
{
    const std::wstring text = platform::DecodeProfile(ReadFileBytes(path).value_or(""));
    platform::CProfileSection entries(text, Trim(section));
    for (std::wstring_view name, value; entries.TakeEntry(name, value);)
        if (text::EqualIgnoringCase(name, Trim(key)))
            return std::wstring(value);
    return std::nullopt;
}

void SetValue(Lines& lines, const std::wstring& section, const std::wstring& key,
              const std::wstring& value)
{
    const std::wstring set = key + L"=" + value;
    auto line = std::find_if(lines.begin(), lines.end(),
                             [&](const std::wstring& one) { return Begins(one, section); });
    if (line == lines.end())
    {
        lines.insert(lines.end(), {L"[" + section + L"]", set});
        return;
    }
    line = std::find_if(line + 1, lines.end(), [&](const std::wstring& one) {
        return Sets(one, key) || platform::ReadProfileHeader(one);
    });
    if (line != lines.end() && Sets(*line, key))
        *line = set;
    else
        lines.insert(line, set);
}

// A number as the system's RtlUnicodeStringToInteger reads it: blanks, a sign, a prefix for the
// base 2, 8 or 16, digits; it wraps at 32 bits.
std::int32_t ParseInteger(const std::wstring& value)
{
    std::wstring text = value;
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

} // namespace simulated

namespace platform {

using namespace simulated;

std::size_t CopyProfileText(const std::wstring& section, const std::wstring& key,
                            const std::wstring& defaultValue, std::span<wchar_t> buffer,
                            const std::wstring& path)
{
    const auto held = profileCalls.Hold();
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
    const auto held = profileCalls.Hold();
    held->push_back({path, 0});
    const std::wstring value = FindValue(section, key, path).value_or(L"");
    return value.empty() ? defaultValue : ParseInteger(value);
}

bool WriteProfileText(const std::wstring& section, const std::wstring& key,
                      const std::wstring& value, const std::wstring& path)
{
    const auto held = profileCalls.Hold();
    held->push_back({path, 0});
    const std::string bytes = ReadFileBytes(path).value_or("");
    Lines lines = SplitLines(DecodeProfile(bytes));
    SetValue(lines, Trim(section), Trim(key), value);
    std::wstring text;
    for (const std::wstring& line : lines)
        text += line + L"\r\n";
    return ReplaceFileContents(path, EncodeProfile(text, bytes.starts_with(utf16Mark)));
}

} // namespace platform
