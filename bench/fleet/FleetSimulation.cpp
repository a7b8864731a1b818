// fleet_simulation COMPUTERS [SVG]: what clients cost their collection point. First one computer
// for an hour, then a fleet for a day that is ordinary, that has an outage, or on which all begin
// at once.
//
// Computers have nothing in common but the server, so each lives by itself, one after the other,
// and their requests are put together.

#include "bench/fleet/FleetClient.h"
#include "bench/fleet/RatePlot.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>

namespace fleet {

namespace {

constexpr std::int64_t second = 1000, minute = 60 * second, hour = 60 * minute, day = 24 * hour;
constexpr std::int64_t outageStart = 14 * hour, outageEnd = 15 * hour;
constexpr double million = 1e6;

// How many hosts are started in each hour of the day, in proportion.
constexpr std::array<double, 24> starts = {1,  1,  1,  1,  1,  2,  4,  12, 26, 30, 26, 22,
                                           18, 22, 24, 24, 22, 20, 17, 16, 14, 10, 6,  3};

simulated::Answer Accept(std::int64_t) { return {}; }

simulated::Answer RefuseInOutage(std::int64_t at)
{
    simulated::Answer answer;
    if (at >= outageStart && at < outageEnd)
    {
        answer.failsAt = simulated::ENetworkStage::Send;
        answer.error = platform::internetCannotConnect;
    }
    return answer;
}

// Takes connections and says nothing until it is well again.
simulated::Answer HangInOutage(std::int64_t at)
{
    simulated::Answer answer;
    if (at >= outageStart && at < outageEnd)
        answer.delay = std::chrono::milliseconds(outageEnd - at);
    return answer;
}

// --- what users do -----------------------------------------------------------------------------

using Random = std::mt19937_64;

std::vector<std::int64_t> DrawEvents(Random& random, std::int64_t length)
{
    std::exponential_distribution<double> pause(1.0 / (4 * minute));
    std::vector<std::int64_t> events;
    for (double at = pause(random); at < static_cast<double>(length); at += pause(random))
        events.push_back(static_cast<std::int64_t>(at));
    return events;
}

// One to three runs with a daily rhythm; half are shorter than 20 minutes, none is beyond 4 hours.
std::vector<Run> DrawDayOfRuns(Random& random)
{
    std::discrete_distribution<int> hourOfStart(starts.begin(), starts.end());
    std::uniform_int_distribution<std::int64_t> inHour(0, hour - 1);
    std::uniform_int_distribution<std::size_t> count(1, 3);
    std::lognormal_distribution<double> minutes(std::log(20), 1);
    std::vector<Run> runs(count(random));
    for (Run& run : runs)
    {
        run.start = hourOfStart(random) * hour + inHour(random);
        run.length = std::min(4 * hour, static_cast<std::int64_t>(minutes(random) * minute));
        run.events = DrawEvents(random, run.length);
    }
    std::ranges::sort(runs, {}, &Run::start);
    for (std::size_t i = 1; i < runs.size(); ++i)
        runs[i].start = std::max(runs[i].start, runs[i - 1].start + runs[i - 1].length + minute);
    return runs;
}

// A site whose computers all start the host within one second, and nobody does anything.
std::vector<Run> DrawMorning(Random& random)
{
    std::uniform_int_distribution<std::int64_t> inSecond(0, second - 1);
    return {{9 * hour + inSecond(random), hour, {}}};
}

// --- what comes of it --------------------------------------------------------------------------

struct Load
{
    std::vector<std::size_t> perSecond = std::vector<std::size_t>(day / second);
    std::size_t requests = 0;
    std::size_t bytes = 0;

    // The busiest stretch of so many seconds within [from, to), in requests a second.
    double GetPeak(std::int64_t seconds, std::int64_t from = 0, std::int64_t to = day) const
    {
        std::size_t sum = 0, most = 0;
        const auto first = static_cast<std::size_t>(from / second);
        const auto length = static_cast<std::size_t>(seconds);
        for (std::size_t at = first; at < static_cast<std::size_t>(to / second); ++at)
        {
            sum += perSecond[at];
            if (at >= first + length)
                sum -= perSecond[at - length];
            most = std::max(most, sum);
        }
        return static_cast<double>(most) / static_cast<double>(seconds);
    }

