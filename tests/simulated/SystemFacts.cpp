#include "tests/simulated/SystemFacts.h"

#include "tests/simulated/State.h"

#include <deque>
#include <utility>

namespace simulated {

namespace {

std::uint32_t factsMade = 0;

struct Facts
{
    std::optional<platform::SystemVersion> version = platform::SystemVersion{6, 1};
    std::uint32_t packedVersion = 0x1DB10106;
    std::optional<std::uint16_t> architecture = std::uint16_t{9};
    std::size_t architectureQueries = 0;
    std::uint16_t languageId = 0x0409;
    platform::ScreenSize screen = {1024, 768};
    std::optional<std::wstring> computerName = L"COMPUTER";
    std::deque<std::int32_t> draws;
    std::vector<std::uint32_t> seeds;
    std::uint32_t number = ++factsMade; // a new one makes each thread's generator new
};

CState<Facts> facts;

// The Windows runtime keeps one generator per thread and starts each from 1.
struct Generator
{
    std::uint32_t factsNumber = 0;
    std::uint32_t state = 1;
};
thread_local Generator generator;

std::uint32_t& CurrentGenerator()
{
    if (const std::uint32_t number = facts->number; generator.factsNumber != number)
        generator = {number, 1};
    return generator.state;
}

} // namespace

void SetVersionEx(std::optional<platform::SystemVersion> version) { facts->version = version; }
void SetPackedVersion(std::uint32_t version) { facts->packedVersion = version; }
void SetNativeArchitecture(std::optional<std::uint16_t> number) { facts->architecture = number; }
void SetUserDefaultLanguageId(std::uint16_t languageId) { facts->languageId = languageId; }
void SetScreenSize(platform::ScreenSize size) { facts->screen = size; }
void SetComputerName(std::optional<std::wstring> name) { facts->computerName = std::move(name); }

std::size_t CountArchitectureQueries() { return facts->architectureQueries; }

void PutDraws(const std::vector<std::int32_t>& draws)
{
    const auto held = facts.Hold();
    held->draws.insert(held->draws.end(), draws.begin(), draws.end());
}

std::vector<std::uint32_t> TakeSeeds() { return std::exchange(facts->seeds, {}); }

} // namespace simulated

namespace platform {

using namespace simulated;

bool QueryVersionEx(SystemVersion& version)
{
    const auto known = facts->version;
    version = known.value_or(version);
    return known.has_value();
}

std::uint32_t QueryPackedVersion() { return facts->packedVersion; }

bool QueryNativeArchitecture(std::uint16_t& architecture)
{
    const auto held = facts.Hold();
    ++held->architectureQueries;
    architecture = held->architecture.value_or(architecture);
    return held->architecture.has_value();
}

std::uint16_t GetUserDefaultLanguageId() { return facts->languageId; }

std::uint32_t GetAnsiCodePage() { return ansiCodePage; }

ScreenSize GetScreenSize() { return facts->screen; }

bool QueryComputerName(std::size_t limit, std::wstring& name)
{
    const auto known = facts->computerName;
    if (!known || known->size() >= limit)
        return false;
    name = *known;
    return true;
}

ProcessorVendor QueryProcessorVendor() { return {0x6C65746E, 0x49656E69}; } // "ntel", "ineI"

std::vector<NetworkAdapter> ListNetworkAdapters() { return {}; }

bool IsAlphanumeric(wchar_t unit)
{
    const auto isWithin = [unit](wchar_t first, wchar_t last) {
        return first <= unit && unit <= last;
    };
    return isWithin(L'0', L'9') || isWithin(L'A', L'Z') || isWithin(L'a', L'z') || unit == 0xB2 ||
           unit == 0xB3 || unit == 0xB9 || // superscript digits
           (isWithin(0xC0, 0xFF) && unit != 0xD7 && unit != 0xF7) ||
           (isWithin(0x391, 0x3C9) && unit != 0x3A2) || isWithin(0x400, 0x45F);
}

void SeedRandom(std::uint32_t seed)
{
    facts->seeds.push_back(seed);
    CurrentGenerator() = seed;
}

std::int32_t DrawRandom()
{
    const auto held = facts.Hold();
    if (!held->draws.empty())
    {
        const std::int32_t draw = held->draws.front();
        held->draws.pop_front();
        return draw;
    }
    std::uint32_t& state = CurrentGenerator();
    state = state * 214013 + 2531011;
    return static_cast<std::int32_t>(state >> 16 & 0x7FFF);
}

} // namespace platform
