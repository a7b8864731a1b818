#include "env/ProcessCache.h"
#include "tests/simulated/Files.h"
#include "tests/simulated/HostPaths.h"
#include "tests/simulated/Internet.h"
#include "tests/simulated/Registry.h"
#include "tests/simulated/Simulated.h"
#include "tests/simulated/SystemFacts.h"
#include "tests/simulated/VersionResource.h"
#include "tests/simulated/VirtualTime.h"
#include "trackers/kpi/CZoTrackerPiWik.h"

#include <gtest/gtest.h>

#include <optional>

using namespace std::chrono_literals;
using platform::EInternetOption;
using trackers::CZoTrackerPiWik;

namespace {

constexpr const wchar_t* userKey = L"CLSID\\{A3D17F52-6B0E-4C19-8E2A-5F71C03B9D64}";
constexpr const wchar_t* userId = L"0123456789abcdef0123456789abcdef";
constexpr const wchar_t* configPath = L"C:\\Host\\install.cfg";

void PutVersion(const std::wstring& path, const std::wstring& product, const std::wstring& version)
{
    simulated::SetVersionInfo(path, {{{0x409, 1200}},
                                     {{L"\\StringFileInfo\\040904b0\\ProductName", product},
                                      {L"\\StringFileInfo\\040904b0\\ProductVersion", version}}});
}

void PutUserId(const std::wstring& text)
{
    std::vector<std::uint8_t> bytes = simulated::TerminatedText(text);
    bytes.resize(64);
    simulated::PutRegistryValue(platform::ERegistryRoot::ClassesRoot, userKey,
                                platform::ERegistryView::View32, L"ID",
                                {platform::registrySz, bytes});
}

class KpiTest : public testing::Test
{
protected:
    KpiTest()
    {
        simulated::Reset();
        env::ResetProcessCache();
        PutVersion(L"C:\\Host\\Host.exe", L"Tidy Desk", L"3.2.1");
        PutUserId(userId);
        PutConfig("ProductName=Disk Tool\r\nlanguage=de_DE\r\nPHASH=ab 1\r\nKPISource=so/urce\r\n");
        simulated::SetTickMilliseconds(5000);
    }

    static void PutConfig(const std::string& installLines, const std::string& more = {},
                          const std::wstring& path = configPath)
    {
        simulated::PutFile(path, "[install]\r\ntracking=1\r\n" + installLines + more);
    }

    // The worker begins its idle pause now.
    void Start()
    {
        tracker.emplace();
        simulated::SettleWorkers();
    }

    static std::vector<std::wstring> GetObjects()
    {
        std::vector<std::wstring> objects;
        for (const auto& request : simulated::GetSentRequests())
            objects.push_back(request.object);
        return objects;
    }

    // The object of the latest request from `key` on to the next "&".
    static std::wstring GetValue(const std::wstring& key)
    {
        const std::wstring object = GetObjects().back();
        const std::size_t start = object.find(L"&" + key + L"=") + key.size() + 2;
        return object.substr(start, object.find(L'&', start) - start);
    }

    static void Fail(int count)
    {
        simulated::Answer refused;
        refused.failsAt = simulated::ENetworkStage::Send;
        refused.error = platform::internetCannotConnect;
        for (int i = 0; i < count; ++i)
            simulated::AddAnswer(refused);
    }

    static std::vector<std::int64_t> GetTimes()
    {
        std::vector<std::int64_t> times;
        for (const auto& request : simulated::GetSentRequests())
            times.push_back(request.atMilliseconds);
        return times;
    }

