#include "tests/unit/trackers/TrackerFixture.h"
#include "text/Case.h"

#include <regex>

using simulated::ENetworkStage;

namespace {

// All that may leave the process, on a computer without identifiers whose host says what SayAll()
// says. Another key, or another value of a key, has to be put here and in docs/privacy.md first.
const Each<std::wregex> allowed{
    .classic = std::wregex(
        LR"(GET collect\.zotracker\.example:443/__utm\.gif\?utmwv=5\.4\.3&utms=\d&utmn=\d+)"
        LR"(&utmac=UA-73051829-04&utmsr=1024x768(&utmt=(event&utme=(5\(CAT\*ACT\*LAB\)\(7\)|)"
        LR"(5\(TRACKER\*(DE)?ACTIVATED\*\)\(1\)|8\(1!PHASH\)9\(1!AB\)11\(1!2\))|tran|item))?)"
        LR"(&utmp=(Tidy%20Desk|Page|Message)?(&utmtid=Order(&utmtst=ab&utmtto=10\.00&utmtsp=0\.00)"
        LR"(&utmttx=1\.90|&utmipc=Code&utmipn=Item&utmipr=5\.00&utmiqt=2&utmiva=de_DE))?)"
        LR"(&utmhn=Tidy%20Desk&utmcs=UTF-8&utmdt=Tidy%20Desk&utmul=de%5FDE&utmr=Tidy%20Desk&aip=1)"
        LR"(&utmcc=__utma%3D\d{9}\.\d{64,96}\.\d+\.\d+\.\d+\.1%3B%2B__utmb%3D\d{9}\.\d\.10\.\d+)"
        LR"(%3B%2B__utmc%3D\d{9}%3B%2B__utmz%3D\d{9}\.\d+\.1\.1\.utmcsr=\(ab\)\|utmccn=\(partners\))"
        LR"(\|utmcmd=\(unknown\)\r\nUser-Agent: Tidy Desk/3\.2\.1 \(Windows NT 6\.1; WOW64\)\r\n)"
        LR"(\r\nTidy Desk\r\n)"),
    .ua = std::wregex(
        LR"(POST collect\.zotracker\.example:443/collect\?z=\d+\r\nAccept: \*/\*\r\n)"
        LR"(Content-Type: text/plain; charset=utf-8\r\n)"
        LR"(User-Agent: Tidy Desk/3\.2\.1 \(Windows NT 6\.1; WOW64\)\r\n)"
        LR"(https://collect\.zotracker\.example/collect\?z=\d+\r\nZOHTTPCOM_SESSION\r\n)"
        LR"(v=1&tid=UA-1&aip=1&ds=Desk%2Eexe&cid=[0-9a-f]{32}&uid=[0-9a-f]{32}&cs=ab)"
        LR"(&cn=%28partners%29&cm=%28direct%29&sr=1024x768&ul=de%5FDE&cd=Tidy%20Desk)"
        LR"(&t=(pageview&dp=%2F(Tidy%20Desk|Message)|event&ec=Cat&ea=Act&el=Lab&ev=7|)"
        LR"(event&ec=TRACKER&ea=(DE)?ACTIVATED|(transaction|item)&dp=%2FTidy%20Desk&ti=Order&ta=ab)"
        LR"((&tr=10\.00|&in=Code&ip=5\.00&iq=2))(&sc=start)?)"),
    .kpi = std::wregex( // of the computer's name the first letters, as their codes in "uid"
        LR"(GET kpi\.zotracker\.example:443/piwik\.php\?send_image=0&rec=1&apiv=1&idsite=1)"
        LR"(&ua=Tidy%20Desk/3\.2\.1%20\(Windows%20NT%206\.1;%20WOW64\)&url=www\.zotracker\.example)"
        LR"(&uid=\d{32}&lang=de%2Dus&rand=\d+&_rcn=ab&_rck=)"
        LR"(&_cvar=\{"1":\["product",%20"Tidy%20Desk"\]\})"
        LR"((&e_c=(Cat&e_a=Act&e_n=Lab&e_v=7|TRACKER&e_a=(DE)?ACTIVATED&e_n=&e_v=))?)"
        LR"(\r\nUser-Agent: Tidy Desk/3\.2\.1 \(Windows NT 6\.1; WOW64\)\r\n\r\nTidy Desk\r\n)")};

class PrivacyTest : public TrackerFixture, public testing::WithParamInterface<EKind>
{
protected:
    // The fixture's host on a computer that knows nothing yet, and whose owner's name is in every
    // path and in the computer's own name.
    PrivacyTest()
    {
        simulated::registry.Reset();
        simulated::facts->executable = L"C:\\Users\\Marie Curie\\Apps\\Desk.exe";
        simulated::facts->specialFolders[35] = L"D:\\Marie\\All";
        simulated::facts->computerName = L"CURIE-PC";
        simulated::facts->adapters = {{6, "10.1.2.3", {0x0A, 0x1B, 0x2C, 0x3D, 0x4E, 0x5F}}};
        PutVersion(simulated::facts->executable, L"Tidy Desk", L"3.2.1");
        Configure("1");
    }

