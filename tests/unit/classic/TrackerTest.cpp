#include "env/ProcessCache.h"
#include "env/Text.h"
#include "tests/simulated/DebugOutput.h"
#include "tests/simulated/Files.h"
#include "tests/simulated/HostPaths.h"
#include "tests/simulated/Internet.h"
#include "tests/simulated/NotificationIcon.h"
#include "tests/simulated/Registry.h"
#include "tests/simulated/Simulated.h"
#include "tests/simulated/SystemFacts.h"
#include "tests/simulated/VersionResource.h"
#include "tests/simulated/VirtualTime.h"
#include "trackers/classic/CZoTracker.h"

#include <gtest/gtest.h>

#include <optional>
#include <thread>

using namespace std::chrono_literals;
using platform::EInternetOption;
using platform::ERegistryRoot;
using platform::ERegistryView;
using trackers::CZoTracker;

namespace {

const wchar_t* const computerKey = L"CLSID\\{7C2A9E14-3F60-4b8d-92E5-A1D4706B3C58}";
const wchar_t* const sessionKey = L"CLSID\\{5E93C0A7-2D41-4F86-B7C9-03E8D12A6F95}\\2_Tidy Desk";
const wchar_t* const configPath = L"C:\\Host\\install.cfg";
const wchar_t* const historyFile = L"C:\\ProgramData\\veltrano\\Tidy Desk\\tallyhive.xml";

// Of the digests of "UA-73051829-04" and of the computer's identifier "id" with "Tidy Desk".
const std::wstring domainHash = L"495297100";
const std::wstring visitorNumber = L"1015449495252549856991015048575755"
                                   L"5157569853555056491019854985597100";
const std::wstring otherVisitorNumber = L"10098102495210097515749991015798545"
                                        L"29957509950545755100569848525056100"; // with "App"
const std::wstring productUserId = L"e611446b8ce20997398b57281eb6b7ad";

void PutVersion(const std::wstring& path, const std::wstring& product, const std::wstring& version)
{
    simulated::SetVersionInfo(path, {{{0x409, 1200}},
                                     {{L"\\StringFileInfo\\040904b0\\ProductName", product},
                                      {L"\\StringFileInfo\\040904b0\\ProductVersion", version}}});
}

using Times = std::vector<std::int64_t>;
using Texts = std::vector<std::wstring>;

class ClassicTest : public testing::Test
{
protected:
    ClassicTest()
    {
        simulated::Reset();
        env::ResetProcessCache();
        simulated::PutFolder(L"C:\\ProgramData");
        simulated::PutRegistryText(ERegistryRoot::ClassesRoot, computerKey, ERegistryView::Default,
                                   L"ID", L"id");
        PutVersion(L"C:\\Host\\Host.exe", L"Tidy Desk", L"3.2.1");
        PutConfig("");
        simulated::SetUnixTime(1000);
        simulated::SetTickMilliseconds(5000);
    }

    static void PutConfig(const std::string& lines, const std::wstring& path = configPath)
    {
        simulated::PutFile(path, "[install]\r\ntracking=1\r\n" + lines);
    }

    // The worker begins its idle pause now.
    void Start()
    {
        tracker.reset();
        simulated::ResetInternet();
        start = simulated::GetElapsedMilliseconds();
        tracker.emplace(L"", L"", L"");
        simulated::SettleWorkers();
    }

    // Lets the tracker send what is queued, at most for `duration`.
    void Send(std::chrono::milliseconds duration = 4s) { simulated::AdvanceTime(duration); }

    static Texts GetObjects()
    {
        Texts objects;
        for (const auto& request : simulated::GetSentRequests())
            objects.push_back(request.object);
        return objects;
    }

    // The values of `key` in all requests, up to the next "&"; "-" where there is none.
    static Texts GetValues(const std::wstring& key)
    {
        Texts values;
        for (const std::wstring& object : GetObjects())
        {
            const std::size_t found = object.find(L"&" + key + L"=");
            const std::size_t begin = found + key.size() + 2;
            values.push_back(found == object.npos
                                 ? L"-"
                                 : object.substr(begin, object.find(L'&', begin) - begin));
        }
        return values;
    }

