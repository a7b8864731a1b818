#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace soak {

// What a host printed of itself ("left 1000 bytes, 10 handles, 4 threads"), about once a second.
struct Sample
{
    long bytes;
    long handles;
    long threads;
};

std::vector<Sample> ReadSamples(const std::string& output);

// The samples and the number of hits that have arrived by each second, as an SVG with one curve for
// each, each from 0 to its largest value.
std::string DrawPlot(const std::vector<Sample>& samples, const std::vector<std::size_t>& arrived);

} // namespace soak
