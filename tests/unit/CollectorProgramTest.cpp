// Runs the collector as a tester does.
#include "tests/unit/TemporaryFolder.h"
#include "tests/unit/TlsClient.h"

#include <cstdio>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

using testing::HasSubstr;

namespace {

class CollectorProgram : public testing::Test
{
protected:
    // Runs the program with these arguments, calling `onLine` for each line of its output; its exit
    // code and both output streams.
    std::pair<int, std::string> Run(
        const std::string& arguments,
        const std::function<void(std::string_view)>& onLine = [](std::string_view) {}) const
    {
        const std::string command = "timeout 20 " COLLECTOR_PROGRAM " " + arguments + " 2>&1";
        FILE* pipe = ::popen(command.c_str(), "r");
        std::string output;
        char line[4096];
        while (pipe && std::fgets(line, sizeof line, pipe))
        {
            output += line;
            onLine(line);
        }
        const int status = pipe ? ::pclose(pipe) : -1;
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
    }

    // Sends a request to the running program; the status of the answer.
    std::string Send(const std::string& target) const
    {
        CTlsClient client(std::stoi(folder.Read("port")));
        EXPECT_TRUE(client.Handshake(folder.PathOf("ca.pem")));
        client.Send("GET " + target + " HTTP/1.1\r\nConnection: close\r\n\r\n");
        return client.Read().substr(9, 4);
    }

    const CTemporaryFolder folder;
    const std::string within = " --folder " + folder.path;
    const std::string reachable = within + " --port-file " + folder.PathOf("port");
    const std::string database = " --database " + folder.PathOf("hits.db");
};

TEST_F(CollectorProgram, EndsAfterTheHitsAndAnswersTheLastOne)
{
    std::string answers;
    const auto send = [&](std::string_view line) {
        if (line.starts_with("Listening on "))
            answers += Send("/other") + Send("/piwik.php?e_c=Scan&e_a=Start");
        if (line.find("event Scan / Start") == std::string_view::npos)
            return;
        // What it shows is stored already, so that nothing of it is lost when it is killed.
        EXPECT_THAT(Run("--timeout 1" + within + database).second, HasSubstr("\nHits: 2\n"));
        EXPECT_THAT(Run("--port $(cat " + folder.PathOf("port") + ")" + within).second,
                    HasSubstr(" is in use"));
        answers += Send("/__utm.gif?utmp=a");
    };
    const auto [code, output] = Run("--fault wait:100 --until 2" + reachable + database, send);
    EXPECT_EQ(code, 0) << output;
    EXPECT_EQ(answers, "200 200 200 ");
    EXPECT_THAT(output, HasSubstr(" KPI  event Scan / Start\n"));
    EXPECT_THAT(output, HasSubstr("\nHits: 3\n  trackers: KPI 1, classic 1, other 1\n"));
    // What was recorded is read back: into the same database, and out of it at the next start.
    EXPECT_EQ(Run("read --quiet" + database + ' ' + folder.PathOf("hits.jsonl")).first, 0);
    EXPECT_THAT(Run("--timeout 1" + within + database).second,
                HasSubstr("\nHits: 5\n  trackers: KPI 2, classic 2, other 1\n"));
}

TEST_F(CollectorProgram, SaysWhatIsMissingAndWhatItCannotDo)
{
    folder.Write("file", "x");
    folder.Write("plan", "title Nothing\nKPI visit\n");
    const std::string plan = within + ' ' + folder.PathOf("plan") + ' ';
    const struct
    {
        std::string arguments;
        int code;
        std::string message;
    } cases[] = {
        {"--help", 0, "--port-file FILE"},
        {"expect --junit " + folder.PathOf("result.xml") + plan + "-- true", 1,
         "Nothing: 1 difference from the plan\n  line 2: KPI visit\n    missing: 0 of 1 came\n"},
        {"expect" + plan + "-- sh -c 'exit 3'", 1, "the host ended with 3"},
        {"expect --timeout 1" + plan + "-- sleep 9", 2, "had to be killed at the timeout"},
        {"expect" + plan + "-- /nowhere", 1, "cannot start /nowhere"},
        {"expect" + plan, 1, "expect needs a PLAN, -- and a HOST"},
        {"read --quiet", 1, "read needs a FILE, or - for standard input"},
        {"read " + folder.PathOf("nothing"), 1, "cannot read " + folder.PathOf("nothing") + ": No"},
        {"read " + folder.PathOf("file"), 0, "0 hits, 0 other requests, 1 lines without a request"},
        {"--quiet --until 1 --timeout 1" + within, 2, "collector: only 0 of 1 hits have come"},
        {"--colour", 1, "collector: unknown option --colour; see collector --help"},
        {"--port", 1, "collector: --port needs a value: NUMBER"},
        {"--port 65536", 1, "--port: \"65536\" is no number from 0 to 65535"},
        {"--fault nonsense" + within, 1, "no such fault: nonsense; the faults are\n"},
        {"--fault wait" + within, 1, "the fault wait takes an argument: wait:MILLISECONDS"},
        {"--fault stall:1" + within, 1, "the fault stall takes no argument"},
        {within + "/file", 1, "cannot create the folder " + folder.PathOf("file")},
    };
    for (const auto& c : cases)
    {
        const auto [code, output] = Run(c.arguments);
        EXPECT_EQ(code, c.code) << c.arguments;
        EXPECT_THAT(output, HasSubstr(c.message)) << c.arguments;
    }
    EXPECT_THAT(folder.Read("result.xml"),
                HasSubstr("name=\"Nothing\" tests=\"2\" failures=\"1\">\n<testcase "
                          "classname=\"Nothing\" name=\"line 2: KPI visit\"><failure "
                          "message=\"missing: 0 of 1 came\">missing: 0 of 1 came\n</failure>"));
}

} // namespace
