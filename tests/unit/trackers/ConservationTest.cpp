#include "tests/unit/trackers/TrackerFixture.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <set>

// Events at random, reported to each tracker at random moments over an internet that fails at
// random. Every one of them was delivered, or there is a reason why not; they went out in their
// order, and none twice unless its first answer was lost.
namespace {

unsigned long hitsOfEachTracker = 10'000;
unsigned long seed = 1;

enum EFate
{
    Delivered,
    Off,      // taken while tracking was off
    Sampled,  // a statistical event of a run that sends none
    OnceOnly, // occurred before
    Refused,  // lost on the way, with nothing repeated
    Silenced, // lost twice, or behind such a one
    Released, // still waiting at the tracker's end
    fates
};

struct Account
{
    unsigned long reported = 0, repeated = 0;
    std::array<unsigned long, fates> by{};
};

struct Hit
{
    std::wstring mark; // what only its request holds
    std::wstring event = {};
    bool onceOnly = false, isSampled = false;
    std::int64_t at = simulated::GetElapsedMilliseconds();
};

// A run of the host on a computer that has not seen it before.
class CRun : public TrackerFixture
{
public:
    CRun(EKind which, std::mt19937& source, Account& account)
        : kind(which), random(source), total(account)
    {}

    void Run()
    {
        const std::string on = startsOff ? "0" : "1";
        simulated::PutFile(configPath, "[install]\r\nPHASH=ab\r\ntracking=" + on +
                                           "\r\n[UA]\r\nId=UA-1\r\nEnabled=" + on);
        simulated::facts->draw = {samples ? 0 : 24'000};
        Start(kind);
        simulated::internet->connected.first = isConnected;
        simulated::internet->server = [this] { return DrawAnswer(); };
        tracker->DisableIdlePageviews(true);
        for (unsigned step = 0, steps = 1 + Draw(30); step < steps; ++step)
        {
            for (unsigned i = Draw(20); i > 0; --i)
                ReportEvent();
            simulated::AdvanceTime(std::chrono::milliseconds(Draw(4) * Draw(1000)));
            if (step == switchesAt)
                Switch();
        }
        Release();
        AccountForAll();
    }

private:
    void TestBody() override {}

    unsigned Draw(unsigned limit) { return static_cast<unsigned>(random() % limit); }

    // Refused; received, but never answered; slow; unhappy; failing when all is over; happy.
    simulated::Answer DrawAnswer()
    {
        using enum simulated::ENetworkStage;
        const simulated::Answer answers[] = {{.failsAt = kind == EKind::Ua ? EndRequest : Send},
                                             {.delay = 1h},
                                             {.delay = std::chrono::milliseconds(Draw(900))},
                                             {.status = 500},
                                             {.failsAt = CloseRequest},
                                             {}};
        const unsigned answer = Draw(1000) < faultsInAThousand ? Draw(5) : 5;
        isLost.push_back(answer < 2);
        return answers[answer];
    }

    void Note(const Hit& hit)
    {
        if (kind == EKind::Classic && reported.empty())
            reported = {{L"x768&utmp=Tidy%20Desk&"}, {L"&utme=8("}};
        reported.push_back(hit);
    }

    void ReportEvent()
    {
        const std::wstring number = std::to_wstring(++lastNumber);
        const std::wstring category = Draw(6) == 0 ? L"sTats" : L"C";
        const std::wstring label = std::to_wstring(Draw(50));
        const bool onceOnly = Draw(4) == 0;
        const Each<std::wstring> marks{L")(" + number + L")", L"&ev=" + number, L"&e_v=" + number};
        Note({marks.Of(kind), category + label, onceOnly && kind == EKind::Classic,
              samples && category != L"C"});
        tracker->TrackEventEx(category, L"A", label, number, L"P", onceOnly);
    }

    // Off leaves all trackers but that of the measurement protocol at work until they end.
    void Switch()
    {
        const std::wstring action = startsOff ? L"ACTIVATED" : L"DEACTIVATED";
        Note({Each<std::wstring>{L"*" + action, L"&ea=" + action, L"&e_a=" + action}.Of(kind)});
        tracker->SetTrackingEnabled(startsOff);
        if (startsOff)
            offPeriod.second = reported.back().at;
        else if (kind == EKind::Ua)
            offPeriod = {reported.back().at, never};
    }

    void Release()
    {
        std::size_t sentBefore = 0;
        do
        {
            sentBefore = simulated::internet->sent.size();
            simulated::AdvanceTime(isPatient ? 5min : 0min);
        } while (sentBefore != simulated::internet->sent.size());
        tracker.reset();
    }

    void AccountForAll()
    {
        sent = simulated::GetSentRequests();
        for (const Hit& hit : reported)
        {
            ++total.reported;
            ++total.by[TellFate(hit)];
            if (HasFailure())
                return;
        }
        EXPECT_EQ(next, sent.size()) << "sent without having been reported";
        EXPECT_EQ(simulated::GetOpenInternetHandles(), 0);
    }

    EFate TellFate(const Hit& hit)
    {
        const bool isKnown = hit.onceOnly && occurred.contains(hit.event);
        if (!IsNext(hit))
            return TellReason(hit, isKnown);
        EXPECT_FALSE(isKnown || hit.isSampled || isSilent) << "sent all the same: " << hit.mark;
        occurred.insert(hit.event);
        bool wasLost = isLost[next++];
        const bool isRepeated = wasLost && kind != EKind::Ua && IsNext(hit);
        if (isRepeated)
            wasLost = isLost[next++];
        total.repeated += isRepeated;
        if (!wasLost)
            return Delivered;
        if (kind == EKind::Ua)
            return Refused;
        EXPECT_TRUE(isRepeated || MayBeReleased()) << "not repeated: " << hit.mark;
        isSilent = true;
        return Silenced;
    }

    EFate TellReason(const Hit& hit, bool isKnown) const
    {
        if (hit.at < offPeriod.second &&
            (next == sent.size() || sent[next].atMilliseconds >= offPeriod.first))
            return Off;
        if (hit.isSampled)
            return Sampled;
        if (isSilent)
            return Silenced;
        if (isKnown)
            return OnceOnly;
        EXPECT_TRUE(MayBeReleased()) << "lost without a reason: " << hit.mark << " before "
                                     << (next < sent.size() ? GetText(sent[next]) : L"the end");
        return Released;
    }

    bool IsNext(const Hit& hit) const
    {
        return next < sent.size() && GetText(sent[next]).find(hit.mark) != std::wstring::npos;
    }

    // The classic tracker drops what waits; the others send on while that is easy.
    bool MayBeReleased() const
    {
        const bool isEasy = kind != EKind::Classic && faultsInAThousand == 0;
        return next == sent.size() && !isPatient && !isEasy;
    }

    static constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();

    const EKind kind;
    std::mt19937& random;
    Account& total;
    const bool startsOff = Draw(8) == 0;
    const bool samples = kind != EKind::Kpi && Draw(2) == 0;
    const bool isConnected = kind != EKind::Ua || Draw(20) != 0;
    const bool isPatient = Draw(2) == 0;
    const unsigned faultsInAThousand = std::array{0u, 0u, 10u, 300u}.at(Draw(4));
    const unsigned switchesAt = Draw(90); // of the steps

    unsigned lastNumber = 1000;
    std::vector<Hit> reported;
    std::vector<bool> isLost; // of each answer
    std::pair<std::int64_t, std::int64_t> offPeriod{0, startsOff ? never : 0};

    std::vector<simulated::SentRequest> sent;
    std::size_t next = 0; // of those sent
    std::set<std::wstring> occurred;
    bool isSilent = !isConnected;
};

using ConservationTest = testing::TestWithParam<EKind>;

INSTANTIATE_TEST_SUITE_P(All, ConservationTest,
                         testing::Values(EKind::Classic, EKind::Ua, EKind::Kpi));

TEST_P(ConservationTest, EveryHitIsDeliveredOrDroppedForAReason)
{
    std::mt19937 random(static_cast<std::mt19937::result_type>(seed));
    Account total;
    while (total.reported < hitsOfEachTracker && !HasFailure())
    {
        CRun(GetParam(), random, total).Run();
        EXPECT_FALSE(HasFailure()) << "at hit " << total.reported << " of seed " << seed;
    }
    const Each<const char*> names{"classic", "measurement protocol", "KPI"};
    std::printf("| %s | %lu |", names.Of(GetParam()), total.reported);
    for (const unsigned long count : total.by)
        std::printf(" %lu |", count);
    std::printf(" %lu | %d |\n", total.repeated, HasFailure());
}

} // namespace

// conservation_test [HITS [SEED]]
int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (argc > 1)
        hitsOfEachTracker = std::strtoul(argv[1], nullptr, 10);
    if (argc > 2)
        seed = std::strtoul(argv[2], nullptr, 10);
    std::puts("| tracker | reported | delivered | off | sampled | once only | refused | silenced "
              "| released | repeated | violations |\n"
              "|---|---|---|---|---|---|---|---|---|---|---|");
    return RUN_ALL_TESTS();
}
