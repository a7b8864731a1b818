#include "tools/collector/LogReader.h"

#include "tools/collector/Endpoint.h"
#include "tools/collector/LogLine.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace collector {

namespace {

void ReadOne(std::string_view line, LogBlock& block)
{
    ++block.lines;
    std::optional<Hit> hit = ReadLogLine(line);
    if (!hit)
        ++block.unreadable;
    else if (GetEndpoint(hit->target) == EEndpoint::Other)
        ++block.others;
    else
        block.hits.push_back(DecodeReport(std::move(*hit)));
}

} // namespace

LogBlock ReadLogLines(const std::string& text)
{
    constexpr std::size_t usualLine = 400; // bytes
    LogBlock block;
    block.hits.reserve(text.size() / usualLine);
    for (std::string_view rest = text; !rest.empty();)
    {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        std::string_view line = rest.substr(0, end);
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        if (!line.empty())
            ReadOne(line, block);
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return block;
}

} // namespace collector
