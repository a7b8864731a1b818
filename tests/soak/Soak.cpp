// soak [--short] [--part NAME] [--minutes N] [--seed N] [--report FILE.md] [--plot FILE.svg]: the
// real module in real hosts under Wine against everything the world does to it. Prints a table, and
// puts it into the report between the lines "<!-- table -->" and "<!-- end of table -->"; draws
// what one host needed. Ends with 1 if any host crashed, hung or was held up.
#include "tests/soak/Plot.h"
#include "tests/soak/Proxy.h"
#include "tests/soak/Scene.h"
#include "tools/collector/Faults.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <mutex>
#include <sstream>
#include <thread>

namespace soak {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds releaseLimit{3000};
constexpr milliseconds emptyingLimit{13'000}; // while sends succeed
constexpr milliseconds unloadLimit{2000};
constexpr milliseconds blockLimit{500};
constexpr int callLimit = 250'000; // microseconds: a machine that is busy, not a call that waits

// Everything that was seen of one fault.
struct Row
{
    int tries = 0;
    int crashes = 0;
    int hangs = 0;
    int breaches = 0; // of a bound, or of what the module may call
    int call = 0;     // microseconds
    int release = 0;  // the longest of each, in milliseconds
    int unload = 0;
    int blocked = 0;
    long reported = 0; // calls of the host, each to one tracker
    long arrived = 0;  // requests that the server read
};

struct Options
{
    bool isShort = false;
    int minutes = 0;
    unsigned seed = 1;
    std::string report;
    std::string plot;
    std::string part; // empty: all
};

// The largest number behind any `what` in the output.
int FindLargest(const std::string& output, const std::string& what)
{
    int largest = 0;
    for (std::size_t at = output.find(what); at != std::string::npos;
         at = output.find(what, at + 1))
        largest = std::max(largest, std::atoi(output.c_str() + at + what.size()));
    return largest;
}

class CTable
{
public:
    // `sends`: whether a release may take its time to empty the queue.
    void Add(const Scene& scene, const module::ProgramResult& run, long arrived)
    {
        const bool held = run.output.empty() || scene.ends[0].find("hold") != std::string::npos ||
                          scene.commands.find("hold") != std::string::npos;
        const std::lock_guard guard(lock);
        Row& row = rows[{scene.where, scene.fault}];
        const int before = row.breaches;
        ++row.tries;
        row.hangs += run.hung;
        row.crashes += !run.hung && run.status != 0 && run.status != 3;
        row.breaches += run.status == 3;
        const int release = std::max(FindLargest(run.output, "release main "),
                                     FindLargest(run.output, "release kpi "));
        const int unload = FindLargest(run.output, "unload ");
        const int blocked = held ? 0 : FindLargest(run.output, "blocked ");
        const int call = FindLargest(run.output, "longest ");
        row.release = std::max(row.release, release);
        row.unload = std::max(row.unload, held ? 0 : unload);
        row.blocked = std::max(row.blocked, blocked);
        row.call = std::max(row.call, call);
        row.reported += FindLargest(run.output, "calls ");
        row.arrived += arrived;
        row.breaches += release > (arrived > 0 ? emptyingLimit : releaseLimit).count();
        row.breaches += (!held && unload > unloadLimit.count()) + (blocked > blockLimit.count()) +
                        (scene.where != "calls" && call > callLimit);
        if (run.hung || row.breaches != before || (run.status != 0 && run.status != 3))
            std::printf("-- %s, %s: status %d%s\n%s%s\n%s\n", scene.where.c_str(),
                        scene.fault.c_str(), run.status, run.hung ? ", hung" : "",
                        scene.commands.substr(0, 400).c_str(), scene.ends[0].c_str(),
                        run.output.c_str());
    }

    bool IsClean() const
    {
        return std::ranges::all_of(rows, [](const auto& entry) {
            const Row& row = entry.second;
            return row.crashes + row.hangs + row.breaches == 0;
        });
    }

    std::string Format() const
    {
        std::ostringstream text;
        text << "| fault | where | tries | crashes | hangs | breaches | call, us | release, ms | "
                "unload, ms | others held up, ms | reported | arrived |\n"
                "|---|---|---|---|---|---|---|---|---|---|---|---|\n";
        for (const auto& [name, row] : rows)
            text << "| " << name.second << " | " << name.first << " | " << row.tries << " | "
                 << row.crashes << " | " << row.hangs << " | " << row.breaches << " | " << row.call
                 << " | " << row.release << " | " << row.unload << " | " << row.blocked << " | "
                 << row.reported << " | " << row.arrived << " |\n";
        return text.str();
    }

private:
    std::mutex lock;
    std::map<std::pair<std::string, std::string>, Row> rows;
};

void RunScene(CTable& table, const Scene& scene, bool measurementProtocol = false)
{
    CStay stay(measurementProtocol);
    scene.prepare(stay);
    const std::string commands = "blocked\n" + scene.commands + "calls\n" + scene.ends[0];
    const module::ProgramResult run = stay.Run(commands, seconds(60));
    table.Add(scene, run, static_cast<long>(stay.GetServer().GetHits().size()));
}

// Runs `next` on a few threads until it has nothing more to give.
void RunAll(CTable& table, const std::function<std::optional<Scene>()>& next)
{
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            while (const std::optional<Scene> scene = next())
                RunScene(table, *scene);
        });
}

