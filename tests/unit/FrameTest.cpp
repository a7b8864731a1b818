#include "app/frame/ClosingPhase.h"
#include "app/frame/FirstHitRule.h"
#include "app/frame/HitQueue.h"
#include "app/frame/Hits.h"
#include "app/frame/StatsSampling.h"
#include "app/frame/UserAgent.h"
#include "app/frame/WorkerThread.h"
#include "platform/SystemException.h"
#include "tests/simulated/Simulated.h"
#include "tests/simulated/SystemFacts.h"
#include "tests/simulated/VirtualTime.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

using namespace app;
using namespace std::chrono_literals;

namespace {

class FrameTest : public testing::Test
{
protected:
    FrameTest() { simulated::Reset(); }
};

// --- arguments -----------------------------------------------------------------------------------

TEST(EventArguments, AreReplacedByTheirDefaults)
{
    const struct
    {
        const wchar_t *category, *action, *label, *value;
        const wchar_t *sentCategory, *sentAction, *sentLabel, *sentValue;
    } cases[] = {
        {L"", L"", L"", L"", L"unknown", L"unknown", L"unknown", L"0"},
        {L"Scan", L"Start", L"Fast", L"7", L"Scan", L"Start", L"Fast", L"7"},
        {L"Scan", L"Start", L"", L"x1", L"Scan", L"Start", L"unknown", L"x1"},
    };
    for (const auto& c : cases)
    {
        const TrackingHit hit = MakeEventHit(c.category, c.action, c.label, c.value, L"Page");
        EXPECT_EQ(hit.type, EHitType::Event);
        EXPECT_EQ(hit.field1, c.sentValue);
        EXPECT_EQ(hit.field2, c.sentCategory);
        EXPECT_EQ(hit.field3, c.sentLabel);
        EXPECT_EQ(hit.field4, c.sentAction);
        EXPECT_EQ(hit.field5, L"Page");
        EXPECT_FALSE(hit.onceOnly);
    }
}

TEST(EventExArguments, KeepLabelsAndOnlyNumericValues)
{
    const struct
    {
        const wchar_t *value, *sent;
    } cases[] = {{L"", L""},   {L"12", L"12"}, {L"0", L"0"},   {L"x1", L""},       {L"abc", L""},
                 {L"00", L""}, {L"-3", L"-3"}, {L" 5", L" 5"}, {L"12ab", L"12ab"}, {L"0.5", L""}};
    for (const auto& c : cases)
        EXPECT_EQ(MakeEventExHit(L"", L"", L"", c.value, L"", true).field1, c.sent) << c.value;
    const TrackingHit hit = MakeEventExHit(L"", L"", L"", L"", L"Page", true);
    EXPECT_EQ(hit.field2, L"unknown");
    EXPECT_EQ(hit.field3, L"");
    EXPECT_EQ(hit.field4, L"unknown");
    EXPECT_EQ(hit.field5, L"Page");
    EXPECT_TRUE(hit.onceOnly);
}

// --- queue ---------------------------------------------------------------------------------------

std::vector<EHitType> TakeTypes(CHitQueue& queue)
{
    std::vector<EHitType> types;
    for (TrackingHit hit = queue.Take(); hit.type != EHitType::None; hit = queue.Take())
        types.push_back(hit.type);
    return types;
}

TEST(FirstHitRule, LeadsOnlyTheFirstHitIn)
{
    using enum EHitType;
    const struct
    {
        const wchar_t* phash;
        std::vector<EHitType> reported, queued;
    } cases[] = {
        {L"", {Event, Event}, {Pageview, Event, Event}},
        {L"", {Pageview, Event}, {Pageview, Event}},
        {L"ab1", {Event, Event}, {Pageview, CustomVariable, Event, Event}},
        {L"ab1", {Pageview, Event}, {CustomVariable, Pageview, Event}},
    };
    for (const auto& c : cases)
    {
        CHitQueue queue;
        CFirstHitRule rule;
        for (const EHitType type : c.reported)
        {
            TrackingHit hit;
            hit.type = type;
            queue.Append(TrackingHit(hit), [&](CHitQueue& led) { rule.Lead(led, type, c.phash); });
        }
        EXPECT_EQ(TakeTypes(queue), c.queued) << c.phash;
    }
    const TrackingHit hit = MakePhashHit(L"ab1");
    EXPECT_EQ(hit.field1 + L"|" + hit.field2 + L"|" + hit.field3 + L"|" + hit.field4 + L"|" +
                  hit.field5,
              L"ab1|1|PHASH|2|");
}

TEST(HitQueue, KeepsTheOrderOfEachThread)
{
    constexpr int perThread = 2000;
    CHitQueue queue;
    const auto report = [&](wchar_t name) {
        for (int i = 0; i < perThread; ++i)
            queue.Append(MakeMessageHit(std::wstring(1, name) + std::to_wstring(i)));
    };
    std::thread other(report, L'a');
    report(L'b');
    std::vector<std::wstring> taken;
    while (taken.size() < 2 * perThread)
        if (TrackingHit hit = queue.Take(); hit.type != EHitType::None)
            taken.push_back(hit.field5);
    other.join();
    int next[2] = {};
    for (const std::wstring& text : taken)
        EXPECT_EQ(text.substr(1), std::to_wstring(next[text[0] - L'a']++));
}

TEST(HitQueue, TakesNothingMoreOnceClosed)
{
    CHitQueue queue;
    queue.Append(MakePageviewHit());
    queue.Clear();
    EXPECT_EQ(queue.Take().type, EHitType::None);
    queue.Append(MakePageviewHit());
    queue.Close();
    queue.Append(MakePageviewHit());
    EXPECT_EQ(queue.Take().type, EHitType::None);
}

// --- worker thread -------------------------------------------------------------------------------

struct Work : ThreadParam
{
    platform::CStopSignal stop;
    std::chrono::milliseconds duration{0};
    int runs = 0;

