#include "tests/simulated/Files.h"
#include "tests/simulated/Registry.h"
#include "tests/simulated/SystemFacts.h"
#include "tests/unit/trackers/TrackerFixture.h"
#include "text/Case.h"

#include <algorithm>
#include <map>
#include <regex>
#include <set>
#include <sstream>

using namespace std::chrono_literals;
using simulated::ENetworkStage;

namespace {

// All that may leave the process, on a computer without identifiers whose host says what SayAll()
// says. Another key, or another value of a key, has to be put here and in docs/privacy.md first.
using Allowed = std::map<std::string, const char*>; // key to the pattern of its whole value

#define AGENT "Tidy Desk/3\\.2\\.1 \\(Windows NT 6\\.1; WOW64\\)"
#define DIGEST "[0-9a-f]{32}"

const Allowed allowedOfClassic = {
    {"agent", "Tidy Desk"},
    {"verb", "GET"},
    {"host", "collect\\.zotracker\\.example"},
    {"path", "/__utm\\.gif"},
    {"User-Agent", AGENT},
    {"utmwv", "5\\.4\\.3"},
    {"utms", "\\d"},
    {"utmn", "\\d+"},
    {"utmac", "UA-73051829-04"},
    {"utmsr", "1024x768"},
    {"utmt", "event|tran|item"},
    {"utme", "5\\(CAT\\*ACT\\*LAB\\)\\(7\\)|5\\(TRACKER\\*(DE)?ACTIVATED\\*\\)\\(1\\)|"
             "8\\(1!PHASH\\)9\\(1!AB\\)11\\(1!2\\)"},
    {"utmp", "|Tidy%20Desk|Page|Message"},
    {"utmtid", "Order"},
    {"utmtst", "ab"},
    {"utmtto", "10\\.00"},
    {"utmtsp", "0\\.00"},
    {"utmttx", "1\\.90"},
    {"utmipc", "Code"},
    {"utmipn", "Item"},
    {"utmipr", "5\\.00"},
    {"utmiqt", "2"},
    {"utmiva", "de_DE"},
    {"utmhn", "Tidy%20Desk"},
    {"utmcs", "UTF-8"},
    {"utmdt", "Tidy%20Desk"},
    {"utmul", "de%5FDE"},
    {"utmr", "Tidy%20Desk"},
    {"aip", "1"},
    {"utmcc", "__utma%3D\\d{9}\\.\\d{64,96}\\.\\d+\\.\\d+\\.\\d+\\.1%3B%2B"
              "__utmb%3D\\d{9}\\.\\d\\.10\\.\\d+%3B%2B__utmc%3D\\d{9}%3B%2B"
              "__utmz%3D\\d{9}\\.\\d+\\.1\\.1\\.utmcsr=\\(ab\\)\\|utmccn=\\(partners\\)\\|"
              "utmcmd=\\(unknown\\)"}};

const Allowed allowedOfUa = {{"agent", "ZOHTTPCOM_SESSION"},
                             {"verb", "POST"},
                             {"host", "collect\\.zotracker\\.example"},
                             {"path", "/collect"},
                             {"referrer", "https://collect\\.zotracker\\.example/collect\\?z=\\d+"},
                             {"Accept", "\\*/\\*"},
                             {"Content-Type", "text/plain; charset=utf-8"},
                             {"User-Agent", AGENT},
                             {"z", "\\d+"},
                             {"v", "1"},
                             {"tid", "UA-1"},
                             {"aip", "1"},
                             {"ds", "Desk%2Eexe"},
                             {"cid", DIGEST},
                             {"uid", DIGEST},
                             {"cs", "ab"},
                             {"cn", "%28partners%29"},
                             {"cm", "%28direct%29"},
                             {"sr", "1024x768"},
                             {"ul", "de%5FDE"},
                             {"cd", "Tidy%20Desk"},
                             {"t", "pageview|event|transaction|item"},
                             {"dp", "%2F(Tidy%20Desk|Message)"},
                             {"ec", "Cat|TRACKER"},
                             {"ea", "Act|(DE)?ACTIVATED"},
                             {"el", "Lab"},
                             {"ev", "7"},
                             {"ti", "Order"},
                             {"ta", "ab"},
                             {"tr", "10\\.00"},
                             {"in", "Code"},
                             {"ip", "5\\.00"},
                             {"iq", "2"},
                             {"sc", "start"}};

const Allowed allowedOfKpi = {
    {"agent", "Tidy Desk"},
    {"verb", "GET"},
    {"host", "kpi\\.zotracker\\.example"},
    {"path", "/piwik\\.php"},
    {"User-Agent", AGENT},
    {"send_image", "0"},
    {"rec", "1"},
    {"apiv", "1"},
    {"idsite", "1"},
    {"ua", "Tidy%20Desk/3\\.2\\.1%20\\(Windows%20NT%206\\.1;%20WOW64\\)"},
    {"url", "www\\.zotracker\\.example"},
    {"uid", "\\d{32}"}, // of the computer's name the first letters, as their codes
    {"lang", "de%2Dus"},
    {"rand", "\\d+"},
    {"_rcn", "ab"},
    {"_rck", ""},
    {"_cvar", "\\{\"1\":\\[\"product\",%20\"Tidy%20Desk\"\\]\\}"},
    {"e_c", "Cat|TRACKER"},
    {"e_a", "Act|(DE)?ACTIVATED"},
    {"e_n", "|Lab"},
    {"e_v", "|7"}};

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
        simulated::SetVersionInfo(simulated::facts->executable,
                                  {{{0x409, 1200}},
                                   {{L"\\StringFileInfo\\040904b0\\ProductName", L"Tidy Desk"},
                                    {L"\\StringFileInfo\\040904b0\\ProductVersion", L"3.2.1"}}});
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

