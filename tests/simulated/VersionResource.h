#pragma once

#include "tests/simulated/State.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace simulated {

struct VersionInfo
{
    std::vector<std::pair<std::uint16_t, std::uint16_t>> translations; // language, code page
    std::map<std::wstring, std::wstring> texts; // by the full path in the block, in any case
};

struct VersionResources
{
    std::vector<VersionInfo> contents;                // all that were ever set
    std::map<std::wstring, std::uint8_t> indexOfFile; // by upper-case path
    std::size_t reads = 0;                            // with or without success
};
extern CState<VersionResources> versionResources;

// Gives the file at `path` version information; the file itself need not be on the disk.
void SetVersionInfo(const std::wstring& path, const VersionInfo& info);

} // namespace simulated
