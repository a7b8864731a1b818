#pragma once

#include "tools/collector/HitReport.h"
#include "tools/collector/Inspector.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

namespace collector {

// Decodes and checks the lines of logs, on all processors. Not thread-safe.
class CLogReader
{
public:
    struct Counts
    {
        std::size_t lines = 0;
        std::size_t hits = 0;
        std::size_t others = 0;     // requests for something else
        std::size_t unreadable = 0; // lines that hold no request
    };

    // The hits of these lines, in their order, numbered from 1 for the first of all.
    std::vector<HitReport> Read(const std::vector<std::string_view>& lines);

    const Counts& GetCounts() const { return counts; }

private:
    CCourse course;
    Counts counts;
};

// Calls `work(begin, end)` for parts of 0 to `count`, on all processors when there are many.
void RunInParts(std::size_t count, const std::function<void(std::size_t, std::size_t)>& work);

} // namespace collector
