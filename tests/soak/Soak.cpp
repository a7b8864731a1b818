// soak: the real module in real hosts under Wine against everything the world does to it. Prints
// tables, and puts them into a report; draws what one host needed. Ends with 1 if any host crashed,
// hung or was held up.
#include "tests/soak/Report.h"
#include "tests/soak/Scene.h"
#include "tools/collector/Faults.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <future>
#include <sstream>
#include <thread>

using namespace soak;

namespace {

using std::chrono::milliseconds, std::chrono::seconds;
using Clock = std::chrono::steady_clock;

// As they are without being given.
std::map<std::string, std::string> options{{"--short", ""},  {"--part", ""}, {"--minutes", "0"},
                                           {"--report", ""}, {"--plot", ""}, {"--seed", "1"}};
CTable table;
std::string hits; // a table, too
std::atomic<bool> isBroken{false};
std::atomic<long> longestStandstill{0}; // milliseconds

bool IsShort() { return !options.at("--short").empty(); }
int GetMinutes() { return std::stoi(options.at("--minutes")); }

std::mt19937 MakeRandom(std::size_t number = 0)
{
    return std::mt19937(static_cast<unsigned>(std::stoul(options.at("--seed")) + number));
}

// Does `work` on a few threads, with 0, 1 ...; `count` times and then until `end`.
void DoAll(const std::string& part, int threads, std::size_t count,
           const std::function<void(std::size_t)>& work, Clock::time_point end = {})
{
    std::atomic<std::size_t> taken{0}, done{0};
    std::vector<std::future<void>> running;
    for (int thread = 0; thread < threads; ++thread)
        running.push_back(std::async(std::launch::async, [&] {
            for (std::size_t i = taken++; i < count || Clock::now() < end; i = taken++)
            {
                work(i);
                if (++done % 10 == 0)
                    Tell(part + " " + std::to_string(done) + " of " + std::to_string(count));
            }
        }));
    for (std::future<void>& thread : running)
        thread.get();
}

void RunScene(const Scene& scene)
{
    CStay stay(scene.measurementProtocol);
    scene.prepare(stay);
    const std::string commands = "blocked\n" + scene.commands + "calls\n" + scene.ends[0];
    const auto result = scene.isOffline ? stay.RunOffline(commands, seconds(60))
                                        : stay.RunHost(commands, seconds(60));
    table.Add(scene, result, stay.collector.GetHits().size());
}

// Each scene with each of its ends. The short form takes one end for each, and leaves the
// measurement protocol to EndModuleTest.
void RunScenes(const char* part, int threads, const std::vector<Scene>& scenes)
{
    std::vector<Scene> all;
    for (std::size_t i = 0; i < scenes.size(); ++i)
        for (const std::string& end : scenes[i].ends)
            if (!IsShort() || (end == scenes[i].ends[i % scenes[i].ends.size()] &&
                               !scenes[i].measurementProtocol))
                all.emplace_back(scenes[i]).ends = {end};
    DoAll(part, threads, all.size(), [&](std::size_t i) { RunScene(all[i]); });
}

// What became of every hit, in the simulation, where each can be followed.
void AccountForHits()
{
    if (IsShort()) // the test of that name does it
        return;
    const auto result = module::RunProgram({CONSERVATION_TEST, "1000000", options.at("--seed")}, {},
                                           {}, seconds(1800));
    std::istringstream lines(result.output);
    for (std::string line; std::getline(lines, line);)
        hits += line.starts_with("|") ? line + "\n" : "";
    if (result.status != 0)
        throw std::runtime_error(result.output);
}

// Killed while it reports, like a process of a machine that loses its power: the next run finds a
// history that is old or new, never half of one, and goes on.
void RunKilled()
{
    std::string work = "release\nunload\ngone 5000\n";
    for (int i = 0; i < 80; ++i)
        work += "load\nevent a b\nsleep 20\nrelease\nunload\ngone 5000\n";
    DoAll("killed", 2, IsShort() ? 4 : 1000, [&](std::size_t i) {
        CStay stay;
        const std::string moment = std::to_string(MakeRandom(i)() % 1000);
        auto result = stay.RunHost("kill " + moment + "\n" + work, seconds(60));
        const std::size_t before = stay.collector.GetHits().size();
        table.Add({"killed while it reports", "process"}, result, before);
        const std::string kept = stay.Read("content/tallyhive.xml");
        const bool isWhole = kept.empty() || kept.find("</SimpleXMLElement>") != kept.npos;
        result = stay.RunHost("event a b\nsleep 100\ncalls\nrelease\n", seconds(60));
        result.status = isWhole ? result.status : 4;
        table.Add({"killed while it reports, the next run", "process"}, result,
                  stay.collector.GetHits().size() - before);
    });
}

// One process, many stays: what is left behind.
void RunCycles()
{
    CStay stay;
    const int cycles = IsShort() ? 40 : 10'000;
    std::string commands = "release\nunload\ngone 5000\n";
    for (int i = 0; i < cycles; ++i)
        commands += std::string("load\npageview\nrelease\nunload\ngone 0\n") +
                    (i == 9 || i == cycles - 1 ? "left\n" : "");
    const auto result = stay.RunHost(commands + "load\ncalls\nrelease\n", seconds(7200));
    table.Add({std::to_string(cycles) + " stays in one process", "process"}, result,
              stay.collector.GetHits().size());
    for (std::size_t at = result.output.find("left "); at != result.output.npos;
         at = result.output.find("left ", at + 1))
        Tell(result.output.substr(at, result.output.find('\n', at) - at));
}

// Lets the server's faults change, and keeps how many hits it had by each second.
std::vector<double> ChangeFaults(collector::CCollector& server, const std::stop_token& stop)
{
    static const char* const changing[] = {"",         "status:503", "stall", "close-before-tls",
                                           "wait:700", "cut:10"};
    std::mt19937 random = MakeRandom();
    std::vector<double> delivered{0};
    for (int second = 0; !stop.stop_requested(); ++second)
    {
        if (second % 20 == 0)
        {
            server.CancelOrders();
            server.Disconnect();
            if (const std::string fault = changing[random() % std::size(changing)]; !fault.empty())
                collector::OrderFault(server, fault);
        }
        delivered.push_back(static_cast<double>(server.GetHits().size()));
        if (second % 60 == 59)
            Tell("soak " + std::to_string(server.GetHits().size()) + " delivered");
        std::this_thread::sleep_for(seconds(1));
    }
    return delivered;
}

// One host that works for minutes while the server's faults change, and what it needs meanwhile.
void RunSoak()
{
    const int rounds = IsShort() ? 5 : std::max(1, GetMinutes()) * 38; // of some 1.6 s
    std::mt19937 random = MakeRandom();
    std::string commands = "blocked\n";
    for (int i = 0; i < rounds; ++i)
        commands += "repeat " + std::to_string(random() % 4) + " pageview\nevent a b" +
                    std::to_string(random() % 50) + "\nsleep 1000\nleft\n" +
                    (i % 60 == 59 ? "release\nunload\ngone 20000\nload\n" : "");
    CStay stay;
    const Clock::time_point begun = Clock::now();
    std::vector<double> delivered;
    std::jthread weather(
        [&](const std::stop_token& stop) { delivered = ChangeFaults(stay.collector, stop); });
    const auto result =
        stay.RunHost(commands + "calls\nrelease\nblocked\n", seconds(rounds * 4 + 120));
    weather.request_stop();
    weather.join();
    const std::string where =
        "server, one host for " + std::to_string((Clock::now() - begun) / seconds(1)) + " s";
    table.Add({"faults that change", where}, result, stay.collector.GetHits().size());
    if (const std::string plot = options.at("--plot"); !plot.empty())
        std::ofstream(plot) << DrawPlot(result.output, delivered);
}

void RunAtRandom()
{
    DoAll(
        "random", 3, IsShort() ? 12 : 1000,
        [](std::size_t i) { RunScene(DrawScene(MakeRandom(i))); },
        Clock::now() + std::chrono::minutes(GetMinutes()));
}

// Lanes are beside each other, the parts of one follow each other: those of lane 0 share port 443.
// Not too many at once, for the bounds are those of a machine that has time.
constexpr struct
{
    const char* name;
    int lane;
    void (*work)();
} parts[] = {
    {"computer", 0, [] { RunScenes("computer", 1, GetComputerScenes()); }},
    {"measurement", 0, [] { RunScenes("measurement", 1, GetNetworkScenes(true)); }},
    {"hits", 0, AccountForHits},
    {"network", 1, [] { RunScenes("network", 2, GetNetworkScenes(false)); }},
    {"random", 1, RunAtRandom},
    {"hostile", 2, [] { RunScenes("hostile", 2, GetHostileScenes()); }},
    {"soak", 3, RunSoak},
    {"cycles", 4, RunCycles},
    {"killed", 5, RunKilled},
};

// What has been seen is told, whatever ends a lane.
void RunLane(int lane)
try
{
    const std::string wanted = options.at("--part");
    for (const auto& part : parts)
        if (part.lane == lane && (wanted.empty() || wanted == part.name))
        {
            Tell(part.name + std::string(" begins"));
            part.work();
            Tell(part.name + std::string(" is through"));
        }
}
catch (const std::exception& failure)
{
    Tell(failure.what());
    isBroken = true;
}

// A machine may stand still as a whole, its hosts and their time limits with it.
void WatchMachine(const std::stop_token& stop)
{
    while (!stop.stop_requested())
    {
        const Clock::time_point begun = Clock::now();
        std::this_thread::sleep_for(milliseconds(100));
        const auto late = static_cast<long>((Clock::now() - begun) / milliseconds(1)) - 100;
        if (late > 1000)
            Tell("the machine stood still for " + std::to_string(late) + " ms");
        longestStandstill = std::max(longestStandstill.load(), late);
    }
}

std::string DescribeRun()
{
    double load[3] = {};
    ::getloadavg(load, 3);
    return "\nSeed " + options.at("--seed") + ", " + std::to_string(GetSeconds()) + " s, " +
           std::to_string(std::thread::hardware_concurrency()) + " processors with a load of " +
           std::to_string(load[2]).substr(0, 4) + " in the last 15 minutes; a thread that only " +
           "sleeps was late by " + std::to_string(longestStandstill) +
           " ms at the most. Wine itself " + "ended " + std::to_string(table.CountEndedByWine()) +
           " hosts more.\n";
}

void ReadOptions(int count, char** values)
{
    for (int i = 1; i < count; ++i)
    {
        const auto option = options.find(values[i]);
        if (option == options.end() || (option->first != "--short" && i + 1 == count))
            throw std::runtime_error("soak [--short] [--part NAME] [--minutes N] [--seed N] "
                                     "[--report FILE.md] [--plot FILE.svg]");
        option->second = option->first == "--short" ? "yes" : values[++i];
    }
    const std::string wanted = options.at("--part");
    if (!wanted.empty() &&
        std::ranges::none_of(parts, [&](const auto& part) { return wanted == part.name; }))
        throw std::runtime_error("no part has the name " + wanted);
    if (!wanted.empty() && wanted != "hits" && !options.at("--report").empty())
        throw std::runtime_error("a report's table is of all parts: leave --part or --report out");
}

} // namespace

int main(int count, char** values)
try
{
    ReadOptions(count, values);
    ::setenv("WINEDEBUG", "-all,err+virtual", 1); // says why a host could not start
    const std::jthread watch(WatchMachine);
    DoAll("lanes", 6, 6, [](std::size_t i) { RunLane(static_cast<int>(i)); });
    const std::string text = table.Format() + DescribeRun();
    std::printf("%s\n%s", text.c_str(), hits.c_str());
    if (const std::string report = options.at("--report"); !report.empty())
    {
        if (options.at("--part") != "hits")
            PutIntoReport(report, "table", text);
        if (!hits.empty())
            PutIntoReport(report, "hits", hits);
    }
    return isBroken ? 2 : table.IsClean() ? 0 : 1;
}
catch (const std::exception& failure)
{
    std::fprintf(stderr, "soak: %s\n", failure.what());
    return 2;
}
