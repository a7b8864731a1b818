#include "app/ModuleTrackers.h"
#include "app/ZoTrackerApp.h"
#include "tests/unit/trackers/TrackerFixture.h"
#include "zotracker/Exports.h"

#include <algorithm>
#include <thread>

namespace {

// What all trackers do, and where they differ in doing it.
class TrackersTest : public TrackerFixture, public testing::WithParamInterface<EKind>
{
protected:
    template <class Value>
    static Value Of(const Each<Value>& each)
    {
        return each.Of(GetParam());
    }
};

INSTANTIATE_TEST_SUITE_P(All, TrackersTest, testing::Values(EKind::Classic, EKind::Ua, EKind::Kpi));

TEST_P(TrackersTest, TakeTheirNameFromTheHostOrTheConfiguration)
{
    PutConfig("ProductTrackingName=First\r\nProductName=Second\r\n");
    Start(GetParam());
    EXPECT_EQ(tracker->GetProductName(), L"First");
    tracker->SetProductName(L"Given");
    EXPECT_EQ(tracker->GetProductName(), L"Given");
    PutConfig("");
    tracker->SetProductName(nullptr);
    EXPECT_EQ(tracker->GetProductName(), Of<std::wstring>({L"Tidy Desk", L"Tidy Desk", L""}));
}

TEST_P(TrackersTest, ReadBesideTheHostsPathAgain)
{
    PutOtherHosts("PHASH=other\r\nProductName=Other\r\n");
    simulated::PutFile(L"app.exe", "x");
    PutConfig("PHASH=nowhere\r\n", uaSection, L"install.cfg");
    const wchar_t* const cases[][2] = {{L"C:/Other/app.exe", L"other"},
                                       {L"app.exe", L"ab%201"},
                                       {L"C:\\Other\\no.exe", L"ab%201"},
                                       {nullptr, L"ab%201"}};
    for (const auto& [path, phash] : cases)
    {
        Start(GetParam());
        tracker->Initialize(path);
        tracker->TrackPurchase(L"", L"", 1, L"o", 1);
        simulated::AdvanceTime(4s);
        const Texts found = GetValues(Of<std::wstring>({L"utmtst", L"ta", L"_rcn"}));
        EXPECT_NE(std::find(found.begin(), found.end(), phash), found.end()) << phash;
    }
}

TEST_P(TrackersTest, SendWhatComesOnceTheyAreEnabled)
{
    simulated::PutFile(configPath, "[install]\r\ntracking=0\r\n[UA]\r\nId=U\r\nEnabled=0\r\n");
    Start(GetParam());
    for (int i = 0; i < 3; ++i)
        tracker->TrackPageview();
    simulated::AdvanceTime(5s);
    EXPECT_EQ(GetTimes(), Times{});
    tracker->SetTrackingEnabled(true);
    simulated::AdvanceTime(4s);
    // A third hit, or the report only.
    EXPECT_EQ(GetTimes(), Of<Times>({{6000, 6100}, {6000, 6050}, {6000}}));
}

TEST_P(TrackersTest, WriteAndReportThatTheHostSwitchesThem)
{
    const bool isUa = GetParam() == EKind::Ua;
    const auto makeConfig = [](char tracking, char enabled) {
        return std::string("[install]\r\ntracking=") + tracking + "\r\n[UA]\r\nEnabled=" + enabled +
               "\r\nId=UA-1\r\n";
    };
    const std::tuple<bool, bool, char> steps[] = {
        {false, false, '2'},
        {true, true, '1'},
        {true, true, '1'},
        {false, !isUa, '0'}, // so that the event still goes out
        {true, true, '1'}};
    simulated::PutFile(configPath, makeConfig('2', '2'));
    Start(GetParam());
    for (const auto& [wanted, enabled, written] : steps)
    {
        tracker->SetTrackingEnabled(wanted);
        EXPECT_EQ(tracker->IsTrackingEnabled(), enabled) << written;
        EXPECT_EQ(simulated::ReadFileBytes(configPath), makeConfig(written, isUa ? written : '2'));
    }
    simulated::AdvanceTime(4s);
    EXPECT_EQ(GetTimes().size(), Of<std::size_t>({4, 3, 3})) << "the reports";
}

TEST_P(TrackersTest, RepeatAFailedHitAtMostOnceAndThenFallSilent)
{
    PutConfig("");
    Start(GetParam());
    simulated::AddAnswer({.status = 500}); // unhappy, but delivered
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
    const std::pair<std::int32_t, Each<Times>> cases[] = {
        {0, {{2000, 2200}, {2000, 2100}, {2000, 2100, 2200}}}, // a dropped event takes its pause
        {24'000, {{2000, 2100, 2200}, {2000, 2050, 2100}, {2000, 2100, 2200}}}};
    PutConfig("");
    for (const auto& [draw, times] : cases)
    {
        simulated::facts->draw = {draw};
        Start(GetParam());
        tracker->TrackPageview();
        for (const wchar_t* category : {L"stAts", L"statsx"})
            tracker->TrackEvent(category, L"A", L"", L"", L"");
        simulated::AdvanceTime(4s);
        EXPECT_EQ(GetTimes(), Of(times)) << draw;
    }
}

TEST_P(TrackersTest, WakeOnceInTwoSecondsWhileIdleAndKeepTheSessionAlive)
{
    const std::size_t kept = GetParam() == EKind::Kpi ? 0 : 1;
    PutConfig("");
    Start(GetParam());
    tracker->TrackPageview();
    simulated::AdvanceTime(390s);
    EXPECT_EQ(GetTimes(), Of<Times>({{2000, 204'100}, {2000, 200'050}, {2000}}));
    tracker->DisableIdlePageviews(true);
    const int before = simulated::GetWakeUpCount();
    simulated::AdvanceTime(1000s);
    EXPECT_EQ(simulated::GetWakeUpCount() - before, 500);
    EXPECT_EQ(GetTimes().size(), 1 + kept);
    tracker->DisableIdlePageviews(false);
    simulated::AdvanceTime(205s);
    EXPECT_EQ(GetTimes().size(), 1 + 2 * kept);
}

TEST_P(TrackersTest, EndWithoutWaitingForTheNetwork)
{
    using End = std::pair<std::size_t, std::int64_t>; // attempts, milliseconds
    using Case = std::tuple<const char*, std::chrono::milliseconds, std::chrono::milliseconds, int,
                            Each<End>>;
    const Case cases[] = {
        {"nothing sent yet", 70ms, 0ms, 0, {{0, 0}, {25, 0}, {25, 0}}},
        {"slow but answering", 70ms, 500ms, 0, {{0, 0}, {20, 10'000}, {20, 10'000}}},
        {"slow in a hit", 2100ms, 500ms, 0, {{1, 400}, {21, 10'400}, {21, 10'400}}},
        {"stalled", 70ms, 1h, 0, {{0, 0}, {1, 1000}, {2, 2000}}},
        {"stalled in a hit", 2100ms, 1h, 0, {{2, 2000}, {1, 1000}, {2, 2000}}},
        {"refusing once", 70ms, 0ms, 1, {{0, 0}, {1, 0}, {26, 0}}},
        {"refusing", 70ms, 0ms, 2, {{0, 0}, {1, 0}, {2, 0}}},
    };
    PutConfig("");
    for (const auto& [what, before, delay, failures, ends] : cases)
    {
        Start(GetParam());
        Fail(failures);
        for (int i = 0; i < 25; ++i)
        {
            simulated::AddAnswer({.delay = delay});
            tracker->TrackPageview();
        }
        simulated::AdvanceTime(before);
        const std::int64_t begin = simulated::GetElapsedMilliseconds();
        tracker.reset();
        EXPECT_EQ(End(GetTimes().size(), simulated::GetElapsedMilliseconds() - begin), Of(ends))
            << what;
        EXPECT_EQ(simulated::GetOpenInternetHandles(), 0) << what;
    }
    Start(GetParam());
    tracker->TrackPageview();
    simulated::EndProcess();
    tracker->TrackPageview();
    tracker.reset();
    EXPECT_EQ(GetTimes(), Times{}) << "at the end of the process";
}

// For the thread sanitizer.
TEST_P(TrackersTest, MayBeReconfiguredWhileTheyAreAtWork)
{
    simulated::PutFile(L"C:\\Host\\Host.exe", "x");
    PutConfig("");
    Start(GetParam());
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

// The application object's life is the module's.
using MainTrackerTest = TrackerFixture;

TEST_F(MainTrackerTest, ThePresenceOfAKeyChoosesItAndTheLastReferenceEndsItForGood)
{
    const std::pair<const char*, bool> cases[] = {
        {"[UA]\r\nEnabled=0\r\nId=U\r\n", true},
        {"[UA]\r\nEnabled=\r\n", false}, // no value, no key
        {"[UA]\r\nEnabled=-1\r\n", false}};
    for (const auto& [config, isUa] : cases)
    {
        simulated::PutFile(configPath, config);
        const app::CZoTrackerApp application;
        EXPECT_EQ(app::uaTracker.Get() != nullptr, isUa) << config;
        EXPECT_NE(app::classicTracker.Get() != nullptr, isUa) << config;
        ITracker* const instance = GetTrackerInstance();
        EXPECT_EQ(GetTrackerInstance(), instance);
        DestroyTrackerInstance();
        EXPECT_EQ(instance->GetInterfaceVersion(), 8450u) << "one reference is left";
        for (int i = 0; i < 2; ++i)
        {
            DestroyTrackerInstance();
            EXPECT_EQ(GetTrackerInstance(), nullptr);
        }
        EXPECT_NE(GetKPITrackerInstance(), nullptr) << "the other one has its own life";
    }
    EXPECT_EQ(GetKPITrackerInstance(), nullptr) << "an unload ends what is still held";
    {
        const app::CZoTrackerApp application;
        GetTrackerInstance();
    }
    EXPECT_EQ(GetTrackerInstance(), nullptr);
    const app::CZoTrackerApp application;
    DestroyTrackerInstance();
    EXPECT_EQ(GetTrackerInstance(), nullptr) << "nor does it need a reference";
}

} // namespace
