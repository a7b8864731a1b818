#include "tests/module/ModuleTest.h"

#include <functional>
#include <future>

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

struct End
{
    const char* what;
    const char* commands; // what the host does when its hits are on their way
    const char* timed;    // what it prints the duration of; null for nothing
    int limit;            // milliseconds
};

const End ends[] = {
    {"release", "release\n", "release kpi", 3000},
    {"unload", "unload\ngone 8000\n", "unload", 2000},
    {"exit", "exit\n", nullptr, 0},
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
    if (end.timed != nullptr)
    {
        EXPECT_LE(GetMilliseconds(run, end.timed), end.limit) << what << ": " << run.output;
    }
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
                network, std::string("repeat 4 pageview\nsleep 2300\n") + end.commands));
        for (std::size_t i = 0; i < runs.size(); ++i)
            ExpectCleanEnd(runs[i]->Wait(), end, std::string(end.what) + ", " + networks[i].what);
    }
}

TEST_F(UnloadTest, IdleWorkersEndAtOnce)
{
    PutConfig(MakeConfig());
    for (const End& end : ends)
        ExpectCleanEnd(RunHost(std::string("sleep 300\n") + end.commands), end, end.what);
}

TEST_F(UnloadTest, WorkersThatHaveNotBegunAreEndedWithTheModule)
{
    PutConfig(MakeConfig());
    const ProgramResult run = RunHost("unload\ngone 3000\n"
                                      "load\nunload\ngone 3000\n"
                                      "load\nuse kpi\npageview\nunload\ngone 3000\n"
                                      "load\nstatus\n");
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_EQ(run.output.find("still there"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("kpi enabled"), std::string::npos) << run.output;
}

// Each unloading meets the workers somewhere else in their first, failing requests.
TEST_F(UnloadTest, ManyStaysInOneProcessLeaveNothingBehind)
{
    collector.Refuse();
    PutConfig(MakeConfig());
    const auto stay = [](int milliseconds) {
        return "load\npageview\nsleep " + std::to_string(milliseconds) + "\nunload\ngone 5000\n";
    };
    std::string commands = "unload\ngone 5000\n";
    for (int i = 0; i < 60; ++i)
        commands += stay(i) + (i == 10 || i == 59 ? "heap\n" : "");
    const ProgramResult run = RunHost(commands + "load\nstatus\n");
    EXPECT_FALSE(run.hung) << run.output;
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_EQ(run.output.find("still there"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("main enabled, kpi enabled"), std::string::npos) << run.output;

    const std::size_t late = run.output.rfind("heap ");
    ASSERT_NE(late, std::string::npos);
    EXPECT_LE(std::stoi(run.output.substr(late + 5)), GetMilliseconds(run, "heap") + 1000);
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