    static void Configure(const std::string& on)
    {
        simulated::PutFile(L"C:\\Users\\Marie Curie\\Apps\\install.cfg",
                           "[install]\r\ntracking=" + on +
                               "\r\nProductName=Tidy Desk\r\nPHASH=ab\r\nLanguage=de_DE\r\n"
                               "TrackingTraceBalloon=1\r\n[UA]\r\nId=UA-1\r\nEnabled=" +
                               on);
    }

    void SayAll()
    {
        tracker->SetContinueSession(false);
        tracker->TrackPageview();
        tracker->TrackEvent(L"Cat", L"Act", L"Lab", L"7", L"Page");
        tracker->TrackMessage(L"Message");
        tracker->TrackPurchase(L"Item", L"Code", 5, L"Order", 2);
    }
};

INSTANTIATE_TEST_SUITE_P(All, PrivacyTest, testing::Values(EKind::Classic, EKind::Ua, EKind::Kpi));

TEST_P(PrivacyTest, NothingButTheListedLeavesTheProcess)
{
    Start(GetParam());
    SayAll();
    if (GetParam() != EKind::Ua) // which sends nothing once it is off
        tracker->SetTrackingEnabled(false);
    simulated::AdvanceTime(4s);
    Configure("0");
    tracker->SetTrackingEnabled(true);
    simulated::AdvanceTime(400s);
    EXPECT_GE(GetTimes().size(), 7u);
    for (const std::wstring& request : GetWholeRequests())
        EXPECT_TRUE(std::regex_match(request, allowed.Of(GetParam()))) << request;
}

TEST_P(PrivacyTest, NeitherRequestsNorTracesTellOfTheUserOrTheMachine)
{
    for (const ENetworkStage stage :
         {ENetworkStage::None, ENetworkStage::Session, ENetworkStage::Connect,
          ENetworkStage::OpenRequest, ENetworkStage::AddHeaders, ENetworkStage::Send,
          ENetworkStage::EndRequest, ENetworkStage::Read, ENetworkStage::CloseRequest})
    {
        Start(GetParam());
        for (const std::uint32_t status : {200u, 302u, 404u})
            simulated::AddAnswer({.failsAt = stage,
                                  .status = status,
                                  .location = L"https://collect.zotracker.example/elsewhere"});
        SayAll();
        tracker->Initialize(simulated::facts->executable.c_str());
        simulated::AdvanceTime(60s);
        tracker.reset();
        for (const auto root : {ERegistryRoot::ClassesRoot, ERegistryRoot::CurrentUser})
            simulated::SetRegistryDenial(root, ERegistryDenial::Creating);
    }
    Texts said = simulated::TakeDebugOutput();
    EXPECT_EQ(said.empty(), GetParam() == EKind::Kpi);
    for (const auto& [title, text] : simulated::area->balloons)
        said.insert(said.end(), {title, text});
    for (const std::wstring& request : GetWholeRequests())
        said.push_back(request);
    for (std::wstring& text : said)
    {
        text::MakeUpper(text);
        for (const wchar_t* secret : {L"MARIE", L"CURIE", L":\\", L"%5C", L"0A:1B", L"0A%3A1B",
                                      L"0A1B2C", L"0A-1B", L"10.1.2.3", L"GENU", L"6C65746E"})
            EXPECT_EQ(text.find(secret), text.npos) << text;
    }
}

TEST_P(PrivacyTest, NothingGoesOutAndNothingIsShownBeforeConsent)
{
    for (const char* on : {"", "0", "2"})
    {
        Configure(on);
        if (*on == 0)
            simulated::RemoveItem(L"C:\\Users\\Marie Curie\\Apps\\install.cfg");
        Start(GetParam());
        SayAll();
        simulated::AdvanceTime(500s);
        SayAll();
        tracker.reset();
        EXPECT_EQ(GetTimes(), Times{}) << on;
        EXPECT_TRUE(simulated::area->balloons.empty()) << on;
    }
}

} // namespace
