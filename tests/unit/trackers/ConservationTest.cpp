#include "tests/simulated/Files.h"
#include "tests/simulated/SystemFacts.h"
#include "tests/unit/trackers/TrackerFixture.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <set>
#include <utility>

using namespace std::chrono_literals;
using simulated::Answer;
using EStage = simulated::ENetworkStage;

// Hits at random, reported to each tracker at random moments over an internet that fails at random.
// Every one of them was delivered, or there is a reason why not; they went out in their order, and
// none twice unless its first answer was lost.
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
    std::wstring mark; // what its request holds, with "&$" behind the request's end
    std::int64_t at;   // of virtual time
    std::wstring event = {};
    bool onceOnly = false, isSampled = false;
};

bool IsLost(const Answer& answer)
{
    return answer.failsAt == EStage::Send || answer.failsAt == EStage::EndRequest ||
           answer.delay >= 1h;
}

// A computer on which the host runs again and again.
class CMachine : public TrackerFixture
{
public:
    CMachine(EKind which, std::mt19937& source, Account& account)
        : kind(which), random(source), total(account)
    {}

    // False when the run has ended in silence: what was counted unseen is then not known.
    bool Run()
    {
        Prepare();
        StartKind(kind);
        simulated::internet->connected.first = isConnected;
        tracker->DisableIdlePageviews(true);
        for (unsigned step = 0, steps = 1 + Draw(30); step < steps; ++step)
        {
            for (unsigned i = Draw(20); i > 0; --i)
                ReportHit();
            simulated::AdvanceTime(std::chrono::milliseconds(Draw(4) * Draw(1000)));
            if (Draw(8) == 0 && switches < 2 && (startsOff || kind != EKind::Ua))
                Switch();
        }
        Release();
        return AccountForAll();
    }

private:
    void TestBody() override {}

    unsigned Draw(unsigned limit) { return static_cast<unsigned>(random() % limit); }

    // Each kind's, with `text` in place of "#".
    std::wstring Mark(const std::wstring& text, const wchar_t* classic, const wchar_t* ua,
                      const wchar_t* kpi) const
    {
        std::wstring mark = kind == EKind::Classic ? classic : kind == EKind::Ua ? ua : kpi;
        if (const std::size_t at = mark.find(L'#'); at != mark.npos)
            mark.replace(at, 1, text);
        return mark;
    }

