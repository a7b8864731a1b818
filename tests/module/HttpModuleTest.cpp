#include "tests/module/ModuleTest.h"

#include <sstream>

using namespace std::chrono_literals;
using namespace collector;

namespace module {

// The module's HTTPS client over the real WinINet.
class HttpModuleTest : public CModuleTest
{
protected:
    // Asks for each line of `requests`, "PORT" and "HOST" being the collector's; what came of it.
    std::vector<std::string> Ask(std::string requests) const
    {
        Replace(requests, "PORT", std::to_string(collector.GetPort()));
        Replace(requests, "HOST", "127.0.0.1");
        const ProgramResult run = GetPrefix().Run({probe}, requests);
        EXPECT_EQ(run.status, 0) << run.output;
        std::vector<std::string> lines;
        std::istringstream output(run.output);
        for (std::string line; std::getline(output, line);)
            lines.push_back(line.substr(0, line.find('\r')));
        return lines;
    }

    // "VERB TARGET body" of each request that arrived.
    std::vector<std::string> GetRequests() const
    {
        std::vector<std::string> requests;
        for (const Hit& hit : collector.GetHits())
            requests.push_back(hit.method + " " + hit.target + " " + hit.body);
        return requests;
    }

private:
    static void Replace(std::string& text, const std::string& what, const std::string& by)
    {
        for (std::size_t i; (i = text.find(what)) != text.npos;)
            text.replace(i, what.size(), by);
    }

    const std::filesystem::path probe = GetWindowsBuild() / "tests/http_probe.exe";
};

using Lines = std::vector<std::string>;

TEST_F(HttpModuleTest, AnswersOfEveryKind)
{
    const std::string longBody(300'000, 'b');
    collector.Order(MakeAnswer(200, "hello"));
    collector.Order(MakeAnswer(200, longBody));
    collector.Order(MakeAnswer(204));
    collector.Order(MakeAnswer(404, "nothing here"));
    collector.Order(MakeAnswerWithoutLength(200, longBody));
    collector.Order(MakeAnswer(303, "", {{"Location", "/no"}}));
    collector.Order(MakeAnswer(307, "", {{"Location", "/no"}}));
    collector.Order(MakeAnswer(200, "gone"));
    EXPECT_EQ(
        Ask("post PORT https://HOST/collect?z=1 v=1&t=pageview&dp=%2Fa\n"
            "get PORT http://HOST/plain?x=1\n"
            "post PORT https://HOST/a b\n"
            "post PORT https://HOST/a b\n"
            "get PORT https://HOST/a\n"
            "get PORT https://HOST?q\n"
            "post PORT https://HOST/a b\n"
            "post PORT https://HOST/a DELETE\n"),
        (Lines{"0 0 https://127.0.0.1/collect?z=1 \"hello\"",
               "0 0 http://127.0.0.1/plain?x=1 300000 bytes", "204 204 https://127.0.0.1/a \"\"",
               "404 404 https://127.0.0.1/a \"nothing here\"",
               "0 0 https://127.0.0.1/a 300000 bytes", "303 303 https://127.0.0.1?q \"\"",
               "307 307 https://127.0.0.1/a \"\"", "0 0 https://127.0.0.1/a \"gone\""}));
    EXPECT_EQ(GetRequests(),
              (Lines{"POST /collect?z=1 v=1&t=pageview&dp=%2Fa", "GET /plain?x=1 ", "POST /a b",
                     "POST /a b", "GET /a ", "GET /?q ", "POST /a b", "DELETE /a "}));
    const Hit hit = collector.GetHits().at(0);
    EXPECT_EQ(FindHeader(hit, "User-Agent"), "Probe/1");
    EXPECT_EQ(FindHeader(hit, "Accept"), "*/*");
    EXPECT_EQ(FindHeader(hit, "Content-Type"), "text/plain; charset=utf-8");
    EXPECT_EQ(FindHeader(hit, "Referer"), "https://127.0.0.1/collect?z=1");
    EXPECT_EQ(FindHeader(hit, "Content-Length"), "22");
}

TEST_F(HttpModuleTest, Redirects)
{
    const std::string own = "https://127.0.0.1/";
    collector.Order(MakeRedirect(301, "/b?x=1"));
    collector.Order(MakeAnswer(200, "relative"));
    collector.Order(MakeRedirect(302, own + "c"));
    collector.Order(MakeAnswer(200, "absolute"));
    collector.Order(MakeRedirect(302, "http://127.0.0.1/d"));
    collector.Order(MakeAnswer(200, "upgraded"));
    collector.Order(MakeRedirect(302, "http://127.0.0.1/a"));
    collector.Order(MakeRedirect(302, own + "a"));
    EXPECT_EQ(Ask("core PORT https://HOST/a body\ncore PORT https://HOST/a body\n"
                  "core PORT https://HOST/a body\ncore PORT https://HOST/a body\n"
                  "core PORT https://HOST/a body\n"),
              (Lines{"0 0 https://127.0.0.1/b?x=1 \"relative\"",
                     "0 0 https://127.0.0.1/c \"absolute\"", "0 0 https://127.0.0.1/d \"upgraded\"",
                     "6 0 https://127.0.0.1/a \"\"", "2 0  \"\""}));
    EXPECT_EQ(GetRequests(),
              (Lines{"POST /a body", "POST /b?x=1 body", "POST /a body", "POST /c body",
                     "POST /a body", "POST /d body", "POST /a body", "POST /a body"}));
}

// Nothing of the body follows in the next request, which has a connection of its own.
TEST_F(HttpModuleTest, ACancelledUploadLeavesTheNextRequestAlone)
{
    collector.AnswerPath("/collect", MakeAnswer(200, "taken"));
    EXPECT_EQ(
        Ask("post PORT https://HOST/collect first\n"
            "cancel PORT https://HOST/collect 200000\n"
            "post PORT https://HOST/collect last\n"),
        (Lines{"0 0 https://127.0.0.1/collect \"taken\"", "0 0 https://127.0.0.1/collect \"\"",
               "0 0 https://127.0.0.1/collect \"taken\""}));
    EXPECT_EQ(GetRequests(), (Lines{"POST /collect first", "POST /collect last"}));
}

} // namespace module
