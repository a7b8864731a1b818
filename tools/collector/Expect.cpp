#include "tools/collector/Comparison.h"
#include "tools/collector/HostProcess.h"
#include "tools/collector/Programs.h"
#include "tools/collector/Station.h"

#include <cstdio>
#include <iterator>
#include <stdexcept>

namespace collector {

namespace {

constexpr int exitAsPlanned = 0;
constexpr int exitDifferent = 1;
constexpr int exitTimeout = 2;

Plan ReadPlan(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    if (!file)
        throw std::runtime_error("cannot read the plan " + path);
    return ParsePlan(text);
}

std::vector<HitReport> ListHits(const CStation& station)
{
    HitFilter filter;
    filter.after = station.GetFirstId() - 1;
    filter.limit = 100'000;
    return station.GetStore().Find(filter, EDetail::Whole);
}

void WriteResults(const Options& options, const Plan& plan, const std::vector<PlanResult>& results)
{
    if (!options.junit.empty() && !(std::ofstream(options.junit, std::ios::binary)
                                    << WriteJunit(plan, results) << std::flush))
        throw std::runtime_error("cannot write " + options.junit);
}

} // namespace

int Expect(const Options& options)
{
    const Plan plan = ReadPlan(options.plan);
    CStation station(options, [](const HitReport&) {});
    const std::optional<int> ended =
        RunHost(options.hostArguments,
                {"COLLECTOR_URL=" + station.GetUrl(), "COLLECTOR_CA=" + station.GetAuthorityPath()},
                options.timeout);
    station.Finish();
    const std::vector<HitReport> hits = ListHits(station);
    std::vector<PlanResult> results = Compare(plan, hits);
    if (!ended)
        results.push_back({nullptr, {"the host had to be killed at the timeout"}});
    else if (*ended != 0)
        results.push_back({nullptr, {"the host ended with " + std::to_string(*ended)}});
    WriteResults(options, plan, results);
    Print(WriteDifferences(plan, results, hits.size()));
    if (!ended)
        return exitTimeout;
    return CountProblems(results) == 0 ? exitAsPlanned : exitDifferent;
}

} // namespace collector
