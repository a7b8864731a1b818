#pragma once

#include "platform/NotificationIcon.h"
#include "platform/SystemFacts.h"
#include "tests/simulated/Simulated.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace simulated {

inline constexpr std::uint32_t ansiCodePage = 1252; // for narrow text

struct VersionInfo
{
    std::vector<std::pair<std::uint16_t, std::uint16_t>> translations; // language, code page
    std::map<std::wstring, std::wstring, IgnoringCase> texts; // by the full path in the block
};

// What the system says of itself. Nothing, or an empty path, stands for a query that fails.
struct SystemFacts
{
    std::optional<platform::SystemVersion> version = platform::SystemVersion{6, 1};
    std::uint32_t packedVersion = 0x1DB10106;
    std::optional<std::uint16_t> architecture = std::uint16_t{9};
    std::uint16_t languageId = 0x0409;
    platform::ScreenSize screen = {1024, 768};
    std::optional<std::wstring> computerName = L"COMPUTER";
    std::vector<platform::NetworkAdapter> adapters;                          // none at first
    std::int32_t draw = 41;                                                  // each random number
    std::vector<std::uint32_t> seeds;                                        // given so far
    std::wstring executable = L"C:\\Host\\Host.exe";                         // of the host process
    std::map<int, std::wstring> specialFolders = {{35, L"C:\\ProgramData"}}; // by CSIDL number
    std::map<std::wstring, VersionInfo, IgnoringCase> versionInfos; // by file, which need not exist
};
extern CState<SystemFacts> facts;

inline void SetVersionInfo(const std::wstring& path, const VersionInfo& info)
{
    facts->versionInfos[path] = info;
}

struct NotificationArea
{
    std::map<std::uint32_t, platform::NotificationIconOptions> icons; // by their number
    std::vector<std::pair<std::wstring, std::wstring>> balloons;      // title and text, all shown
};
extern CState<NotificationArea> area;
extern CState<std::vector<std::wstring>> debugOutput;

// The lines of debugger output since the last take, in order.
inline std::vector<std::wstring> TakeDebugOutput()
{
    return std::exchange(*debugOutput.Hold(), {});
}

} // namespace simulated