    std::optional<CZoTrackerPiWik> tracker;
};

using Times = std::vector<std::int64_t>;

TEST_F(KpiTest, WholeRequests)
{
    Start();
    tracker->TrackPageview();
    tracker->TrackEvent(L"Scan", L"Start now", nullptr, L"5 %", L"");
    tracker->TrackEventEx(L"", L"A", L"", L"", L"", true);
    tracker->TrackMessage(L"Hello");
    tracker->TrackPurchase(L"Pack", L"P1", 10.0, L"", 2);
    simulated::AdvanceTime(4s);

    const std::wstring front =
        L"/piwik.php?send_image=0&rec=1&apiv=1&idsite=1"
        L"&ua=Disk%20Tool/3.2.1%20(Windows%20NT%206.1;%20WOW64)&url=www.zotracker.example"
        L"&uid=0123456789abcdef0123456789abcdef&lang=de%2Dus&rand=";
    const std::wstring back =
        L"&_rcn=ab%201&_rck=so/urce&_cvar={\"1\":[\"product\",%20\"Disk%20Tool\"]}";
    const auto whole = [&](int rand, const wchar_t* event) {
        return front + std::to_wstring(rand) + back + event;
    };
    EXPECT_EQ(GetObjects(),
              (std::vector<std::wstring>{
                  whole(7000, L""), whole(7100, L"&e_c=Scan&e_a=Start%20now&e_n=unknown&e_v=5%20%"),
                  whole(7200, L"&e_c=unknown&e_a=A&e_n=&e_v="), whole(7300, L""), whole(7400, L""),
                  whole(7500, L"")}));
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
        {"own query", "", "[web]\r\nPIWIKURL=https://h/p?x=1\r\n", 0x0407, L"/p?x=1&send_image",
         L"en%2Dde"},
        {"unknown locale", "language=d", "", 0x0455, L"/piwik.php?", L"d%2D%5B455%5D"},
        {"no country", "language=fr_FR", "", 0x043C, L"/piwik.php?", L"fr%2Dgd"},
    };
    for (const auto& c : cases)
    {
        simulated::ResetInternet();
        PutConfig(c.install, std::string("\r\n") + c.web);
        simulated::SetUserDefaultLanguageId(c.languageId);
        Start();
        tracker->TrackPageview();
        simulated::AdvanceTime(2s);
        ASSERT_EQ(GetObjects().size(), 1u) << c.what;
        EXPECT_TRUE(GetObjects()[0].starts_with(c.begin)) << c.what;
        EXPECT_EQ(GetValue(L"lang"), c.lang) << c.what;
        EXPECT_EQ(GetValue(L"_rcn"), L"") << c.what;
    }
}

TEST_F(KpiTest, InitializeReadsBesideTheHostsPath)
{
    PutConfig("PHASH=xy\r\nProductName=Name\r\nProductTrackingName=Tracking Name\r\n", "",
              L"C:\\Other\\install.cfg");
    simulated::PutFile(L"C:\\Other\\app.exe", "x");
    simulated::PutFile(L"C:\\Bare\\app.exe", "x");
    PutVersion(L"C:\\Other\\app.exe", L"App", L"9.9");
    Start();
    for (const wchar_t* ignored :
         {static_cast<const wchar_t*>(nullptr), L"", L"C:\\Other\\no.exe", L"C:\\Bare\\app.exe"})
        tracker->Initialize(ignored);
    tracker->TrackPageview();
    simulated::AdvanceTime(2s);
    EXPECT_EQ(GetValue(L"lang"), L"de%2Dus");
    EXPECT_EQ(GetValue(L"_rcn"), L"ab%201");

    tracker->Initialize(L"C:\\Other\\app.exe");
    tracker->TrackPageview();
    simulated::AdvanceTime(2s);
    EXPECT_EQ(GetValue(L"lang"), L"en%5FII");
    EXPECT_EQ(GetValue(L"_rcn"), L"xy");
    EXPECT_EQ(GetValue(L"_cvar"), L"{\"1\":[\"product\",%20\"Tracking%20Name\"]}");
    EXPECT_EQ(GetValue(L"ua"), L"Disk%20Tool/3.2.1%20(Windows%20NT%206.1;%20WOW64)");

    PutConfig("", "", L"C:\\Other\\install.cfg");
    tracker->Initialize(L"C:\\Other\\app.exe");
    EXPECT_EQ(tracker->GetProductName(), L"App");
}

TEST_F(KpiTest, ProductNameChain)
{
    PutConfig("ProductTrackingName=First\r\nProductName=Second\r\n");
    Start();
    EXPECT_EQ(tracker->GetProductName(), L"First");
    tracker->SetProductName(L"Given");
    EXPECT_EQ(tracker->GetProductName(), L"Given");
    PutConfig("ProductName=Second\r\n");
    tracker->SetProductName(L"");
    EXPECT_EQ(tracker->GetProductName(), L"Second");
    PutConfig("");
    tracker->SetProductName(nullptr);
    EXPECT_EQ(tracker->GetProductName(), L"");
}

TEST_F(KpiTest, OneRetryThenSilence)
{
    Start();
    Fail(1);
    tracker->TrackPageview();
    tracker->TrackPageview();
    simulated::AdvanceTime(3s);
    EXPECT_EQ(GetTimes(), (Times{2000, 2500, 2600})) << "a retry that works is a delivery";
    Fail(2);
    tracker->TrackPageview();
    tracker->TrackPageview();
    simulated::AdvanceTime(60s);
    tracker->TrackPageview();
    simulated::AdvanceTime(60s);
    EXPECT_EQ(GetTimes().size(), 5u) << "two attempts and no more";
    EXPECT_EQ(GetTimes()[4] - GetTimes()[3], 500);
}

