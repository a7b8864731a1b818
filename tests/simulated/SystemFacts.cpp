#include "tests/simulated/SystemFacts.h"

namespace simulated {

CState<SystemFacts> facts;

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

std::vector<NetworkAdapter> ListNetworkAdapters() { return facts->adapters; }

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

void SeedRandom(std::uint32_t seed) { facts->seeds.push_back(seed); }

std::int32_t DrawRandom()
{
    const auto held = facts.Hold();
    if (held->draws.empty())
        return 41;
    const std::int32_t draw = held->draws.front();
    held->draws.pop_front();
    return draw;
}

} // namespace platform
