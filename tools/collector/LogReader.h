#pragma once

#include "tools/collector/Inspector.h"

#include <cstddef>
#include <string>
#include <vector>

namespace collector {

// The hits of some lines of a log, in their order, and what the other lines were.
struct LogBlock
{
    std::vector<HitReport> hits;
    std::size_t lines = 0;
    std::size_t others = 0;     // requests for something else
    std::size_t unreadable = 0; // lines that hold no request
};

// Decodes whole lines, each with its line end; empty ones do not count. Any thread.
LogBlock ReadLogLines(const std::string& text);

} // namespace collector
