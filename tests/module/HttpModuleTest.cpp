#include "tests/module/ModuleTest.h"

using namespace collector;

namespace module {

// The module's HTTPS client over the real WinINet.
using HttpModuleTest = CModuleTest;

TEST_F(HttpModuleTest, RequestsAndAnswersOfEveryKind)
{
    collector.Order(EConnectionFault::UnknownCertificate);
    for (const Answer& answer :
         {MakeAnswer(200, "hello"), MakeAnswerWithoutLength(200, std::string(300'000, 'b')),
          MakeRedirect(301, "/b?x=1"), MakeRedirect(302, "http://127.0.0.1/c"),
          MakeAnswer(200, "there"), MakeAnswer(200, "taken")})
        collector.Order(answer);
    const ProgramResult run = GetPrefix().Run(
        {GetWindowsBuild() / "tests/http_probe.exe", std::to_string(collector.GetPort())},
        "send https://127.0.0.1/untrusted body\n"
        "send https://127.0.0.1/collect?z=1 v=1&dp=%2Fa\n"
        "send https://127.0.0.1/long b\n"
        "send https://127.0.0.1/a b\n"
        "cancel https://127.0.0.1/cancelled\n"
        "send https://127.0.0.1/next last\n");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, "3 12057 https://127.0.0.1/untrusted 0 \r\n"
                          "0 0 https://127.0.0.1/collect?z=1 5 hello\r\n"
                          "0 0 https://127.0.0.1/long 300000 bbbbb\r\n"
                          "0 0 https://127.0.0.1/c 5 there\r\n"
                          "0 0 https://127.0.0.1/cancelled 0 \r\n"
                          "0 0 https://127.0.0.1/next 5 taken\r\n");
    std::string seen;
    for (const Hit& hit : collector.GetHits())
        seen += hit.method + " " + hit.target + " " + hit.body + "\n";
    EXPECT_EQ(seen, "POST /collect?z=1 v=1&dp=%2Fa\n"
                    "POST /long b\n"
                    "POST /a b\n"
                    "POST /b?x=1 b\n"
                    "POST /c b\n"
                    "POST /next last\n"); // on a connection of its own, behind no body
    const Hit hit = collector.GetHits().at(0);
    EXPECT_EQ(FindHeader(hit, "User-Agent"), "Probe/1");
    EXPECT_EQ(FindHeader(hit, "Content-Type"), "text/plain; charset=utf-8");
    EXPECT_EQ(FindHeader(hit, "Referer"), "https://127.0.0.1/collect?z=1");
    EXPECT_EQ(FindHeader(hit, "Content-Length"), "11");
}

} // namespace module
