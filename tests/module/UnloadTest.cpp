#include "tests/module/ModuleTest.h"

#include <functional>
#include <future>
#include <utility>

namespace module {

namespace {

// One host with its own collector, in the prefix that all cases share.
class UnloadTest : public CModuleTest
{};

struct Network
{
    const char* what;
    std::function<void(collector::CCollector&)> order;
};

const Network networks[] = {
    {"answering", [](collector::CCollector&) {}},
    {"answering slowly",
     [](collector::CCollector& server) {
         server.Order(collector::Delayed(collector::MakePixel(), std::chrono::milliseconds(700)),
                      collector::CCollector::always);
     }},
    {"refusing", [](collector::CCollector& server) { server.Refuse(); }},
    {"stalling in the handshake",
     [](collector::CCollector& server) {
         server.Order(collector::EConnectionFault::StallHandshake, collector::CCollector::always);
     }},
    {"silent after the request",
     [](collector::CCollector& server) {
         server.Order(collector::MakeStall(), collector::CCollector::always);
     }},
    {"dripping",
     [](collector::CCollector& server) {
         server.Order(collector::Dripping(collector::MakePixel(), std::chrono::milliseconds(400)),
                      collector::CCollector::always);
     }},
};

// No other part of the host may be kept from the loader or the heap so long.
constexpr int blockLimit = 500; // milliseconds

struct End
{
    const char* what;
    const char* commands; // what the host does when its hits are on their way
    std::vector<std::pair<const char*, int>> limits; // of what it prints, in milliseconds
};

const End ends[] = {
    {"release",
     "release\nblocked\n",
     {{"release main", 3000}, {"release kpi", 3000}, {"blocked", blockLimit}}},
    {"unload", "unload\ngone 6000\nblocked\n", {{"unload", 2000}, {"blocked", blockLimit}}},
    {"release while another thread holds the loader's lock",
     "hold 4000\nrelease\n",
     {{"release main", 3000}, {"release kpi", 3000}}},
    {"exit", "exit\n", {}},
    {"exit with another module's release in it", "plugin\nexit\n", {}},
};

// A case of its own within one process, so that all can wait at the same time.
class CHostRun : public CModuleTest
{
public:
    CHostRun(const Network& networkState, const std::string& hostCommands)
    {
        networkState.order(collector);
        PutConfig(MakeConfig());
        result = std::async(std::launch::async, [this, hostCommands] {
            return RunHost(hostCommands, std::chrono::seconds(40));
        });
    }
    ProgramResult Wait() { return result.get(); }

private:
    void TestBody() override {}
    std::future<ProgramResult> result;
};

void ExpectCleanEnd(const ProgramResult& run, const End& end, const std::string& what)
{
    EXPECT_FALSE(run.hung) << what << ": " << run.output;
    EXPECT_EQ(run.status, 0) << what << ": " << run.output;
    for (const auto& [timed, limit] : end.limits)
        EXPECT_LE(GetMilliseconds(run, timed), limit) << what << ": " << run.output;
}

// The number behind the last `what`.
int GetLast(const ProgramResult& run, const std::string& what)
{
    return GetMilliseconds({run.status, run.hung, run.output.substr(run.output.rfind(what))}, what);
}

// Every stay of the module comes to its end and the next one works.
void ExpectAllGone(const ProgramResult& run)
{
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_EQ(run.output.find("still there"), std::string::npos) << run.output;
    EXPECT_NE(run.output.rfind("main enabled, kpi enabled"), std::string::npos) << run.output;
}

} // namespace

// The hits are in flight when the end comes: a worker looks at its queue every two seconds.
TEST_F(UnloadTest, NeverHangsWhateverTheNetworkDoes)
{
    GetPrefix();
    for (const End& end : ends)
    {
        std::vector<std::unique_ptr<CHostRun>> runs;
        for (const Network& network : networks)
            runs.push_back(std::make_unique<CHostRun>(
                network, std::string("blocked\nrepeat 4 pageview\nsleep 2300\n") + end.commands));
        for (std::size_t i = 0; i < runs.size(); ++i)
            ExpectCleanEnd(runs[i]->Wait(), end, std::string(end.what) + ", " + networks[i].what);
    }
}

TEST_F(UnloadTest, IdleWorkersEndAtOnce)
{
    PutConfig(MakeConfig());
    for (const End& end : ends)
        ExpectCleanEnd(RunHost(std::string("blocked\nsleep 300\n") + end.commands), end, end.what);
}

TEST_F(UnloadTest, WorkersThatHaveNotBegunAreGivenUp)
{
    PutConfig(MakeConfig());
    const char* const stays[] = {
        "unload\n",
        "load\nunload\n",
        "load\nuse kpi\npageview\nunload\n",
        "load\nthreads 2 release\nunload\n", // one release too many
        "hold 1500 load\nrelease\nsleep 1600\nunload\n",
    };
    std::string commands;
    for (const char* stay : stays)
        commands += std::string(stay) + "gone 3000\n";
    const ProgramResult run = RunHost(commands + "load\nblocked\nsleep 300\nblocked\nstatus\n");
    ExpectAllGone(run);
    EXPECT_LE(GetLast(run, "release main"), 1500);
    EXPECT_LE(GetLast(run, "blocked"), blockLimit);
}

// An unloading meets the workers somewhere else in their first, failing requests each time. After a
// release the module is gone when the unloading returns, so that its file can be replaced, and
// nothing stays behind. (Where trackers are not released two threads have to be ended, and Wine
// keeps some memory for each, and more with each later load.)
TEST_F(UnloadTest, ManyStaysInOneProcessLeaveNothingBehind)
{
    collector.Refuse();
    PutConfig(MakeConfig());
    std::string commands = "release\nunload\ngone 5000\n";
    for (int i = 0; i < 60; ++i)
        commands += "load\npageview\nsleep " + std::to_string(i) + "\n" +
                    (i < 30 ? "release\nunload\ngone 0\n" : "unload\ngone 5000\n") +
                    (i == 9 || i == 29 ? "left\n" : "");
    const ProgramResult run = RunHost(commands + "load\nstatus\n");
    ExpectAllGone(run);
    EXPECT_LE(GetLast(run, "left"), GetMilliseconds(run, "left") + 20 * 300) << run.output;
    const auto handles = [&](std::size_t at) {
        return std::stoi(run.output.substr(run.output.find("bytes, ", at) + 7));
    };
    EXPECT_LE(handles(run.output.rfind("left ")), handles(run.output.find("left ")) + 4)
        << run.output;
}

// Each allocation of a stay fails once, and from each on all do; every operation is the first one
// of its thread.
TEST_F(UnloadTest, TheHostOutlivesAnyLackOfMemory)
{
    PutConfig(MakeConfig());
    std::string operations;
    for (const char* operation :
         {"initialize", "pageview", "event a b c 1 d", "eventex a b c 1 d once", "message hello",
          "purchase a b 1.0 o 2", "product x", "enable", "continue on"})
        operations += std::string("threads 1 ") + operation + "\n";
    std::string commands = "unload\ngone 3000\n";
    for (int i = 1; i < 330; i += 1)
        commands += "starve " + std::to_string(i) + (i % 3 == 0 ? " 100000" : "") + "\nload\n" +
                    operations + "release\nstarve 0\nunload\ngone 3000\n";
    ExpectAllGone(RunHost(commands + "load\nstatus\n", std::chrono::seconds(120)));
}

TEST_F(UnloadTest, AReleaseDuringAnOutageWithAFullQueueIsBounded)
{
    collector.Order(collector::MakeStall(), collector::CCollector::always);
    PutConfig(MakeConfig());
    const ProgramResult run =
        RunHost("use kpi\nrepeat 200000 event Scan Start\nsleep 2300\nrelease\n");
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_LE(GetMilliseconds(run, "release kpi"), 3000) << run.output;
}

TEST_F(UnloadTest, ReferencesAreCounted)
{
    PutConfig(MakeConfig());
    const ProgramResult run = RunHost("use kpi\nget\nrelease\nstatus\npageview\n"
                                      "release\nget\nstatus\nrelease\nrelease\nstatus\n");
    EXPECT_EQ(run.status, 0) << run.output;
    const std::size_t first = run.output.find("kpi enabled");
    EXPECT_NE(first, std::string::npos) << run.output;
    EXPECT_NE(run.output.find("kpi none", first), std::string::npos) << run.output;
    EXPECT_EQ(GetTargets().size(), 1u) << "the queue is emptied by the last release";
}

} // namespace module
