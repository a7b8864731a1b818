#include "tools/collector/HitLog.h"

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace collector {

namespace {

std::string FormatTime(const std::tm& time, const char* format)
{
    char text[40];
    return {text, std::strftime(text, sizeof text, format, &time)};
}

std::string FormatLocal(std::int64_t time)
{
    const std::time_t seconds = static_cast<std::time_t>(time / 1000);
    std::tm parts{};
    ::localtime_r(&seconds, &parts);
    return FormatTime(parts, "%H:%M:%S");
}

// Long values are cut for the eye; the JSON line keeps them whole.
std::string Shorten(std::string text)
{
    constexpr std::size_t longest = 300;
    if (text.size() > longest)
        text = text.substr(0, longest) + "... (" + std::to_string(text.size()) + " bytes)";
    for (char& byte : text)
        if (static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F)
            byte = '?';
    return text;
}

std::size_t GetWidestMeaning(const std::vector<Parameter>& parameters)
{
    constexpr std::size_t widest = 24;
    std::size_t width = 0;
    for (const Parameter& parameter : parameters)
        width = std::max(width, parameter.meaning.size());
    return std::min(width, widest);
}

} // namespace

std::string FormatUtc(std::int64_t time)
{
    const std::time_t seconds = static_cast<std::time_t>(time / 1000);
    std::tm parts{};
    ::gmtime_r(&seconds, &parts);
    char fraction[16];
    std::snprintf(fraction, sizeof fraction, ".%03dZ", static_cast<int>(time % 1000));
    return FormatTime(parts, "%Y-%m-%dT%H:%M:%S") + fraction;
}

std::string WriteReadable(const HitReport& report, bool colour)
{
    const char* strong = colour ? "\033[1;36m" : "";
    const char* faint = colour ? "\033[2m" : "";
    const char* alarm = colour ? "\033[1;31m" : "";
    const char* plain = colour ? "\033[0m" : "";
    std::string text = strong + ("#" + std::to_string(report.id)) + ' ' + FormatLocal(report.time) +
                       ' ' + report.tracker + "  " + Shorten(report.sentence) + plain + '\n';
    for (const Verdict& verdict : report.verdicts)
        text.append("    ")
            .append(alarm)
            .append(GetName(verdict.severity))
            .append(plain)
            .append(": " + Shorten(verdict.explanation) + '\n');
    const std::size_t width = GetWidestMeaning(report.parameters);
    for (const Parameter& parameter : report.parameters)
    {
        std::string meaning = Shorten(parameter.meaning);
        meaning.resize(std::max(meaning.size(), width), ' ');
        text.append("    ").append(faint).append(meaning).append(plain).append("  ");
        text.append(Shorten(parameter.decoded)).append("\n");
    }
    return text;
}

std::string WriteCounts(const HitCounts& counts)
{
    const auto list = [](const std::map<std::string, std::size_t>& numbers) {
        std::string text;
        for (const auto& [name, count] : numbers)
            if (count > 0)
                text += (text.empty() ? "" : ", ") + Shorten(name) + ' ' + std::to_string(count);
        return text + '\n';
    };
    std::string text = "Hits: " + std::to_string(counts.hits) + '\n';
    if (counts.hits == 0)
        return text;
    text += "  trackers: " + list(counts.trackers) + "  kinds: " + list(counts.kinds) +
            "  verdicts: " + list(counts.verdicts);
    return counts.codes.empty() ? text : text + "  found: " + list(counts.codes);
}

} // namespace collector
