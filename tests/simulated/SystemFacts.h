#pragma once

#include "platform/SystemFacts.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// What the simulated system says of itself. Nothing stands for a query that fails.
namespace simulated {

inline constexpr std::uint32_t ansiCodePage = 1252; // for narrow text

void SetVersionEx(std::optional<platform::SystemVersion> version); // initially 6.1
void SetPackedVersion(std::uint32_t version);                      // initially 0x1DB10106
void SetNativeArchitecture(std::optional<std::uint16_t> number);   // initially 9
void SetUserDefaultLanguageId(std::uint16_t languageId);           // initially 0x0409
void SetScreenSize(platform::ScreenSize size);                     // initially 1024 x 768
void SetComputerName(std::optional<std::wstring> name);            // initially "COMPUTER"

// How often the native architecture was asked for.
std::size_t CountArchitectureQueries();

// The next draws of any thread. When they are used up, and initially, each thread draws the series
// of the Windows runtime's generator for its seed.
void PutDraws(const std::vector<std::int32_t>& draws);

// The seeds given since the last take, in order.
std::vector<std::uint32_t> TakeSeeds();

} // namespace simulated