    void Prepare()
    {
        startsOff = Draw(8) == 0;
        const std::string on = startsOff ? "0" : "1";
        simulated::PutFile(configPath, "[install]\r\nPHASH=ab\r\ntracking=" + on +
                                           "\r\n[UA]\r\nId=UA-1\r\nEnabled=" + on);
        offPeriods.assign(startsOff ? 1 : 0, {0, never});
        samples = kind != EKind::Kpi && Draw(2) == 0;
        simulated::facts->draw = {samples ? 0 : 24'000};
        reported.clear();
        script.clear();
        switches = 0;
        isLedIn = kind != EKind::Classic;
        faultsInAThousand = std::array{0u, 0u, 10u, 200u}.at(Draw(4));
        isConnected = kind != EKind::Ua || Draw(20) != 0;
    }

    // Refused; received, but never answered; slow; unhappy; failing when all is over.
    Answer DrawAnswer()
    {
        const EStage refusal = kind == EKind::Ua ? EStage::EndRequest : EStage::Send;
        const Answer faults[] = {{.failsAt = refusal, .error = platform::internetCannotConnect},
                                 {.delay = 1h},
                                 {.delay = std::chrono::milliseconds(Draw(900))},
                                 {.status = 500},
                                 {.failsAt = EStage::CloseRequest}};
        return Draw(1000) < faultsInAThousand ? faults[Draw(5)] : Answer();
    }

    void Note(std::wstring mark, std::wstring event = {}, bool onceOnly = false,
              bool isSampled = false)
    {
        const std::int64_t now = simulated::GetElapsedMilliseconds();
        if (!std::exchange(isLedIn, true))
        {
            if (mark != pageMark)
                Note(pageMark);
            Note(L"&utme=8(");
        }
        for (int attempt = 0; attempt < 2; ++attempt)
        {
            script.push_back(DrawAnswer());
            simulated::AddAnswer(script.back());
        }
        reported.push_back({std::move(mark), now, std::move(event), onceOnly, isSampled});
    }

    void ReportHit()
    {
        const std::wstring number = std::to_wstring(++lastNumber);
        const unsigned which = Draw(12);
        if (startsOff && (which == 0 || (which < 3 && kind == EKind::Kpi)))
            return; // they are all alike, so one that is dropped would not be missed
        if (which == 0)
        {
            Note(Mark({}, pageMark, L"&t=pageview&dp=%2FTidy%20Desk&$", L"]}&$"));
            tracker->TrackPageview();
        }
        else if (which == 1)
        {
            Note(Mark(number, L"x768&utmp=#&", L"&t=pageview&dp=%2F#&", L"]}&$"));
            tracker->TrackMessage(number);
        }
        else if (which == 2)
        {
            for (const std::wstring type : {L"tran", L"item"})
                Note(Mark(type, L"&utmt=#&utmp=Tidy%20Desk&utmtid=", L"&t=#", L"]}&$") +
                     (kind == EKind::Classic ? number + L"&" : L""));
            tracker->TrackPurchase(L"n", L"c", 1, number, 1);
        }
        else
            ReportEvent(number);
    }

    void ReportEvent(const std::wstring& number)
    {
        const bool isStats = Draw(6) == 0;
        const bool onceOnly = Draw(4) == 0;
        const std::wstring label = L"L" + std::to_wstring(Draw(200));
        Note(Mark(number, L")(#)&utmp=P&", L"&ev=#&", L"&e_v=#&$"), (isStats ? L"S" : L"C") + label,
             onceOnly && kind == EKind::Classic, isStats && samples);
        tracker->TrackEventEx(isStats ? L"sTats" : L"C", L"A", label, number, L"P", onceOnly);
    }

    // Once on and once off at the most, so that each report of it is of its own kind.
    void Switch()
    {
        const bool on = startsOff == (switches++ % 2 == 0);
        const std::wstring action = on ? L"ACTIVATED" : L"DEACTIVATED";
        Note(Mark(action, L"5(TRACKER*#*)", L"&ea=#&", L"&e_a=#&"));
        if (kind == EKind::Ua && !on)
            offPeriods.push_back({reported.back().at, never});
        tracker->SetTrackingEnabled(on);
        if (on && !offPeriods.empty())
            offPeriods.back().second = std::min(offPeriods.back().second, reported.back().at);
    }

    void Release()
    {
        isPatient = Draw(2) == 0;
        const auto& sentNow = simulated::internet->sent;
        do
        {
            sentBefore = sentNow.size();
            if (isPatient)
                simulated::AdvanceTime(kind == EKind::Ua ? 5min : 10s);
        } while (sentBefore != sentNow.size());
        tracker.reset();
    }

    bool AccountForAll()
    {
        sent = simulated::GetSentRequests();
        next = 0;
        silenced = !isConnected;
        for (const Hit& hit : reported)
        {
            ++total.reported;
            ++total.by[TellFate(hit)];
            if (HasFailure())
                return false;
        }
        EXPECT_EQ(next, sent.size()) << "sent without having been reported";
        EXPECT_EQ(simulated::GetOpenInternetHandles(), 0);
        return !silenced;
    }

    EFate TellFate(const Hit& hit)
    {
        const bool isNext = IsNext(hit);
        if (isNext && !hit.isSampled && !silenced && !(hit.onceOnly && seen.contains(hit.event)))
        {
            seen.insert(hit.event);
            return Attempt(hit);
        }
        EXPECT_FALSE(isNext) << hit.mark;
        if (WasOff(hit))
            return Off;
        if (hit.isSampled)
            return Sampled;
        if (silenced)
            return Silenced;
        if (hit.onceOnly && seen.contains(hit.event))
            return OnceOnly;
        EXPECT_TRUE(next == sent.size() && MayRelease())
            << "lost without a reason: " << hit.mark << " before "
            << (next < sent.size() ? GetText(sent[next]) : L"the end");
        return Released;
    }

    EFate Attempt(const Hit& hit)
    {
        const bool isRepeated = IsLost(script[next++]) && kind != EKind::Ua && IsNext(hit);
        total.repeated += isRepeated;
        if (!IsLost(script[isRepeated ? next++ : next - 1]))
            return Delivered;
        if (kind == EKind::Ua)
            return Refused;
        EXPECT_TRUE(isRepeated || (next == sent.size() && MayRelease()))
            << "not repeated: " << hit.mark;
        silenced = true;
        return Silenced;
    }

    bool IsNext(const Hit& hit) const
    {
        return next < sent.size() &&
               (GetText(sent[next]) + L"&$").find(hit.mark) != std::wstring::npos;
    }

    bool WasOff(const Hit& hit) const
    {
        const std::int64_t until = next < sent.size() ? sent[next].atMilliseconds : never;
        return std::any_of(offPeriods.begin(), offPeriods.end(), [&](const auto& period) {
            return period.first <= until && period.second > hit.at;
        });
    }

    // The classic tracker drops what waits; the others send on while sending is easy.
    bool MayRelease() const
    {
        bool isEasy = kind != EKind::Classic;
        for (std::size_t i = sentBefore > 0 ? sentBefore - 1 : 0; i < sent.size(); ++i)
            isEasy = isEasy && !IsLost(script[i]) && script[i].delay == 0s;
        return !isPatient && !isEasy;
    }

    static constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();
    static constexpr const wchar_t* pageMark = L"x768&utmp=Tidy%20Desk&";

    const EKind kind;
    std::mt19937& random;
    Account& total;
    unsigned lastNumber = 0;
    std::set<std::wstring> seen; // events that occurred

    bool startsOff = false, samples = false, isLedIn = false, isConnected = true;
    unsigned faultsInAThousand = 0, switches = 0;
    std::vector<std::pair<std::int64_t, std::int64_t>> offPeriods;
    std::vector<Hit> reported;
    std::vector<Answer> script;

    bool isPatient = false, silenced = false;
    std::size_t sentBefore = 0, next = 0;
    std::vector<simulated::SentRequest> sent;
};

class ConservationTest : public testing::TestWithParam<EKind>
{
protected:
    static void SetUpTestSuite()
    {
        std::puts(
            "| tracker | reported | delivered | off | sampled | once only | refused | silenced "
            "| released | repeated | violations |\n"
            "|---|---|---|---|---|---|---|---|---|---|---|");
    }
};

INSTANTIATE_TEST_SUITE_P(All, ConservationTest,
                         testing::Values(EKind::Classic, EKind::Ua, EKind::Kpi));

TEST_P(ConservationTest, EveryHitIsDeliveredOrDroppedForAReason)
{
    std::mt19937 random(static_cast<std::mt19937::result_type>(seed));
    Account total;
    while (total.reported < hitsOfEachTracker && !HasFailure())
    {
        const unsigned long begun = total.reported;
        CMachine machine(GetParam(), random, total);
        for (int run = 0; run < 20 && !HasFailure() && machine.Run(); ++run)
        {}
        EXPECT_FALSE(HasFailure()) << "after " << begun << " hits of seed " << seed;
    }
    static const char* const names[] = {"classic", "measurement protocol", "KPI"};
    std::printf("| %s | %lu |", names[static_cast<std::size_t>(GetParam())], total.reported);
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
    return RUN_ALL_TESTS();
}
