#include "tests/soak/Plot.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

namespace soak {

namespace {

constexpr int width = 800;
constexpr int height = 110; // of one curve
constexpr int top = 24;     // for its title

void DrawCurve(std::ostream& svg, int row, const char* title, const std::vector<double>& values)
{
    const double largest = std::max(1.0, *std::ranges::max_element(values));
    const int bottom = (row + 1) * (height + top);
    svg << "<text x='4' y='" << bottom - height - 6 << "'>" << title << ", at most " << largest
        << "</text>\n<polyline fill='none' stroke='#2a6fb0' points='";
    for (std::size_t i = 0; i < values.size(); ++i)
        svg << static_cast<double>(i) * width / static_cast<double>(values.size()) << ','
            << bottom - values[i] * height / largest << ' ';
    svg << "'/>\n<line x1='0' x2='" << width << "' y1='" << bottom << "' y2='" << bottom
        << "' stroke='#999'/>\n";
}

} // namespace

std::vector<Sample> ReadSamples(const std::string& output)
{
    std::vector<Sample> samples;
    for (std::size_t at = output.find("left "); at != std::string::npos;
         at = output.find("left ", at + 1))
    {
        Sample sample{};
        if (std::sscanf(output.c_str() + at, "left %ld bytes, %ld handles, %ld threads",
                        &sample.bytes, &sample.handles, &sample.threads) == 3)
            samples.push_back(sample);
    }
    return samples;
}

std::string DrawPlot(const std::vector<Sample>& samples, const std::vector<std::size_t>& arrived)
{
    std::vector<double> bytes{0}, handles{0}, threads{0};
    for (const Sample& sample : samples)
    {
        bytes.push_back(static_cast<double>(sample.bytes) / 1024);
        handles.push_back(static_cast<double>(sample.handles));
        threads.push_back(static_cast<double>(sample.threads));
    }
    std::ostringstream svg;
    svg << "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 " << width << ' '
        << 4 * (height + top) + 8 << "' font-family='sans-serif' font-size='13'>\n"
        << "<rect width='100%' height='100%' fill='white'/>\n";
    DrawCurve(svg, 0, "memory on all heaps of the host, KiB", bytes);
    DrawCurve(svg, 1, "handles of the host", handles);
    DrawCurve(svg, 2, "threads of the host", threads);
    DrawCurve(svg, 3, "hits that have arrived", {arrived.begin(), arrived.end()});
    svg << "</svg>\n";
    return svg.str();
}

} // namespace soak
