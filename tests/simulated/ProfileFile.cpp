#include "tests/simulated/ProfileFile.h"

#include "platform/Files.h"
#include "platform/ProfileFile.h"
#include "platform/ProfileSection.h"
#include "tests/simulated/Files.h"
#include "tests/simulated/SystemFacts.h"
#include "text/CodePages.h"
#include "text/Decimal.h"

#include <algorithm>
#include <optional>

namespace simulated {

// Held during a whole call, so that two writers do not lose each other's lines.
CState<std::vector<ProfileCall>> profileCalls;

namespace {

using Lines = std::vector<std::wstring>;

Lines ReadLines(const std::wstring& path)
{
    Lines lines;
    const std::wstring text = platform::DecodeProfile(ReadFileBytes(path).value_or(""));
    for (std::size_t begin = 0, end = 0; begin < text.size(); begin = end + 2)
    {
        end = std::min(text.find(L"\r\n", begin), text.size());
        lines.push_back(text.substr(begin, end - begin));
    }
    return lines;
}

bool WriteLines(const std::wstring& path, const Lines& lines)
{
    std::wstring text;
    for (const std::wstring& line : lines)
        text += line + L"\r\n";
    return platform::ReplaceFileContents(path, text::EncodeBytes(text, ansiCodePage));
}

std::optional<std::wstring> FindValue(const std::wstring& section, const std::wstring& key,
                                      const std::wstring& path)
{
    const std::wstring text = platform::DecodeProfile(ReadFileBytes(path).value_or(""));
    platform::CProfileSection entries(text, section);
    for (std::wstring_view name, value; entries.TakeEntry(name, value);)
        if (text::EqualIgnoringCase(name, key))
            return std::wstring(value);
    return std::nullopt;
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

// The line that sets the key, made where there is none.
std::wstring& FindLine(Lines& lines, const std::wstring& section, const std::wstring& key)
{
    auto line = std::find_if(lines.begin(), lines.end(),
                             [&](const std::wstring& one) { return Begins(one, section); });
    if (line == lines.end())
        line = lines.insert(line, L"[" + section + L"]");
    line = std::find_if(line + 1, lines.end(), [&](const std::wstring& one) {
        return Sets(one, key) || platform::ReadProfileHeader(one);
    });
    return line != lines.end() && Sets(*line, key) ? *line : *lines.insert(line, L"");
}

} // namespace

} // namespace simulated

namespace platform {

using namespace simulated;

std::size_t CopyProfileText(const std::wstring& section, const std::wstring& key,
                            const std::wstring& defaultValue, std::span<wchar_t> buffer,
                            const std::wstring& path)
{
    profileCalls->push_back({path, buffer.size()});
    const std::wstring value = FindValue(section, key, path).value_or(defaultValue);
    const std::size_t length = value.copy(buffer.data(), buffer.size() - 1);
    buffer[length] = 0;
    return length;
}

std::int32_t ReadProfileInt(const std::wstring& section, const std::wstring& key,
                            std::int32_t defaultValue, const std::wstring& path)
{
    profileCalls->push_back({path, 0});
    const std::wstring value = FindValue(section, key, path).value_or(L"");
    return value.empty() ? defaultValue : static_cast<std::int32_t>(text::ReadDecimal64(value));
}

bool WriteProfileText(const std::wstring& section, const std::wstring& key,
                      const std::wstring& value, const std::wstring& path)
{
    const auto held = profileCalls.Hold();
    held->push_back({path, 0});
    Lines lines = ReadLines(path);
    FindLine(lines, section, key) = key + L"=" + value;
    return WriteLines(path, lines);
}

} // namespace platform
