#include "tests/module/ModuleTest.h"

#include <functional>
#include <future>

using namespace collector;

namespace module {

namespace {

const CAuthority& GetAuthority()
{
    static const CAuthority authority(CWinePrefix::GetAuthorityFolder());
    return authority;
}

CollectorSettings ListenOn(int port)
{
    CollectorSettings settings;
    settings.port = port;
    return settings;
}

// The measurement-protocol tracker reports to port 443, whatever its address says.
class UaModuleTest : public CModuleTest
{
protected:
    void PutUaConfig(const std::string& uaLines = {}, const std::string& installLines = {}) const
    {
        PutConfig(MakeConfig(installLines) +
                  "[UA]\nEnabled=1\nId=UA-7\nURL=https://127.0.0.1/collect\n" + uaLines);
    }

    // The bodies so far, in order.
    std::vector<std::string> GetBodies() const
    {
        std::vector<std::string> bodies;
        for (const Hit& hit : server.GetHits())
            bodies.push_back(hit.body);
        return bodies;
    }

    // The bodies without what they have in common.
    std::vector<std::string> GetHitParts() const
    {
        std::vector<std::string> parts = GetBodies();
        for (std::string& part : parts)
            part.erase(0, part.find("&t="));
        return parts;
    }

    CCollector server{GetAuthority(), ListenOn(443)};
};

using Texts = std::vector<std::string>;

} // namespace

TEST_F(UaModuleTest, EveryKindOfHitArrivesByteForByte)
{
    PutUaConfig({}, "ProductName=Disk Tool\nlanguage=de_DE\nphash=ab 1\n");
    const ProgramResult run = RunHost("status\n"
                                      "use main\n"
                                      "pageview\n"
                                      "event Scan \"Start now\" \"\" \"5 %\"\n"
                                      "eventex \"\" Ok\xC3\xA9 a|b 12\n"
                                      "message Hello\n"
                                      "purchase Pack P1 10.0 O7 3\n"
                                      "sleep 4000\n"
                                      "continue off\n"
                                      "product \"My \xE2\x82\xAC\"\n"
                                      "pageview\n"
                                      "pageview\n");
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_NE(run.output.find("main enabled"), std::string::npos) << run.output;
    EXPECT_EQ(
        GetHitParts(),
        (Texts{"&t=pageview&dp=%2FDisk%20Tool", "&t=event&ec=Scan&ea=Start%20now&el=unknown&ev=5 %",
               "&t=event&ec=unknown&ea=Ok\xC3\xA9&el=a%7Cb&ev=12", "&t=pageview&dp=%2FHello",
               "&t=transaction&dp=%2FDisk%20Tool&ti=O7&ta=ab%201&tr=30.00",
               "&t=item&dp=%2FDisk%20Tool&ti=O7&ta=ab%201&in=P1&ip=10.00&iq=3",
               "&t=pageview&dp=%2FMy%20%20AC&sc=start", "&t=pageview&dp=%2FMy%20%20AC"}));
    ASSERT_FALSE(server.GetHits().empty());
    const Hit hit = server.GetHits()[0];
    const std::string common = hit.body.substr(0, hit.body.find("&t="));
    EXPECT_EQ(common, "v=1&tid=UA-7&aip=1&ds=host%2Eexe&cid=" + GetParameter(hit.body, "cid") +
                          "&uid=" + GetParameter(hit.body, "uid") +
                          "&cs=ab%201&cn=%28partners%29&cm=%28direct%29&sr=1024x768&ul=de%5FDE"
                          "&cd=Disk%20Tool");
    EXPECT_EQ(GetParameter(hit.body, "cid").size(), 32u);
    EXPECT_EQ(GetParameter(hit.body, "uid").size(), 32u);
    EXPECT_EQ(hit.method, "POST");
    EXPECT_TRUE(hit.target.starts_with("/collect?z=")) << hit.target;
    EXPECT_EQ(FindHeader(hit, "Host"), "127.0.0.1");
    EXPECT_EQ(FindHeader(hit, "Content-Type"), "text/plain; charset=utf-8");
    EXPECT_EQ(FindHeader(hit, "Accept"), "*/*");
    EXPECT_TRUE(FindHeader(hit, "User-Agent").starts_with("Disk Tool/"));
    EXPECT_TRUE(FindHeader(hit, "User-Agent").ends_with(" (Windows NT 6.1; WOW64)"));
}

TEST_F(UaModuleTest, NothingReachesAServerThatCannotBeTrusted)
{
    PutUaConfig();
    server.Order(EConnectionFault::UnknownCertificate, CCollector::always);
    EXPECT_EQ(RunHost("use main\nrepeat 2 pageview\nsleep 2500\n").status, 0);
    EXPECT_EQ(GetBodies(), Texts{});
    EXPECT_GE(server.GetConnectionCount(), 1u);
}

// The hits are in flight when the end comes, at all hosts at the same time.
TEST_F(UaModuleTest, NeverHangsWhateverTheNetworkDoes)
{
    const struct
    {
        const char* what;
        std::function<void(CCollector&)> order;
    } networks[] = {
        {"redirecting for ever",
         [](CCollector& far) {
             far.AnswerPath("/collect", MakeRedirect(302, "/b"));
             far.AnswerPath("/b", MakeRedirect(301, "https://127.0.0.1/collect"));
         }},
        {"answering slowly",
         [](CCollector& far) {
             far.Order(Delayed(MakePixel(), std::chrono::milliseconds(700)), CCollector::always);
         }},
        {"refusing", [](CCollector& far) { far.Refuse(); }},
        {"stalling in the handshake",
         [](CCollector& far) { far.Order(EConnectionFault::StallHandshake, CCollector::always); }},
        {"silent", [](CCollector& far) { far.Order(MakeStall(), CCollector::always); }},
        {"dripping without an end",
         [](CCollector& far) {
             far.Order(Dripping(MakeAnswerWithoutLength(200, std::string(5'000, 'b')),
                                std::chrono::milliseconds(100)),
                       CCollector::always);
         }},
    };
    const struct
    {
        const char *commands, *timed;
        int limit; // milliseconds
    } ends[] = {{"release\n", "release main", 3000},
                {"unload\ngone 8000\n", "unload", 2000},
                {"exit\n", nullptr, 0}};
    PutUaConfig();
    GetPrefix();
    for (const auto& network : networks)
    {
        server.CancelOrders();
        network.order(server);
        std::vector<std::future<ProgramResult>> runs;
        for (const auto& end : ends)
            runs.push_back(std::async(std::launch::async, [this, commands = end.commands] {
                return RunHost(std::string("use main\nrepeat 4 pageview\nsleep 2600\n") + commands);
            }));
        for (std::size_t i = 0; i < runs.size(); ++i)
        {
            const ProgramResult run = runs[i].get();
            EXPECT_FALSE(run.hung) << network.what << ": " << run.output;
            EXPECT_EQ(run.status, 0) << network.what << ": " << run.output;
            if (ends[i].timed != nullptr)
            {
                EXPECT_LE(GetMilliseconds(run, ends[i].timed), ends[i].limit)
                    << network.what << ": " << run.output;
            }
        }
    }
}

} // namespace module
