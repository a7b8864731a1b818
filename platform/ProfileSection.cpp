#include "platform/ProfileSection.h"

#include "platform/SystemFacts.h"
#include "text/Case.h"
#include "text/CodePages.h"
#include "text/Units.h"

#include <cstdint>

namespace platform {

namespace {

constexpr std::string_view utf16Mark = "\xFF\xFE";

std::wstring_view Trim(std::wstring_view part)
{
    while (!part.empty() && part.front() <= L' ')
        part.remove_prefix(1);
    while (!part.empty() && part.back() <= L' ')
        part.remove_suffix(1);
    return part;
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
        return text::DecodeBytes(bytes, GetAnsiCodePage());
    bytes.remove_prefix(utf16Mark.size());
    return text::DecodeUnits({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

std::optional<std::wstring_view> ReadProfileHeader(std::wstring_view line)
{
    line = Trim(line);
    const std::size_t end = line.rfind(L']');
    if (!line.starts_with(L'[') || end == line.npos)
        return std::nullopt;
    return Trim(line.substr(1, end - 1));
}

bool ReadProfileEntry(std::wstring_view line, std::wstring_view& key, std::wstring_view& value)
{
    line = Trim(line);
    const std::size_t sign = line.find(L'=');
    if (line.starts_with(L';') || sign == line.npos || ReadProfileHeader(line))
        return false;
    key = Trim(line.substr(0, sign));
    value = Unquote(Trim(line.substr(sign + 1)));
    return true;
}

CProfileSection::CProfileSection(std::wstring_view wholeText, std::wstring_view section)
    : rest(wholeText)
{
    for (std::wstring_view line; TakeLine(line);)
        if (const auto name = ReadProfileHeader(line);
            name && text::EqualIgnoringCase(*name, section))
            break;
}

bool CProfileSection::TakeLine(std::wstring_view& line)
{
    if (rest.empty())
        return false;
    const std::size_t end = rest.find_first_of(L"\r\n");
    line = rest.substr(0, end);
    rest.remove_prefix(end == rest.npos ? rest.size() : end + 1);
    return true;
}

bool CProfileSection::TakeEntry(std::wstring_view& key, std::wstring_view& value)
{
    std::wstring_view line;
    while (TakeLine(line))
    {
        if (ReadProfileEntry(line, key, value))
            return true;
        if (ReadProfileHeader(line))
            rest = {};
    }
    return false;
}

} // namespace platform