// Each scene with each of its ends; the short form takes one end for each.
void RunScenes(CTable& table, const std::vector<Scene>& scenes, bool isShort)
{
    std::vector<Scene> all;
    for (std::size_t i = 0; i < scenes.size(); ++i)
        for (std::size_t j = 0; j < scenes[i].ends.size(); ++j)
            if (!isShort || j == i % scenes[i].ends.size())
            {
                all.push_back(scenes[i]);
                all.back().ends = {scenes[i].ends[j]};
            }
    std::atomic<std::size_t> taken{0};
    RunAll(table, [&]() -> std::optional<Scene> {
        const std::size_t mine = taken++;
        return mine < all.size() ? std::optional(all[mine]) : std::nullopt;
    });
}

// One after the other, for there is one port 443.
void RunMeasurementProtocol(CTable& table, const Options& options)
{
    const std::vector<Scene> scenes = GetNetworkScenes();
    for (std::size_t i = 0; i < scenes.size(); i += options.isShort ? 6 : 1)
    {
        Scene scene = scenes[i];
        scene.where = "server, measurement protocol";
        for (const std::string& end : options.isShort ? std::vector{scene.ends[0]} : scene.ends)
        {
            scene.ends = {end};
            RunScene(table, scene, true);
        }
    }
}

// A proxy that works, asks for a password, refuses and says nothing.
void RunBehindProxies(CTable& table, const Options& options)
{
    const std::filesystem::path folder = std::filesystem::temp_directory_path();
    const auto run = [&](const char* what, const std::string& address) {
        CStay::SetProxy(address);
        std::vector<Scene> scenes{GetNetworkScenes()[0]};
        scenes[0].fault = std::string("a proxy that ") + what;
        scenes[0].where = "proxy";
        RunScenes(table, scenes, options.isShort);
    };
    for (const bool asks : {false, true})
    {
        CProxy proxy(asks);
        run(asks ? "asks for a password" : "works", proxy.GetAddress());
    }
    const CSilentServer silent;
    run("says nothing", silent.GetAddress());
    run("refuses", "127.0.0.1:1");
    CStay::SetProxy({});
}

void RunAtRandom(CTable& table, const Options& options)
{
    const auto end = Clock::now() + std::chrono::minutes(options.minutes);
    std::mt19937 random(options.seed);
    std::mutex drawing;
    int left = options.isShort ? 12 : 1000;
    RunAll(table, [&]() -> std::optional<Scene> {
        const std::lock_guard guard(drawing);
        if (left-- <= 0 && Clock::now() > end)
            return std::nullopt;
        return DrawScene(random);
    });
}

// Killed while it reports, like a process or a machine that loses its power: the next run finds a
// history that is old or new, never half of one, and goes on.
void RunKilled(CTable& table, const Options& options)
{
    std::atomic<int> left{options.isShort ? 4 : 1000};
    RunAll(table, [&]() -> std::optional<Scene> {
        const int number = left--;
        if (number <= 0)
            return std::nullopt;
        std::mt19937 random(options.seed + static_cast<unsigned>(number));
        CStay stay;
        const Scene scene{"killed while it reports", "process", [](CStay&) {}, {}, {"exit\n"}};
        const std::string work = "load\nevent a b\nsleep 20\nrelease\nunload\ngone 5000\n";
        std::string commands = "release\nunload\ngone 5000\n";
        for (int i = 0; i < 80; ++i)
            commands += work;
        commands.insert(0, "sleep " + std::to_string(random() % 1000) + "\n");
        stay.Run(commands, seconds(2));
        std::ifstream file(stay.At("content/tallyhive.xml"), std::ios::binary);
        const std::string kept((std::istreambuf_iterator<char>(file)), {});
        const bool whole = kept.empty() || kept.find("</SimpleXMLElement>") != std::string::npos;
        module::ProgramResult run =
            stay.Run("event a b\nsleep 2300\nrelease\ncalls\n", seconds(30));
        run.status = whole ? run.status : 4;
        table.Add(scene, run, static_cast<long>(stay.GetServer().GetHits().size()));
        return std::optional<Scene>(Scene{"killed while it reports, next run",
                                          "process",
                                          [](CStay&) {},
                                          "pageview\n",
                                          {"release\n"}});
    });
}

// One process, many stays: what is left behind.
void RunCycles(CTable& table, const Options& options)
{
    CStay stay;
    const int cycles = options.isShort ? 40 : 10'000;
    std::string commands = "release\nunload\ngone 5000\n";
    for (int i = 0; i < cycles; ++i)
        commands += std::string("load\npageview\nrelease\nunload\ngone 0\n") +
                    (i == 9 || i == cycles - 1 ? "left\n" : "");
    const Scene scene{std::to_string(cycles) + " stays in one process",
                      "process",
                      [](CStay&) {},
                      {},
                      {"release\n"}};
    const module::ProgramResult run = stay.Run(commands + "load\ncalls\nrelease\n", seconds(7200));
    table.Add(scene, run, static_cast<long>(stay.GetServer().GetHits().size()));
    for (std::size_t at = run.output.find("left "); at != std::string::npos;
         at = run.output.find("left ", at + 1))
        std::printf("%s\n", run.output.substr(at, run.output.find('\n', at) - at).c_str());
}

