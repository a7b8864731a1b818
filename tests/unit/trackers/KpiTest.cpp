#include "tests/unit/trackers/TrackerFixture.h"
#include "trackers/kpi/KpiUserId.h"

namespace {

class KpiTest : public TrackerFixture
{
protected:
    // The bytes of a text value.
    static std::vector<std::uint8_t> FindUser(ERegistryRoot root)
    {
        const auto value =
            simulated::FindRegistryValue(root, kpiUserKey, ERegistryView::View32, L"ID");
        return value && value->type == platform::registrySz ? value->bytes
                                                            : std::vector<std::uint8_t>();
    }
};

TEST_F(KpiTest, WholeRequests)
{
    PutConfig("ProductName=Disk Tool\r\nlanguage=DE_DE\r\nPHASH=ab-1\r\nKPISource=so/urce\r\n"
              "kpisite=1-7\r\n");
    Start(EKind::Kpi);
    tracker->TrackPageview();
    tracker->TrackEvent(L"a&b", L"c-d", L"e&-", L"5 %", L"");
    tracker->TrackEventEx(L"", L"A", L"", L"", L"", true);
    tracker->TrackMessage(L"Hello");
    tracker->TrackPurchase(L"Pack", L"P1", 10.0, L"", 2);
    simulated::AdvanceTime(4s);

    const auto whole = [](int rand, const std::wstring& event) {
        return L"GET kpi.zotracker.example:443/piwik.php?send_image=0&rec=1&apiv=1&idsite=1-7"
               L"&ua=Disk%20Tool/3.2.1%20(Windows%20NT%206.1;%20WOW64)&url=www.zotracker.example"
               L"&uid=0123456789abcdef0123456789abcdef&lang=de%2Dus&rand=" +
               std::to_wstring(rand) +
               L"&_rcn=ab-1&_rck=so/urce&_cvar={\"1\":[\"product\",%20\"Disk%20Tool\"]}" + event +
               L"\r\nUser-Agent: Disk Tool/3.2.1 (Windows NT 6.1; WOW64)\r\n\r\nDisk Tool\r\n";
    };
    EXPECT_EQ(GetWholeRequests(),
              (Texts{whole(7000, L""), whole(7100, L"&e_c=a%26b&e_a=c%2Dd&e_n=e%26%2D&e_v=5%20%"),
                     whole(7200, L"&e_c=unknown&e_a=A&e_n=&e_v="), whole(7300, L""),
                     whole(7400, L""), whole(7500, L"")}));
    EXPECT_EQ(
        simulated::GetSentRequests()[0].timeouts.at(platform::EInternetOption::ConnectTimeout),
        5000u);
}

TEST_F(KpiTest, ConfigurationOfConstruction)
{
    const std::tuple<const char*, const char*, std::uint16_t, const wchar_t*, const wchar_t*>
        cases[] = {
            {"", "", 0x0409, L"kpi.zotracker.example:443/piwik.php?send_image", L"en%2Dus"},
            {"", "[web]\r\nPIWIKURL=http://h/p?x=1\r\n", 0x0407, L"h:443/p?x=1&send_image",
             L"en%2Dde"},
            {"language=d\r\n", "", 0x0455, L"kpi.zotracker.example:443/piwik.php?",
             L"d%2D%5B455%5D"},
        };
    for (const auto& [install, web, languageId, begin, lang] : cases)
    {
        PutConfig(install, web);
        simulated::facts->languageId = languageId;
        Start(EKind::Kpi);
        SendPageview();
        EXPECT_TRUE(GetWholeRequests().at(0).starts_with(std::wstring(L"GET ") + begin));
        EXPECT_EQ(GetValues(L"lang"), Texts{lang});
        EXPECT_EQ(GetValues(L"_rcn"), Texts{L""});
        EXPECT_EQ(GetValues(L"_rck"), Texts{L""});
    }
}

TEST_F(KpiTest, WithoutASiteNothingIsSentOrSwitchedOn)
{
    PutConfig("kpisite=00\r\n");
    Start(EKind::Kpi);
    EXPECT_TRUE(tracker->IsTrackingEnabled()) << "a site, after all";
    PutConfig("kpisite=0\r\n");
    Start(EKind::Kpi);
    EXPECT_FALSE(tracker->IsTrackingEnabled());
    simulated::PutFile(configPath, "[install]\r\ntracking=0\r\nkpisite=0\r\n");
    tracker->SetTrackingEnabled(true);
    EXPECT_FALSE(tracker->IsTrackingEnabled());
}

TEST_F(KpiTest, InitializeReadsBesideTheHostsPath)
{
    PutOtherHosts("PHASH=xy\r\nProductName=Name\r\nProductTrackingName=Tracking Name\r\n");
    Start(EKind::Kpi);
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

TEST_F(KpiTest, AUserIdOverlapsItsPieces)
{
    const std::tuple<std::uint32_t, std::int64_t, const wchar_t*, const wchar_t*> cases[] = {
        {123456789, 1500000000, L"d", L"12345678915000000010010010010010"},
        {1234567890, 1500000000, L"\x0416", L"12345678901500000000104610461046"},
        {4294967295, 1500000000, L"AB", L"-1156566656665666566656665666566"},
        {1234567890, 7, L"AB", L"12345678907000000000656665666566"}, // the clock was never set
        {0x80000000, INT64_MIN, L"AB", L"-2147483648-92233720366566656665"},
    };
    for (const auto& [tick, time, name, expected] : cases)
        EXPECT_EQ(trackers::BuildKpiUserId(tick, time, name), expected);
}

// "123456", the time from its seventh unit on, the codes of "COMPUTER" from the thirteenth on.
TEST_F(KpiTest, AUserIdIsMadeAnewUnlessOneOfItsExactLengthIsInTheFirstKeyThatOpens)
{
    const std::wstring kept = L"abcdefghijklmnopqrstuvwxyz012345";
    const std::wstring made = L"12345615000067797780858469826779";
    simulated::SetUnixTime(1'500'000'000);
    simulated::SetTickMilliseconds(123'456);
    for (const std::size_t size : {64, 66, 62, 63, 0})
    {
        const std::wstring& expected = size == 64 ? kept : made;
        PutKpiUser(ERegistryRoot::ClassesRoot, kept, size);
        EXPECT_EQ(trackers::GetKpiUserId(), expected) << size;
        EXPECT_EQ(FindUser(ERegistryRoot::ClassesRoot), text::EncodeUnits(expected)) << size;
    }
    EXPECT_TRUE(FindUser(ERegistryRoot::CurrentUser).empty());

    PutKpiUser(ERegistryRoot::ClassesRoot, kept, 0);
    PutKpiUser(ERegistryRoot::CurrentUser, kept, 64);
    EXPECT_EQ(trackers::GetKpiUserId(), made);
    simulated::SetRegistryDenial(ERegistryRoot::ClassesRoot, ERegistryDenial::Opening);
    EXPECT_EQ(trackers::GetKpiUserId(), kept);
    simulated::RemoveRegistryKey(ERegistryRoot::CurrentUser, kpiUserKey, ERegistryView::View32);
    EXPECT_EQ(trackers::GetKpiUserId(), made);
    EXPECT_EQ(FindUser(ERegistryRoot::CurrentUser), text::EncodeUnits(made));
    simulated::SetRegistryDenial(ERegistryRoot::CurrentUser, ERegistryDenial::Opening);

    // For a missing name the codes of "5e0b7a93c1d24f68...".
    for (const auto& name : {std::optional<std::wstring>(), std::optional<std::wstring>(L""),
                             std::optional<std::wstring>(L"SIXTEEN_LETTERS_")})
    {
        simulated::facts->computerName = name;
        EXPECT_EQ(trackers::GetKpiUserId(), L"12345615000053101489855975751994");
    }
}

TEST_F(KpiTest, EachRequestLooksForTheUserAndTheTick)
{
    Start(EKind::Kpi);
    SendPageview();
    simulated::RemoveRegistryKey(ERegistryRoot::ClassesRoot, kpiUserKey, ERegistryView::View32);
    simulated::SetTickMilliseconds(0xFFFFF000);
    SendPageview();
    EXPECT_EQ(GetValues(L"rand"), (Texts{L"7000", L"-3996"}));
    EXPECT_EQ(GetValues(L"uid")[1].substr(0, 5), L"-3996") << "a new one";
}

} // namespace
