#include "env/ProfileSection.h"

#include "env/Text.h"
#include "text/Case.h"
#include "text/Units.h"

#include <cstdint>

namespace env {

namespace {

constexpr std::string_view utf16Mark = "\xFF\xFE";

std::wstring_view Trim(std::wstring_view text)
{
    while (!text.empty() && text.front() <= L' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() <= L' ')
        text.remove_suffix(1);
    return text;
}

bool IsHeader(std::wstring_view line)
{
    return line.starts_with(L'[') && line.find(L']') != line.npos;
}

bool IsHeaderOf(std::wstring_view line, std::wstring_view section)
{
    return IsHeader(line) && IsSameProfileName(Trim(line.substr(1, line.rfind(L']') - 1)), section);
}

std::wstring_view Unquote(std::wstring_view value)
{
    const bool quoted = value.size() >= 2 && (value.front() == L'"' || value.front() == L'\'') &&
                        value.front() == value.back();
    return quoted ? value.substr(1, value.size() - 2) : value;
}

} // namespace

std::wstring DecodeProfile(std::string_view bytes)
{
    if (!bytes.starts_with(utf16Mark))
        return AnsiToUtf16(bytes);
    bytes.remove_prefix(utf16Mark.size());
    return text::DecodeUnits({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

bool IsSameProfileName(std::wstring_view one, std::wstring_view other)
{
    return text::EqualIgnoringCase(one, other);
}

CProfileSection::CProfileSection(std::wstring_view wholeText, std::wstring_view section)
    : rest(wholeText)
{
    std::wstring_view line;
    while (TakeLine(line) && !IsHeaderOf(line, section))
        ;
}

bool CProfileSection::TakeLine(std::wstring_view& line)
{
    if (rest.empty())
        return false;
    const std::size_t end = rest.find_first_of(L"\r\n");
    line = Trim(rest.substr(0, end));
    rest.remove_prefix(end == rest.npos ? rest.size() : end + 1);
    return true;
}

bool CProfileSection::TakeEntry(std::wstring_view& key, std::wstring_view& value)
{
    std::wstring_view line;
    while (TakeLine(line))
    {
        if (IsHeader(line))
            rest = {};
        const std::size_t sign = line.find(L'=');
        if (IsHeader(line) || line.starts_with(L';') || sign == line.npos)
            continue;
        key = Trim(line.substr(0, sign));
        value = Unquote(Trim(line.substr(sign + 1)));
        return true;
    }
    return false;
}

} // namespace env
