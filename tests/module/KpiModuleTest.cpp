#include "tests/module/ModuleTest.h"

#include <chrono>

using namespace std::chrono_literals;
using collector::EConnectionFault;

namespace module {

using KpiModuleTest = CModuleTest;

namespace {

// The target of a KPI hit with what differs between runs left out.
std::string Normalise(const std::string& target)
{
    std::string text = target;
    for (const char* key : {"uid", "rand"})
    {
        const std::string value = GetParameter(target, key);
        text.replace(text.find("&" + std::string(key) + "=" + value) + std::string(key).size() + 2,
                     value.size(), "*");
    }
    return text;
}

} // namespace

TEST_F(KpiModuleTest, EveryKindOfHitArrivesByteForByte)
{
    PutConfig(MakeConfig("ProductName=Disk Tool\nlanguage=de_DE\nPHASH=ab1\nKPISource=news\n"));
    const ProgramResult run = RunHost("status\n"
                                      "use kpi\n"
                                      "pageview\n"
                                      "event Scan \"Start now\" \"\" \"5 %\"\n"
                                      "eventex \"\" Ok\xC3\xA9 a|b 12\n"
                                      "message Hello\n"
                                      "purchase Pack P1 10.0 O7 3\n"
                                      "product \"My \\\"Tool\\\" #1 \xE2\x82\xAC /../\\x\"\n"
                                      "sleep 2500\n" // the hits above go out under this name
                                      "pageview\n");
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_NE(run.output.find("kpi enabled"), std::string::npos) << run.output;
    const std::string front =
        "/piwik.php?send_image=0&rec=1&apiv=1&idsite=1"
        "&ua=Disk%20Tool/3.2.1%20(Windows%20NT%206.1;%20WOW64)&url=www.zotracker.example"
        "&uid=*&lang=de%2Dus&rand=*&_rcn=ab1&_rck=news&_cvar={\"1\":[\"product\",%20\"";
    const std::string back = "My%20\"Tool\"%20%231%20%E2%82%AC%20/%2E./%5Cx\"]}";
    const std::vector<std::string> expected{
        front + back,
        front + back + "&e_c=Scan&e_a=Start%20now&e_n=unknown&e_v=5%20%",
        front + back + "&e_c=unknown&e_a=Ok%C3%A9&e_n=a%7Cb&e_v=12",
        front + back,
        front + back,
        front + back,
        front + back,
    };
    std::vector<std::string> seen;
    for (const collector::Hit& hit : collector.GetHits())
    {
        seen.push_back(Normalise(hit.target));
        EXPECT_EQ(hit.method, "GET");
        EXPECT_EQ(collector::FindHeader(hit, "User-Agent"),
                  "Disk Tool/3.2.1 (Windows NT 6.1; WOW64)");
        EXPECT_EQ(collector::FindHeader(hit, "Host"),
                  "127.0.0.1:" + std::to_string(collector.GetPort()));
        EXPECT_EQ(hit.body, "");
    }
    EXPECT_EQ(seen, expected);
}

TEST_F(KpiModuleTest, TheUserKeepsItsIdentifier)
{
    ResetPrefix();
    PutConfig(MakeConfig());
    for (int run = 0; run < 2; ++run)
        EXPECT_EQ(RunHost("use kpi\npageview\n").status, 0);
    ASSERT_EQ(GetTargets().size(), 2u);
    const std::string first = GetParameter(GetTargets()[0], "uid");
    EXPECT_EQ(first.size(), 32u);
    EXPECT_EQ(GetParameter(GetTargets()[1], "uid"), first);
    EXPECT_NE(GetParameter(GetTargets()[0], "rand"), GetParameter(GetTargets()[1], "rand"));
}

TEST_F(KpiModuleTest, NothingReachesAServerThatCannotBeTrusted)
{
    PutConfig(MakeConfig());
    collector.Order(EConnectionFault::UnknownCertificate, collector::CCollector::always);
    EXPECT_EQ(RunHost("use kpi\npageview\nsleep 2800\n").status, 0);
    EXPECT_EQ(GetTargets(), std::vector<std::string>{});
    EXPECT_EQ(collector.GetConnectionCount(), 2u);
}

} // namespace module
