#include "tools/collector/LogReader.h"

#include "tools/collector/Endpoint.h"
#include "tools/collector/LogLine.h"

#include <algorithm>
#include <future>
#include <thread>

namespace collector {

namespace {

constexpr std::size_t leastPart = 200; // lines that are worth a thread

} // namespace

void RunInParts(std::size_t count, const std::function<void(std::size_t, std::size_t)>& work)
{
    const std::size_t processors = std::max(1U, std::thread::hardware_concurrency());
    const std::size_t part = std::max(leastPart, (count + processors - 1) / processors);
    std::vector<std::future<void>> others;
    for (std::size_t begin = part; begin < count; begin += part)
        others.push_back(
            std::async(std::launch::async, work, begin, std::min(begin + part, count)));
    work(0, std::min(part, count));
    for (std::future<void>& other : others)
        other.get();
}

std::vector<HitReport> CLogReader::Read(const std::vector<std::string_view>& lines)
{
    enum class EOutcome : char
    {
        Unreadable,
        Other,
        Hit
    };
    std::vector<HitReport> reports(lines.size());
    std::vector<EOutcome> outcomes(lines.size());
    RunInParts(lines.size(), [&](std::size_t begin, std::size_t end) {
        for (std::size_t index = begin; index < end; ++index)
        {
            std::optional<Hit> hit = ReadLogLine(lines[index]);
            if (!hit)
                continue;
            if (GetEndpoint(hit->target) == EEndpoint::Other)
            {
                outcomes[index] = EOutcome::Other;
                continue;
            }
            outcomes[index] = EOutcome::Hit;
            reports[index] = DecodeReport(std::move(*hit));
        }
    });
    std::size_t kept = 0;
    for (std::size_t index = 0; index < lines.size(); ++index)
    {
        counts.others += outcomes[index] == EOutcome::Other ? 1 : 0;
        counts.unreadable += outcomes[index] == EOutcome::Unreadable ? 1 : 0;
        if (outcomes[index] != EOutcome::Hit)
            continue;
        course.Follow(reports[index]);
        reports[index].id = ++counts.hits;
        if (kept != index)
            reports[kept] = std::move(reports[index]);
        ++kept;
    }
    counts.lines += lines.size();
    reports.resize(kept);
    return reports;
}

} // namespace collector