    // What the requests say, key by key.
    static std::vector<std::pair<std::string, std::string>> TakeApart()
    {
        std::vector<std::pair<std::string, std::string>> all;
        for (const auto& request : simulated::GetSentRequests())
        {
            const auto put = [&](const std::string& key, const std::wstring& value) {
                if (!value.empty())
                    all.emplace_back(key, std::string(value.begin(), value.end()));
            };
            const std::wstring& object = request.object;
            put("agent", request.agent);
            put("verb", request.verb);
            put("host", request.host);
            put("path", object.substr(0, object.find(L'?')));
            put("referrer", request.referrer);
            const auto putLines = [&](const std::wstring& text, char end, const char* sign) {
                std::istringstream lines(std::string(text.begin(), text.end()));
                for (std::string line; std::getline(lines, line, end);)
                {
                    line.erase(line.find_last_not_of('\r') + 1);
                    const std::size_t found = std::min(line.find(sign), line.size());
                    all.emplace_back(
                        line.substr(0, found),
                        line.substr(std::min(line.size(), found + std::string(sign).size())));
                }
            };
            putLines(request.headers, '\n', ": ");
            putLines(GetText(request).substr(object.find(L'?') + 1), '&', "=");
        }
        return all;
    }
};

INSTANTIATE_TEST_SUITE_P(All, PrivacyTest, testing::Values(EKind::Classic, EKind::Ua, EKind::Kpi));

TEST_P(PrivacyTest, NothingButTheListedLeavesTheProcess)
{
    const Allowed& allowed = GetParam() == EKind::Classic ? allowedOfClassic
                             : GetParam() == EKind::Ua    ? allowedOfUa
                                                          : allowedOfKpi;
    StartKind(GetParam());
    SayAll();
    if (GetParam() != EKind::Ua) // which sends nothing once it is off
        tracker->SetTrackingEnabled(false);
    simulated::AdvanceTime(4s);
    Configure("0");
    tracker->SetTrackingEnabled(true);
    simulated::AdvanceTime(400s);
    std::set<std::string> seen;
    for (const auto& [key, value] : TakeApart())
    {
        seen.insert(key);
        const auto found = allowed.find(key);
        EXPECT_TRUE(found != allowed.end() && std::regex_match(value, std::regex(found->second)))
            << key << " = " << value;
    }
    for (const auto& [key, pattern] : allowed)
        EXPECT_TRUE(seen.contains(key)) << key;
}

TEST_P(PrivacyTest, NeitherRequestsNorTracesTellOfTheUserOrTheMachine)
{
    for (const ENetworkStage stage :
         {ENetworkStage::None, ENetworkStage::Session, ENetworkStage::Connect,
          ENetworkStage::OpenRequest, ENetworkStage::AddHeaders, ENetworkStage::Send,
          ENetworkStage::EndRequest, ENetworkStage::Read, ENetworkStage::CloseRequest})
    {
        StartKind(GetParam());
        for (const std::uint32_t status : {200u, 302u, 404u})
        {
            simulated::Answer answer;
            answer.failsAt = stage;
            answer.status = status;
            answer.location = L"https://collect.zotracker.example/elsewhere";
            simulated::AddAnswer(answer);
        }
        SayAll();
        tracker->Initialize(simulated::facts->executable.c_str());
        simulated::AdvanceTime(60s);
        tracker.reset();
        for (const auto root :
             {platform::ERegistryRoot::ClassesRoot, platform::ERegistryRoot::CurrentUser})
            simulated::SetRegistryDenial(root, simulated::ERegistryDenial::Creating);
    }
    Texts said = simulated::TakeDebugOutput();
    EXPECT_EQ(said.empty(), GetParam() == EKind::Kpi);
    for (const auto& [title, text] : simulated::area->balloons)
        said.insert(said.end(), {title, text});
    for (const auto& [key, value] : TakeApart())
        said.emplace_back(value.begin(), value.end());
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
        StartKind(GetParam());
        SayAll();
        simulated::AdvanceTime(500s);
        SayAll();
        tracker.reset();
        EXPECT_EQ(GetTexts(), Texts{}) << on;
        EXPECT_TRUE(simulated::area->balloons.empty()) << on;
    }
}

} // namespace
