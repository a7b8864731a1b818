#pragma once

#include "tests/simulated/Internet.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

// One computer of the fleet: the real module in the simulated Windows, in virtual time.
namespace fleet {

enum class ETracker
{
    Classic,
    Measurement,
    Kpi
};

// A request as the collection point sees it, answered or not.
struct Request
{
    std::int64_t at; // milliseconds since the start of the computer's time
    ETracker tracker;
    std::size_t bytes; // of HTTP: request line, headers and body; without TLS
};

// One run of the host: what it reports, to both trackers, at these milliseconds after its start.
struct Run
{
    std::int64_t start; // milliseconds
    std::int64_t length;
    std::vector<std::int64_t> events;
};

// How the collection point answers at a time.
using Server = std::function<simulated::Answer(std::int64_t at)>;

// Lets a fresh computer with `mainTracker` (Classic or Measurement) live through the runs, which
// are in order and do not overlap. Gives all requests of the main and the KPI tracker.
std::vector<Request> Live(ETracker mainTracker, const std::vector<Run>& runs, const Server& server);

} // namespace fleet
