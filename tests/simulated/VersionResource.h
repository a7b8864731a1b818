#pragma once

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

// Gives the file at `path` version information; the file itself need not be on the disk.
void SetVersionInfo(const std::wstring& path, const VersionInfo& info);

// How many version resources were read, with or without success.
std::size_t CountVersionResourceReads();

} // namespace simulated
