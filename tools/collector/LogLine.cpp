#include "tools/collector/LogLine.h"

#include "tools/collector/HitJson.h"

#include <charconv>
#include <chrono>
#include <stdexcept>

namespace collector {

namespace {

using TimePoint = std::chrono::system_clock::time_point;

// What one escape stands for; `rest` begins behind the backslash and loses it.
char TakeEscape(std::string_view& rest)
{
    const char letter = rest.front();
    rest.remove_prefix(1);
    unsigned value = 0;
    if (letter == 'x' && rest.size() >= 2 &&
        std::from_chars(rest.data(), rest.data() + 2, value, 16).ptr == rest.data() + 2)
    {
        rest.remove_prefix(2);
        return static_cast<char>(value);
    }
    return letter == 'n' ? '\n' : letter == 't' ? '\t' : letter == 'r' ? '\r' : letter;
}

// Takes the next quoted field off the line, its escapes undone; false when there is none.
bool TakeQuoted(std::string_view& line, std::string& field)
{
    const std::size_t quote = line.find('"');
    if (quote == std::string_view::npos)
        return false;
    line.remove_prefix(quote + 1);
    field.clear();
    for (;;)
    {
        std::size_t end = 0;
        while (end < line.size() && line[end] != '"' && line[end] != '\\')
            ++end;
        if (end == line.size() || (line[end] == '\\' && end + 1 == line.size()))
            return false;
        field += line.substr(0, end);
        const bool closes = line[end] == '"';
        line.remove_prefix(end + 1);
        if (closes)
            return true;
        field += TakeEscape(line);
    }
}

int ReadDigits(std::string_view text, std::size_t at, std::size_t count)
{
    int value = 0;
    const char* end = text.data() + at + count;
    if (std::from_chars(text.data() + at, end, value).ptr != end)
        throw std::runtime_error("no time");
    return value;
}

// "10/Oct/2000:13:55:36 -0700".
TimePoint ReadTime(std::string_view text)
{
    constexpr std::string_view months = "JanFebMarAprMayJunJulAugSepOctNovDec";
    if (text.size() != 26)
        throw std::runtime_error("no time");
    const std::size_t month = months.find(text.substr(3, 3));
    if (month == std::string_view::npos || month % 3 != 0)
        throw std::runtime_error("no month");
    using namespace std::chrono;
    const year_month_day date(year(ReadDigits(text, 7, 4)),
                              std::chrono::month(static_cast<unsigned>(month / 3 + 1)),
                              day(static_cast<unsigned>(ReadDigits(text, 0, 2))));
    const auto zone = hours(ReadDigits(text, 22, 2)) + minutes(ReadDigits(text, 24, 2));
    const auto local = sys_days(date) + hours(ReadDigits(text, 12, 2)) +
                       minutes(ReadDigits(text, 15, 2)) + seconds(ReadDigits(text, 18, 2));
    return text[21] == '-' ? local + zone : local - zone;
}

void AddHeader(Hit& hit, const char* name, std::string& value)
{
    if (!value.empty() && value != "-")
        hit.headers.push_back({name, std::move(value)});
}

std::optional<Hit> ReadCombined(std::string_view line)
{
    const std::size_t begin = line.find(" [");
    const std::size_t end = line.find("] \"", begin);
    if (begin == std::string_view::npos || end == std::string_view::npos)
        return std::nullopt;
    Hit hit;
    hit.time = ReadTime(line.substr(begin + 2, end - begin - 2));
    line.remove_prefix(end);
    std::string request;
    std::string referrer;
    std::string agent;
    if (!TakeQuoted(line, request))
        return std::nullopt;
    const std::size_t first = request.find(' ');
    const std::size_t last = request.rfind(' ');
    if (first == std::string::npos || first == last)
        return std::nullopt;
    hit.method = request.substr(0, first);
    hit.target = request.substr(first + 1, last - first - 1);
    hit.version = request.substr(last + 1);
    if (TakeQuoted(line, referrer) && TakeQuoted(line, agent))
    {
        AddHeader(hit, "User-Agent", agent);
        AddHeader(hit, "Referer", referrer);
    }
    if (!TakeQuoted(line, hit.body) || hit.body == "-")
        hit.body.clear();
    return hit;
}

} // namespace

std::optional<Hit> ReadLogLine(std::string_view line)
{
    try
    {
        return line.starts_with('{') ? ReadLine(line) : ReadCombined(line);
    }
    catch (const std::runtime_error&)
    {
        return std::nullopt;
    }
}

} // namespace collector