    static void Fail(int count)
    {
        simulated::Answer refused;
        refused.failsAt = simulated::ENetworkStage::Send;
        refused.error = platform::internetCannotConnect;
        for (int i = 0; i < count; ++i)
            simulated::AddAnswer(refused);
    }

    // Since the latest start.
    Times GetTimes() const
    {
        Times times;
        for (const auto& request : simulated::GetSentRequests())
            times.push_back(request.atMilliseconds - start);
        return times;
    }

    static std::wstring FindState(const wchar_t* name)
    {
        return simulated::FindRegistryText(ERegistryRoot::ClassesRoot, sessionKey,
                                           ERegistryView::View32, name)
            .value_or(L"-");
    }

    std::optional<CZoTracker> tracker;
    std::int64_t start = 0;
};

TEST_F(ClassicTest, WholeRequests)
{
    PutConfig("ProductName=Disk Tool\r\nPHASH=ab1\r\nLanguage=de_DE\r\n");
    Start();
    tracker->TrackEvent(L"Scan", L"Start now", nullptr, L"", L"");
    tracker->TrackEventEx(L"", L"A", L"", L"", L"My page", false);
    tracker->TrackMessage(L"Hello");
    tracker->TrackPurchase(L"Pack", L"P1", 10.0, L"", 3);
    Send();

    const auto whole = [&](int number, const std::wstring& part) {
        const std::wstring hit = std::to_wstring(number);
        return L"/__utm.gif?utmwv=5.4.3&utms=" + hit + L"&utmn=" + std::to_wstring(5000 + number) +
               L"&utmac=UA-73051829-04&utmsr=1024x768" + part +
               L"&utmhn=Disk%20Tool&utmcs=UTF-8&utmdt=Disk%20Tool&utmul=de%5FDE&utmr=Disk%20Tool"
               L"&aip=1&utmcc=__utma%3D" +
               domainHash + L"." + visitorNumber + L".1002.1002.1002.1%3B%2B__utmb%3D" +
               domainHash + L"." + hit + L".10.1002%3B%2B__utmc%3D" + domainHash +
               L"%3B%2B__utmz%3D" + domainHash +
               L".1002.1.1.utmcsr=(ab1)|utmccn=(partners)|utmcmd=(unknown)";
    };
    EXPECT_EQ(GetObjects(),
              (Texts{whole(1, L"&utmp=Disk%20Tool"),
                     whole(2, L"&utmt=event&utme=8(1!PHASH)9(1!AB1)11(1!2)&utmp="),
                     whole(3, L"&utmt=event&utme=5(SCAN*START%20NOW*UNKNOWN)(0)&utmp=Disk%20Tool"),
                     whole(4, L"&utmt=event&utme=5(UNKNOWN*A*)(1)&utmp=My%20page"),
                     whole(5, L"&utmp=Hello"),
                     whole(6, L"&utmt=tran&utmp=Disk%20Tool&utmtid=" + productUserId +
                                  L"_&utmtst=ab1&utmtto=30.00&utmtsp=0.00&utmttx=5.70"),
                     whole(7, L"&utmt=item&utmp=Disk%20Tool&utmtid=&utmipc=P1&utmipn=Pack"
                              L"&utmipr=10.00&utmiqt=3&utmiva=de_DE")}));
    EXPECT_EQ(GetTimes(), (Times{2000, 2100, 2200, 2300, 2400, 2500, 2600}));
    const auto request = simulated::GetSentRequests().front();
    EXPECT_EQ(request.verb, L"GET");
    EXPECT_EQ(request.agent, L"Disk Tool");
    EXPECT_EQ(request.host, L"collect.zotracker.example");
    EXPECT_EQ(request.port, 443);
    EXPECT_EQ(request.headers, L"User-Agent: Disk Tool/3.2.1 (Windows NT 6.1; WOW64)\r\n");
    EXPECT_EQ(request.timeouts, (std::map<EInternetOption, std::uint32_t>{
                                    {EInternetOption::ConnectTimeout, 5000},
                                    {EInternetOption::SendTimeout, 1000},
                                    {EInternetOption::ReceiveTimeout, 1000},
                                    {EInternetOption::DataSendTimeout, 1000},
                                    {EInternetOption::DataReceiveTimeout, 1000}}));

    tracker->TrackPurchase(L"Pack", L"P1", 10.0, L"", 3);
    tracker->TrackPurchase(L"Pack", L"P1", 10.0, L"O7", 3);
    Send();
    const Texts ids = GetValues(L"utmtid");
    EXPECT_EQ(Texts(ids.end() - 4, ids.end()), (Texts{productUserId + L"_7", L"", L"O7", L"O7"}));
}

TEST_F(ClassicTest, ConfigurationOfConstruction)
{
    simulated::PutFile(configPath, "");
    Start();
    EXPECT_FALSE(tracker->IsTrackingEnabled());
    EXPECT_EQ(tracker->GetProductName(), L"Tidy Desk");
    EXPECT_EQ(tracker->GetInterfaceVersion(), 8450u);

    PutConfig("GAID=a\r\nGAURL=https://own:444/x?\r\nProductName=Name\r\n"
              "ProductTrackingName=Tracking\r\n");
    simulated::SetScreenSize({640, 480});
    Start();
    tracker->TrackPageview();
    Send();
    EXPECT_EQ(simulated::GetSentRequests().at(0).host, L"own");
    EXPECT_EQ(simulated::GetSentRequests().at(0).port, 444);
    EXPECT_TRUE(GetObjects().at(0).starts_with(L"/x?utmwv=5.4.3"));
    EXPECT_EQ(GetValues(L"utmac"), Texts{L"a"});
    EXPECT_EQ(GetValues(L"utmsr"), Texts{L"640x480"});
    EXPECT_EQ(GetValues(L"utmhn"), Texts{L"Tracking"});
    EXPECT_EQ(GetValues(L"utmul"), Texts{L"en%5FII"});
    EXPECT_TRUE(GetValues(L"utmcc").at(0).starts_with(L"__utma%3D489999495."));

    tracker.reset();
    simulated::ResetInternet();
    tracker.emplace(L"Given", L"acme", L"b");
    tracker->TrackPageview();
    Send();
    EXPECT_EQ(GetValues(L"utmac"), Texts{L"b"});
    EXPECT_EQ(GetValues(L"utmhn"), Texts{L"Given"});
    EXPECT_TRUE(simulated::FolderExists(L"C:\\ProgramData\\acme\\Tidy Desk"));
}

TEST_F(ClassicTest, InitializeReadsBesideTheHostsPath)
{
    PutConfig("PHASH=default\r\nProductName=Default\r\n");
    PutConfig("PHASH=xy\r\nLanguage=fr_FR\r\nProductTrackingName=Not this\r\n",
              L"C:\\Other\\install.cfg");
    for (const wchar_t* path : {L"C:\\Other\\app.exe", L"C:\\Bare\\app.exe"})
    {
        simulated::PutFile(path, "x");
        PutVersion(path, L"App", L"9.9");
    }
    Start();
    for (const wchar_t* ignored : {static_cast<const wchar_t*>(nullptr), L"", L"C:\\Other\\no.exe"})
        tracker->Initialize(ignored);
    EXPECT_EQ(tracker->GetProductName(), L"Default");
    simulated::SetTickMilliseconds(9000);
    tracker->Initialize(L"C:\\Other\\app.exe");
    EXPECT_EQ(tracker->GetProductName(), L"App");
    tracker->TrackPageview();
    Send();
    simulated::SetTickMilliseconds(50'000);
    tracker->Initialize(L"C:\\Bare\\app.exe");
    tracker->TrackPageview();
    Send();
    EXPECT_EQ(GetValues(L"utmn"), (Texts{L"9001", L"9002", L"9003"})) << "goes on";
    EXPECT_EQ(GetValues(L"utmul"), (Texts{L"fr%5FFR", L"fr%5FFR", L"en%5FII"}));
    EXPECT_EQ(GetValues(L"utmhn"), (Texts{L"App", L"App", L"Default"}));
    EXPECT_EQ(GetValues(L"utme"), (Texts{L"8(1!PHASH)9(1!XY)11(1!2)", L"-", L"-"}));
    const std::wstring cookies = GetValues(L"utmcc").at(0);
    EXPECT_TRUE(cookies.starts_with(L"__utma%3D" + domainHash + L"." + otherVisitorNumber + L"."));
    EXPECT_TRUE(cookies.ends_with(L"utmcsr=(xy)|utmccn=(partners)|utmcmd=(unknown)"));
    EXPECT_EQ(simulated::GetSentRequests()[0].headers,
              L"User-Agent: App/9.9 (Windows NT 6.1; WOW64)\r\n");
    EXPECT_EQ(FindState(L"FV"), L"-") << "the session is that of the other product";
}

TEST_F(ClassicTest, ProductNameChain)
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
    EXPECT_EQ(tracker->GetProductName(), L"Tidy Desk");
}

TEST_F(ClassicTest, SwitchingTrackingReportsTheChange)
{
    simulated::PutFile(configPath, "[install]\r\ntracking=2\r\n");
    Start();
    tracker->SetTrackingEnabled(false);
    EXPECT_FALSE(tracker->IsTrackingEnabled());
    tracker->SetTrackingEnabled(true);
    tracker->SetTrackingEnabled(true);
    tracker->SetTrackingEnabled(false);
    EXPECT_TRUE(tracker->IsTrackingEnabled()) << "so that the event still goes out";
    EXPECT_EQ(simulated::ReadFileBytes(configPath), "[install]\r\ntracking=0\r\n");
    Send();
    EXPECT_EQ(GetValues(L"utme"),
              (Texts{L"-", L"5(TRACKER*ACTIVATED*)(1)", L"5(TRACKER*DEACTIVATED*)(1)"}));
}

TEST_F(ClassicTest, SessionsAndOnceOnlyEventsOverThreeRuns)
{
    const struct
    {
        bool continues;
        std::int64_t now;
        const wchar_t* cookie; // of the first request, behind the visitor's number
        Texts hits, events;
    } runs[] = {
        {false,
         10'000,
         L".10000.10000.10000.1%3B",
         {L"1", L"2", L"4"},
         {L"-", L"5(A*B*)(1)", L"5(C*D*)(1)"}},
        {false, 20'000, L".10000.10000.20000.2%3B", {L"1", L"4"}, {L"-", L"5(C*D*)(2)"}},
        {true, 30'000, L".10000.10000.20000.2%3B", {L"5", L"8"}, {L"-", L"5(C*D*)(3)"}},
    };
    for (const auto& run : runs)
    {
        Start();
        tracker->SetContinueSession(run.continues);
        simulated::SetUnixTime(run.now - 2);
        tracker->TrackPageview();
        tracker->TrackEventEx(L"A", L"B", L"", L"", L"P", true);
        tracker->TrackEventEx(L"A", L"B", L"", L"", L"P", true);
        tracker->TrackEventEx(L"C", L"D", L"", L"", L"P", false);
        Send();
        EXPECT_NE(GetValues(L"utmcc").at(0).find(visitorNumber + run.cookie), std::wstring::npos)
            << run.now;
        EXPECT_EQ(GetValues(L"utms"), run.hits) << run.now;
        EXPECT_EQ(GetValues(L"utme"), run.events) << run.now;
        EXPECT_EQ(GetTimes().back(), run.hits.size() == 3 ? 2200 : 2100)
            << "an event that is left out takes no pause";
    }
}

TEST_F(ClassicTest, RefusedFirstHitTakesTheSessionBack)
{
    Start();
    tracker->TrackPageview();
    Send();
    EXPECT_EQ(FindState(L"PVC"), L"2");
    simulated::SetUnixTime(2000);
    Start();
    Fail(2);
    tracker->TrackPageview();
    Send();
    EXPECT_EQ(GetTimes(), (Times{2000, 2500})) << "exactly two attempts";
    EXPECT_EQ(FindState(L"SID"), L"1");
    EXPECT_EQ(FindState(L"LV"), L"1002");
    EXPECT_EQ(FindState(L"CV"), L"1002");
    EXPECT_EQ(FindState(L"PVC"), L"1");
    EXPECT_EQ(FindState(L"LPV"), L"");

    tracker->TrackEvent(L"A", L"B", L"", L"", L"");
    tracker->TrackPageview();
    simulated::AdvanceTime(600s);
    EXPECT_EQ(GetTimes().size(), 2u) << "silence, without a keep-alive pageview";
    EXPECT_EQ(FindState(L"PVC"), L"3") << "but hits are counted";
    tracker.reset();
    EXPECT_EQ(simulated::GetOpenInternetHandles(), 0);
}

TEST_F(ClassicTest, RefusedLaterHitOnlySilences)
{
    Start();
    tracker->TrackPageview();
    Send();
    Fail(1);
    tracker->TrackPageview();
    Send();
    EXPECT_EQ(GetTimes(), (Times{2000, 4100, 4600})) << "a retry that works is a delivery";
    Fail(2);
    tracker->TrackPageview();
    tracker->TrackPageview();
    Send(60s);
    EXPECT_EQ(GetTimes().size(), 5u);
    EXPECT_EQ(FindState(L"SID"), L"1");
    EXPECT_EQ(FindState(L"PVC"), L"5");
}

TEST_F(ClassicTest, AnyStatusIsADelivery)
{
    Start();
    simulated::Answer answer;
    answer.status = 500;
    simulated::AddAnswer(answer);
    tracker->TrackPageview();
    Send();
    EXPECT_EQ(GetTimes().size(), 1u);
}

TEST_F(ClassicTest, IdleSessionsAreKeptAlive)
{
    Start();
    tracker->TrackPageview();
    simulated::AdvanceTime(
        201s); // the hit goes out in the second round, the hundredth since at 202
    EXPECT_EQ(GetTimes(), Times{2000});
    simulated::AdvanceTime(4s);
    EXPECT_EQ(GetTimes(), (Times{2000, 204'100})) << "a hundred rounds behind that of the hit";
    EXPECT_EQ(GetValues(L"utmp"), (Texts{L"Tidy%20Desk", L"Tidy%20Desk"}));

    Start();
    tracker->DisableIdlePageviews(true);
    tracker->TrackPageview();
    simulated::AdvanceTime(1000s);
    EXPECT_EQ(GetTimes(), Times{2000});
    tracker->DisableIdlePageviews(false);
    simulated::AdvanceTime(202s);
    EXPECT_EQ(GetTimes().size(), 2u);
}

TEST_F(ClassicTest, StatsEventsAreSentInOneRunOfTen)
{
    const struct
    {
        std::int32_t draw;
        Texts events;
    } cases[] = {{0, {L"-", L"5(STATSX*A*)(1)"}},
                 {24'000, {L"-", L"5(STATS*A*)(1)", L"5(STATSX*A*)(2)"}}};
    for (const auto& c : cases)
    {
        simulated::PutDraws({c.draw});
        Start();
        tracker->TrackPageview();
        tracker->TrackEventEx(L"stAts", L"A", L"", L"", L"P", false);
        tracker->TrackEventEx(L"statsx", L"A", L"", L"", L"P", false);
        Send();
        EXPECT_EQ(GetValues(L"utme"), c.events) << c.draw;
        EXPECT_EQ(GetTimes().back(), 2200) << "a dropped event takes its pause";
    }
}

TEST_F(ClassicTest, DisabledTrackingDropsOneHitARound)
{
    PutConfig("");
    simulated::PutFile(configPath, "[install]\r\n");
    Start();
    for (int i = 0; i < 3; ++i)
        tracker->TrackPageview();
    simulated::AdvanceTime(5s);
    tracker->SetTrackingEnabled(true);
    Send();
    EXPECT_EQ(GetValues(L"utmt"), (Texts{L"-", L"event"})) << "two of three are gone";
}

TEST_F(ClassicTest, DestructionDropsWhatIsQueuedAndWaitsForNobody)
{
    const struct
    {
        const char* what;
        std::chrono::milliseconds delay, before;
        std::size_t attempts;
        std::int64_t duration;
    } cases[] = {{"nothing begun", 0ms, 1s, 0, 0},
                 {"between two hits", 0ms, 2050ms, 1, 0},
                 {"answer on its way", 500ms, 2100ms, 1, 400},
                 {"stalled", 1h, 2100ms, 1, 1000}};
    for (const auto& c : cases)
    {
        Start();
        simulated::Answer answer;
        answer.delay = c.delay;
        for (int i = 0; i < 20; ++i)
        {
            simulated::AddAnswer(answer);
            tracker->TrackPageview();
        }
        simulated::AdvanceTime(c.before);
        const std::int64_t before = simulated::GetElapsedMilliseconds();
        tracker.reset();
        EXPECT_EQ(GetTimes().size(), c.attempts) << c.what;
        EXPECT_EQ(simulated::GetElapsedMilliseconds() - before, c.duration) << c.what;
        EXPECT_EQ(simulated::GetOpenInternetHandles(), 0) << c.what;
    }
}

TEST_F(ClassicTest, TheHistoryIsSavedAtTheEndOfTheProcessToo)
{
    Start();
    tracker->TrackEvent(L"A", L"B", L"", L"", L"");
    Send();
    simulated::EndProcess();
    tracker->TrackPageview();
    tracker.reset();
    const std::string saved = simulated::ReadFileBytes(historyFile).value_or("");
    EXPECT_NE(saved.find(">1</"), std::string::npos) << saved;
}

TEST_F(ClassicTest, ATesterSeesEachHit)
{
    PutConfig("TrackingTraceBalloon=1\r\nPHASH=p\r\n");
    Start();
    ASSERT_EQ(simulated::GetNotificationIcons().size(), 1u);
    const auto icon = simulated::GetNotificationIcons()[0];
    EXPECT_EQ(icon.id, 2977u);
    EXPECT_EQ(icon.callbackMessage, 34'721u);
    EXPECT_EQ(icon.balloonTimeout, 10'000u);
    simulated::TakeDebugOutput();
    tracker->TrackEventEx(L"Menu", L"Open", L"File", L"", L"", false);
    tracker->TrackEventEx(L"Menu", L"Open", L"File", L"", L"", true);
    Send();
    using Balloons = std::vector<std::pair<std::wstring, std::wstring>>;
    EXPECT_EQ(simulated::TakeBalloons(), (Balloons{{L"GA: Pageview", L"Tidy Desk"},
                                                   {L"GA: Event", L"Menu: Open - File (1)"}}));
    EXPECT_EQ(simulated::TakeDebugOutput(),
              (Texts{L"ZoTracker 6 GA: Pageview: Tidy Desk\n",
                     L"ZoTracker 6 GA: Event: Menu: Open - File (1)\n"}));
    tracker.reset();
    EXPECT_TRUE(simulated::GetNotificationIcons().empty());

    PutConfig("TrackingTraceBalloon=2\r\n");
    Start();
    tracker->TrackPageview();
    Send();
    EXPECT_TRUE(simulated::GetNotificationIcons().empty());
    EXPECT_TRUE(simulated::TakeBalloons().empty());
}

TEST_F(ClassicTest, WithoutAnInternetSessionNothingIsCounted)
{
    simulated::Answer none;
    none.failsAt = simulated::ENetworkStage::Session;
    none.error = platform::internetTimeout;
    simulated::ResetInternet();
    simulated::AddAnswer(none);
    tracker.emplace(L"", L"", L"");
    simulated::SettleWorkers();
    tracker->TrackPageview();
    Send(60s);
    EXPECT_TRUE(GetObjects().empty());
    EXPECT_EQ(FindState(L"FV"), L"-");
}

// For the thread sanitizer.
TEST_F(ClassicTest, HostsMayReconfigureWhileTheWorkerIsAtWork)
{
    simulated::PutFile(L"C:\\Host\\Host.exe", "x");
    Start();
    std::thread host([&] {
        for (int i = 0; i < 200; ++i)
        {
            tracker->TrackPurchase(L"a", L"b", 1, L"", 1);
            tracker->SetProductName(i % 2 == 0 ? L"x" : L"");
            tracker->Initialize(L"C:\\Host\\Host.exe");
            tracker->SetContinueSession(i % 2 == 0);
            tracker->DisableIdlePageviews(i % 2 == 0);
        }
    });
    Send(30s);
    host.join();
    Send(60s);
    EXPECT_EQ(GetTimes().size(), 401u);
}

} // namespace