// One host that works for minutes while the server's faults change, and what it needs meanwhile.
void RunSoak(CTable& table, const Options& options)
{
    static const char* const changing[] = {"",         "status:503", "stall", "close-before-tls",
                                           "wait:700", "cut:10"};
    const int rounds = options.isShort ? 5 : std::max(1, options.minutes) * 60;
    CStay stay;
    std::mt19937 random(options.seed);
    std::string commands = "blocked\n";
    for (int i = 0; i < rounds; ++i)
        commands += "repeat " + std::to_string(random() % 4) + " pageview\nevent a b" +
                    std::to_string(random() % 50) + "\nsleep 1000\nleft\n" +
                    (i % 60 == 59 ? "release\nunload\ngone 20000\nload\n" : "");
    std::vector<std::size_t> arrived;
    std::jthread weather([&](const std::stop_token& stop) {
        for (int second = 0; !stop.stop_requested(); ++second)
        {
            if (second % 20 == 0)
            {
                stay.GetServer().CancelOrders();
                stay.GetServer().Disconnect();
                if (const std::string fault = changing[random() % std::size(changing)];
                    !fault.empty())
                    collector::OrderFault(stay.GetServer(), fault);
            }
            arrived.push_back(stay.GetServer().GetHits().size());
            std::this_thread::sleep_for(seconds(1));
        }
    });
    const module::ProgramResult run =
        stay.Run(commands + "calls\nrelease\nblocked\n", seconds(rounds * 3 + 120));
    weather.request_stop();
    weather.join();
    table.Add({"faults that change",
               "server, one host for " + std::to_string(rounds) + " s",
               [](CStay&) {},
               {},
               {"release\n"}},
              run, static_cast<long>(arrived.back()));
    if (!options.plot.empty())
        std::ofstream(options.plot) << DrawPlot(ReadSamples(run.output), arrived);
}

struct Part
{
    const char* name;
    void (*run)(CTable&, const Options&);
};

constexpr Part parts[] = {
    {"network",
     [](CTable& table, const Options& options) {
         RunScenes(table, GetNetworkScenes(), options.isShort);
     }},
    {"hostile",
     [](CTable& table, const Options& options) {
         RunScenes(table, GetHostileScenes(), options.isShort);
     }},
    {"measurement", RunMeasurementProtocol},
    {"proxies", RunBehindProxies},
    {"cycles", RunCycles},
    {"killed", RunKilled},
    {"soak", RunSoak},
    {"random", RunAtRandom},
};

void PutIntoReport(const std::string& path, const std::string& table)
{
    std::ifstream file(path);
    std::string text((std::istreambuf_iterator<char>(file)), {});
    const std::string begin = "<!-- table -->\n";
    const std::size_t start = text.find(begin) + begin.size();
    const std::size_t end = text.find("<!-- end of table -->");
    if (!file || end == std::string::npos || end < start)
        throw std::runtime_error(path + " has no lines \"<!-- table -->\" and "
                                        "\"<!-- end of table -->\" to put the table between");
    std::ofstream(path) << text.replace(start, end - start, table);
}

Options ParseOptions(int count, char** values)
{
    Options options;
    for (int i = 1; i < count; ++i)
    {
        const std::string name = values[i];
        const bool hasValue = i + 1 < count;
        if (name == "--short")
            options.isShort = true;
        else if (name == "--minutes" && hasValue)
            options.minutes = std::atoi(values[++i]);
        else if (name == "--seed" && hasValue)
            options.seed = static_cast<unsigned>(std::atoi(values[++i]));
        else if (name == "--report" && hasValue)
            options.report = values[++i];
        else if (name == "--part" && hasValue)
            options.part = values[++i];
        else if (name == "--plot" && hasValue)
            options.plot = values[++i];
        else
            throw std::runtime_error("unknown option " + name +
                                     "; soak [--short] [--part NAME] [--minutes N] [--seed N] "
                                     "[--report FILE.md] [--plot FILE.svg]");
    }
    return options;
}

} // namespace

} // namespace soak

int main(int count, char** values)
try
{
    using namespace soak;
    const Options options = ParseOptions(count, values);
    const auto start = Clock::now();
    CStay::PreparePrefix();
    CTable table;
    for (const Part& part : parts)
        if (options.part.empty() || options.part == part.name)
            part.run(table, options);
    const std::string text = table.Format();
    std::printf("%s\nseed %u, %lld s\n", text.c_str(), options.seed,
                static_cast<long long>((Clock::now() - start) / seconds(1)));
    if (!options.report.empty())
        PutIntoReport(options.report, text);
    CStay::RemovePrefix();
    return table.IsClean() ? 0 : 1;
}
catch (const std::exception& failure)
{
    std::fprintf(stderr, "soak: %s\n", failure.what());
    return 2;
}
