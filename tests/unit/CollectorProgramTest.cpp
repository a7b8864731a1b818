// Runs the collector as a tester does.
#include "tests/unit/TlsClient.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/socket.h>
#include <sys/wait.h>

using testing::HasSubstr;

namespace {

struct Outcome
{
    int code = -1;
    std::string output; // both streams
};

// Runs the program with these arguments and reads its output, calling `onLine` for each line.
template <class OnLine>
Outcome RunCollector(const std::string& arguments, OnLine onLine)
{
    Outcome outcome;
    const std::string command = "timeout 60 " COLLECTOR_PROGRAM " " + arguments + " 2>&1";
    FILE* pipe = ::popen(command.c_str(), "r");
    char line[4096];
    while (pipe && std::fgets(line, sizeof line, pipe))
    {
        outcome.output += line;
        onLine(std::string(line));
    }
    if (const int status = pipe ? ::pclose(pipe) : -1; WIFEXITED(status))
        outcome.code = WEXITSTATUS(status);
    return outcome;
}

Outcome RunCollector(const std::string& arguments)
{
    return RunCollector(arguments, [](const std::string&) {});
}

class CollectorProgram : public testing::Test
{
protected:
    void SetUp() override
    {
        char name[] = "/tmp/collector-test-XXXXXX";
        folder = ::mkdtemp(name);
    }
    void TearDown() override { std::filesystem::remove_all(folder); }

    std::string ReadFile(const std::string& name) const
    {
        std::ifstream file(folder + '/' + name);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::string folder;
};

TEST_F(CollectorProgram, EndsAfterTheHitsAndAnswersTheLastOne)
{
    std::string answers;
    const auto report = [&](const std::string& line) {
        if (!line.starts_with("Listening on "))
            return;
        for (const char* target : {"/other", "/piwik.php?e_c=Scan&e_a=Start", "/__utm.gif?utmp=a"})
        {
            CTlsClient client(std::stoi(ReadFile("port")));
            EXPECT_TRUE(client.Handshake(folder + "/ca.pem"));
            client.Send(std::string("GET ") + target + " HTTP/1.1\r\nConnection: close\r\n\r\n");
            answers += client.Read().substr(9, 4);
        }
    };
    const Outcome outcome = RunCollector("--fault wait:100 --until 2 --folder " + folder +
                                             " --port-file " + folder + "/port",
                                         report);
    EXPECT_EQ(outcome.code, 0) << outcome.output;
    EXPECT_EQ(answers, "200 200 200 ");
    EXPECT_THAT(outcome.output, HasSubstr(" KPI event  Scan / Start\n"));
    EXPECT_THAT(outcome.output, HasSubstr("\nHits collected: 2\n"));
    const std::string lines = ReadFile("hits.jsonl");
    EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 3);
}

TEST_F(CollectorProgram, SaysWhatIsMissing)
{
    const Outcome late = RunCollector("--quiet --until 1 --timeout 1 --folder " + folder);
    EXPECT_EQ(late.code, 2);
    EXPECT_THAT(late.output, HasSubstr("only 0 of 1 hits have come"));
}

TEST_F(CollectorProgram, SaysWhatItCannotDo)
{
    const collector::CSocket taken = collector::BindLoopback(0);
    ASSERT_EQ(::listen(taken.Get(), 1), 0);
    std::ofstream(folder + "/file") << "x";
    const std::string port = std::to_string(collector::GetBoundPort(taken));
    const struct
    {
        std::string arguments;
        std::string message;
    } cases[] = {
        {"--colour", "unknown option --colour; see collector --help"},
        {"--port", "--port needs a value: NUMBER"},
        {"--port 65536", "--port: \"65536\" is no number from 0 to 65535"},
        {"--until 1x", "--until: \"1x\" is no number"},
        {"--fault nonsense --folder " + folder, "no such fault: nonsense; the faults are\n"},
        {"--fault wait --folder " + folder, "the fault wait takes an argument: wait:MILLISECONDS"},
        {"--fault stall:1 --folder " + folder, "the fault stall takes no argument"},
        {"--port " + port + " --folder " + folder, "port " + port + " is in use"},
        {"--folder " + folder + "/file", "cannot create the folder " + folder + "/file"},
    };
    for (const auto& c : cases)
    {
        const Outcome outcome = RunCollector("--timeout 30 " + c.arguments);
        EXPECT_EQ(outcome.code, 1) << c.arguments;
        EXPECT_THAT(outcome.output, HasSubstr("collector: " + c.message));
    }
    const Outcome help = RunCollector("--help");
    EXPECT_EQ(help.code, 0);
    EXPECT_THAT(help.output, HasSubstr("--port-file FILE"));
}

} // namespace
