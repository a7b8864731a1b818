#include "tests/module/ModuleTest.h"

using namespace collector;

namespace module {

// The module's HTTPS client over the real WinINet.
using HttpModuleTest = CModuleTest;

TEST_F(HttpModuleTest, RequestsAndAnswersOfEveryKind)
{
    const std::string longBody(300'000, 'b');
    const struct
    {
        const char* request; // of the probe
        std::vector<Answer> answers;
        const char* arrived;
        const char* outcome;
    } cases[] = {
        // The first connection is to a server that cannot be trusted.
        {"send https://127.0.0.1/a body", {}, "", "3 12057 https://127.0.0.1/a 0 "},
        {"send https://127.0.0.1/collect?z=1 v=1&dp=%2Fa",
         {MakeAnswer(200, "hello")},
         "POST /collect?z=1 v=1&dp=%2Fa\n",
         "0 0 https://127.0.0.1/collect?z=1 5 hello"},
        {"send http://127.0.0.1/plain?x=1",
         {MakeAnswer(200, longBody)},
         "GET /plain?x=1 \n",
         "0 0 http://127.0.0.1/plain?x=1 300000 bbbbb"},
        {"send https://127.0.0.1/a b",
         {MakeAnswerWithoutLength(200, longBody)},
         "POST /a b\n",
         "0 0 https://127.0.0.1/a 300000 bbbbb"},
        {"send https://127.0.0.1?q",
         {MakeAnswer(303, "", {{"Location", "/no"}})},
         "GET /?q \n",
         "303 303 https://127.0.0.1?q 0 "},
        {"send https://127.0.0.1/a b",
         {MakeRedirect(301, "/b?x=1"), MakeRedirect(302, "http://127.0.0.1/c"),
          MakeAnswer(200, "there")},
         "POST /a b\nPOST /b?x=1 b\nPOST /c b\n",
         "0 0 https://127.0.0.1/c 5 there"},
        // Nothing of the body follows in the next request, which has a connection of its own.
        {"cancel https://127.0.0.1/collect", {}, "", "0 0 https://127.0.0.1/collect 0 "},
        {"send https://127.0.0.1/a last",
         {MakeAnswer(200, "taken")},
         "POST /a last\n",
         "0 0 https://127.0.0.1/a 5 taken"},
    };
    std::string requests, arrived, outcomes;
    collector.Order(EConnectionFault::UnknownCertificate);
    for (const auto& c : cases)
    {
        for (const Answer& answer : c.answers)
            collector.Order(answer);
        requests.append(c.request).append("\n");
        arrived += c.arrived;
        outcomes.append(c.outcome).append("\r\n");
    }
    const ProgramResult run = GetPrefix().Run(
        {GetWindowsBuild() / "tests/http_probe.exe", std::to_string(collector.GetPort())},
        requests);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, outcomes);
    std::string seen;
    for (const Hit& hit : collector.GetHits())
        seen += hit.method + " " + hit.target + " " + hit.body + "\n";
    EXPECT_EQ(seen, arrived);
    const Hit hit = collector.GetHits().at(0);
    EXPECT_EQ(FindHeader(hit, "User-Agent"), "Probe/1");
    EXPECT_EQ(FindHeader(hit, "Content-Type"), "text/plain; charset=utf-8");
    EXPECT_EQ(FindHeader(hit, "Referer"), "https://127.0.0.1/collect?z=1");
    EXPECT_EQ(FindHeader(hit, "Content-Length"), "11");
}

} // namespace module