    static std::uint32_t Run(ThreadParam* parameter)
    {
        auto& work = dynamic_cast<Work&>(*parameter);
        work.stop.Wait(work.duration);
        ++work.runs;
        return 0;
    }
};

TEST_F(FrameTest, WorkerThreadRunsOneRoutineAtATime)
{
    Work work;
    work.duration = 100ms;
    CWorkerThread thread(&Work::Run, &work, L"name", &noCrashReporting);
    EXPECT_EQ(thread.GetProgress(), 0u);
    EXPECT_TRUE(thread.Start());
    EXPECT_FALSE(thread.Start());
    simulated::SettleWorkers();
    EXPECT_TRUE(thread.IsRunning());
    EXPECT_EQ(thread.GetProgress(), 1u);
    simulated::AdvanceTime(100ms);
    EXPECT_FALSE(thread.IsRunning());
    EXPECT_EQ(thread.GetProgress(), 100u);
    EXPECT_TRUE(thread.Start()) << "a finished thread makes room for the next";
    EXPECT_TRUE(thread.Join());
    EXPECT_EQ(work.runs, 2);
    EXPECT_TRUE(thread.Join()) << "nothing to wait for";
}

TEST_F(FrameTest, WorkerThreadWantsRoutineNameAndCrashReporting)
{
    Work work;
    const auto make = [&](CWorkerThread::Entry entry, const wchar_t* name,
                          const CrashReporting* crash) {
        CWorkerThread thread(entry, &work, name, crash);
    };
    EXPECT_THROW(make(nullptr, L"name", &noCrashReporting), platform::CSystemException);
    EXPECT_THROW(make(&Work::Run, L"", &noCrashReporting), platform::CSystemException);
    EXPECT_THROW(make(&Work::Run, L"name", nullptr), platform::CSystemException);
}

TEST_F(FrameTest, WorkerThreadCallsTheCrashReportingLibraryOnItsThread)
{
    static std::vector<std::string> calls;
    static std::atomic<std::uint32_t>* stored;
    calls.clear();
    const CrashReporting crash{[] { calls.push_back("exception"); },
                               [] { calls.push_back("terminate"); },
                               [](CWorkerThread&, std::atomic<std::uint32_t>& progress) {
                                   calls.push_back("store");
                                   stored = &progress;
                               }};
    Work work;
    CWorkerThread thread(&Work::Run, &work, L"name", &crash);
    thread.Start();
    thread.Join();
    EXPECT_EQ(calls, (std::vector<std::string>{"exception", "terminate", "store"}));
    EXPECT_EQ(*stored, 100u);
}

TEST_F(FrameTest, ClosingPhaseEndsAtAFailureAndAfterTenSeconds)
{
    platform::CStopSignal stop;
    CClosingPhase patient(stop), unlucky(stop);
    unlucky.NoteAttempt(false);
    EXPECT_TRUE(unlucky.MaySend()) << "failures before the stop do not count";
    stop.Request();
    EXPECT_TRUE(unlucky.MaySend());
    EXPECT_TRUE(patient.MaySend());
    unlucky.NoteAttempt(false);
    EXPECT_FALSE(unlucky.MaySend());
    simulated::AdvanceTime(9999ms);
    patient.NoteAttempt(true);
    EXPECT_TRUE(patient.MaySend());
    simulated::AdvanceTime(1ms);
    EXPECT_FALSE(patient.MaySend());
}

// --- small rules ---------------------------------------------------------------------------------

TEST_F(FrameTest, StatsAreSentInTheEighthTenthOfTheDraws)
{
    const struct
    {
        int draw;
        bool drops;
    } cases[] = {{0, true},     {22936, true}, {22937, false}, {26213, false},
                 {26214, true}, {32766, true}, {32767, true}};
    for (const auto& c : cases)
    {
        simulated::PutDraws({c.draw});
        simulated::SetUnixTime(1'234'567'890);
        EXPECT_EQ(DrawDropsStatsEvents(), c.drops) << c.draw;
        EXPECT_EQ(simulated::TakeSeeds(), std::vector<std::uint32_t>{1'234'567'890});
    }
    EXPECT_TRUE(IsStatsEvent(MakeEventHit(L"sTaTs", L"", L"", L"", L"")));
    EXPECT_FALSE(IsStatsEvent(MakeEventHit(L"STATS2", L"", L"", L"", L"")));
    EXPECT_FALSE(IsStatsEvent(MakeMessageHit(L"STATS")));
}

TEST(UserAgent, CannotEndItsHeader)
{
    EXPECT_EQ(FormatUserAgent(L"Disk Tool", L"2.0", L"Windows NT 6.1; WOW64"),
              L"Disk Tool/2.0 (Windows NT 6.1; WOW64)");
    EXPECT_EQ(FormatUserAgentHeader(L"a\r\nX-Evil: 1\t"), L"User-Agent: a  X-Evil: 1 \r\n");
}

} // namespace
