#include "env/ProcessCache.h"
#include "env/Text.h"
#include "tests/simulated/DebugOutput.h"
#include "tests/simulated/Files.h"
#include "tests/simulated/Internet.h"
#include "tests/simulated/Registry.h"
#include "tests/simulated/Simulated.h"
#include "tests/simulated/SystemFacts.h"
#include "tests/simulated/VersionResource.h"
#include "tests/simulated/VirtualTime.h"
#include "trackers/ua/CZoTrackerUA.h"
#include "trackers/ua/UaPayload.h"

#include <gtest/gtest.h>

#include <optional>
#include <thread>

using namespace std::chrono_literals;
using platform::ERegistryRoot;
using platform::ERegistryView;
using trackers::CZoTrackerUA;

namespace {

using Texts = std::vector<std::string>;
using Times = std::vector<std::int64_t>;

constexpr const wchar_t* clientId = L"0123456789abcdef0123456789abcdef";
constexpr const wchar_t* configPath = L"C:\\Host\\install.cfg";

std::wstring GetClientKey()
{
    return L"CLSID\\{5E93C0A7-2D41-4F86-B7C9-03E8D12A6F95}\\" + env::Md5OfText(L"Tidy Desk");
}

void PutVersion(const std::wstring& path, const std::wstring& product, const std::wstring& version)
{
    simulated::SetVersionInfo(path, {{{0x409, 1200}},
                                     {{L"\\StringFileInfo\\040904b0\\ProductName", product},
                                      {L"\\StringFileInfo\\040904b0\\ProductVersion", version}}});
}

class UaTest : public testing::Test
{
protected:
    UaTest() { Prepare(); }

    static void Prepare()
    {
        simulated::Reset();
        env::ResetProcessCache();
        PutVersion(L"C:\\Host\\Host.exe", L"Tidy Desk", L"3.2.1");
        simulated::PutRegistryText(ERegistryRoot::CurrentUser, GetClientKey(),
                                   ERegistryView::Default, L"CID", clientId);
        PutConfig("Id=UA-1\r\n", "ProductName=Disk Tool\r\nlanguage=de_DE\r\nphash=ab 1\r\n");
        simulated::SetTickMilliseconds(5000);
        simulated::SetScreenSize({1920, 1080});
    }

    static void PutConfig(const std::string& uaLines, const std::string& installLines = {},
                          const std::wstring& path = configPath)
    {
        simulated::PutFile(path,
                           "[UA]\r\nEnabled=1\r\n" + uaLines + "[install]\r\n" + installLines);
    }

    // The worker begins its idle pause now.
    void Start(const wchar_t* name = L"", const wchar_t* trackingId = L"")
    {
        tracker.emplace(name, L"", trackingId);
        simulated::SettleWorkers();
    }

    // What each payload says of its hit: from its type on.
    static Texts GetHits()
    {
        Texts hits;
        for (const auto& request : simulated::GetSentRequests())
            hits.push_back(request.body.substr(request.body.find("&t=")));
        return hits;
    }

    static Times GetTimes()
    {
        Times times;
        for (const auto& request : simulated::GetSentRequests())
            times.push_back(request.atMilliseconds);
        return times;
    }

    std::string GetValue(const std::string& key)
    {
        const std::string body = "&" + simulated::GetSentRequests().back().body;
        const std::size_t start = body.find("&" + key + "=") + key.size() + 2;
        return body.substr(start, body.find('&', start) - start);
    }

