#include "tests/unit/trackers/TrackerFixture.h"
#include "trackers/ua/UaPayload.h"

namespace {

using UaTest = TrackerFixture;

TEST_F(UaTest, WholeRequests)
{
    simulated::facts->screen = {1920, 1080};
    Start(EKind::Ua);
    tracker->TrackPageview();
    tracker->TrackEvent(nullptr, L"", nullptr, L"5 %", L"");
    tracker->TrackEventEx(L"S&n", L"A b", L"l-x", L"abc", L"", true);
    tracker->TrackEventEx(L"", L"A", L"", L"", L"", true);
    tracker->TrackMessage(L"a=b you");
    tracker->TrackPurchase(L"Pack", L"P#1", 10.0, L"", 2);
    tracker->TrackPurchase(L"Pack", L"", 0.5, L"o 1", 1);
    simulated::AdvanceTime(4s);
    EXPECT_EQ(GetTexts(L"&t="),
              (Texts{L"&t=pageview&dp=%2FDisk%20Tool",
                     L"&t=event&ec=unknown&ea=unknown&el=unknown&ev=5 %",
                     L"&t=event&ec=S%26n&ea=A%20b&el=l%2Dx", L"&t=event&ec=unknown&ea=A",
                     L"&t=pageview&dp=%2Fa%3Db%20you",
                     L"&t=transaction&dp=%2FDisk%20Tool&ti=0123456789abcdef0123456789abcdef%5F5000"
                     L"&ta=ab%201&tr=20.00",
                     L"&t=item&dp=%2FDisk%20Tool&ti=0123456789abcdef0123456789abcdef%5F5000"
                     L"&ta=ab%201&in=P%231&ip=10.00&iq=2",
                     L"&t=transaction&dp=%2FDisk%20Tool&ti=o%201&ta=ab%201&tr=0.50",
                     L"&t=item&dp=%2FDisk%20Tool&ti=o%201&ta=ab%201&in=&ip=0.50&iq=1"}));
    EXPECT_EQ(GetTimes(), (Times{2000, 2050, 2100, 2150, 2200, 2250, 2300, 2350, 2400}));

    EXPECT_EQ(GetWholeRequests()[0],
              L"POST collect.zotracker.example:443/collect?z=7000\r\n"
              L"Accept: */*\r\nContent-Type: text/plain; charset=utf-8\r\n"
              L"User-Agent: Disk Tool/3.2.1 (Windows NT 6.1; WOW64)\r\n"
              L"https://collect.zotracker.example/collect?z=7000\r\nZOHTTPCOM_SESSION\r\n"
              L"v=1&tid=UA-1&aip=1&ds=Host%2Eexe&cid=0123456789abcdef0123456789abcdef"
              L"&uid=e611446b8ce20997398b57281eb6b7ad&cs=ab%201&cn=%28partners%29&cm=%28direct%29"
              L"&sr=1920x1080&ul=de%5FDE&cd=Disk%20Tool&t=pageview&dp=%2FDisk%20Tool");
}

TEST_F(UaTest, EmptyFieldsAreLeftOutOrEmpty)
{
    using enum frame::EHitType;
    const std::pair<frame::EHitType, const wchar_t*> cases[] = {
        {Message, L"C&t=pageview&dp=%2F"},
        {Event, L"C&t=event&ec=&ea="},
        {Transaction, L"C&t=transaction&dp=%2FN%20M&ti="},
        {Item, L"C&t=item&dp=%2FN%20M&ti=&in="},
        {CustomVariable, L""}};
    for (const auto& [type, payload] : cases)
        EXPECT_EQ(trackers::BuildHitPayload(L"C", L"N M", {.type = type}), payload);
}

TEST_F(UaTest, ConfigurationOfConstruction)
{
    PutConfig("", "[UA]\r\nEnabled=1\r\nURL=https://own/p\r\nVersion=2\r\nId=X\r\n");
    Start(EKind::Ua, L"Given", L"", L"Y");
    SendPageview();
    EXPECT_TRUE(GetWholeRequests().at(0).starts_with(L"POST own:443/p?z=7000\r\n"));
    EXPECT_TRUE(GetTexts(L"&v=").at(0).starts_with(L"&v=2&tid=Y&aip=1"));
    EXPECT_EQ(GetValues(L"cd"), Texts{L"Given"});
    EXPECT_EQ(GetValues(L"cs"), Texts{L""});

    PutConfig("", "[UA]\r\nEnabled=1\r\n"); // no tracking id
    Start(EKind::Ua);
    SendPageview();
    EXPECT_EQ(simulated::TakeDebugOutput(),
              Texts{L"ZoTracker 3 ERROR UA ### No tracking-id found\n"});
    EXPECT_EQ(GetTimes(), Times{});
}

TEST_F(UaTest, InitializeReadsBesideTheHostsPath)
{
    PutOtherHosts("phash=xy\r\nProductName=Other Name\r\n",
                  "[UA]\r\nEnabled=1\r\nURL=https://other/x\r\nId=Z\r\n");
    simulated::SetThreads(simulated::EThreads::Held);
    Start(EKind::Ua);
    simulated::facts->screen = {1, 2};
    tracker->Initialize(L"C:\\Other\\app.exe");
    simulated::SetThreads(simulated::EThreads::Run);
    EXPECT_EQ(tracker->GetProductName(), L"Disk Tool") << "the name is the host's to set";
    tracker->SetProductName(nullptr);
    tracker->TrackPurchase(L"", L"", 1, L"o", 1);
    simulated::AdvanceTime(3s);
    const auto request = simulated::GetSentRequests().at(0);
    EXPECT_EQ(request.host, L"other");
    EXPECT_TRUE(
        request.headers.ends_with(L"\r\nUser-Agent: Other Name/3.2.1 (Windows NT 6.1; WOW64)\r\n"));
    EXPECT_TRUE(request.body.starts_with("v=1&tid=UA-1&aip=1&ds=Host%2Eexe&")) << "as at load";
    EXPECT_EQ(GetTexts(L"&cs=")[0],
              L"&cs=ab%201&cn=%28partners%29&cm=%28direct%29&sr=1024x768&ul=de%5FDE&cd=Disk%20Tool"
              L"&t=transaction&dp=%2FOther%20Name&ti=o&ta=xy&tr=1.00");

    tracker->Initialize(L"C:\\Bare\\app.exe");
    tracker->SetProductName(L"");
    EXPECT_EQ(tracker->GetProductName(), L"App");
    EXPECT_TRUE(tracker->IsTrackingEnabled()) << "as the last configuration file said";
    PutConfig("", "[UA]\r\nEnabled=0\r\n", L"C:\\Other\\install.cfg");
    tracker->Initialize(L"C:\\Other\\app.exe");
    EXPECT_FALSE(tracker->IsTrackingEnabled());
    PutConfig("", "[UA]\r\nEnabled=0\r\n");
    tracker->SetTrackingEnabled(true);
    EXPECT_EQ(simulated::ReadFileBytes(configPath),
              "[install]\r\ntracking=1\r\n[UA]\r\nEnabled=1\r\n");
}

TEST_F(UaTest, OneHitStartsASession)
{
    Start(EKind::Ua);
    for (const bool continues : {true, false})
    {
        tracker->SetContinueSession(continues);
        tracker->TrackPageview();
        SendPageview();
    }
    EXPECT_EQ(GetValues(L"sc"), (Texts{L"-", L"-", L"start", L"-"}));
}

TEST_F(UaTest, ClientIdIsMadeOnceAndFoundAgain)
{
    const std::wstring made =
        L"c67ef7ed7a27d35b3b8822d9299908c5"; // digest of the product user id and the tick
    const auto run = [this](const wchar_t* ofTheMachine) {
        if (ofTheMachine != nullptr)
            simulated::PutRegistryText(ERegistryRoot::ClassesRoot, clientKey,
                                       ERegistryView::Default, L"CID", ofTheMachine);
        Start(EKind::Ua);
        tracker->TrackPurchase(L"", L"", 1, L"", 1);
        simulated::AdvanceTime(4s);
        return GetValues(L"cid").at(0);
    };
    simulated::SetTickMilliseconds(0xFFFFF000);
    simulated::RemoveRegistryKey(ERegistryRoot::CurrentUser, clientKey, ERegistryView::Default);
    EXPECT_EQ(run(nullptr), made);
    EXPECT_TRUE(GetTexts()[0].starts_with(L"/collect?z=-2096&"));
    EXPECT_EQ(simulated::FindRegistryText(ERegistryRoot::ClassesRoot, clientKey,
                                          ERegistryView::View32, L"CID"),
              made);
    EXPECT_EQ(run(nullptr), made) << "a second run";
    EXPECT_EQ(run(L"machine"), L"machine") << "the machine's comes first";
    for (const auto root : {ERegistryRoot::ClassesRoot, ERegistryRoot::CurrentUser})
        simulated::SetRegistryDenial(root, ERegistryDenial::Setting);
    const std::wstring ofThisRun = run(L"");
    EXPECT_NE(ofThisRun, made) << "an empty one counts as none";
    EXPECT_EQ(GetValues(L"ti"), Texts(2, ofThisRun + L"%5F7904"));
}

TEST_F(UaTest, TwoResultsInARowWithoutAConnectionEndDelivery)
{
    const auto send = [this](bool connected, const wchar_t* text) {
        simulated::internet->connected = {connected, connected ? 0 : 87};
        tracker->TrackMessage(text);
        simulated::AdvanceTime(4s);
    };
    for (const bool connected : {true, false})
    {
        Start(EKind::Ua);
        send(false, L"lost");
        send(connected, L"sent");
        send(true, L"sent");
        simulated::AdvanceTime(connected ? 0s : 600s);
        EXPECT_EQ(GetTexts(L"&dp="), Texts(connected ? 2 : 0, L"&dp=%2Fsent"));
    }
}

} // namespace
