#include "frame/HitQueue.h"
#include "frame/Hits.h"
#include "frame/StatsSampling.h"
#include "frame/TrackerBase.h"
#include "frame/UserAgent.h"
#include "frame/WorkerThread.h"
#include "platform/StopSignal.h"
#include "tests/simulated/Simulated.h"
#include "tests/simulated/SystemFacts.h"
#include "tests/simulated/VirtualTime.h"

#include <gtest/gtest.h>

#include <deque>

using namespace frame;
using namespace std::chrono_literals;

namespace {

class FrameTest : public testing::Test
{
protected:
    FrameTest() { simulated::Reset(); }
};

struct Work : ThreadParam
{
    platform::CStopSignal stop;
    int runs = 0;

    static std::uint32_t Run(ThreadParam* parameter)
    {
        auto& work = dynamic_cast<Work&>(*parameter);
        work.stop.Wait(100ms);
        ++work.runs;
        return 0;
    }
};

TEST_F(FrameTest, WorkerThreadRunsOneRoutineAtATime)
{
    Work work;
    CWorkerThread thread(&Work::Run, &work, L"name", &noCrashReporting);
    EXPECT_EQ(thread.GetProgress(), 0u);
    EXPECT_TRUE(thread.Start());
    EXPECT_FALSE(thread.Start());
    simulated::SettleWorkers();
    EXPECT_EQ(thread.GetProgress(), 1u);
    simulated::AdvanceTime(100ms);
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

TEST_F(FrameTest, WhatTheHostSaysIsCleaned)
{
    for (const wchar_t* kept : {L"", L"12", L"0", L"-3", L" 5", L"12ab"})
        EXPECT_EQ(MakeEventExHit(L"", L"", L"", kept, L"", true).field1, kept);
    for (const wchar_t* dropped : {L"x1", L"00", L"0.5"})
        EXPECT_EQ(MakeEventExHit(L"", L"", L"", dropped, L"", true).field1, L"") << dropped;
    EXPECT_EQ(FormatUserAgentHeader(L"a\r\nX-Evil: 1\t"), L"User-Agent: a  X-Evil: 1 \r\n");
}

TEST_F(FrameTest, StatsAreSentInTheEighthTenthOfTheDraws)
{
    simulated::SetUnixTime(1'234'567'890);
    for (const int draw : {0, 22936, 22937, 26213, 26214, 32767})
    {
        simulated::facts->draw = {draw};
        EXPECT_EQ(DrawDropsStatsEvents(), draw != 22937 && draw != 26213) << draw;
    }
    EXPECT_EQ(simulated::facts->seeds, std::vector<std::uint32_t>(6, 1'234'567'890));
}

// Hits of all sizes: empty ones, such as fill a block of 16 KiB just so or miss it by a unit, and
// such as need a block of their own. Two are appended for each one taken, then the rest is taken.
TEST(HitQueue, GivesBackHitsOfAnySizeInTheirOrder)
{
    constexpr std::size_t room = (16 * 1024 - 24) / sizeof(wchar_t);
    constexpr std::size_t sizes[] = {0,        1,    2,        40,       room / 2, room - 1,
                                     room / 3, room, room + 1, 5 * room, 3};
    CHitQueue queue;
    std::deque<TrackingHit> expected;
    for (std::size_t i = 0; i < 1000; ++i)
    {
        const std::size_t size = sizes[i * 7 % std::size(sizes)];
        TrackingHit hit{static_cast<EHitType>(1 + i % 6), std::wstring(size / 2, L'a')};
        hit.field3.append(size / 3, static_cast<wchar_t>(i));
        hit.field5.append(size - size / 2 - size / 3, L'z');
        hit.onceOnly = i % 4 == 0;
        queue.Append(ViewHit(hit));
        expected.push_back(hit);
        const bool isLast = i % 500 == 499;
        for (std::size_t left = isLast ? 0 : expected.size() - i % 2; expected.size() > left;)
        {
            EXPECT_EQ(queue.Take(), expected.front());
            expected.pop_front();
        }
        EXPECT_TRUE(!isLast || queue.Take() == TrackingHit());
    }
}

} // namespace
