#include "env/Text.h"
#include "trackers/ua/UaPayload.h"

#include <benchmark/benchmark.h>

#include <vector>

// Building a payload beside the least that it could cost: concatenating its finished pieces. The
// builders stay within 3 times that.
namespace {

using frame::EHitType;
using frame::TrackingHit;

const std::wstring product = L"Disk Tool Professional";

std::wstring BuildCommon()
{
    return trackers::BuildCommonPayload({L"1",
                                         L"UA-1234567-1",
                                         L"C:\\Program Files\\Tool\\Tool.exe",
                                         L"0123456789abcdef0123456789abcdef",
                                         L"fedcba9876543210fedcba9876543210",
                                         L"campaign01",
                                         L"de_DE",
                                         product,
                                         {1920, 1080}});
}

TrackingHit MakeHit(EHitType type)
{
    switch (type)
    {
    case EHitType::Event:
        return {type, L"5", L"Scan", L"Start page", L"Start", L"", false};
    case EHitType::Transaction:
        return {type, L"29.97", L"ORDER-7", L"", L"campaign01", L"", false};
    case EHitType::Item:
        return {type, L"&ip=9.99&iq=3", L"ORDER-7", L"P1", L"campaign01", L"", false};
    default:
        return {type, L"", L"", L"", L"", L"Your trial ends soon", false};
    }
}

// The payload in the pieces that its builder puts together: keys and finished values.
std::vector<std::wstring> Split(const std::wstring& payload, std::size_t commonLength)
{
    std::vector<std::wstring> pieces{payload.substr(0, commonLength)};
    for (std::size_t i = commonLength; i < payload.size();)
    {
        const std::size_t next = std::min(payload.find_first_of(L"=&", i + 1), payload.size());
        pieces.push_back(payload.substr(i, next - i));
        i = next;
    }
    return pieces;
}

void BuildPayload(benchmark::State& state)
{
    const TrackingHit hit = MakeHit(static_cast<EHitType>(state.range(0)));
    const std::wstring common = BuildCommon();
    for (auto _ : state)
        benchmark::DoNotOptimize(trackers::BuildHitPayload(common, product, hit));
}

void ConcatenatePieces(benchmark::State& state)
{
    const TrackingHit hit = MakeHit(static_cast<EHitType>(state.range(0)));
    const std::wstring common = BuildCommon();
    const auto pieces = Split(trackers::BuildHitPayload(common, product, hit), common.size());
    for (auto _ : state)
    {
        std::wstring payload;
        for (const std::wstring& piece : pieces)
            payload += piece;
        benchmark::DoNotOptimize(payload);
    }
}

BENCHMARK(ConcatenatePieces)->Name("BuildPayloadFloor")->DenseRange(1, 5);
BENCHMARK(BuildPayload)->DenseRange(1, 5);

} // namespace
