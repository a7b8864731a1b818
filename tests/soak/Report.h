#pragma once

#include "tests/soak/Scene.h"

#include <array>
#include <atomic>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace soak {

// How long the program has been running.
long GetSeconds();

// Says on standard error what happens, and when. Any thread.
void Tell(const std::string& what);

// What was seen of each fault. Any thread.
class CTable
{
public:
    // Adds a host's run, and tells it when something was wrong with it. `delivered` is the number
    // of requests that the server read.
    void Add(const Scene& scene, const module::ProgramResult& run, std::size_t delivered);

    // The hosts that are not in the table, because it was Wine itself that ended them.
    int CountEndedByWine() const { return endedByWine; }

    // No crash, no hang, no bound missed, nothing called that must not be.
    bool IsClean() const { return isClean; }

    // As Markdown.
    std::string Format() const;

private:
    using Row = std::array<long, 10>; // without fault and place

    std::mutex lock;
    std::map<std::pair<std::string, std::string>, Row> rows; // by place and fault
    bool isClean = true;
    std::atomic<int> endedByWine{0};
};

// Puts a table into a file, between the lines "<!-- NAME -->" and "<!-- end of NAME -->".
void PutIntoReport(const std::string& path, const std::string& name, const std::string& table);

// What a host printed of itself in each round ("left 1000 bytes, 10 handles, 4 threads, 90
// wake-ups"), and the number of hits that had arrived by each second, as an SVG with one curve for
// each, from 0 to its largest value.
std::string DrawPlot(const std::string& output, const std::vector<double>& delivered);

} // namespace soak
