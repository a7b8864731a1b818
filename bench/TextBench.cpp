// Encoding, digests and the KPI request, each against doing only what cannot be left out.
#include "env/Text.h"
#include "net/Md5.h"
#include "trackers/kpi/KpiRequest.h"

#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include <cstdio>

namespace {

const std::wstring text = L"Settings page: theme changed to dark (by the user), 12 times";

void EncodeQueryText(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(env::EncodeQueryText(text, true));
}

// Copies the finished text unit by unit.
void EncodeQueryTextFloor(benchmark::State& state)
{
    const std::wstring finished = env::EncodeQueryText(text, true);
    for (auto _ : state)
    {
        std::wstring copy;
        for (const wchar_t unit : finished)
            copy += unit;
        benchmark::DoNotOptimize(copy);
    }
}

void Md5Hex(benchmark::State& state)
{
    const std::string bytes(static_cast<std::size_t>(state.range(0)), 'x');
    for (auto _ : state)
        benchmark::DoNotOptimize(net::Md5Hex(bytes.c_str()));
}

// The digest by OpenSSL, in text form.
void Md5HexFloor(benchmark::State& state)
{
    const std::string bytes(static_cast<std::size_t>(state.range(0)), 'x');
    for (auto _ : state)
    {
        unsigned char digest[EVP_MAX_MD_SIZE];
        unsigned int size = 0;
        EVP_Digest(bytes.data(), bytes.size(), digest, &size, EVP_md5(), nullptr);
        std::wstring hex;
        for (unsigned int i = 0; i < size; ++i)
        {
            hex += L"0123456789abcdef"[digest[i] >> 4];
            hex += L"0123456789abcdef"[digest[i] & 15];
        }
        benchmark::DoNotOptimize(hex);
    }
}

const trackers::KpiClient client{L"https://kpi.zotracker.example/piwik.php?",
                                 L"1",
                                 L"Disk Tool/3.2.1 (Windows NT 10.0; WOW64)",
                                 L"www.zotracker.example",
                                 L"de-us",
                                 L"spring24",
                                 L"newsletter"};
const trackers::KpiMoment moment{L"0123456789abcdef0123456789abcdef", 12345678, L"Disk Tool"};

frame::TrackingHit MakeEvent()
{
    frame::TrackingHit hit;
    hit.type = frame::EHitType::Event;
    hit.field1 = L"12";
    hit.field2 = L"Settings page";
    hit.field3 = L"dark";
    hit.field4 = L"Theme changed";
    return hit;
}

void KpiRequest(benchmark::State& state)
{
    const frame::TrackingHit hit = MakeEvent();
    for (auto _ : state)
        benchmark::DoNotOptimize(trackers::BuildKpiRequest(client, moment, hit));
}

// Concatenates the same pieces, already encoded and formatted.
void KpiRequestFloor(benchmark::State& state)
{
    const std::wstring pieces[] = {client.endpoint,
                                   L"send_image=0&rec=1&apiv=1&idsite=",
                                   client.siteId,
                                   L"&ua=",
                                   client.userAgent,
                                   L"&url=",
                                   client.siteAddress,
                                   L"&uid=",
                                   moment.userId,
                                   L"&lang=",
                                   L"de%2Dus",
                                   L"&rand=12345678",
                                   L"&_rcn=",
                                   client.phash,
                                   L"&_rck=",
                                   client.kpiSource,
                                   L"&_cvar={\"1\":[\"product\", \"",
                                   moment.productName,
                                   L"\"]}",
                                   L"&e_c=",
                                   L"Settings%20page",
                                   L"&e_a=",
                                   L"Theme%20changed",
                                   L"&e_n=",
                                   L"dark",
                                   L"&e_v=",
                                   L"12"};
    for (auto _ : state)
    {
        std::wstring url;
        for (const std::wstring& piece : pieces)
            url += piece;
        benchmark::DoNotOptimize(url);
    }
}

BENCHMARK(EncodeQueryText);
BENCHMARK(EncodeQueryTextFloor);
BENCHMARK(Md5Hex)->Arg(16)->Arg(200)->Arg(100'000);
BENCHMARK(Md5HexFloor)->Arg(16)->Arg(200)->Arg(100'000);
BENCHMARK(KpiRequest);
BENCHMARK(KpiRequestFloor);

} // namespace
