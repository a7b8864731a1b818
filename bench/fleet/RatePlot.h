#pragma once

#include <string>
#include <vector>

namespace fleet {

struct Curve
{
    std::string name;
    std::string colour;         // of SVG
    std::vector<double> values; // evenly spaced over the day
};

// An SVG picture of the curves over the 24 hours of a day, on one scale from 0.
std::string DrawDay(const std::string& title, const std::vector<Curve>& curves);

} // namespace fleet
