#pragma once

#include "tests/simulated/Simulated.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace simulated {

struct VersionInfo
{
    std::vector<std::pair<std::uint16_t, std::uint16_t>> translations; // language, code page
    std::map<std::wstring, std::wstring, IgnoringCase> texts; // by the full path in the block
};

struct VersionResources
{
    std::map<std::wstring, VersionInfo, IgnoringCase> files; // by path; they need not exist
    std::size_t reads = 0;                                   // with or without success
};
extern CState<VersionResources> versionResources;

inline void SetVersionInfo(const std::wstring& path, const VersionInfo& info)
{
    versionResources->files[path] = info;
}

} // namespace simulated
