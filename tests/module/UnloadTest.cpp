#include "tests/module/ModuleTest.h"

#include <gmock/gmock.h>

#include <regex>

using testing::HasSubstr;
using testing::Not;

namespace module {

namespace {

// Every stay of the module comes to its end and the next one works.
void ExpectAllGone(const ProgramResult& run)
{
    ExpectCleanEnd(run);
    EXPECT_THAT(run.output, Not(HasSubstr("still there")));
    EXPECT_THAT(run.output, HasSubstr("main enabled, kpi enabled"));
}

} // namespace

using UnloadTest = CModuleTest;

TEST_F(UnloadTest, WorkersThatHaveNotBegunAreGivenUp)
{
    PutConfig(MakeConfig());
    ExpectAllGone(RunHost("unload\ngone 3000\n"
                          "load\nunload\ngone 3000\n"
                          "load\nuse kpi\npageview\nunload\ngone 3000\n"
                          "load\nthreads 2 release\nunload\ngone 3000\n" // one too many
                          "hold 1500 load\nrelease\nsleep 1600\nunload\ngone 3000\n"
                          "load\nblocked\nsleep 300\nblocked\nstatus\n"));
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
    std::smatch left;
    ASSERT_TRUE(std::regex_search(
        run.output, left,
        std::regex("left (\\d+) bytes, (\\d+) handles[^]*left (\\d+) bytes, (\\d+) handles")));
    EXPECT_LE(std::stoi(left[3]), std::stoi(left[1]) + 20 * 300) << run.output;
    EXPECT_LE(std::stoi(left[4]), std::stoi(left[2]) + 4) << run.output;
}

// Each allocation of a stay fails once, and with every third one all behind it; every operation is
// the first one of its thread.
TEST_F(UnloadTest, TheHostOutlivesAnyLackOfMemory)
{
    PutConfig(MakeConfig());
    std::string operations;
    for (const char* operation :
         {"initialize", "pageview", "event a b c 1 d", "eventex a b c 1 d once", "message hello",
          "purchase a b 1.0 o 2", "product x", "enable", "continue on"})
        operations += std::string("threads 1 ") + operation + "\n";
    std::string commands = "unload\ngone 3000\n";
    for (int i = 1; i < 330; ++i)
        commands += "starve " + std::to_string(i) + (i % 3 == 0 ? " 100000" : "") + "\nload\n" +
                    operations + "release\nstarve 0\nunload\ngone 3000\n";
    ExpectAllGone(RunHost(commands + "load\nstatus\n", std::chrono::minutes(5)));
}

TEST_F(UnloadTest, ReferencesAreCountedAndTheLastReleaseSendsWhatIsQueued)
{
    PutConfig(MakeConfig());
    const ProgramResult run = RunHost("use kpi\nget\nrelease\nstatus\npageview\n"
                                      "release\nget\nstatus\nrelease\nrelease\nstatus\n");
    ExpectCleanEnd(run);
    EXPECT_THAT(run.output, testing::ContainsRegex("kpi enabled.*kpi none.*kpi none"));
    EXPECT_FALSE(collector.GetHits().empty());
}

} // namespace module
