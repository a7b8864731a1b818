#include "tests/simulated/Files.h"
#include "tests/simulated/SystemFacts.h"
#include "tests/unit/trackers/TrackerFixture.h"

#include <algorithm>
#include <thread>

using namespace std::chrono_literals;

namespace {

// What is expected of each kind.
template <class Value>
struct Each
{
    Value classic, ua, kpi;
};

// What all trackers do, and where they differ in doing it.
class TrackersTest : public TrackerFixture, public testing::WithParamInterface<EKind>
{
protected:
    void StartTracker() { StartKind(GetParam()); }

    template <class Value>
    static Value Of(const Each<Value>& each)
    {
        return GetParam() == EKind::Kpi  ? each.kpi
               : GetParam() == EKind::Ua ? each.ua
                                         : each.classic;
    }
};

std::string NameKind(const testing::TestParamInfo<EKind>& test)
{
    const char* const names[] = {"Classic", "Ua", "Kpi"};
    return names[static_cast<std::size_t>(test.param)];
}

INSTANTIATE_TEST_SUITE_P(All, TrackersTest, testing::Values(EKind::Classic, EKind::Ua, EKind::Kpi),
                         NameKind);

TEST_P(TrackersTest, TakeTheirNameFromTheHostOrTheConfiguration)
{
    PutConfig("ProductTrackingName=First\r\nProductName=Second\r\n");
    StartTracker();
    EXPECT_EQ(tracker->GetProductName(), L"First");
    tracker->SetProductName(L"Given");
    EXPECT_EQ(tracker->GetProductName(), L"Given");
    PutConfig("ProductName=Second\r\n");
    tracker->SetProductName(L"");
    EXPECT_EQ(tracker->GetProductName(), L"Second");
    PutConfig("");
    tracker->SetProductName(nullptr);
    EXPECT_EQ(tracker->GetProductName(), Of<std::wstring>({L"Tidy Desk", L"Tidy Desk", L""}));
}

TEST_P(TrackersTest, IgnoreAHostPathThatIsNone)
{
    PutOtherHosts("ProductName=Other Name\r\n");
    StartTracker();
    for (const wchar_t* path : {static_cast<const wchar_t*>(nullptr), L"", L"C:\\Other\\no.exe"})
    {
        tracker->Initialize(path);
        EXPECT_EQ(tracker->GetProductName(), L"Disk Tool");
        tracker->SetProductName(L"");
        EXPECT_EQ(tracker->GetProductName(), L"Disk Tool");
    }
}

TEST_P(TrackersTest, ReadBesideTheHostsPathAgain)
{
    PutOtherHosts("PHASH=other\r\n");
    simulated::PutFile(L"app.exe", "x");
    PutConfig("PHASH=nowhere\r\n", uaSection, L"install.cfg");
    const struct
    {
        const wchar_t *path, *phash;
    } cases[] = {{L"C:\\Other\\app.exe", L"other"},
                 {L"C:/Other/app.exe", L"other"},
                 {L"app.exe", L"ab%201"}};
    for (const auto& c : cases)
    {
        StartTracker();
        tracker->Initialize(c.path);
        tracker->TrackPurchase(L"", L"", 1, L"o", 1);
        simulated::AdvanceTime(4s);
        const Texts found = GetValues(Of<std::wstring>({L"utmtst", L"ta", L"_rcn"}));
        EXPECT_NE(std::find(found.begin(), found.end(), c.phash), found.end()) << c.path;
    }
}

TEST_P(TrackersTest, SendNothingWhileDisabled)
{
    for (const std::string value : {"0", "2", "", "1"})
    {
        const bool enabled = value == "1";
        simulated::PutFile(configPath, "[install]\r\ntracking=" + value +
                                           "\r\n[UA]\r\nId=U\r\nEnabled=" + value);
        StartTracker();
        EXPECT_EQ(tracker->IsTrackingEnabled(), enabled) << value;
        for (int i = 0; i < 3; ++i)
            tracker->TrackPageview();
        simulated::AdvanceTime(5s);
        EXPECT_EQ(GetTimes().size(), enabled ? 3u : 0u) << value;
        tracker->SetTrackingEnabled(true);
        simulated::AdvanceTime(4s);
        const auto late = Of<std::size_t>({2, 2, 1}); // a third hit, or the report only
        EXPECT_EQ(GetTimes().size(), enabled ? 3u : late) << value;
    }
}

TEST_P(TrackersTest, WriteAndReportThatTheHostSwitchesThem)
{
    const bool isUa = GetParam() == EKind::Ua;
    const auto makeConfig = [](char tracking, char enabled) {
        return std::string("[install]\r\ntracking=") + tracking + "\r\n[UA]\r\nEnabled=" + enabled +
               "\r\nId=UA-1\r\n";
    };
    const struct
    {
        bool wanted, enabled;
        char written;
    } steps[] = {{false, false, '2'},
                 {true, true, '1'},
                 {true, true, '1'},
                 {false, !isUa, '0'}, // so that the event still goes out
                 {true, true, '1'}};
    simulated::PutFile(configPath, makeConfig('2', '2'));
    StartTracker();
    for (const auto& step : steps)
    {
        tracker->SetTrackingEnabled(step.wanted);
        EXPECT_EQ(tracker->IsTrackingEnabled(), step.enabled) << step.written;
        EXPECT_EQ(simulated::ReadFileBytes(configPath),
                  makeConfig(step.written, isUa ? step.written : '2'));
    }
    simulated::AdvanceTime(4s);
    EXPECT_EQ(GetValues(Of<std::wstring>({L"utme", L"ea", L"e_a"})),
              Of<Texts>({{L"-", L"5(TRACKER*ACTIVATED*)(1)", L"5(TRACKER*DEACTIVATED*)(1)",
                          L"5(TRACKER*ACTIVATED*)(2)"},
                         {L"ACTIVATED", L"DEACTIVATED", L"ACTIVATED"},
                         {L"ACTIVATED", L"DEACTIVATED", L"ACTIVATED"}}));
    EXPECT_EQ(GetValues(L"utmp"),
              Texts(Of<std::size_t>({4, 3, 3}), Of<std::wstring>({L"Tidy%20Desk", L"-", L"-"})));
}

TEST_P(TrackersTest, RepeatAFailedHitAtMostOnceAndThenFallSilent)
{
    PutConfig("");
    StartTracker();
    simulated::Answer unhappy; // but delivered
    unhappy.status = 500;
    simulated::AddAnswer(unhappy);
    Fail(1);
    for (int i = 0; i < 3; ++i)
        tracker->TrackPageview();
    simulated::AdvanceTime(4s);
    Fail(2);
    for (int i = 0; i < 2; ++i)
        tracker->TrackPageview();
    simulated::AdvanceTime(60s);
    tracker->TrackPageview();
    simulated::AdvanceTime(60s);
    EXPECT_EQ(GetTimes(), Of<Times>({{2000, 2100, 2600, 2700, 4800, 5300},
                                     {2000, 2050, 2100, 4150, 4200, 64'250}, // nothing is repeated
                                     {2000, 2100, 2600, 2700, 4800, 5300}}));
}

TEST_P(TrackersTest, SendStatsEventsInOneRunOfTen)
{
    const struct
    {
        std::int32_t draw;
        Each<Times> times;
    } cases[] = {
        {0, {{2000, 2200}, {2000, 2100}, {2000, 2100, 2200}}}, // a dropped event takes its pause
        {24'000, {{2000, 2100, 2200}, {2000, 2050, 2100}, {2000, 2100, 2200}}}};
    PutConfig("");
    for (const auto& c : cases)
    {
        simulated::facts->draw = {c.draw};
        StartTracker();
        tracker->TrackPageview();
        for (const wchar_t* category : {L"stAts", L"statsx"})
            tracker->TrackEvent(category, L"A", L"", L"", L"");
        simulated::AdvanceTime(4s);
        EXPECT_EQ(GetTimes(), Of(c.times)) << c.draw;
    }
}

TEST_P(TrackersTest, KeepAnIdleSessionAlive)
{
    const std::size_t kept = GetParam() == EKind::Kpi ? 0 : 1;
    PutConfig("");
    StartTracker();
    tracker->TrackPageview();
    simulated::AdvanceTime(390s);
    EXPECT_EQ(GetTimes(), Of<Times>({{2000, 204'100}, {2000, 200'050}, {2000}}));
    tracker->DisableIdlePageviews(true);
    simulated::AdvanceTime(1000s);
    EXPECT_EQ(GetTimes().size(), 1 + kept);
    tracker->DisableIdlePageviews(false);
    simulated::AdvanceTime(205s);
    EXPECT_EQ(GetTimes().size(), 1 + 2 * kept);
}

TEST_P(TrackersTest, WakeOnceInTwoSecondsWhileIdle)
{
    for (const bool enabled : {true, false})
    {
        simulated::PutFile(configPath, std::string("[install]\r\ntracking=") +
                                           (enabled ? "1\r\n" : "0\r\n") + uaSection);
        StartTracker();
        tracker->DisableIdlePageviews(true);
        const int before = simulated::GetWakeUpCount();
        simulated::AdvanceTime(600s);
        EXPECT_EQ(simulated::GetWakeUpCount() - before, 300) << enabled;
        EXPECT_EQ(GetTimes(), Times{});
    }
}

TEST_P(TrackersTest, EndWithoutWaitingForTheNetwork)
{
    struct End
    {
        std::size_t attempts;
        std::int64_t duration;
    };
    const struct
    {
        const char* what;
        std::chrono::milliseconds before, delay;
        int failures;
        Each<End> ends;
    } cases[] = {
        {"nothing sent yet", 70ms, 0ms, 0, {{0, 0}, {25, 0}, {25, 0}}},
        {"between two hits", 2030ms, 0ms, 0, {{1, 0}, {25, 0}, {25, 0}}},
        {"slow but answering", 70ms, 500ms, 0, {{0, 0}, {20, 10'000}, {20, 10'000}}},
        {"slow in a hit", 2100ms, 500ms, 0, {{1, 400}, {21, 10'400}, {21, 10'400}}},
        {"stalled", 70ms, 1h, 0, {{0, 0}, {1, 1000}, {2, 2000}}},
        {"stalled in a hit", 2100ms, 1h, 0, {{2, 2000}, {1, 1000}, {2, 2000}}},
        {"refusing once", 70ms, 0ms, 1, {{0, 0}, {1, 0}, {26, 0}}},
        {"refusing", 70ms, 0ms, 2, {{0, 0}, {1, 0}, {2, 0}}},
    };
    PutConfig("");
    for (const auto& c : cases)
    {
        StartTracker();
        Fail(c.failures);
        simulated::Answer answer;
        answer.delay = c.delay;
        for (int i = 0; i < 25; ++i)
        {
            simulated::AddAnswer(answer);
            tracker->TrackPageview();
        }
        simulated::AdvanceTime(c.before);
        const std::int64_t before = simulated::GetElapsedMilliseconds();
        tracker.reset();
        EXPECT_EQ(GetTimes().size(), Of(c.ends).attempts) << c.what;
        EXPECT_EQ(simulated::GetElapsedMilliseconds() - before, Of(c.ends).duration) << c.what;
        EXPECT_EQ(simulated::GetOpenInternetHandles(), 0) << c.what;
    }
}

TEST_P(TrackersTest, SendNothingAtTheEndOfTheProcess)
{
    StartTracker();
    tracker->TrackPageview();
    simulated::EndProcess();
    tracker->TrackPageview();
    tracker.reset();
    EXPECT_EQ(GetTimes(), Times{});
}

// For the thread sanitizer.
TEST_P(TrackersTest, MayBeReconfiguredWhileTheyAreAtWork)
{
    simulated::PutFile(L"C:\\Host\\Host.exe", "x");
    PutConfig("");
    StartTracker();
    std::thread host([this] {
        for (int i = 0; i < 50; ++i)
        {
            tracker->SetProductName(i % 2 == 0 ? L"Name" : L"");
            tracker->Initialize(L"C:\\Host\\Host.exe");
            tracker->SetContinueSession(i % 2 == 0);
            tracker->DisableIdlePageviews(i % 2 == 0);
            tracker->TrackPurchase(L"a", L"b", 1, L"", 1);
        }
    });
    simulated::AdvanceTime(10s);
    host.join();
    simulated::AdvanceTime(20s);
    EXPECT_EQ(GetTimes().size(), Of<std::size_t>({101, 100, 100}));
}

} // namespace
