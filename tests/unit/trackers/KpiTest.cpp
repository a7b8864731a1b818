#include "tests/simulated/Files.h"
#include "tests/simulated/Registry.h"
#include "tests/simulated/SystemFacts.h"
#include "tests/unit/trackers/TrackerFixture.h"
#include "trackers/kpi/CZoTrackerPiWik.h"

using namespace std::chrono_literals;
using platform::EInternetOption;
using trackers::CZoTrackerPiWik;

namespace {

using KpiTest = TrackerFixture;

TEST_F(KpiTest, WholeRequests)
{
    PutConfig("ProductName=Disk Tool\r\nlanguage=DE_DE\r\nPHASH=ab-1\r\nKPISource=so/urce\r\n"
              "kpisite=1-7\r\n");
    Start<CZoTrackerPiWik>();
    tracker->TrackPageview();
    tracker->TrackEvent(L"a&b", L"c-d", L"e&-", L"5 %", L"");
    tracker->TrackEventEx(L"", L"A", L"", L"", L"", true);
    tracker->TrackMessage(L"Hello");
    tracker->TrackPurchase(L"Pack", L"P1", 10.0, L"", 2);
    simulated::AdvanceTime(4s);

    const std::wstring front =
        L"/piwik.php?send_image=0&rec=1&apiv=1&idsite=1-7"
        L"&ua=Disk%20Tool/3.2.1%20(Windows%20NT%206.1;%20WOW64)&url=www.zotracker.example"
        L"&uid=0123456789abcdef0123456789abcdef&lang=de%2Dus&rand=";
    const std::wstring back =
        L"&_rcn=ab-1&_rck=so/urce&_cvar={\"1\":[\"product\",%20\"Disk%20Tool\"]}";
    const auto whole = [&](int rand, const wchar_t* event) {
        return front + std::to_wstring(rand) + back + event;
    };
    EXPECT_EQ(GetTexts(),
              (Texts{whole(7000, L""), whole(7100, L"&e_c=a%26b&e_a=c%2Dd&e_n=e%26%2D&e_v=5%20%"),
                     whole(7200, L"&e_c=unknown&e_a=A&e_n=&e_v="), whole(7300, L""),
                     whole(7400, L""), whole(7500, L"")}));
    const auto request = simulated::GetSentRequests().front();
    EXPECT_EQ(request.verb, L"GET");
    EXPECT_EQ(request.agent, L"Disk Tool");
    EXPECT_EQ(request.host, L"kpi.zotracker.example");
    EXPECT_EQ(request.port, 443);
    EXPECT_EQ(request.headers, L"User-Agent: Disk Tool/3.2.1 (Windows NT 6.1; WOW64)\r\n");
    EXPECT_EQ(request.timeouts.at(EInternetOption::ConnectTimeout), 5000u);
}

TEST_F(KpiTest, ConfigurationOfConstruction)
{
    const struct
    {
        const char *what, *install, *web;
        std::uint16_t languageId;
        const wchar_t *begin, *lang;
    } cases[] = {
        {"nothing", "", "", 0x0409, L"/piwik.php?send_image", L"en%2Dus"},
        {"open, own query", "", "[web]\r\nPIWIKURL=http://h/p?x=1\r\n", 0x0407,
         L"/p?x=1&send_image", L"en%2Dde"},
        {"unknown locale", "language=d\r\n", "", 0x0455, L"/piwik.php?", L"d%2D%5B455%5D"},
        {"no country", "language=fr_FR\r\n", "", 0x043C, L"/piwik.php?", L"fr%2Dgd"},
    };
    for (const auto& c : cases)
    {
        PutConfig(c.install, c.web);
        simulated::facts->languageId = c.languageId;
        Start<CZoTrackerPiWik>();
        SendPageview();
        ASSERT_EQ(GetTexts().size(), 1u) << c.what;
        EXPECT_TRUE(GetTexts()[0].starts_with(c.begin)) << c.what;
        EXPECT_EQ(GetValues(L"lang"), Texts{c.lang}) << c.what;
        EXPECT_EQ(GetValues(L"_rcn"), Texts{L""}) << c.what;
        EXPECT_EQ(GetValues(L"_rck"), Texts{L""}) << c.what;
        EXPECT_EQ(simulated::GetSentRequests()[0].port, 443) << c.what;
    }
}

TEST_F(KpiTest, EachRequestLooksForTheUserAndTheTick)
{
    Start<CZoTrackerPiWik>();
    SendPageview();
    simulated::RemoveRegistryKey(platform::ERegistryRoot::ClassesRoot,
                                 L"CLSID\\{A3D17F52-6B0E-4C19-8E2A-5F71C03B9D64}",
                                 platform::ERegistryView::View32);
    simulated::SetTickMilliseconds(0xFFFFF000);
    SendPageview();
    EXPECT_EQ(GetValues(L"rand"), (Texts{L"7000", L"-3996"}));
    EXPECT_EQ(GetValues(L"uid")[1].substr(0, 5), L"-3996") << "a new one";
}

TEST_F(KpiTest, WithoutASiteNothingIsSentOrSwitchedOn)
{
    PutConfig("kpisite=00\r\n");
    Start<CZoTrackerPiWik>();
    EXPECT_TRUE(tracker->IsTrackingEnabled()) << "a site, after all";
    PutConfig("kpisite=0\r\n");
    Start<CZoTrackerPiWik>();
    EXPECT_FALSE(tracker->IsTrackingEnabled());
    simulated::PutFile(configPath, "[install]\r\ntracking=0\r\nkpisite=0\r\n");
    tracker->SetTrackingEnabled(true);
    EXPECT_FALSE(tracker->IsTrackingEnabled());
}

TEST_F(KpiTest, InitializeReadsBesideTheHostsPath)
{
    PutOtherHosts("PHASH=xy\r\nProductName=Name\r\nProductTrackingName=Tracking Name\r\n");
    Start<CZoTrackerPiWik>();
    for (const wchar_t* path : {L"C:\\Bare\\app.exe", L"C:\\Other\\app.exe"})
    {
        tracker->Initialize(path);
        SendPageview();
    }
    EXPECT_EQ(GetValues(L"lang"), (Texts{L"de%2Dus", L"en%5FII"}));
    EXPECT_EQ(GetValues(L"_rcn"), (Texts{L"ab%201", L"xy"}));
    EXPECT_EQ(GetValues(L"_cvar"), (Texts{L"{\"1\":[\"product\",%20\"Disk%20Tool\"]}",
                                          L"{\"1\":[\"product\",%20\"Tracking%20Name\"]}"}));
    EXPECT_EQ(GetValues(L"ua"), Texts(2, L"Disk%20Tool/3.2.1%20(Windows%20NT%206.1;%20WOW64)"));

    PutOtherHosts("");
    tracker->Initialize(L"C:\\Other\\app.exe");
    EXPECT_EQ(tracker->GetProductName(), L"App");
}

} // namespace
