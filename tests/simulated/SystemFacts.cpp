#include "tests/simulated/SystemFacts.h"

#include <deque>
#include <mutex>
#include <utility>

namespace simulated {

namespace {

struct Facts
{
    std::optional<platform::SystemVersion> version = platform::SystemVersion{6, 1};
    std::uint32_t packedVersion = 0x1DB10106;
    std::optional<std::uint16_t> architecture = std::uint16_t{9};
    std::size_t architectureQueries = 0;
    std::uint16_t languageId = 0x0409;
    platform::ScreenSize screen = {1024, 768};
    std::optional<std::wstring> computerName = L"COMPUTER";
    platform::ProcessorVendor vendor = {0x6C65746E, 0x49656E69}; // "ntel", "ineI"
    std::vector<platform::NetworkAdapter> adapters;
    std::deque<std::int32_t> draws;
    std::vector<std::uint32_t> seeds;
};

std::mutex mutex;
Facts facts;              // guarded by `mutex`
std::uint32_t testsBegun; // guarded by `mutex`; a new one makes each thread's generator new

// The Windows runtime keeps one generator per thread and starts each from 1.
struct Generator
{
    std::uint32_t test;
    std::uint32_t state;
};
thread_local Generator generator = {0, 1};

// The calling thread's generator. The caller holds `mutex`.
Generator& CurrentGenerator()
{
    if (generator.test != testsBegun)
        generator = {testsBegun, 1};
    return generator;
}

template <class Fact>
void Set(Fact Facts::*field, Fact value)
{
    const std::scoped_lock lock(mutex);
    facts.*field = std::move(value);
}

template <class Fact>
Fact Get(Fact Facts::*field)
{
    const std::scoped_lock lock(mutex);
    return facts.*field;
}

} // namespace

void SetVersionEx(std::optional<platform::SystemVersion> version) { Set(&Facts::version, version); }
void SetPackedVersion(std::uint32_t version) { Set(&Facts::packedVersion, version); }
void SetNativeArchitecture(std::optional<std::uint16_t> number)
{
    Set(&Facts::architecture, number);
}
void SetUserDefaultLanguageId(std::uint16_t languageId) { Set(&Facts::languageId, languageId); }
void SetScreenSize(platform::ScreenSize size) { Set(&Facts::screen, size); }
void SetComputerName(std::optional<std::wstring> name)
{
    Set(&Facts::computerName, std::move(name));
}
void SetProcessorVendor(platform::ProcessorVendor vendor) { Set(&Facts::vendor, vendor); }
void SetNetworkAdapters(std::vector<platform::NetworkAdapter> adapters)
{
    Set(&Facts::adapters, std::move(adapters));
}

std::size_t CountArchitectureQueries() { return Get(&Facts::architectureQueries); }

void PutDraws(const std::vector<std::int32_t>& draws)
{
    const std::scoped_lock lock(mutex);
    facts.draws.insert(facts.draws.end(), draws.begin(), draws.end());
}

std::vector<std::uint32_t> TakeSeeds()
{
    const std::scoped_lock lock(mutex);
    return std::exchange(facts.seeds, {});
}

void ResetSystemFacts()
{
    const std::scoped_lock lock(mutex);
    facts = {};
    ++testsBegun;
}

} // namespace simulated

namespace platform {

using simulated::Facts;
using simulated::facts;

bool QueryVersionEx(SystemVersion& version)
{
    const auto known = simulated::Get(&Facts::version);
    version = known.value_or(version);
    return known.has_value();
}

std::uint32_t QueryPackedVersion() { return simulated::Get(&Facts::packedVersion); }

bool QueryNativeArchitecture(std::uint16_t& architecture)
{
    const std::scoped_lock lock(simulated::mutex);
    ++facts.architectureQueries;
    architecture = facts.architecture.value_or(architecture);
    return facts.architecture.has_value();
}

std::uint16_t GetUserDefaultLanguageId() { return simulated::Get(&Facts::languageId); }

std::uint32_t GetAnsiCodePage() { return simulated::ansiCodePage; }

ScreenSize GetScreenSize() { return simulated::Get(&Facts::screen); }

bool QueryComputerName(std::size_t limit, std::wstring& name)
{
    const auto known = simulated::Get(&Facts::computerName);
    if (!known || known->size() >= limit)
        return false;
    name = *known;
    return true;
}

ProcessorVendor QueryProcessorVendor() { return simulated::Get(&Facts::vendor); }

std::vector<NetworkAdapter> ListNetworkAdapters() { return simulated::Get(&Facts::adapters); }

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
    const std::scoped_lock lock(simulated::mutex);
    facts.seeds.push_back(seed);
    simulated::CurrentGenerator().state = seed;
}

std::int32_t DrawRandom()
{
    const std::scoped_lock lock(simulated::mutex);
    if (!facts.draws.empty())
    {
        const std::int32_t draw = facts.draws.front();
        facts.draws.pop_front();
        return draw;
    }
    std::uint32_t& state = simulated::CurrentGenerator().state;
    state = state * 214013 + 2531011;
    return static_cast<std::int32_t>(state >> 16 & 0x7FFF);
}

} // namespace platform