TEST_F(KpiTest, AnyStatusIsADelivery)
{
    Start();
    simulated::Answer answer;
    answer.status = 500;
    simulated::AddAnswer(answer);
    tracker->TrackPageview();
    simulated::AdvanceTime(10s);
    EXPECT_EQ(GetTimes().size(), 1u);
}

TEST_F(KpiTest, DisabledTrackingDropsOneHitARound)
{
    const struct
    {
        const char* lines;
        bool enabled;
    } cases[] = {{"tracking=0", false},
                 {"tracking=2", false},
                 {"", false},
                 {"tracking=1\r\nkpisite=0", false},
                 {"tracking=1\r\nkpisite=00", true},
                 {"tracking=1", true}};
    for (const auto& c : cases)
    {
        simulated::ResetInternet();
        simulated::PutFile(configPath, std::string("[install]\r\n") + c.lines);
        Start();
        EXPECT_EQ(tracker->IsTrackingEnabled(), c.enabled) << c.lines;
        tracker->TrackPageview();
        simulated::AdvanceTime(4s);
        EXPECT_EQ(GetTimes().size(), c.enabled ? 1u : 0u) << c.lines;
    }
}

TEST_F(KpiTest, SwitchingTrackingReportsTheChange)
{
    simulated::PutFile(configPath, "[install]\r\ntracking=0\r\n");
    Start();
    tracker->SetTrackingEnabled(false);
    tracker->SetTrackingEnabled(true);
    tracker->SetTrackingEnabled(true);
    EXPECT_TRUE(tracker->IsTrackingEnabled());
    tracker->SetTrackingEnabled(false);
    EXPECT_TRUE(tracker->IsTrackingEnabled()) << "so that the event still goes out";
    EXPECT_EQ(simulated::ReadFileBytes(configPath), "[install]\r\ntracking=0\r\n");
    simulated::AdvanceTime(3s);
    ASSERT_EQ(GetObjects().size(), 2u);
    EXPECT_TRUE(GetObjects()[0].ends_with(L"&e_c=TRACKER&e_a=ACTIVATED&e_n=&e_v="));
    EXPECT_TRUE(GetObjects()[1].ends_with(L"&e_c=TRACKER&e_a=DEACTIVATED&e_n=&e_v="));

    simulated::PutFile(configPath, "[install]\r\ntracking=0\r\nkpisite=0\r\n");
    Start();
    tracker->SetTrackingEnabled(true);
    EXPECT_FALSE(tracker->IsTrackingEnabled()) << "no site, no tracking";
}

TEST_F(KpiTest, DestructionSendsWhatIsQueuedWithoutPauses)
{
    Start();
    simulated::AdvanceTime(50ms);
    for (int i = 0; i < 5; ++i)
        tracker->TrackPageview();
    tracker.reset();
    EXPECT_EQ(GetTimes(), (Times{50, 50, 50, 50, 50}));
    EXPECT_EQ(simulated::GetOpenInternetHandles(), 0);
}

TEST_F(KpiTest, DestructionWaitsForNobody)
{
    const struct
    {
        const char* what;
        std::chrono::milliseconds delay;
        int failures;
        std::size_t attempts;
        std::int64_t duration;
    } cases[] = {
        {"slow but answering", 900ms, 0, 12, 10'800}, // until ten seconds have passed
        {"stalled", 1h, 0, 1, 1000},
        {"refusing", 0ms, 1, 1, 0},
    };
    for (const auto& c : cases)
    {
        simulated::Reset();
        PutConfig("");
        PutUserId(userId);
        Start();
        Fail(c.failures);
        simulated::Answer answer;
        answer.delay = c.delay;
        for (int i = 0; i < 20; ++i)
        {
            simulated::AddAnswer(answer);
            tracker->TrackPageview();
        }
        const std::int64_t start = simulated::GetElapsedMilliseconds();
        tracker.reset();
        EXPECT_EQ(GetTimes().size(), c.attempts) << c.what;
        EXPECT_EQ(simulated::GetElapsedMilliseconds() - start, c.duration) << c.what;
    }
}

TEST_F(KpiTest, ProcessExitWaitsForNobody)
{
    Start();
    tracker->TrackPageview();
    simulated::EndProcess();
    tracker->TrackPageview();
    tracker.reset();
    EXPECT_EQ(GetTimes(), Times{});
}

TEST_F(KpiTest, OddProductNamesStayInTheirPlace)
{
    Start();
    tracker->SetProductName(L"a\"b\r\nX: #&\x20AC");
    tracker->TrackPageview();
    simulated::AdvanceTime(2s);
    EXPECT_TRUE(GetObjects()[0].ends_with(
        L"&_cvar={\"1\":[\"product\",%20\"a\"b%0D%0AX:%20%23&%E2%82%AC\"]}"));
}

} // namespace
