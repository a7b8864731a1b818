#include "tests/unit/trackers/TrackerFixture.h"
#include "trackers/classic/ClassicRequest.h"
#include "trackers/classic/PurchaseHits.h"

#include <algorithm>

using namespace trackers;

namespace {

class ClassicTest : public TrackerFixture
{
protected:
    ClassicTest() { PutConfig(""); }
};

TEST_F(ClassicTest, WholeRequests)
{
    PutConfig("ProductName=Disk Tool\r\nPHASH=ab 1\r\nLanguage=de_DE\r\n");
    Start(EKind::Classic);
    tracker->TrackEvent(L"Scan", L"Start now", nullptr, L"", L"");
    tracker->TrackEventEx(L"", L"A", L"", L"", L"My page", false);
    tracker->TrackMessage(L"Hi, you");
    tracker->TrackPurchase(L"Pack", L"P1", 10.0, L"", 3);
    simulated::AdvanceTime(4s);

    // The long numbers are of the digests of "UA-73051829-04" and of the computer's identifier "id"
    // with "Tidy Desk".
    const auto whole = [](int number, const std::wstring& part) {
        const std::wstring hit = std::to_wstring(number);
        return L"GET collect.zotracker.example:443/__utm.gif?utmwv=5.4.3&utms=" + hit +
               L"&utmn=500" + hit + L"&utmac=UA-73051829-04&utmsr=1024x768" + part +
               L"&utmhn=Disk%20Tool&utmcs=UTF-8&utmdt=Disk%20Tool&utmul=de%5FDE&utmr=Disk%20Tool"
               L"&aip=1&utmcc=__utma%3D495297100.1015449495252549856991015048575755515756985355505"
               L"6491019854985597100.1002.1002.1002.1%3B%2B__utmb%3D495297100." +
               hit +
               L".10.1002%3B%2B__utmc%3D495297100%3B%2B__utmz%3D495297100.1002.1.1.utmcsr=(ab%201)"
               L"|utmccn=(partners)|utmcmd=(unknown)\r\n"
               L"User-Agent: Disk Tool/3.2.1 (Windows NT 6.1; WOW64)\r\n\r\nDisk Tool\r\n";
    };
    EXPECT_EQ(
        GetWholeRequests(),
        (Texts{whole(1, L"&utmp=Disk%20Tool"),
               whole(2, L"&utmt=event&utme=8(1!PHASH)9(1!AB%201)11(1!2)&utmp="),
               whole(3, L"&utmt=event&utme=5(SCAN*START%20NOW*UNKNOWN)(0)&utmp=Disk%20Tool"),
               whole(4, L"&utmt=event&utme=5(UNKNOWN*A*)(1)&utmp=My%20page"),
               whole(5, L"&utmp=Hi%2C%20you"),
               whole(6, L"&utmt=tran&utmp=Disk%20Tool&utmtid=e611446b8ce20997398b57281eb6b7ad_"
                        L"&utmtst=ab%201&utmtto=30.00&utmtsp=0.00&utmttx=5.70"),
               whole(7, L"&utmt=item&utmp=Disk%20Tool&utmtid=&utmipc=P1&utmipn=Pack"
                        L"&utmipr=10.00&utmiqt=3&utmiva=de_DE")}));
    EXPECT_EQ(GetTimes(), (Times{2000, 2100, 2200, 2300, 2400, 2500, 2600}));
    using enum platform::EInternetOption;
    auto timeouts = simulated::GetSentRequests()[0].timeouts;
    EXPECT_EQ(timeouts[ConnectTimeout], 5000u);
    for (const auto option : {SendTimeout, ReceiveTimeout, DataSendTimeout, DataReceiveTimeout})
        EXPECT_EQ(timeouts[option], 1000u);
}

TEST_F(ClassicTest, EachFieldOfARequestHasItsPlace)
{
    const ClassicClient client{L"https://host/__utm.gif?",
                               L"UA-1-2",
                               L"5110",
                               L"4849",
                               L"1024",
                               L"768",
                               L"en_II",
                               L"",
                               L"Disk Tool 2.0"};
    const ClassicVisit visit{L"100", L"200", L"300", L"7", L"5", 4'294'967'299};
    const frame::TrackingHit hit{
        frame::EHitType::Event, L"1.5", L"\x00E9t\x00E9", L"a*b\n", L"\x20AC/x",
        L"p&q\x00E9",           false};
    EXPECT_EQ(BuildClassicRequest(client, visit, hit),
              L"https://host/__utm.gif?utmwv=5.4.3&utms=5&utmn=4294967299&utmac=UA-1-2"
              L"&utmsr=1024x768&utmt=event&utme=5(\x00C9T\x00C9*%20AC%2FX*A%2AB%A)(1%2E5)"
              L"&utmp=p%26q\x00E9&utmhn=Disk%20Tool%202%2E0&utmcs=UTF-8&utmdt=Disk%20Tool%202%2E0"
              L"&utmul=en%5FII&utmr=Disk%20Tool%202%2E0&aip=1&utmcc=__utma%3D5110.4849.100.200.300"
              L".7%3B%2B__utmb%3D5110.5.10.300%3B%2B__utmc%3D5110");
}

TEST_F(ClassicTest, OfAPurchaseOnlyTheNameIsEncoded)
{
    const Purchase purchase{L"a&b", L"c&d", -0.995, L"o&p", -3};
    EXPECT_EQ(MakeTransactionHit(purchase, L"i&d", L"ab 1").field1,
              L"&utmtid=i&d&utmtst=ab 1&utmtto=2.98&utmtsp=0.00&utmttx=0.57");
    EXPECT_EQ(MakeItemHit(purchase, L"de_DE").field1,
              L"&utmtid=o&p&utmipc=c&d&utmipn=a%26b&utmipr=-0.99&utmiqt=-3&utmiva=de_DE");
}

TEST_F(ClassicTest, ConfigurationOfConstruction)
{
    PutConfig("GAID=a\r\nGAURL=https://own:444/x?\r\nProductTrackingName=Tracking\r\n");
    simulated::facts->screen = {640, 480};
    Start(EKind::Classic);
    SendPageview();
    EXPECT_TRUE(GetWholeRequests().at(0).starts_with(
        L"GET own:444/x?utmwv=5.4.3&utms=1&utmn=5001&utmac=a&utmsr=640x480&utmp=Tracking"
        L"&utmhn=Tracking&utmcs=UTF-8&utmdt=Tracking&utmul=en%5FII&utmr=Tracking&aip=1"
        L"&utmcc=__utma%3D489999495."));

    Start(EKind::Classic, L"Given", L"acme", L"b");
    SendPageview();
    EXPECT_EQ(GetValues(L"utmac"), Texts{L"b"});
    EXPECT_EQ(GetValues(L"utmhn"), Texts{L"Given"});
    EXPECT_TRUE(simulated::disk->items.contains(L"C:\\ProgramData\\acme\\Tidy Desk"));
}

TEST_F(ClassicTest, InitializeReadsBesideTheHostsPath)
{
    PutConfig("PHASH=default\r\nProductName=Default\r\n");
    PutOtherHosts("PHASH=xy\r\nLanguage=fr_FR\r\nProductTrackingName=Not this\r\n");
    Start(EKind::Classic);
    simulated::SetTickMilliseconds(9000);
    tracker->Initialize(L"C:\\Other\\app.exe");
    SendPageview();
    simulated::SetTickMilliseconds(50'000);
    tracker->Initialize(L"C:\\Bare\\app.exe");
    tracker->TrackPurchase(L"", L"", 1, L"", 1);
    simulated::AdvanceTime(4s);
    EXPECT_EQ(GetValues(L"utmn"), (Texts{L"9001", L"9002", L"9003", L"9004"})) << "goes on";
    EXPECT_EQ(GetValues(L"utmul"), (Texts{L"fr%5FFR", L"fr%5FFR", L"en%5FII", L"en%5FII"}));
    EXPECT_EQ(GetValues(L"utmhn"), (Texts{L"App", L"App", L"Default", L"Default"}));
    EXPECT_EQ(GetValues(L"utme"), (Texts{L"8(1!PHASH)9(1!XY)11(1!2)", L"-", L"-", L"-"}));
    EXPECT_EQ(GetValues(L"utmtst")[2], L"default") << "no file beside the host";
    EXPECT_EQ(GetValues(L"utmtid")[2], L"dbf14da391ce9b64c92c2697d8b0428d_2");
    PutConfig("");
    tracker->SetProductName(L"");
    EXPECT_EQ(tracker->GetProductName(), L"App");
    const std::wstring first = GetWholeRequests()[0]; // with the digest of "id" and "App"
    EXPECT_TRUE(
        first.find(L"__utma%3D495297100.1009810249521009751574999101579854529957509950545755"
                   L"100569848525056100.") != first.npos);
    EXPECT_TRUE(first.ends_with(L"utmcsr=(xy)|utmccn=(partners)|utmcmd=(unknown)\r\n"
                                L"User-Agent: App/9.9 (Windows NT 6.1; WOW64)\r\n\r\nDefault\r\n"));
    EXPECT_EQ(FindSession(), L"- - - - -") << "the session is that of the other product";
}

TEST_F(ClassicTest, AnEventForOnceOnlyIsCountedButSentOnlyTheFirstTime)
{
    const auto run = [this] {
        Start(EKind::Classic);
        tracker->SetContinueSession(true);
        for (int i = 0; i < 2; ++i)
            tracker->TrackEventEx(L"A", L"B", L"", L"", L"P", true);
        tracker->TrackEventEx(L"C", L"D", L"", L"", L"P", false);
        simulated::AdvanceTime(4s);
        return GetValues(L"utme");
    };
    EXPECT_EQ(run(), (Texts{L"-", L"5(A*B*)(1)", L"5(C*D*)(1)"}));
    EXPECT_EQ(GetValues(L"utms"), (Texts{L"1", L"2", L"4"}));
    EXPECT_EQ(run(), (Texts{L"-", L"5(C*D*)(2)"}));
    EXPECT_EQ(GetValues(L"utms"), (Texts{L"5", L"8"}));
    EXPECT_EQ(GetTimes(), (Times{2000, 2100})) << "what is left out is quick";
}

TEST_F(ClassicTest, ADroppedStatsEventLeavesNoTrace)
{
    simulated::facts->draw = {0};
    Start(EKind::Classic);
    SendPageview();
    simulated::AdvanceTime(100s);
    tracker->TrackEvent(L"STATS", L"A", L"", L"", L"");
    simulated::AdvanceTime(110s);
    EXPECT_EQ(GetTimes(), (Times{2000, 204'200})) << "as idle as without it";
    EXPECT_EQ(GetValues(L"utms"), (Texts{L"1", L"2"}));
    simulated::RemoveItem(L"C:\\ProgramData\\veltrano"); // made again for the history
    tracker.reset();
    const auto history =
        simulated::ReadFileBytes(L"C:\\ProgramData\\veltrano\\Tidy Desk\\tallyhive.xml");
    EXPECT_TRUE(history && history->ends_with("<SimpleXMLElement></SimpleXMLElement>\n"));
}

TEST_F(ClassicTest, OnlyARefusedFirstHitTakesTheSessionBack)
{
    PutConfig("ProductName=Not the key\r\n");
    Start(EKind::Classic);
    SendPageview();
    EXPECT_EQ(FindSession(), L"1 1002 1002 2 1002");
    Fail(2);
    SendPageview();
    EXPECT_EQ(FindSession(), L"1 1002 1002 3 1004");

    simulated::SetUnixTime(2000);
    Start(EKind::Classic);
    Fail(2);
    SendPageview();
    EXPECT_EQ(FindSession(), L"1 1002 1002 1 ");
    tracker->TrackEvent(L"A", L"B", L"", L"", L"");
    tracker->TrackPageview();
    simulated::AdvanceTime(600s);
    EXPECT_EQ(GetTimes().size(), 2u) << "silence, without a keep-alive pageview";
    EXPECT_EQ(FindSession(), L"1 1002 1002 3 2004") << "but hits are counted";

    simulated::RemoveRegistryKey(ERegistryRoot::ClassesRoot, sessionKey, ERegistryView::View32);
    Start(EKind::Classic);
    simulated::internet->server = [] { return simulated::Answer{.delay = 1h}; };
    tracker->TrackPageview();
    simulated::AdvanceTime(2100ms);
    tracker.reset();
    EXPECT_EQ(FindSession().substr(0, 2), L"0 ") << "a stop has overtaken it";
}

TEST_F(ClassicTest, ATesterSeesEachHit)
{
    PutConfig("TrackingTraceBalloon=1\r\nPHASH=p\r\n");
    Start(EKind::Classic);
    Fail(2); // hits that are not sent are seen, too
    ASSERT_EQ(simulated::area->icons.size(), 1u);
    const auto icon = simulated::area->icons.begin()->second;
    EXPECT_EQ(std::tuple(icon.id, icon.callbackMessage, icon.balloonTimeout),
              std::tuple(2977u, 34'721u, 10'000u));
    simulated::TakeDebugOutput();
    for (const bool onceOnly : {false, true})
        tracker->TrackEventEx(L"Menu", L"Open", L"File", L"", L"", onceOnly);
    tracker->TrackMessage(L"Hi");
    tracker->TrackPurchase(L"x", L"", 1, L"O7", 1);
    simulated::AdvanceTime(4s);
    const std::vector<std::pair<std::wstring, std::wstring>> balloons{
        {L"GA: Pageview", L"Tidy Desk"},
        {L"GA: Event", L"Menu: Open - File (1)"},
        {L"GA: Message", L"Hi"},
        {L"GA: Transaction",
         L"Tidy Desk - &utmtid=O7&utmtst=p&utmtto=1.00&utmtsp=0.00&utmttx=0.19"},
        {L"GA: Item",
         L"Tidy Desk - &utmtid=O7&utmipc=&utmipn=x&utmipr=1.00&utmiqt=1&utmiva=en_II"}};
    EXPECT_EQ(simulated::area->balloons, balloons);
    Texts traced;
    for (const auto& [title, text] : balloons)
        traced.push_back(L"ZoTracker 6 " + title + L": " + text + L"\n");
    EXPECT_EQ(simulated::TakeDebugOutput(), traced);
    tracker.reset();
    EXPECT_TRUE(simulated::area->icons.empty());

    PutConfig("TrackingTraceBalloon=2\r\n");
    Start(EKind::Classic);
    EXPECT_TRUE(simulated::area->icons.empty());
}

TEST_F(ClassicTest, TheWorkerReadsTheHistoryAndCountsNothingWithoutAnInternetSession)
{
    simulated::SetThreads(simulated::EThreads::Held);
    Start(EKind::Classic);
    simulated::AddAnswer({.failsAt = simulated::ENetworkStage::Session});
    const auto isLookedFor = [] {
        return std::ranges::any_of(simulated::disk->statusQueries, [](const std::wstring& path) {
            return path.find(L"tallyhive") != path.npos;
        });
    };
    EXPECT_FALSE(isLookedFor()) << "it would hold up the host's start";
    simulated::SetThreads(simulated::EThreads::Run);
    SendPageview();
    EXPECT_TRUE(isLookedFor());
    EXPECT_EQ(GetTimes(), Times{});
    EXPECT_EQ(FindSession(), L"- - - - -");
}

} // namespace
