#include "platform/Files.h"
#include "tests/simulated/Simulated.h"
#include "trackers/classic/ClassicRequest.h"
#include "trackers/classic/PurchaseHits.h"
#include "trackers/classic/VisitHistory.h"

#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <cstdio>
#include <vector>

// Building a request beside the least that it could cost: concatenating its finished pieces. The
// builder stays within 3 times that. And the cost of a history by its number of events.
namespace {

using frame::EHitType;
using frame::TrackingHit;
using namespace trackers;

const ClassicClient client{
    L"https://collect.zotracker.example/__utm.gif?",
    L"UA-1234567-1",
    L"511024897",
    L"5353100974948985254515350564957984810149100491015549575398481005197102",
    L"1920",
    L"1080",
    L"de_DE",
    L"campaign01",
    L"Disk Tool Professional"};
const ClassicVisit visit{L"1700000000", L"1700100000", L"1700200000", L"12", L"34", 123'456'789};

TrackingHit MakeHit(EHitType type)
{
    const Purchase purchase{L"Backup Pack", L"P1", 9.99, L"ORDER-7", 3};
    switch (type)
    {
    case EHitType::Event:
        return {type, L"5", L"Scan", L"Start page", L"Start", L"Disk Tool Professional", false};
    case EHitType::Transaction:
        return MakeTransactionHit(purchase, L"ORDER-7", client.phash);
    case EHitType::Item:
        return MakeItemHit(purchase, client.language);
    case EHitType::CustomVariable:
        return {type, client.phash, L"1", L"PHASH", L"2", L"", false};
    default:
        return {type, L"", L"", L"", L"", L"Your trial ends soon", false};
    }
}

void BuildRequest(benchmark::State& state)
{
    const TrackingHit hit = MakeHit(static_cast<EHitType>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(BuildClassicRequest(client, visit, hit));
}

void BuildRequestFloor(benchmark::State& state)
{
    const std::wstring request =
        BuildClassicRequest(client, visit, MakeHit(static_cast<EHitType>(state.range(0))));
    std::vector<std::wstring> pieces; // keys and finished values
    for (std::size_t i = 0; i < request.size();)
    {
        const std::size_t next = std::min(request.find_first_of(L"=&.*!(", i + 1), request.size());
        pieces.push_back(request.substr(i, next - i));
        i = next;
    }
    for (auto _ : state)
    {
        std::wstring url;
        url.reserve(1024);
        for (const std::wstring& piece : pieces)
            url += piece;
        benchmark::DoNotOptimize(url);
    }
}

BENCHMARK(BuildRequestFloor)->DenseRange(1, 6);
BENCHMARK(BuildRequest)->DenseRange(1, 6);

// Fingerprints may begin with a digit; names of proper XML may not, so `prefix` makes them such.
std::string MakeHistoryText(std::int64_t events, const char* prefix = "")
{
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<SimpleXMLElement>\n";
    for (std::int64_t i = 0; i < events; ++i)
    {
        char line[96];
        const auto number = static_cast<unsigned>(i * 2'654'435'761 % 4'294'967'296);
        std::snprintf(line, sizeof line, "\t<%s%08x%024d>%d</%s%08x%024d>\n", prefix, number, 7, 5,
                      prefix, number, 7);
        text += line;
    }
    return text + "</SimpleXMLElement>\n";
}

void PutHistory(std::int64_t events)
{
    simulated::Reset();
    platform::ReplaceFileContents(L"C:\\tallyhive.xml", MakeHistoryText(events));
}

void LoadHistory(benchmark::State& state)
{
    PutHistory(state.range(0));
    CVisitHistory history(L"C:\\");
    for (auto _ : state)
        history.LoadHistory();
    state.SetComplexityN(state.range(0));
}

void SaveHistory(benchmark::State& state)
{
    PutHistory(state.range(0));
    CVisitHistory history(L"C:\\");
    history.LoadHistory();
    for (auto _ : state)
        history.SaveHistory();
    state.SetComplexityN(state.range(0));
}

// The same text by pugixml, which keeps it in place and reads no numbers.
void LoadHistoryFloor(benchmark::State& state)
{
    const std::string text = MakeHistoryText(state.range(0), "x");
    for (auto _ : state)
    {
        pugi::xml_document document;
        if (!document.load_buffer(text.data(), text.size()))
            state.SkipWithError("not understood");
    }
}

void SaveHistoryFloor(benchmark::State& state)
{
    const std::string text = MakeHistoryText(state.range(0), "x");
    struct Writer : pugi::xml_writer
    {
        void write(const void* data, std::size_t size) override
        {
            written.append(static_cast<const char*>(data), size);
        }
        std::string written;
    };
    pugi::xml_document document;
    document.load_buffer(text.data(), text.size());
    for (auto _ : state)
    {
        Writer writer;
        document.save(writer, "\t");
        benchmark::DoNotOptimize(writer.written);
    }
}

// The event is the last one of the history.
void CountOccurrence(benchmark::State& state)
{
    PutHistory(state.range(0));
    CVisitHistory history(L"C:\\");
    history.LoadHistory();
    TrackingHit one = MakeHit(EHitType::Event);
    TrackingHit other = one;
    other.field1 = L"other";
    other.field2 = L"Other";
    for (auto _ : state) // alternating, because the latest find is remembered
    {
        benchmark::DoNotOptimize(history.CountEventOccurrence(one));
        benchmark::DoNotOptimize(history.CountEventOccurrence(other));
    }
}

BENCHMARK(LoadHistory)->Arg(100)->Arg(10'000)->Arg(100'000)->Complexity(benchmark::oN);
BENCHMARK(SaveHistory)->Arg(100)->Arg(10'000)->Arg(100'000)->Complexity(benchmark::oN);
BENCHMARK(LoadHistoryFloor)->Arg(100)->Arg(10'000)->Arg(100'000);
BENCHMARK(SaveHistoryFloor)->Arg(100)->Arg(10'000)->Arg(100'000);
BENCHMARK(CountOccurrence)->Arg(100)->Arg(10'000)->Arg(100'000);

} // namespace