    std::optional<CZoTrackerUA> tracker;
};

// --- payloads ----------------------------------------------------------------------------------

TEST(UaPayloadTest, CommonPart)
{
    EXPECT_EQ(trackers::BuildCommonPayload({L"1",
                                            L"UA-1-2",
                                            L"C:\\P x\\My App.exe",
                                            L"c1",
                                            L"u-1",
                                            L"p/h",
                                            L"de_DE",
                                            L"N&M",
                                            {1920, 1080}}),
              L"v=1&tid=UA-1-2&aip=1&ds=My%20App%2Eexe&cid=c1&uid=u%2D1&cs=p%2Fh"
              L"&cn=%28partners%29&cm=%28direct%29&sr=1920x1080&ul=de%5FDE&cd=N%26M");
    EXPECT_EQ(trackers::BuildCommonPayload({}),
              L"v=&tid=&aip=1&ds=&cid=&uid=&cs=&cn=%28partners%29&cm=%28direct%29&sr=0x0&ul=&cd=");
}

app::TrackingHit MakeHit(app::EHitType type, const wchar_t* field1 = L"",
                         const wchar_t* field2 = L"", const wchar_t* field3 = L"",
                         const wchar_t* field4 = L"", const wchar_t* field5 = L"")
{
    return {type, field1, field2, field3, field4, field5, false};
}

TEST(UaPayloadTest, EveryType)
{
    using enum app::EHitType;
    const struct
    {
        app::TrackingHit hit;
        const wchar_t* payload;
    } cases[] = {
        {MakeHit(Pageview), L"C&t=pageview&dp=%2FN%20M"},
        {MakeHit(Message, L"", L"", L"", L"", L"a=b"), L"C&t=pageview&dp=%2Fa%3Db"},
        {MakeHit(Message), L"C&t=pageview&dp=%2F"},
        {MakeHit(Event, L"5 %", L"c&", L"l\x20AC", L"a+", L"page"),
         L"C&t=event&ec=c%26&ea=a%2B&el=l%20AC&ev=5 %"},
        {MakeHit(Event), L"C&t=event&ec=&ea="},
        {MakeHit(Transaction, L"20.00", L"o_1", L"", L"ph 1"),
         L"C&t=transaction&dp=%2FN%20M&ti=o%5F1&ta=ph%201&tr=20.00"},
        {MakeHit(Transaction), L"C&t=transaction&dp=%2FN%20M&ti="},
        {MakeHit(Item, L"&ip=1.00&iq=2", L"o", L"c#", L"p"),
         L"C&t=item&dp=%2FN%20M&ti=o&ta=p&in=c%23&ip=1.00&iq=2"},
        {MakeHit(Item), L"C&t=item&dp=%2FN%20M&ti=&in="},
        {MakeHit(CustomVariable, L"1", L"2", L"3", L"4"), L""},
        {MakeHit(None), L""},
        {MakeHit(static_cast<app::EHitType>(7)), L""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(trackers::BuildHitPayload(L"C", L"N M", c.hit), c.payload);
    EXPECT_EQ(trackers::BuildHitPayload(L"C", L"", MakeHit(Pageview)), L"C&t=pageview&dp=%2F");
}

TEST(UaPayloadTest, Purchases)
{
    const auto purchase = trackers::MakePurchaseHits(L"P1", 3.335, L"o", -3, L"ph");
    EXPECT_EQ(purchase.transaction.field1, L"-10.00");
    EXPECT_EQ(purchase.item.field1, L"&ip=3.33&iq=-3") << "3.335 lies just below its decimals";
    EXPECT_EQ(purchase.item.field3, L"P1");
    EXPECT_EQ(trackers::MakeOrderId(L"abc", 1000), L"abc_1000");
    EXPECT_EQ(trackers::MakeOrderId(L"abc", 0xFFFFFFFF), L"abc_-1");
}

// --- the whole tracker -------------------------------------------------------------------------

TEST_F(UaTest, WholeRequests)
{
    Start();
    tracker->TrackPageview();
    tracker->TrackEvent(L"Scan", L"Start now", nullptr, L"5", L"");
    tracker->TrackEventEx(L"", L"A", L"", L"abc", L"", true);
    tracker->TrackMessage(L"Hello you");
    tracker->TrackPurchase(L"Pack", L"P1", 10.0, L"", 2);
    tracker->TrackPurchase(L"Pack", L"", 0.5, L"o 1", 1);
    simulated::AdvanceTime(4s);
    EXPECT_EQ(
        GetHits(),
        (Texts{"&t=pageview&dp=%2FDisk%20Tool", "&t=event&ec=Scan&ea=Start%20now&el=unknown&ev=5",
               "&t=event&ec=unknown&ea=A", "&t=pageview&dp=%2FHello%20you",
               "&t=transaction&dp=%2FDisk%20Tool&ti=0123456789abcdef0123456789abcdef%5F5000"
               "&ta=ab%201&tr=20.00",
               "&t=item&dp=%2FDisk%20Tool&ti=0123456789abcdef0123456789abcdef%5F5000"
               "&ta=ab%201&in=P1&ip=10.00&iq=2",
               "&t=transaction&dp=%2FDisk%20Tool&ti=o%201&ta=ab%201&tr=0.50",
               "&t=item&dp=%2FDisk%20Tool&ti=o%201&ta=ab%201&in=&ip=0.50&iq=1"}));
    EXPECT_EQ(GetTimes(), (Times{2000, 2050, 2100, 2150, 2200, 2250, 2300, 2350}));

    const auto request = simulated::GetSentRequests().front();
    EXPECT_EQ(request.body,
              "v=1&tid=UA-1&aip=1&ds=Host%2Eexe&cid=0123456789abcdef0123456789abcdef&uid=" +
                  GetValue("uid") +
                  "&cs=ab%201&cn=%28partners%29&cm=%28direct%29&sr=1920x1080&ul=de%5FDE"
                  "&cd=Disk%20Tool&t=pageview&dp=%2FDisk%20Tool");
    EXPECT_EQ(GetValue("uid").size(), 32u);
    EXPECT_EQ(request.verb, L"POST");
    EXPECT_EQ(request.host, L"collect.zotracker.example");
    EXPECT_EQ(request.port, 443);
    EXPECT_EQ(request.object, L"/collect?z=7000");
    EXPECT_EQ(request.headers, L"Accept: */*\r\nContent-Type: text/plain; charset=utf-8\r\n"
                               L"User-Agent: Disk Tool/3.2.1 (Windows NT 6.1; WOW64)\r\n");
}

TEST_F(UaTest, ConfigurationOfConstruction)
{
    PutConfig("URL=https://own/p\r\nVersion=2\r\nId=X\r\n");
    Start(L"Given", L"Y");
    tracker->TrackPageview();
    simulated::AdvanceTime(2s);
    EXPECT_EQ(simulated::GetSentRequests().back().host, L"own");
    EXPECT_EQ(simulated::GetSentRequests().back().object, L"/p?z=7000");
    EXPECT_EQ(GetValue("v"), "2");
    EXPECT_EQ(GetValue("tid"), "Y");
    EXPECT_EQ(GetValue("cd"), "Given");
    EXPECT_EQ(GetValue("cs"), "");
}

TEST_F(UaTest, WithoutATrackingIdNothingIsSent)
{
    PutConfig("");
    Start();
    tracker->TrackPageview();
    simulated::AdvanceTime(10s);
    EXPECT_EQ(simulated::TakeDebugOutput(),
              std::vector<std::wstring>{L"ZoTracker 3 ERROR UA ### No tracking-id found\n"});
    EXPECT_EQ(GetTimes(), Times{});
    EXPECT_EQ(simulated::TakeSeeds(), std::vector<std::uint32_t>{});
}

TEST_F(UaTest, InitializeReadsBesideTheHostsPath)
{
    PutConfig("URL=https://other/x\r\nId=Z\r\n", "phash=xy\r\nProductName=Other Name\r\n",
              L"C:\\Other\\install.cfg");
    simulated::PutFile(L"C:\\Other\\app.exe", "x");
    simulated::PutFile(L"C:\\Bare\\app.exe", "x");
    PutVersion(L"C:\\Bare\\app.exe", L"Bare App", L"9.9");
    Start();
    for (const wchar_t* ignored : {static_cast<const wchar_t*>(nullptr), L"", L"C:\\Other\\no.exe"})
        tracker->Initialize(ignored);
    tracker->SetProductName(L"");
    EXPECT_EQ(tracker->GetProductName(), L"Disk Tool");
    tracker->Initialize(L"C:\\Other\\app.exe");
    EXPECT_EQ(tracker->GetProductName(), L"Disk Tool") << "the name is the host's to set";
    tracker->SetProductName(nullptr);
    tracker->TrackPurchase(L"", L"", 1, L"o", 1);
    simulated::AdvanceTime(3s);
    EXPECT_EQ(simulated::GetSentRequests().front().host, L"other");
    EXPECT_TRUE(simulated::GetSentRequests().front().headers.ends_with(
        L"\r\nUser-Agent: Other Name/3.2.1 (Windows NT 6.1; WOW64)\r\n"));
    EXPECT_EQ(GetHits().front(), "&t=transaction&dp=%2FOther%20Name&ti=o&ta=xy&tr=1.00");
    EXPECT_EQ(GetValue("cd"), "Disk%20Tool") << "as it was when the worker started";
    EXPECT_EQ(GetValue("cs"), "ab%201");

    tracker->Initialize(L"C:\\Bare\\app.exe");
    tracker->SetProductName(L"");
    EXPECT_EQ(tracker->GetProductName(), L"Bare App");
}

TEST_F(UaTest, SwitchingTracking)
{
    PutConfig("Id=UA-1\r\n", "tracking=1\r\n");
    Start();
    tracker->SetTrackingEnabled(true);
    EXPECT_EQ(simulated::ReadFileBytes(configPath),
              "[UA]\r\nEnabled=1\r\nId=UA-1\r\n[install]\r\ntracking=1\r\n");
    tracker->SetTrackingEnabled(false);
    EXPECT_FALSE(tracker->IsTrackingEnabled());
    EXPECT_EQ(simulated::ReadFileBytes(configPath),
              "[UA]\r\nEnabled=0\r\nId=UA-1\r\n[install]\r\ntracking=0\r\n");
    simulated::AdvanceTime(10s);
    EXPECT_EQ(GetHits(), Texts{});
    tracker->SetTrackingEnabled(true);
    simulated::AdvanceTime(2s);
    EXPECT_EQ(GetHits(), Texts{"&t=event&ec=TRACKER&ea=ACTIVATED"});
    EXPECT_EQ(simulated::ReadFileBytes(configPath),
              "[UA]\r\nEnabled=1\r\nId=UA-1\r\n[install]\r\ntracking=1\r\n");
}

TEST_F(UaTest, OneSessionStart)
{
    Start();
    tracker->SetContinueSession(true);
    tracker->TrackPageview();
    simulated::AdvanceTime(2s);
    tracker->SetContinueSession(false);
    for (int i = 0; i < 3; ++i)
        tracker->TrackMessage(L"m");
    simulated::AdvanceTime(4s);
    EXPECT_EQ(GetHits(), (Texts{"&t=pageview&dp=%2FDisk%20Tool", "&t=pageview&dp=%2Fm&sc=start",
                                "&t=pageview&dp=%2Fm", "&t=pageview&dp=%2Fm"}));
}

// --- client id ---------------------------------------------------------------------------------

TEST_F(UaTest, ClientIdIsMadeOnceAndFoundAgain)
{
    simulated::RemoveRegistryKey(ERegistryRoot::CurrentUser, GetClientKey(),
                                 ERegistryView::Default);
    Start();
    const std::wstring made = tracker->GetClientId();
    tracker->TrackPageview();
    simulated::AdvanceTime(2s);
    EXPECT_EQ(env::Md5OfText(env::Utf8ToUtf16(GetValue("uid")) + L"5000"), made);
    EXPECT_EQ(env::Utf8ToUtf16(GetValue("cid")), made);
    EXPECT_EQ(simulated::FindRegistryText(ERegistryRoot::ClassesRoot, GetClientKey(),
                                          ERegistryView::View32, L"CID"),
              made);
    EXPECT_EQ(simulated::FindRegistryText(ERegistryRoot::CurrentUser, GetClientKey(),
                                          ERegistryView::Default, L"CID"),
              made);
    simulated::SetTickMilliseconds(9'999'999);
    Start();
    EXPECT_EQ(tracker->GetClientId(), made) << "a second run";
    simulated::PutRegistryText(ERegistryRoot::ClassesRoot, GetClientKey(), ERegistryView::Default,
                               L"CID", L"machine");
    Start();
    EXPECT_EQ(tracker->GetClientId(), L"machine") << "the machine's comes first";
    simulated::PutRegistryText(ERegistryRoot::ClassesRoot, GetClientKey(), ERegistryView::Default,
                               L"CID", L"");
    Start();
    EXPECT_NE(tracker->GetClientId(), made) << "an empty one counts as none";
}

TEST_F(UaTest, ClientIdLastsForTheRunWhereNothingCanBeWritten)
{
    simulated::RemoveRegistryKey(ERegistryRoot::CurrentUser, GetClientKey(),
                                 ERegistryView::Default);
    for (const auto root : {ERegistryRoot::ClassesRoot, ERegistryRoot::CurrentUser})
        simulated::SetRegistryDenial(root, simulated::ERegistryDenial::Creating);
    Start();
    const std::wstring made = tracker->GetClientId();
    EXPECT_EQ(made.size(), 32u);
    simulated::AdvanceTime(1s);
    EXPECT_EQ(tracker->GetClientId(), made);
}

// --- delivery ----------------------------------------------------------------------------------

TEST_F(UaTest, StatsEventsAreSampled)
{
    for (const std::int32_t draw : {22936, 22937, 26213, 26214}) // the eighth tenth of the range
    {
        Prepare();
        simulated::PutDraws({draw});
        Start();
        tracker->TrackEvent(L"sTaTs", L"a", L"l", L"", L"");
        tracker->TrackEvent(L"STATS2", L"a", L"l", L"", L"");
        tracker->TrackMessage(L"STATS");
        simulated::AdvanceTime(4s);
        const bool kept = draw == 22937 || draw == 26213;
        EXPECT_EQ(GetHits().size(), kept ? 3u : 2u) << draw;
        tracker.reset();
    }
}

TEST_F(UaTest, FailedSendsAreNotRepeated)
{
    using simulated::ENetworkStage;
    for (const ENetworkStage stage : {ENetworkStage::EndRequest, ENetworkStage::Read})
    {
        Prepare();
        Start();
        simulated::Answer answer;
        answer.failsAt = stage;
        answer.error = 12029;
        simulated::AddAnswer(answer);
        tracker->TrackPageview();
        tracker->TrackMessage(L"m");
        simulated::AdvanceTime(60s);
        EXPECT_EQ(GetHits(), (Texts{"&t=pageview&dp=%2FDisk%20Tool", "&t=pageview&dp=%2Fm"}));
        tracker.reset();
    }
}

TEST_F(UaTest, TwoResultsInARowWithoutAConnectionEndDelivery)
{
    Start();
    simulated::SetConnectedState(false, 87);
    tracker->TrackMessage(L"first, lost");
    simulated::AdvanceTime(4s);
    simulated::SetConnectedState(true, 0);
    tracker->TrackMessage(L"second");
    simulated::AdvanceTime(4s);
    EXPECT_EQ(GetHits(), Texts{"&t=pageview&dp=%2Fsecond"}) << "one does not";
    tracker.reset();

    simulated::SetConnectedState(false, 87);
    Start();
    tracker->TrackMessage(L"lost");
    tracker->TrackMessage(L"lost, too");
    simulated::AdvanceTime(4s);
    simulated::SetConnectedState(true, 0);
    tracker->TrackMessage(L"for nobody");
    simulated::AdvanceTime(600s);
    tracker.reset();
    EXPECT_EQ(GetHits().size(), 1u);
}

TEST_F(UaTest, KeepsTheSessionAliveWhileIdle)
{
    Start();
    simulated::AdvanceTime(390s);
    EXPECT_EQ(GetTimes(), Times{200'000});
    EXPECT_EQ(GetHits(), Texts{"&t=pageview&dp=%2FDisk%20Tool"});
    tracker->DisableIdlePageviews(true);
    simulated::AdvanceTime(600s);
    EXPECT_EQ(GetTimes().size(), 1u);
    tracker->DisableIdlePageviews(false);
    simulated::AdvanceTime(200s);
    EXPECT_EQ(GetTimes().size(), 2u);
    tracker->SetTrackingEnabled(false);
    simulated::AdvanceTime(600s);
    EXPECT_EQ(GetTimes().size(), 2u);
}

TEST_F(UaTest, DisabledTrackingDropsOneHitARound)
{
    for (const char* enabled : {"0", "2", ""})
    {
        Prepare();
        simulated::PutFile(configPath, std::string("[UA]\r\nId=U\r\nEnabled=") + enabled);
        Start();
        EXPECT_FALSE(tracker->IsTrackingEnabled());
        for (const wchar_t* text : {L"1", L"2", L"3"})
            tracker->TrackMessage(text);
        simulated::AdvanceTime(4s);
        tracker->SetTrackingEnabled(true);
        simulated::AdvanceTime(3s);
        EXPECT_EQ(GetHits(), (Texts{"&t=pageview&dp=%2F3", "&t=event&ec=TRACKER&ea=ACTIVATED"}));
        tracker.reset();
    }
}

TEST_F(UaTest, DestructionSendsWhatIsQueuedWithoutPauses)
{
    Start();
    simulated::AdvanceTime(70ms);
    for (int i = 0; i < 5; ++i)
        tracker->TrackPageview();
    tracker.reset();
    EXPECT_EQ(GetTimes(), (Times{70, 70, 70, 70, 70}));
    EXPECT_EQ(simulated::GetOpenInternetHandles(), 0);
}

TEST_F(UaTest, DestructionWaitsForNobody)
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
        Prepare();
        Start();
        simulated::Answer answer;
        answer.delay = c.delay;
        answer.error = platform::internetCannotConnect;
        for (int i = 0; i < 20; ++i)
        {
            answer.failsAt =
                i < c.failures ? simulated::ENetworkStage::Send : simulated::ENetworkStage::None;
            simulated::AddAnswer(answer);
            tracker->TrackPageview();
        }
        const std::int64_t start = simulated::GetElapsedMilliseconds();
        tracker.reset();
        EXPECT_EQ(GetTimes().size(), c.attempts) << c.what;
        EXPECT_EQ(simulated::GetElapsedMilliseconds() - start, c.duration) << c.what;
    }
}

TEST_F(UaTest, DestructionEndsAnEndlessRedirect)
{
    Start();
    for (int i = 0; i < 5'000; ++i)
    {
        simulated::Answer redirect;
        redirect.status = 302;
        redirect.location = i % 2 == 0 ? L"/a" : L"/b";
        redirect.delay = 100ms;
        simulated::AddAnswer(redirect);
    }
    tracker->TrackPageview();
    simulated::AdvanceTime(60s);
    EXPECT_GT(GetTimes().size(), 500u);
    const std::int64_t start = simulated::GetElapsedMilliseconds();
    tracker->TrackPageview();
    tracker.reset();
    EXPECT_LE(simulated::GetElapsedMilliseconds() - start, 600);

    Start();
    tracker->TrackPageview();
    const std::int64_t later = simulated::GetElapsedMilliseconds();
    tracker.reset();
    EXPECT_LE(simulated::GetElapsedMilliseconds() - later, 2000);
}

TEST_F(UaTest, HostsMayCallWhileTheWorkerSends)
{
    simulated::PutFile(L"C:\\Host\\Host.exe", "x");
    Start();
    std::thread host([this] {
        for (int i = 0; i < 50; ++i)
        {
            tracker->SetProductName(L"Name");
            tracker->Initialize(L"C:\\Host\\Host.exe");
            tracker->SetContinueSession(false);
            tracker->TrackPurchase(L"", L"", 1, L"", 1);
        }
    });
    simulated::AdvanceTime(10s);
    host.join();
    tracker.reset();
    EXPECT_EQ(GetHits().size(), 100u);
}

TEST_F(UaTest, ProcessExitWaitsForNobody)
{
    Start();
    tracker->TrackPageview();
    simulated::EndProcess();
    tracker->TrackPageview();
    tracker.reset();
    EXPECT_EQ(GetTimes(), Times{});
}

TEST_F(UaTest, OddTextsStayInTheirPlace)
{
    Start();
    tracker->SetProductName(L"a\r\nX: \xD83D\xDE00");
    tracker->TrackEvent(L"\xD83D\xDE00", L"\x20AC", L"\n", L"", L"");
    simulated::AdvanceTime(2s);
    EXPECT_EQ(GetHits(), Texts{"&t=event&ec=%D83D%DE00&ea=%20AC&el=%A&ev=0"});
    EXPECT_NE(simulated::GetSentRequests().back().headers.find(
                  L"User-Agent: a  X: \xD83D\xDE00/3.2.1 (Windows NT 6.1; WOW64)\r\n"),
              std::wstring::npos);
}

} // namespace
