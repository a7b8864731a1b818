#pragma once

#include "platform/SystemFacts.h"
#include "tests/simulated/Simulated.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace simulated {

inline constexpr std::uint32_t ansiCodePage = 1252; // for narrow text

// What the simulated system says of itself. Nothing stands for a query that fails.
struct SystemFacts
{
    std::optional<platform::SystemVersion> version = platform::SystemVersion{6, 1};
    std::uint32_t packedVersion = 0x1DB10106;
    std::optional<std::uint16_t> architecture = std::uint16_t{9};
    std::size_t architectureQueries = 0; // so far
    std::uint16_t languageId = 0x0409;
    platform::ScreenSize screen = {1024, 768};
    std::optional<std::wstring> computerName = L"COMPUTER";
    std::vector<platform::NetworkAdapter> adapters; // none at first
    std::int32_t draw = 41;                         // each random number
    std::vector<std::uint32_t> seeds;               // given so far
};
extern CState<SystemFacts> facts;

// An empty path makes the query fail.
struct SystemPaths
{
    std::wstring executable = L"C:\\Host\\Host.exe";                         // of the host process
    std::map<int, std::wstring> specialFolders = {{35, L"C:\\ProgramData"}}; // by CSIDL number
};
extern CState<SystemPaths> paths;

} // namespace simulated
