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

struct Reported
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

    std::wstring Of(const wchar_t* classic, const wchar_t* ua, const wchar_t* kpi) const
    {
        return kind == EKind::Classic ? classic : kind == EKind::Ua ? ua : kpi;
    }

    void Prepare()
    {
        startsOff = Draw(8) == 0;
        isOn = !startsOff;
        const std::string on = startsOff ? "0" : "1";
        simulated::PutFile(configPath, "[install]\r\nPHASH=ab\r\ntracking=" + on +
                                           "\r\n[UA]\r\nId=UA-1\r\nEnabled=" + on);
        offPeriods.clear();
        if (startsOff)
            offPeriods.push_back({0, never});
        samples = kind != EKind::Kpi && Draw(2) == 0;
        simulated::facts->draw = {samples ? 0 : 24'000};
        reported.clear();
        script.clear();
        switches = 0;
        isLedIn = kind != EKind::Classic;
        faultsInAThousand = std::array{0u, 0u, 10u, 200u}.at(Draw(4));
        isConnected = kind != EKind::Ua || Draw(20) != 0;
    }

    Answer DrawAnswer()
    {
        Answer answer;
        if (Draw(1000) >= faultsInAThousand)
            return answer;
        switch (Draw(5))
        {
        case 0: // refused
            answer.failsAt = kind == EKind::Ua ? EStage::EndRequest : EStage::Send;
            answer.error = platform::internetCannotConnect;
            break;
        case 1: // received, but never answered
            answer.delay = 1h;
            break;
        case 2:
            answer.delay = std::chrono::milliseconds(Draw(900));
            break;
        case 3:
            answer.status = 500;
            break;
        default:
            answer.failsAt = EStage::CloseRequest;
        }
        return answer;
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
        switch (Draw(12))
        {
        case 0:
            if (startsOff) // pages are all alike, so one that is dropped would not be missed
                return;
            Note(Of(pageMark, L"&t=pageview&dp=%2FTidy%20Desk&$", L"]}&$"));
            return tracker->TrackPageview();
        case 1:
            if (kind == EKind::Kpi && startsOff)
                return;
            Note(Of(L"x768&utmp=", L"&t=pageview&dp=%2F", L"]}&$") +
                 (kind == EKind::Kpi ? L"" : number + L"&"));
            return tracker->TrackMessage(number);
        case 2:
            if (kind == EKind::Kpi && startsOff)
                return;
            for (const wchar_t* type : {L"tran", L"item"})
                Note(kind == EKind::Classic ? std::wstring(L"&utmt=") + type +
                                                  L"&utmp=Tidy%20Desk&utmtid=" + number + L"&"
                     : kind == EKind::Ua ? std::wstring(L"&t=") + type
                                         : L"]}&$");
            return tracker->TrackPurchase(L"n", L"c", 1, number, 1);
        default:
            const bool isStats = Draw(6) == 0;
            const bool onceOnly = Draw(4) == 0;
            const std::wstring label = L"L" + std::to_wstring(Draw(200));
            Note(Of(L")(", L"&ev=", L"&e_v=") + number + Of(L")&utmp=P&", L"&", L"&$"),
                 (isStats ? L"S" : L"C") + label, onceOnly && kind == EKind::Classic,
                 isStats && samples);
            tracker->TrackEventEx(isStats ? L"sTats" : L"C", L"A", label, number, L"P", onceOnly);
        }
    }

    // Once on and once off at the most, so that each report of it is of its own kind.
    void Switch()
    {
        ++switches;
        const bool on = isOn = !isOn;
        const std::wstring action = on ? L"ACTIVATED" : L"DEACTIVATED";
        Note(Of(L"5(TRACKER*", L"&ea=", L"&e_a=") + action + Of(L"*)", L"&", L"&"));
        if (kind == EKind::Ua && !on)
            offPeriods.push_back({reported.back().at, never});
        tracker->SetTrackingEnabled(on);
        if (on && !offPeriods.empty())
            offPeriods.back().second = std::min(offPeriods.back().second, reported.back().at);
    }

    void Release()
    {
        isPatient = Draw(2) == 0;
        for (std::size_t before = 1, now = 0; isPatient && before != now;)
        {
            before = now;
            simulated::AdvanceTime(kind == EKind::Ua ? 5min : 10s);
            now = simulated::internet->sent.size();
        }
        sentBefore = simulated::internet->sent.size();
        tracker.reset();
    }

    bool AccountForAll()
    {
        sent = simulated::GetSentRequests();
        next = 0;
        silenced = !isConnected;
        for (const Reported& hit : reported)
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

    EFate TellFate(const Reported& hit)
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

    EFate Attempt(const Reported& hit)
    {
        if (!IsLost(script[next++]))
            return Delivered;
        if (kind == EKind::Ua)
            return Refused;
        if (IsNext(hit))
        {
            ++total.repeated;
            if (!IsLost(script[next++]))
                return Delivered;
        }
        else
            EXPECT_TRUE(next == sent.size() && MayRelease()) << "not repeated: " << hit.mark;
        silenced = true;
        return Silenced;
    }

    bool IsNext(const Reported& hit) const
    {
        return next < sent.size() &&
               (GetText(sent[next]) + L"&$").find(hit.mark) != std::wstring::npos;
    }

    bool WasOff(const Reported& hit) const
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

    bool startsOff = false, isOn = true, samples = false, isLedIn = false, isConnected = true;
    unsigned faultsInAThousand = 0, switches = 0;
    std::vector<std::pair<std::int64_t, std::int64_t>> offPeriods;
    std::vector<Reported> reported;
    std::vector<Answer> script;

    bool isPatient = false, silenced = false;
    std::size_t sentBefore = 0, next = 0;
    std::vector<simulated::SentRequest> sent;
};

class ConservationTest : public testing::TestWithParam<EKind>
{};

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
    unsigned long sum = 0;
    for (const unsigned long count : total.by)
        sum += count;
    EXPECT_EQ(sum, total.reported);
    const auto& by = total.by;
    std::printf("%lu reported = %lu delivered + %lu off + %lu sampled + %lu once only + %lu refused"
                " + %lu silenced + %lu released; %lu repeated\n",
                total.reported, by[Delivered], by[Off], by[Sampled], by[OnceOnly], by[Refused],
                by[Silenced], by[Released], total.repeated);
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
