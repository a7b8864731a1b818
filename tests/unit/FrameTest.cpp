#include "frame/Hits.h"
#include "frame/StatsSampling.h"
#include "frame/TrackerBase.h"
#include "frame/UserAgent.h"
#include "frame/WorkerThread.h"
#include "platform/StopSignal.h"
#include "platform/SystemException.h"
#include "tests/simulated/Simulated.h"
#include "tests/simulated/SystemFacts.h"
#include "tests/simulated/VirtualTime.h"

#include <gtest/gtest.h>

#include <atomic>
#include <vector>

using namespace frame;
using namespace std::chrono_literals;

namespace {

class FrameTest : public testing::Test
{
protected:
    FrameTest() { simulated::Reset(); }
};

TEST(EventExArguments, KeepOnlyNumericValues)
{
    const struct
    {
        const wchar_t *value, *sent;
    } cases[] = {{L"", L""},   {L"12", L"12"}, {L"0", L"0"},   {L"x1", L""},       {L"abc", L""},
                 {L"00", L""}, {L"-3", L"-3"}, {L" 5", L" 5"}, {L"12ab", L"12ab"}, {L"0.5", L""}};
    for (const auto& c : cases)
        EXPECT_EQ(MakeEventExHit(L"", L"", L"", c.value, L"", true).field1, c.sent) << c.value;
}

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

// A tracker whose worker fails at once.
class CFailingTracker final : public CTrackerBase
{
public:
    CFailingTracker() : CTrackerBase(L"name") { StartWorker(); }
    ~CFailingTracker() override { StopWorker(); }

    void SetTrackingEnabled(bool) noexcept override {}
    void DisableIdlePageviews(bool) noexcept override {}
    void SetContinueSession(bool) noexcept override {}
    void TrackPurchase(TrackerText, TrackerText, double, TrackerText,
                       std::int32_t) noexcept override
    {}

    bool KeepsHits()
    {
        TrackPageview();
        return queue.Take().type != EHitType::None;
    }

private:
    [[noreturn]] void RunWorker() override { throw std::bad_alloc(); }
    void ReadConfigurationOf(const std::wstring&) override {}
    void ChooseProductName(std::wstring) override {}
};

TEST_F(FrameTest, WithoutAWorkerNoHitIsKept)
{
    for (const auto fate : {simulated::EThreads::Run, simulated::EThreads::Refused})
    {
        simulated::SetThreads(fate);
        CFailingTracker tracker;
        simulated::SettleWorkers();
        EXPECT_FALSE(tracker.KeepsHits()) << static_cast<int>(fate);
    }
}

TEST_F(FrameTest, StatsAreSentInTheEighthTenthOfTheDraws)
{
    simulated::SetUnixTime(1'234'567'890);
    for (const int draw : {0, 22936, 22937, 26213, 26214, 32767})
    {
        simulated::facts->draw = {draw};
        EXPECT_EQ(DrawDropsStatsEvents(), draw != 22937 && draw != 26213) << draw;
        EXPECT_EQ(std::exchange(simulated::facts->seeds, {}),
                  std::vector<std::uint32_t>{1'234'567'890});
    }
}

TEST(UserAgent, CannotEndItsHeader)
{
    EXPECT_EQ(FormatUserAgentHeader(L"a\r\nX-Evil: 1\t"), L"User-Agent: a  X-Evil: 1 \r\n");
}

} // namespace