    double GetMean(std::int64_t from, std::int64_t to) const
    {
        std::size_t sum = 0;
        for (auto at = from / second; at < to / second; ++at)
            sum += perSecond[static_cast<std::size_t>(at)];
        return static_cast<double>(sum) / static_cast<double>((to - from) / second);
    }
};

Load Simulate(int computers, std::vector<Run> (*draw)(Random&), const Server& server)
{
    Load load;
    for (int computer = 0; computer < computers; ++computer)
    {
        Random random(static_cast<std::uint64_t>(computer));
        const ETracker main = computer % 2 == 0 ? ETracker::Classic : ETracker::Measurement;
        for (const Request& request : Live(main, draw(random), server))
        {
            ++load.perSecond[static_cast<std::size_t>(request.at % day / second)];
            ++load.requests;
            load.bytes += request.bytes;
        }
    }
    return load;
}

void PrintHour(const char* what, ETracker main, std::int64_t pause)
{
    Run run{minute, hour, {}};
    for (std::int64_t at = pause; pause > 0 && at < hour; at += pause)
        run.events.push_back(at);
    std::array<std::size_t, 3> requests{}, bytes{};
    for (const Request& request : Live(main, {run}, Accept))
    {
        ++requests[static_cast<std::size_t>(request.tracker)];
        bytes[static_cast<std::size_t>(request.tracker)] += request.bytes;
    }
    constexpr const char* names[] = {"classic", "measurement", "KPI"};
    for (std::size_t i = 0; i < requests.size(); ++i)
        if (requests[i] > 0)
            std::printf("%-28s %-12s %4zu requests %8zu bytes\n", what, names[i], requests[i],
                        bytes[i]);
}

void PrintDay(const char* what, const Load& load, int computers)
{
    const double scale = million / computers;
    std::printf("%-16s %8zu requests, %5.1f and %6.0f bytes a computer; a million: %6.0f/s on the "
                "average, %6.0f/s in the busiest 10 minutes\n",
                what, load.requests, static_cast<double>(load.requests) / computers,
                static_cast<double>(load.bytes) / computers, load.GetMean(0, day) * scale,
                load.GetPeak(10 * minute / second) * scale);
    const struct
    {
        const char* name;
        std::int64_t from, to;
    } stretches[] = {{"hour before", outageStart - hour, outageStart},
                     {"outage", outageStart, outageEnd},
                     {"first second after", outageEnd, outageEnd + second},
                     {"first minute after", outageEnd, outageEnd + minute},
                     {"first 10 minutes after", outageEnd, outageEnd + 10 * minute},
                     {"hour after", outageEnd, outageEnd + hour}};
    for (const auto& [name, from, to] : stretches)
        std::printf("    %-24s %6.0f/s\n", name, load.GetMean(from, to) * scale);
}

void PrintMorning(int computers)
{
    const Load load = Simulate(computers, DrawMorning, Accept);
    const double scale = million / computers;
    std::printf("all start within a second, and nobody does anything; a million:\n");
    for (std::int64_t from = 9 * hour; from < 10 * hour; from += 10 * minute)
        std::printf("    minute %2d to %2d: %6.0f/s on the average, busiest second %7.0f/s\n",
                    static_cast<int>((from - 9 * hour) / minute),
                    static_cast<int>((from - 9 * hour) / minute) + 10,
                    load.GetMean(from, from + 10 * minute) * scale,
                    load.GetPeak(1, from, from + 10 * minute) * scale);
}

Curve MakeCurve(const char* name, const char* colour, const Load& load, int computers)
{
    constexpr std::int64_t step = 10 * minute;
    Curve curve{name, colour, {}};
    for (std::int64_t from = 0; from < day; from += step)
        curve.values.push_back(load.GetMean(from, from + step) * million / computers);
    return curve;
}

void SimulateDays(int computers, const char* plot)
{
    const struct
    {
        const char* name;
        const char* colour;
        Server server;
    } days[] = {{"ordinary", "#888", Accept},
                {"refused 14 to 15", "#c0392b", RefuseInOutage},
                {"hanging 14 to 15", "#2471a3", HangInOutage}};
    std::vector<Curve> curves;
    for (const auto& [name, colour, server] : days)
    {
        const Load load = Simulate(computers, DrawDayOfRuns, server);
        PrintDay(name, load, computers);
        std::fflush(stdout);
        curves.push_back(MakeCurve(name, colour, load, computers));
    }
    if (plot)
        std::ofstream(plot) << DrawDay("Requests a second of a million computers, scaled up from " +
                                           std::to_string(computers),
                                       curves);
}

} // namespace

} // namespace fleet

int main(int count, char** arguments)
{
    const int computers = count > 1 ? std::atoi(arguments[1]) : 0;
    if (computers <= 0)
    {
        std::fputs("usage: fleet_simulation COMPUTERS [SVG]\n", stderr);
        return 1;
    }
    using fleet::ETracker;
    for (const ETracker main : {ETracker::Classic, ETracker::Measurement})
    {
        fleet::PrintHour("an idle hour", main, 0);
        fleet::PrintHour("an event every 30 seconds", main, 30 * fleet::second);
    }
    fleet::SimulateDays(computers, count > 2 ? arguments[2] : nullptr);
    fleet::PrintMorning(computers);
}
